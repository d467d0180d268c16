// Child processes on POSIX: fork and exec without a shell, one pipe for both outputs, process
// group, parent-death signal, kill on demand with a remembered exit code.
#include "engine/child_process.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

#ifndef CLOSE_RANGE_CLOEXEC
#define CLOSE_RANGE_CLOEXEC (1U << 2)
#endif

namespace engine {
namespace {

// The scan pushes raw frames through the pipe; a large pipe lets the tool run ahead.
constexpr int kPipeSizeWanted = 0x400000;
constexpr int kPipeSizeLeast = 0x10000;
// How long a read waits on an empty pipe before it looks at the stop flag again.
constexpr int kStopPollMs = 100;

int PipeSizeLimit()
{
    static const int limit = [] {
        std::ifstream in("/proc/sys/fs/pipe-max-size");
        long value = 0;
        if (!(in >> value) || value <= 0) {
            return kPipeSizeLeast;
        }
        return static_cast<int>(std::min<long>(value, kPipeSizeWanted));
    }();
    return limit;
}

// Raises the pipe towards 4 MiB. Above a user's quota the kernel refuses; smaller sizes are
// tried then, and the default size stays when none is granted.
void RaisePipeSize(int fd)
{
    for (int size = PipeSizeLimit(); size >= kPipeSizeLeast; size /= 2) {
        if (fcntl(fd, F_SETPIPE_SZ, size) >= 0) {
            return;
        }
    }
}

// The places where the tool may be, in the order of PATH.
std::vector<std::string> ProgramCandidates(const std::string &name)
{
    if (name.find('/') != std::string::npos) {
        return {name};
    }
    const char *env = std::getenv("PATH");
    std::string path = (env != nullptr && *env != '\0') ? env : "/usr/local/bin:/usr/bin:/bin";
    std::vector<std::string> result;
    size_t start = 0;
    for (;;) {
        size_t end = path.find(':', start);
        std::string dir = path.substr(start, end == std::string::npos ? end : end - start);
        result.push_back((dir.empty() ? std::string(".") : dir) + "/" + name);
        if (end == std::string::npos) {
            return result;
        }
        start = end + 1;
    }
}

// This process's environment with the extra entries replacing those of the same name.
std::vector<std::string> ChildEnvironment(const std::vector<std::string> &extra)
{
    std::vector<std::string> result;
    for (char **p = environ; p != nullptr && *p != nullptr; ++p) {
        std::string entry = *p;
        std::string name = entry.substr(0, entry.find('='));
        bool replaced = std::any_of(extra.begin(), extra.end(), [&name](const std::string &e) {
            return e.compare(0, name.size() + 1, name + "=") == 0;
        });
        if (!replaced) {
            result.push_back(entry);
        }
    }
    result.insert(result.end(), extra.begin(), extra.end());
    return result;
}

std::vector<char *> PointerArray(std::vector<std::string> &strings)
{
    std::vector<char *> result;
    for (std::string &s : strings) {
        result.push_back(s.data());
    }
    result.push_back(nullptr);
    return result;
}

// Everything the child needs, prepared before fork: after fork only async-signal-safe calls.
struct ExecPlan
{
    std::vector<std::string> programs;
    std::vector<std::string> args;
    std::vector<std::string> env;
    std::vector<char *> programPtrs;
    std::vector<char *> argv;
    std::vector<char *> envp;
    struct sigaction defaultAction;
    sigset_t emptySet;
};

[[noreturn]] void RunChild(ExecPlan &plan, pid_t parent, int devNull, int outWrite, int errWrite)
{
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
        _exit(127); // the parent is already gone: the signal above would never come
    }
    sigprocmask(SIG_SETMASK, &plan.emptySet, nullptr);
    for (int sig = 1; sig < NSIG; ++sig) {
        sigaction(sig, &plan.defaultAction, nullptr); // ignored signals would stay ignored
    }
    dup2(devNull, 0);
    dup2(outWrite, 1);
    dup2(outWrite, 2);
    // Descriptors that another thread opened without close-on-exec must not reach the tool:
    // a stray copy of another pipe's write end would keep that pipe from ending.
    syscall(SYS_close_range, 3U, ~0U, CLOSE_RANGE_CLOEXEC);
    int error = ENOENT;
    for (char **program = plan.programPtrs.data(); *program != nullptr; ++program) {
        execve(*program, plan.argv.data(), plan.envp.data());
        if (errno == EACCES) {
            error = EACCES;
        } else if (errno != ENOENT && errno != ENOTDIR) {
            error = errno;
            break;
        }
    }
    ssize_t written = write(errWrite, &error, sizeof error);
    (void)written;
    _exit(127);
}

void CloseFd(int &fd)
{
    if (fd >= 0) {
        close(fd);
        fd = -1;
    }
}

void PreparePlan(ExecPlan &plan, const std::vector<std::string> &extraEnv)
{
    plan.programs = ProgramCandidates(plan.args[0]);
    plan.env = ChildEnvironment(extraEnv);
    plan.programPtrs = PointerArray(plan.programs);
    plan.argv = PointerArray(plan.args);
    plan.envp = PointerArray(plan.env);
    std::memset(&plan.defaultAction, 0, sizeof plan.defaultAction);
    plan.defaultAction.sa_handler = SIG_DFL;
    sigemptyset(&plan.emptySet);
}

// The descriptors of one start: the output pipe, the pipe that reports a failed exec, and
// /dev/null for standard input. All close-on-exec; what is left open is closed at the end.
struct ChildPipes
{
    int out[2] = {-1, -1};
    int err[2] = {-1, -1};
    int devNull = -1;

