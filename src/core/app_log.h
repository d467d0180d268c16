// Application log: lines collected in memory, written by a background thread to a rolling file.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdarg>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace core {

// Appends one line to the active logger's buffer: the local time, the process id, the product
// prefix and the printf-formatted message (which by convention ends in "\n"; none is added).
// Callable from every thread at every moment, also before main and after the logger is gone.
// Touches no file: it only formats into memory under a lock. Does nothing at all while no
// logger is active or the active one has no log file configured.
void Log(const char *format, ...) __attribute__((format(printf, 1, 2)));

// A logger configured by an "AppLog.INI"-style file. The program's own logger is a file-scope
// object that reads "AppLog.INI" beside the executable and is active from before main until
// after it. With a log file configured it owns a writer thread that writes the buffer every
// LOG_FILE_WRITE_INTERVAL seconds, or as soon as it holds LOG_FILE_WRITE_SIZE bytes, and once
// more at destruction.
class CAppLog
{
public:
    // Reads the configuration file at configPath (missing file: logging stays off). A relative
    // LOG_FILE_PATH is made absolute against workingDir, or against the process's current
    // directory when workingDir is empty. With a log file: CLEAR_LOG_FILE is applied, the
    // "Version" line is written to the file at once, and the writer thread starts.
    // The new logger is not active: see Install.
    explicit CAppLog(const std::string &configPath, const std::string &workingDir = "");
    // Stops and joins the writer thread, deactivates this logger if it is the active one, and
    // writes what the buffer still holds.
    ~CAppLog();
    CAppLog(const CAppLog &) = delete;
    CAppLog &operator=(const CAppLog &) = delete;

    // Makes log the target of Log, replacing the previous one (nullptr: none). Any thread.
    static void Install(CAppLog *log);
    // Clears the target of Log if it is log. Returns after any Log call into log has finished.
    static void Uninstall(CAppLog *log);

    // Writes what the buffer holds now, as a writer round would. Any thread; waits for the
    // file lock, and keeps the blocks of this logger in the order in which they were taken.
    void Flush();

    // Appends text to the file at path under the cross-process file lock
    // ("AppLogFileAccess.lock" in the file's folder, created with the folder if missing).
    // Before appending, a file of at least maxSize bytes is renamed to its rolled name, and
    // PruneLogs(path, maxNum) runs. An empty path does nothing. Failures cost the text.
    static void
    FlushToFile(const std::string &path, const std::string &text, int maxSize, int maxNum);
    // Deletes the oldest files named "<stem>_*<ext>" (stem and ext split at the last ".") beyond
    // the newest maxNum. A negative maxNum deletes every "<stem>*<ext>", the log itself included.
    // An empty path does nothing; failures are ignored.
    static void PruneLogs(const std::string &path, int maxNum);
    // "<stem>_YYYYMMDD_HHMMSSmmm<ext>" of the local time of when.
    static std::string RolledLogName(const std::string &path,
                                     std::chrono::system_clock::time_point when);
    // "MM/DD hh:mm:ss.mmm <pid> <prefix><message>" of the local time of when.
    static std::string FormatLogLine(std::chrono::system_clock::time_point when,
                                     uint32_t pid,
                                     const std::string &prefix,
                                     const std::string &message);

    // The configured values (fixed after construction; any thread).
    const std::string &path() const { return m_path; }
    const std::string &product() const { return m_product; }
    uint32_t processId() const { return m_processId; }
    int32_t clear() const { return m_clear; }
    int32_t maxSize() const { return m_maxSize; }
    int32_t maxNum() const { return m_maxNum; }
    int32_t writeSize() const { return m_writeSize; }
    int32_t writeInterval() const { return m_writeInterval; }

private:
    friend void Log(const char *format, ...);

    void readConfig(const std::string &configPath);
    // Formats the line and appends it to the buffer; called by Log with its arguments.
    void append(const char *format, va_list args);
    void writerLoop();
    // Takes the buffer if force, or if the interval has passed or the write size is reached,
    // and writes it. Returns whether a write round happened.
    bool writeRound(bool force, int ticks);
    void checkWatchedProcess();

    std::mutex m_lock;    // guards m_buffer
    std::string m_buffer; // lines not yet written
    // Held from taking a block out of the buffer until it is in the file, so that blocks of
    // this logger reach the file in the order of the lines.
    std::mutex m_flushLock;
    uint32_t m_processId = 0;
    std::string m_path;
    std::string m_product;
    std::thread m_thread;
    std::mutex m_stopLock; // guards m_stopRequested
    std::condition_variable m_stopEvent;
    bool m_stopRequested = false;
    int32_t m_clear = 0;
    int32_t m_maxSize = 1048576;
    int32_t m_maxNum = 100;
    int32_t m_writeSize = 1048576;
    int32_t m_writeInterval = 60;
    // A process whose end is reported through m_exitCallback(pid, m_exitCallbackArg). Nothing
    // sets them at present; the writer thread checks them each round.
    int32_t m_watchedProcess = 0;
    std::function<void(int32_t, int32_t)> m_exitCallback;
    int32_t m_exitCallbackArg = 0;
};

} // namespace core
