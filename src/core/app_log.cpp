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

#include "core/app_log_files.h"
#include "core/helpers.h"
#include "core/paths.h"
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
        logfiles::FolderLock lock(m_path);
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

} // namespace core
