// Ctrl-C and termination requests of the command line, turned into a stop request.
#pragma once

#include <atomic>
#include <functional>
#include <thread>

namespace cli {

// While it lives, SIGINT and SIGTERM do not end the process: they set a stop request and call
// onStop. The handler only writes one byte to a pipe (async-signal-safe); a watcher thread reads
// it and does the rest, so onStop may do anything a thread may do. One instance at a time.
class SignalStop
{
public:
    // onStop runs on the watcher thread, once, at the first signal; may be empty.
    explicit SignalStop(std::function<void()> onStop = {});
    // Restores the previous handlers and ends the watcher thread.
    ~SignalStop();
    SignalStop(const SignalStop &) = delete;
    SignalStop &operator=(const SignalStop &) = delete;

    // A signal has arrived. Any thread.
    bool StopRequested() const { return m_signal != 0; }

private:
    void Watch();

    std::function<void()> m_onStop;
    std::atomic<int> m_signal{0};
    int m_readFd = -1;
    std::thread m_watcher;
};

} // namespace cli
