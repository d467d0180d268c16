// Application log: configuration, line formatting, the writer thread and the rolling log files.
#include "core/app_log.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <set>
#include <sstream>
#include <sys/file.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "core/helpers.h"
#include "core/version.h"

namespace core {

namespace fs = std::filesystem;

namespace {

// Guards the log files of one folder across threads and processes (advisory lock).
constexpr const char *kLockFileName = "AppLogFileAccess.lock";
constexpr const char *kConfigFileName = "AppLog.INI";
// Characters trimmed from both ends of each configuration piece; the bytes 0x81 and 0x40 are
// the halves of the Shift-JIS full-width space, each taken on its own.
constexpr const char kTrimChars[] = "\t \"\x81\x40";

// The target of Log. Read without the lock for the quick "logging is off" answer; changed and
// used under g_activeLock, so that a logger is never destroyed under a running Log call.
std::atomic<CAppLog *> g_active{nullptr};
constinit std::mutex g_activeLock;

std::string Trim(const std::string &text)
{
    size_t first = text.find_first_not_of(kTrimChars);
    if (first == std::string::npos) {
        return std::string();
    }
    size_t last = text.find_last_not_of(kTrimChars);
    return text.substr(first, last - first + 1);
}

// Every piece between commas, empty ones included ("a," gives "a" and "").
std::vector<std::string> SplitAtCommas(const std::string &line)
{
    std::vector<std::string> pieces;
    size_t start = 0;
    for (;;) {
        size_t comma = line.find(',', start);
        if (comma == std::string::npos) {
            pieces.push_back(line.substr(start));
            return pieces;
        }
        pieces.push_back(line.substr(start, comma - start));
        start = comma + 1;
    }
}

// The plain string-to-integer conversion: leading digits, 0 when there are none.
int32_t ToInt(const std::string &text)
{
    long long value = std::strtoll(text.c_str(), nullptr, 10);
    value = std::clamp<long long>(
        value, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max());
    return static_cast<int32_t>(value);
}

// The path up to and including its last "/"; empty without one.
std::string FolderPart(const std::string &path)
{
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

// Splits at the last "." of the path: stem and extension with its dot (empty without a dot).
std::pair<std::string, std::string> SplitExtension(const std::string &path)
{
    size_t dot = path.rfind('.');
    if (dot == std::string::npos) {
        return {path, std::string()};
    }
    return {path.substr(0, dot), path.substr(dot)};
}

std::string ReadWholeFile(const std::string &path, bool &ok)
{
    std::ifstream in(path, std::ios::binary);
    ok = static_cast<bool>(in);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string ExecutableFolder()
{
    std::error_code ec;
    fs::path exe = fs::read_symlink("/proc/self/exe", ec);
    return ec ? std::string() : FolderPart(exe.string());
}

// The arguments of this process joined by blanks, right-trimmed.
std::string CommandLine()
{
    bool ok = false;
    std::string text = ReadWholeFile("/proc/self/cmdline", ok);
    std::replace(text.begin(), text.end(), '\0', ' ');
    size_t last = text.find_last_not_of(" \t\r\n");
    return last == std::string::npos ? std::string() : text.substr(0, last + 1);
}

std::string FormatV(const char *format, va_list args)
{
    va_list copy;
    va_copy(copy, args);
    int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (length <= 0) {
        return std::string();
    }
    std::string text(static_cast<size_t>(length) + 1, '\0');
    std::vsnprintf(text.data(), text.size(), format, args);
    text.resize(static_cast<size_t>(length));
    return text;
}

void LocalTime(std::chrono::system_clock::time_point when, std::tm &local, int &millisecond)
{
    using namespace std::chrono;
    auto whole = floor<seconds>(when);
    time_t clock = system_clock::to_time_t(whole);
    localtime_r(&clock, &local);
    millisecond = static_cast<int>(duration_cast<milliseconds>(when - whole).count());
}

// Holds the cross-process lock of a log file's folder, creating the folder if it is missing.
// Without a lock file (unwritable folder) the caller goes on unguarded.
class FolderLock
{
public:
    explicit FolderLock(const std::string &logPath)
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
    ~FolderLock()
    {
        if (m_fd >= 0) {
            ::flock(m_fd, LOCK_UN);
            ::close(m_fd);
        }
    }
    FolderLock(const FolderLock &) = delete;
    FolderLock &operator=(const FolderLock &) = delete;

private:
    int m_fd = -1;
};

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

bool ProcessExists(int32_t pid)
{
    return ::kill(pid, 0) == 0 || errno == EPERM;
}

// The program's logger, configured by "AppLog.INI" beside the executable. Constructed before
// main and destroyed after it; active only when the configuration names a log file.
struct ProgramLog
{
    ProgramLog()
        : log(ExecutableFolder() + kConfigFileName)
    {
        if (!log.path().empty()) {
            CAppLog::Install(&log);
        }
    }
    CAppLog log;
};

ProgramLog g_programLog;

} // namespace

void Log(const char *format, ...)
{
    if (g_active.load(std::memory_order_acquire) == nullptr) {
        return;
    }
    std::lock_guard<std::mutex> guard(g_activeLock);
    CAppLog *log = g_active.load(std::memory_order_relaxed);
    if (log == nullptr || log->m_path.empty()) {
        return;
    }
    va_list args;
    va_start(args, format);
    log->append(format, args);
    va_end(args);
}

CAppLog::CAppLog(const std::string &configPath, const std::string &workingDir)
{
    readConfig(configPath);
    if (!m_path.empty()) {
        fs::path given(m_path);
        std::error_code ec;
        fs::path full = workingDir.empty() || given.is_absolute() ? fs::absolute(given, ec)
                                                                  : fs::path(workingDir) / given;
        m_path = ec ? m_path : full.lexically_normal().string();
    }
    if (m_clear != 0 && !m_path.empty()) {
        FolderLock lock(m_path);
        PruneLogs(m_path, -1);
    }
    if (m_path.empty()) {
        return;
    }
    m_processId = static_cast<uint32_t>(::getpid());
    m_product = kProductName;
    std::string version = kProductVersion;
    version.erase(std::remove(version.begin(), version.end(), ' '), version.end());
    std::replace(version.begin(), version.end(), ',', '.');
    std::string prefix = m_product.empty() ? std::string() : m_product + " ";
    std::string first = FormatLogLine(std::chrono::system_clock::now(),
                                      m_processId,
                                      prefix,
                                      "Version " + version + " " + CommandLine() + "\n");
    FlushToFile(m_path, first, m_maxSize, m_maxNum);
    m_thread = std::thread(&CAppLog::writerLoop, this);
}

CAppLog::~CAppLog()
{
    if (m_path.empty()) {
        Uninstall(this);
        return;
    }
    {
        std::lock_guard<std::mutex> guard(m_stopLock);
        m_stopRequested = true;
    }
    m_stopEvent.notify_all();
    if (m_thread.joinable()) {
        m_thread.join();
    }
    Uninstall(this);
    std::string rest;
    {
        std::lock_guard<std::mutex> guard(m_lock);
        rest.swap(m_buffer);
    }
    if (!rest.empty()) {
        FlushToFile(m_path, rest, m_maxSize, m_maxNum);
    }
}

void CAppLog::Install(CAppLog *log)
{
    std::lock_guard<std::mutex> guard(g_activeLock);
    g_active.store(log, std::memory_order_release);
}

void CAppLog::Uninstall(CAppLog *log)
{
    std::lock_guard<std::mutex> guard(g_activeLock);
    if (g_active.load(std::memory_order_relaxed) == log) {
        g_active.store(nullptr, std::memory_order_release);
    }
}

void CAppLog::readConfig(const std::string &configPath)
{
    bool ok = false;
    std::string text = ReadWholeFile(configPath, ok);
    if (!ok) {
        return;
    }
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line, '\n')) {
        // A file written with CR LF reads as it would in text mode.
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (line.empty() || line.starts_with("#") || line.starts_with("//")) {
            continue;
        }
        std::vector<std::string> pieces = SplitAtCommas(line);
        if (pieces.size() < 2) {
            continue;
        }
        std::string key = Trim(pieces[0]);
        std::string value = Trim(pieces[1]);
        if (key == "LOG_FILE_PATH") {
            m_path = value;
        } else if (key == "CLEAR_LOG_FILE") {
            m_clear = ToInt(value);
        } else if (key == "LOG_FILE_MAX_SIZE") {
            m_maxSize = ToInt(value);
        } else if (key == "LOG_FILE_MAX_NUM") {
            m_maxNum = ToInt(value);
        } else if (key == "LOG_FILE_WRITE_SIZE") {
            m_writeSize = ToInt(value);
        } else if (key == "LOG_FILE_WRITE_INTERVAL") {
            m_writeInterval = ToInt(value);
        }
    }
}

void CAppLog::append(const char *format, va_list args)
{
    std::lock_guard<std::mutex> guard(m_lock);
    std::string message = FormatV(format, args);
    std::string prefix = m_product.empty() ? std::string() : m_product + " ";
    m_buffer += FormatLogLine(std::chrono::system_clock::now(), m_processId, prefix, message);
}

void CAppLog::writerLoop()
{
    int ticks = 0;
    for (;;) {
        checkWatchedProcess();
        bool stop = false;
        {
            std::unique_lock<std::mutex> guard(m_stopLock);
            m_stopEvent.wait_for(
                guard, std::chrono::milliseconds(1000), [this] { return m_stopRequested; });
            stop = m_stopRequested;
        }
        ++ticks;
        if (writeRound(stop, ticks)) {
            ticks = 0;
        }
        if (stop) {
            return;
        }
    }
}

bool CAppLog::writeRound(bool force, int ticks)
{
    std::lock_guard<std::mutex> order(m_flushLock);
    std::string copy;
    {
        std::lock_guard<std::mutex> guard(m_lock);
        if (!force && ticks < m_writeInterval &&
            static_cast<int64_t>(m_buffer.size()) < m_writeSize) {
            return false;
        }
        copy.swap(m_buffer);
    }
    if (!copy.empty()) {
        FlushToFile(m_path, copy, m_maxSize, m_maxNum);
    }
    return true;
}

void CAppLog::Flush()
{
    if (!m_path.empty()) {
        writeRound(true, 0);
    }
}

void CAppLog::checkWatchedProcess()
{
    if (m_watchedProcess != 0 && m_exitCallback && !ProcessExists(m_watchedProcess)) {
        m_exitCallback(m_watchedProcess, m_exitCallbackArg);
        m_exitCallback = nullptr;
    }
}

void CAppLog::FlushToFile(const std::string &path, const std::string &text, int maxSize, int maxNum)
{
    if (path.empty()) {
        return;
    }
    FolderLock lock(path);
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
            name.ends_with(suffix) && name != kLockFileName) {
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
