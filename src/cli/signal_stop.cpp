// Ctrl-C and termination requests of the command line: self-pipe handler and watcher thread.
#include "cli/signal_stop.h"

#include <cerrno>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace cli {
namespace {

// Write end of the pipe for the handler; lock-free, so the handler may read it.
std::atomic<int> g_writeFd{-1};
struct sigaction g_oldInt;
struct sigaction g_oldTerm;

extern "C" void OnSignal(int sig)
{
    int saved = errno;
    int fd = g_writeFd.load();
    if (fd >= 0) {
        char c = static_cast<char>(sig);
        ssize_t n = write(fd, &c, 1);
        (void)n;
    }
    errno = saved;
}

} // namespace

SignalStop::SignalStop(std::function<void()> onStop)
    : m_onStop(std::move(onStop))
{
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0) {
        return; // no pipe: signals keep their old effect
    }
    m_readFd = fds[0];
    g_writeFd = fds[1];
    m_watcher = std::thread([this] { Watch(); });
    struct sigaction action;
    std::memset(&action, 0, sizeof action);
    action.sa_handler = OnSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, &g_oldInt);
    sigaction(SIGTERM, &action, &g_oldTerm);
}

SignalStop::~SignalStop()
{
    if (m_readFd < 0) {
        return;
    }
    sigaction(SIGINT, &g_oldInt, nullptr);
    sigaction(SIGTERM, &g_oldTerm, nullptr);
    int writeFd = g_writeFd.exchange(-1);
    char quit = 0; // a zero byte ends the watcher
    ssize_t n = 0;
    do {
        n = write(writeFd, &quit, 1);
    } while (n < 0 && errno == EINTR);
    m_watcher.join();
    close(writeFd);
    close(m_readFd);
}

void SignalStop::Watch()
{
    for (;;) {
        char c = 0;
        ssize_t n = read(m_readFd, &c, 1);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0 || c == 0) {
            return;
        }
        int expected = 0;
        if (m_signal.compare_exchange_strong(expected, static_cast<int>(c)) && m_onStop) {
            m_onStop();
        }
    }
}

} // namespace cli
