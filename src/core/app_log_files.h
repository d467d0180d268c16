// The log's files: the cross-process lock of their folder. Used by the logger only.
#pragma once

#include <chrono>
#include <ctime>
#include <string>

namespace core::logfiles {

// Guards the log files of one folder across threads and processes (advisory lock).
inline constexpr const char *kLockFileName = "AppLogFileAccess.lock";

// Holds the cross-process lock of a log file's folder, creating the folder if it is missing.
// Without a lock file (unwritable folder) the caller goes on unguarded.
class FolderLock
{
public:
    explicit FolderLock(const std::string &logPath);
    ~FolderLock();
    FolderLock(const FolderLock &) = delete;
    FolderLock &operator=(const FolderLock &) = delete;

private:
    int m_fd = -1;
};

} // namespace core::logfiles
