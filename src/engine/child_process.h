// Child processes of the media tools: the command-text splitter and the one class that forks.
#pragma once

#include <atomic>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace engine {

// Splits a command text into arguments by the rule of the Windows C runtime, the rule the
// command texts are written for:
// - blanks and tabs outside double quotes separate arguments;
// - a double quote starts or ends a quoted part and is removed; inside a quoted part a pair
//   of double quotes gives one literal double quote and stays inside the part;
// - 2n backslashes before a double quote give n backslashes, and the quote acts as above;
//   2n+1 backslashes before a double quote give n backslashes and a literal double quote;
// - backslashes not followed by a double quote stand for themselves.
// The program name, the first argument, follows the runtime's own rule for it: double quotes
// group and are removed, backslashes are plain characters. Blanks before it are skipped.
std::vector<std::string> SplitCommandText(const std::string &commandText);

// The first of paths that does not come out of SplitCommandText(commandText) as one whole
// argument, or that the path check refuses; none when every path is carried intact. A path
// with a double quote, for example, would split into several arguments and give the tool
// options of its own.
std::optional<std::string> PathNotCarried(const std::string &commandText,
                                          const std::vector<std::string> &paths);

// One running tool with standard output and standard error on one pipe. The tool is found on
// PATH (or taken as given when its name holds a "/"), never through a shell. It reads
// /dev/null as standard input, runs in its own process group, and is killed when the thread
// that started it ends: so a ChildProcess is started by the thread that also reads and waits
// for it, and belongs to that thread.
class ChildProcess
{
public:
    ChildProcess() = default;
    // Kills and reaps a child that is still there; closes the pipe.
    ~ChildProcess();
    ChildProcess(ChildProcess &&other) noexcept;
    ChildProcess &operator=(ChildProcess &&other) noexcept;
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    // Extra "NAME=value" entries for the child's environment, on top of this process's.
    // Set before Start.
    void SetExtraEnvironment(std::vector<std::string> entries);

    // Starts the tool of the command text. 0 when it runs; -1 when it could not be started,
    // with errno telling why (ENOENT: no such tool). A ChildProcess is started once.
    int Start(const std::string &commandText);

    // A flag that asks for a stop while Read waits: once it is non-zero, Read kills the child
    // with stopCode (as Kill does) and goes on reading what is left in the pipe. The flag is
    // looked at whenever the pipe has been empty for 100 ms, so a stop reaches a tool that
    // writes nothing within that time. Set before Start; the flag must outlive the child.
    void SetStopFlag(const std::atomic<int> *flag, int stopCode);

    // One read(2) from the pipe, repeated on EINTR and while the pipe is empty: bytes read, 0
    // at the end of the pipe, -1 on error.
    long Read(void *buffer, unsigned long size);

    // Kills the whole process group with SIGKILL and remembers exitCode as the result of
    // Wait. Does nothing after Wait, nor when the child has already ended by itself (its own
    // exit code then stands), nor a second time.
    void Kill(int exitCode);

    // Waits for the child and closes the pipe. Returns the remembered code if Kill killed it,
    // else its exit status, else 128 + the signal that ended it. Repeated calls return the
    // same value.
    int Wait();

    // The child's process id (also its process group), 0 when none was started.
    pid_t Pid() const { return m_pid; }
    // The read end of the pipe, -1 when none.
    int ReadFd() const { return m_readFd; }

private:
    void Reset();
    void ReapStatus(int status);

    std::vector<std::string> m_extraEnv;
    const std::atomic<int> *m_stopFlag = nullptr;
    int m_stopCode = 0;
    pid_t m_pid = 0;
    int m_readFd = -1;
    bool m_reaped = false;
    bool m_killed = false;
    int m_killCode = 0;
    int m_exitCode = 0;
};

} // namespace engine
