// Stopping the command-line front end with a signal while it works, as Ctrl-C would.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace testsupport {

// How the stop signals stand when the front end starts: as in the test; ignored, as a shell starts
// a background job; or blocked, so that one sent at once waits until the program handles it.
enum class StopSignalsAtStart { AsInTest, Ignored, Blocked };

// How a run of the command-line front end that was to get a signal ended.
struct SignalledRun
{
    bool endedEarly = false; // the program ended before it was ready, and got no signal
    int exitCode = -1;       // exit status, or 128 + signal number
    std::string out;         // what it wrote to standard output
    std::string err;         // what it wrote to standard error
};

// Starts the command-line front end with args (its output is collected), polls ready()
// until it holds, then sends sig and waits for the program's end. Fails the current test when
// the program cannot be started.
SignalledRun SignalCliWhenReady(const std::vector<std::string> &args,
                                int sig,
                                const std::function<bool()> &ready,
                                StopSignalsAtStart start = StopSignalsAtStart::AsInTest);

// The same with ready(pid) given the program's process id.
SignalledRun SignalCliWhenReadyPid(const std::vector<std::string> &args,
                                   int sig,
                                   const std::function<bool(pid_t)> &ready,
                                   StopSignalsAtStart start);

// The process catches sig (its handler is installed): /proc/PID/status, "SigCgt".
bool CatchesSignal(pid_t pid, int sig);

} // namespace testsupport