    ~ChildPipes() { CloseAll(); }

    void CloseAll()
    {
        for (int *fd : {&out[0], &out[1], &err[0], &err[1], &devNull}) {
            CloseFd(*fd);
        }
    }

    bool Open()
    {
        if (pipe2(out, O_CLOEXEC) == 0 && pipe2(err, O_CLOEXEC) == 0 &&
            (devNull = open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0 && AboveStandard(out[0]) &&
            AboveStandard(out[1]) && AboveStandard(err[1]) && AboveStandard(devNull)) {
            return true;
        }
        int saved = errno;
        CloseAll();
        errno = saved;
        return false;
    }

    // A process started with a standard descriptor closed gets it back from pipe2 or open;
    // such a descriptor would be overwritten by the child's own redirections.
    static bool AboveStandard(int &fd)
    {
        if (fd > 2) {
            return true;
        }
        int moved = fcntl(fd, F_DUPFD_CLOEXEC, 3);
        if (moved < 0) {
            return false;
        }
        close(fd);
        fd = moved;
        return true;
    }

    // The parent's copies of the ends that the child uses, closed so that the reader sees the
    // end of the pipe when the child ends.
    void CloseChildEnds()
    {
        CloseFd(out[1]);
        CloseFd(err[1]);
        CloseFd(devNull);
    }
};

// Waits for the exec of the child: 0 when it succeeded (the report pipe closed on exec), or
// the errno the child reported, after reaping it.
int AwaitExec(pid_t pid, int errRead)
{
    int childError = 0;
    ssize_t n = 0;
    do {
        n = read(errRead, &childError, sizeof childError);
    } while (n < 0 && errno == EINTR);
    if (n != static_cast<ssize_t>(sizeof childError)) {
        return 0;
    }
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return childError != 0 ? childError : ENOENT;
}

} // namespace

ChildProcess::~ChildProcess()
{
    Reset();
}

ChildProcess::ChildProcess(ChildProcess &&other) noexcept
{
    *this = std::move(other);
}

ChildProcess &ChildProcess::operator=(ChildProcess &&other) noexcept
{
    if (this != &other) {
        Reset();
        m_extraEnv = std::move(other.m_extraEnv);
        m_stopFlag = std::exchange(other.m_stopFlag, nullptr);
        m_stopCode = std::exchange(other.m_stopCode, 0);
        m_pid = std::exchange(other.m_pid, 0);
        m_readFd = std::exchange(other.m_readFd, -1);
        m_reaped = std::exchange(other.m_reaped, false);
        m_killed = std::exchange(other.m_killed, false);
        m_killCode = std::exchange(other.m_killCode, 0);
        m_exitCode = std::exchange(other.m_exitCode, 0);
    }
    return *this;
}

void ChildProcess::Reset()
{
    if (m_pid > 0 && !m_reaped) {
        Kill(-2);
        Wait();
    }
    CloseFd(m_readFd);
}

void ChildProcess::SetExtraEnvironment(std::vector<std::string> entries)
{
    m_extraEnv = std::move(entries);
}

int ChildProcess::Start(const std::string &commandText)
{
    ExecPlan plan;
    plan.args = SplitCommandText(commandText);
    if (plan.args.empty() || m_pid != 0) {
        errno = plan.args.empty() ? ENOENT : EBUSY;
        return -1;
    }
    PreparePlan(plan, m_extraEnv);
    ChildPipes pipes;
    if (!pipes.Open()) {
        return -1;
    }
    RaisePipeSize(pipes.out[0]);
    pid_t parent = getpid();
    pid_t pid = fork();
    if (pid == 0) {
        RunChild(plan, parent, pipes.devNull, pipes.out[1], pipes.err[1]);
    }
    int forkError = errno;
    pipes.CloseChildEnds();
    if (pid < 0) {
        errno = forkError;
        return -1;
    }
    setpgid(pid, pid); // also here, so that a kill right after Start reaches the group
    int execError = AwaitExec(pid, pipes.err[0]);
    if (execError != 0) {
        errno = execError;
        return -1;
    }
    m_pid = pid;
    m_readFd = std::exchange(pipes.out[0], -1);
    // Reads never block for long: an empty pipe is waited for in slices (see Read).
    fcntl(m_readFd, F_SETFL, fcntl(m_readFd, F_GETFL) | O_NONBLOCK);
    return 0;
}

void ChildProcess::SetStopFlag(const std::atomic<int> *flag, int stopCode)
{
    m_stopFlag = flag;
    m_stopCode = stopCode;
}

long ChildProcess::Read(void *buffer, unsigned long size)
{
    if (m_readFd < 0) {
        return -1;
    }
    for (;;) {
        ssize_t n = read(m_readFd, buffer, size);
        if (n >= 0 || errno == EINTR) {
            if (n >= 0) {
                return static_cast<long>(n);
            }
            continue;
        }
        if (errno != EAGAIN && errno != EWOULDBLOCK) {
            return -1;
        }
        // The pipe is empty: wait for it in short slices, so that a stop reaches a silent tool.
        if (m_stopFlag != nullptr && *m_stopFlag != 0) {
            Kill(m_stopCode);
        }
        pollfd entry{m_readFd, POLLIN, 0};
        poll(&entry, 1, kStopPollMs);
    }
}

void ChildProcess::Kill(int exitCode)
{
    if (m_pid <= 0 || m_reaped || m_killed) {
        return;
    }
    int status = 0;
    if (waitpid(m_pid, &status, WNOHANG) == m_pid) {
        ReapStatus(status); // it ended by itself: its own exit code stands
        return;
    }
    kill(-m_pid, SIGKILL);
    m_killed = true;
    m_killCode = exitCode;
}

int ChildProcess::Wait()
{
    // Closing first: a child that still writes gets an error instead of a full pipe.
    CloseFd(m_readFd);
    if (m_pid <= 0) {
        return -1;
    }
    if (!m_reaped) {
        int status = 0;
        pid_t r = 0;
        do {
            r = waitpid(m_pid, &status, 0);
        } while (r < 0 && errno == EINTR);
        if (r == m_pid) {
            ReapStatus(status);
        } else {
            m_reaped = true;
            m_exitCode = -1;
        }
    }
    return m_killed ? m_killCode : m_exitCode;
}

void ChildProcess::ReapStatus(int status)
{
    m_reaped = true;
    if (WIFEXITED(status)) {
        m_exitCode = WEXITSTATUS(status);
    } else if (WIFSIGNALED(status)) {
        m_exitCode = 128 + WTERMSIG(status);
    } else {
        m_exitCode = -1;
    }
}

} // namespace engine
