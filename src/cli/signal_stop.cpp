// Ctrl-C and termination requests of the command line: a self-pipe handler installed once for the
// process, and a watcher thread that tells the listeners.
#include "cli/signal_stop.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

namespace cli {

// Tells every listener of the first stop signal, once.
void NotifyStopListeners();

namespace {

// Written by the handler, so lock-free atomics only.
std::atomic<int> g_signal{0};   // the first stop signal; 0: none yet
std::atomic<int> g_writeFd{-1}; // write end of the watcher's pipe

std::once_flag g_installed;

// Guards the listeners and g_notified: a listener is told exactly once, by the watcher or by its
// own constructor, and never after its destructor has taken the lock.
std::mutex g_listenerMutex;
std::vector<SignalStop *> g_listeners;
bool g_notified = false; // the watcher has told the listeners of its time

static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void OnStopSignal(int sig)
{
    const int saved = errno;
    int expected = 0;
    g_signal.compare_exchange_strong(expected, sig);
    const int fd = g_writeFd.load();
    if (fd >= 0) {
        const char c = 1;
        ssize_t n = write(fd, &c, 1);
        (void)n; // a full pipe already holds a wake-up
    }
    errno = saved;
}

void Watch(int readFd)
{
    for (;;) {
        char c = 0;
        const ssize_t n = read(readFd, &c, 1);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            return;
        }
        NotifyStopListeners();
    }
}

void Install()
{
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) == 0) {
        // The handler must never block on a full pipe.
        fcntl(fds[1], F_SETFL, fcntl(fds[1], F_GETFL) | O_NONBLOCK);
        g_writeFd = fds[1];
        // The watcher lives as long as the process; it sleeps in read.
        std::thread(Watch, fds[0]).detach();
    }
    struct sigaction action;
    std::memset(&action, 0, sizeof action);
    action.sa_handler = OnStopSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    // Also over an inherited "ignore": a shell starts a background job with SIGINT ignored.
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    sigset_t stops;
    sigemptyset(&stops);
    sigaddset(&stops, SIGINT);
    sigaddset(&stops, SIGTERM);
    pthread_sigmask(SIG_UNBLOCK, &stops, nullptr);
}

} // namespace

void NotifyStopListeners()
{
    std::lock_guard<std::mutex> lock(g_listenerMutex);
    if (g_notified || g_signal == 0) {
        return;
    }
    g_notified = true;
    for (SignalStop *listener : g_listeners) {
        if (listener->m_onStop) {
            listener->m_onStop();
        }
    }
}

void InstallStopSignals()
{
    std::call_once(g_installed, Install);
}

bool StopSignalled()
{
    return g_signal != 0;
}

SignalStop::SignalStop(std::function<void()> onStop)
    : m_onStop(std::move(onStop))
{
    InstallStopSignals();
    std::lock_guard<std::mutex> lock(g_listenerMutex);
    g_listeners.push_back(this);
    // A stop before this listener: tell it now, unless the watcher is still to tell everyone.
    if (g_notified && m_onStop) {
        m_onStop();
    }
}

SignalStop::~SignalStop()
{
    std::lock_guard<std::mutex> lock(g_listenerMutex);
    g_listeners.erase(std::remove(g_listeners.begin(), g_listeners.end(), this), g_listeners.end());
}

} // namespace cli
