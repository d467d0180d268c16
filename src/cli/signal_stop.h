// Ctrl-C and termination requests of the command line, turned into a stop request.
#pragma once

#include <functional>

namespace cli {

// From the first call on, for the rest of the process, SIGINT and SIGTERM do not end the process:
// they set the stop request and call the listeners (SignalStop). main calls it before anything
// else, so that a stop at any moment is kept, also one that arrives before a command has begun
// or between its steps. The two signals are unblocked too: a program started with them blocked
// gets one that is pending at once. Later calls do nothing; any thread.
void InstallStopSignals();

// A stop signal has arrived since InstallStopSignals. Any thread, also a signal handler.
bool StopSignalled();

// A listener for the stop signals while it lives: onStop runs once, on the signal watcher's
// thread at the first signal, or at once on the constructing thread when a signal has arrived
// before. The destructor waits for a call that is running. Installs the handling if it is not.
class SignalStop
{
public:
    // onStop may be empty; it must not make or end a SignalStop.
    explicit SignalStop(std::function<void()> onStop = {});
    ~SignalStop();
    SignalStop(const SignalStop &) = delete;
    SignalStop &operator=(const SignalStop &) = delete;

    // A signal has arrived, before or while this listener lived. Any thread.
    bool StopRequested() const { return StopSignalled(); }

private:
    friend void NotifyStopListeners();
    std::function<void()> m_onStop;
};

} // namespace cli
