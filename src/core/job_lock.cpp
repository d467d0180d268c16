// Advisory locks that keep two jobs, in one program or in two, off the same project or output
// folder.
#include "core/job_lock.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "core/helpers.h"
#include "core/paths.h"

namespace core {
namespace {

// What the holder wrote into its lock file, one line, at most a few hundred bytes.
std::string HolderText(int fd)
{
    char buffer[512];
    ssize_t n = pread(fd, buffer, sizeof(buffer) - 1, 0);
    if (n <= 0) {
        return "another job";
    }
    std::string text(buffer, static_cast<size_t>(n));
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
        text.pop_back();
    }
    return text;
}

// The file at path is still the one that fd has open: the holder that released it before we
// took the lock may have removed it.
bool StillLinked(int fd, const std::string &path)
{
    struct stat opened
    {
    };
    struct stat named
    {
    };
    return fstat(fd, &opened) == 0 && stat(path.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

} // namespace

JobLock::~JobLock()
{
    Release();
}

bool JobLock::TryAcquire(const std::string &lockPath,
                         const std::string &owner,
                         std::string *pProblem)
{
    Release();
    for (int attempt = 0; attempt < 100; ++attempt) {
        int fd = open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (fd < 0) {
            if (pProblem != nullptr) {
                *pProblem = "cannot make the lock file " + lockPath + ": " + std::strerror(errno);
            }
            return false;
        }
        if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
            int error = errno;
            if (pProblem != nullptr) {
                *pProblem = error == EWOULDBLOCK
                                ? "is in use by another job (" + HolderText(fd) + ")"
                                : "cannot lock " + lockPath + ": " + std::strerror(error);
            }
            close(fd);
            return false;
        }
        if (!StillLinked(fd, lockPath)) {
            close(fd); // released and removed meanwhile: take the new file
            continue;
        }
        std::string text = StrPrintf("process %d: %s\n", static_cast<int>(getpid()), owner.c_str());
        if (ftruncate(fd, 0) != 0 || pwrite(fd, text.data(), text.size(), 0) < 0) {
            // The lock holds all the same; only the holder's description is missing.
        }
        m_fd = fd;
        m_path = lockPath;
        return true;
    }
    if (pProblem != nullptr) {
        *pProblem = "cannot lock " + lockPath + ": it keeps changing";
    }
    return false;
}

void JobLock::Release()
{
    if (m_fd < 0) {
        return;
    }
    // Removed while still locked, so that nobody takes a lock on a file about to vanish.
    unlink(m_path.c_str());
    close(m_fd);
    m_fd = -1;
    m_path.clear();
}

std::string ProjectLockPath(const std::string &projectFile)
{
    return RealPath(projectFile) + ".lock";
}

std::string FolderLockPath(const std::string &folder)
{
    return SetTrailingSeparator(RealPath(folder), true) + ".tarnwickmp4.lock";
}

} // namespace core
