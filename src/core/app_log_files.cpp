// The log's files: the folder lock, appending a block, rolling and pruning, the line format.
#include "core/app_log_files.h"
#include "core/app_log.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

#include "core/helpers.h"
#include "core/paths.h"

namespace core {

namespace fs = std::filesystem;

namespace logfiles {

FolderLock::FolderLock(const std::string &logPath)
{
    std::string folder = FolderPart(logPath);
    if (!folder.empty()) {
        std::error_code ec;
        fs::create_directories(folder, ec);
    }
    std::string lockPath = folder + kLockFileName;
    m_fd = ::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (m_fd >= 0) {
        while (::flock(m_fd, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
}

FolderLock::~FolderLock()
{
    if (m_fd >= 0) {
        ::flock(m_fd, LOCK_UN);
        ::close(m_fd);
    }
}

} // namespace logfiles

namespace {

// Splits at the last "." of the path: stem and extension with its dot (empty without a dot).
std::pair<std::string, std::string> SplitExtension(const std::string &path)
{
    size_t dot = path.rfind('.');
    if (dot == std::string::npos) {
        return {path, std::string()};
    }
    return {path.substr(0, dot), path.substr(dot)};
}

void LocalTime(std::chrono::system_clock::time_point when, std::tm &local, int &millisecond)
{
    using namespace std::chrono;
    auto whole = floor<seconds>(when);
    time_t clock = system_clock::to_time_t(whole);
    localtime_r(&clock, &local);
    millisecond = static_cast<int>(duration_cast<milliseconds>(when - whole).count());
}

// Appends text to the file with one write loop, so that a block is never split by another
// writer holding the folder lock.
void AppendToFile(const std::string &path, const std::string &text)
{
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (fd < 0) {
        return;
    }
    const char *data = text.data();
    size_t left = text.size();
    while (left > 0) {
        ssize_t written = ::write(fd, data, left);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            break;
        }
        data += written;
        left -= static_cast<size_t>(written);
    }
    ::close(fd);
}

} // namespace

void CAppLog::FlushToFile(const std::string &path, const std::string &text, int maxSize, int maxNum)
{
    if (path.empty()) {
        return;
    }
    logfiles::FolderLock lock(path);
    std::error_code ec;
    uintmax_t size = fs::file_size(path, ec);
    if (!ec && static_cast<int64_t>(size) >= static_cast<int64_t>(maxSize)) {
        // An existing rolled name (two rolls in one millisecond) is never replaced: the file
        // then stays and rolls at a later write.
        std::string rolled = RolledLogName(path, std::chrono::system_clock::now());
        if (!fs::exists(rolled, ec)) {
            fs::rename(path, rolled, ec);
        }
    }
    PruneLogs(path, maxNum);
    AppendToFile(path, text);
}

void CAppLog::PruneLogs(const std::string &path, int maxNum)
{
    if (path.empty()) {
        return;
    }
    auto [stem, extension] = SplitExtension(path);
    std::string pattern = stem + (maxNum < 0 ? "*" : "_*") + extension;
    size_t star = stem.size() + (maxNum < 0 ? 0 : 1);
    maxNum = std::max(maxNum, 0);
    size_t slash = pattern.rfind('/');
    if (slash != std::string::npos && slash > star) {
        return; // the wildcard stands in a folder name, which matches nothing
    }
    std::string folder = FolderPart(pattern);
    std::string prefix = pattern.substr(folder.size(), star - folder.size());
    std::string suffix = pattern.substr(star + 1);
    std::set<std::string> names;
    std::error_code ec;
    fs::directory_iterator it(folder.empty() ? fs::path(".") : fs::path(folder), ec);
    for (; !ec && it != fs::directory_iterator(); it.increment(ec)) {
        std::error_code statusError;
        if (it->is_directory(statusError)) {
            continue;
        }
        std::string name = it->path().filename().string();
        if (name.size() >= prefix.size() + suffix.size() && name.starts_with(prefix) &&
            name.ends_with(suffix) && name != logfiles::kLockFileName) {
            names.insert(name);
        }
    }
    if (names.size() <= static_cast<size_t>(maxNum)) {
        return;
    }
    size_t excess = names.size() - static_cast<size_t>(maxNum);
    for (const std::string &name : names) {
        if (excess-- == 0) {
            break;
        }
        std::error_code removeError;
        fs::remove(folder + name, removeError);
    }
}

std::string CAppLog::RolledLogName(const std::string &path,
                                   std::chrono::system_clock::time_point when)
{
    std::tm local{};
    int millisecond = 0;
    LocalTime(when, local, millisecond);
    auto [stem, extension] = SplitExtension(path);
    return StrPrintf("%s_%04d%02d%02d_%02d%02d%02d%03d%s",
                     stem.c_str(),
                     local.tm_year + 1900,
                     local.tm_mon + 1,
                     local.tm_mday,
                     local.tm_hour,
                     local.tm_min,
                     local.tm_sec,
                     millisecond,
                     extension.c_str());
}

std::string CAppLog::FormatLogLine(std::chrono::system_clock::time_point when,
                                   uint32_t pid,
                                   const std::string &prefix,
                                   const std::string &message)
{
    std::tm local{};
    int millisecond = 0;
    LocalTime(when, local, millisecond);
    return StrPrintf("%02d/%02d %02d:%02d:%02d.%03d <%u> %s%s",
                     local.tm_mon + 1,
                     local.tm_mday,
                     local.tm_hour,
                     local.tm_min,
                     local.tm_sec,
                     millisecond,
                     pid,
                     prefix.c_str(),
                     message.c_str());
}

} // namespace core
