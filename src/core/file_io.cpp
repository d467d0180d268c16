// Whole-file reading and atomic writing, for files that must never be seen half written.
#include "core/file_io.h"

#include <cerrno>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "core/paths.h"

namespace core {
namespace {

void SetError(std::string *pError, const std::string &text)
{
    if (pError != nullptr) {
        *pError = text;
    }
}

std::string ErrnoText(int err)
{
    return std::generic_category().message(err);
}

// 0 when all bytes went out, else the errno of the failed write.
int WriteAll(int fd, const std::string &bytes)
{
    size_t done = 0;
    while (done < bytes.size()) {
        ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return errno;
        }
        done += static_cast<size_t>(n);
    }
    return 0;
}

} // namespace

bool ReadRegularFile(const std::string &path, std::string &bytes, std::string *pError)
{
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) {
        SetError(pError, path + ": cannot open the file: " + ErrnoText(errno));
        return false;
    }
    struct stat st = {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        SetError(pError, path + ": not a regular file");
        return false;
    }
    char buffer[65536];
    for (;;) {
        ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n == 0) {
            break;
        }
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            int err = errno;
            ::close(fd);
            SetError(pError, path + ": cannot read the file: " + ErrnoText(err));
            return false;
        }
        bytes.append(buffer, static_cast<size_t>(n));
    }
    ::close(fd);
    return true;
}

bool WriteFileAtomically(const std::string &path, const std::string &bytes, std::string *pError)
{
    // Through a symbolic link to the file it names: the link stays, and the temporary file
    // stands beside the real file, so that the rename replaces it in one step.
    const std::string target = RealPath(path);
    const std::string temp = target + ".tmp";
    int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0666);
    if (fd < 0) {
        SetError(pError, path + ": cannot write the file: " + ErrnoText(errno));
        return false;
    }
    struct stat st = {};
    if (::stat(target.c_str(), &st) == 0 && S_ISREG(st.st_mode)) {
        ::fchmod(fd, st.st_mode & 07777);
    }
    int err = WriteAll(fd, bytes);
    if (err == 0 && ::fsync(fd) != 0) {
        err = errno;
    }
    if (::close(fd) != 0 && err == 0) {
        err = errno;
    }
    if (err == 0 && ::rename(temp.c_str(), target.c_str()) != 0) {
        err = errno;
    }
    if (err != 0) {
        ::unlink(temp.c_str());
        SetError(pError, path + ": cannot write the file: " + ErrnoText(err));
        return false;
    }
    return true;
}

} // namespace core
