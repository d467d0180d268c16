// Stopping the command-line front end with a signal while it works, as Ctrl-C would.
#include "support/cli_signal.h"

#include <chrono>
#include <csignal>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/test_support.h"

extern char **environ;

namespace testsupport {
namespace {

// Starts the CLI without waiting; its output goes to the files outPath and errPath.
pid_t SpawnCli(const std::vector<std::string> &args,
               const std::string &outPath,
               const std::string &errPath,
               StopSignalsAtStart start)
{
    std::vector<std::string> all{TW_CLI_PATH};
    all.insert(all.end(), args.begin(), args.end());
    std::vector<char *> argv;
    for (std::string &a : all) {
        argv.push_back(a.data());
    }
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, outPath.c_str(), O_WRONLY | O_CREAT, 0644);
    posix_spawn_file_actions_addopen(&actions, 2, errPath.c_str(), O_WRONLY | O_CREAT, 0644);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t stops;
    sigemptyset(&stops);
    sigaddset(&stops, SIGINT);
    sigaddset(&stops, SIGTERM);
    if (start == StopSignalsAtStart::Blocked) {
        posix_spawnattr_setsigmask(&attributes, &stops);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    }
    // An ignored signal stays ignored across exec; the test's own disposition is put back.
    struct sigaction ignore = {};
    ignore.sa_handler = SIG_IGN;
    struct sigaction oldInt = {};
    struct sigaction oldTerm = {};
    if (start == StopSignalsAtStart::Ignored) {
        sigaction(SIGINT, &ignore, &oldInt);
        sigaction(SIGTERM, &ignore, &oldTerm);
    }
    pid_t pid = 0;
    int rc = posix_spawn(&pid, argv[0], &actions, &attributes, argv.data(), environ);
    if (start == StopSignalsAtStart::Ignored) {
        sigaction(SIGINT, &oldInt, nullptr);
        sigaction(SIGTERM, &oldTerm, nullptr);
    }
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return rc == 0 ? pid : -1;
}

} // namespace

bool CatchesSignal(pid_t pid, int sig)
{
    const std::string status = ReadFile("/proc/" + std::to_string(pid) + "/status");
    const size_t at = status.find("SigCgt:\t");
    if (at == std::string::npos) {
        return false;
    }
    const unsigned long long caught = std::stoull(status.substr(at + 8, 16), nullptr, 16);
    return (caught >> (sig - 1) & 1) != 0;
}

SignalledRun SignalCliWhenReady(const std::vector<std::string> &args,
                                int sig,
                                const std::function<bool()> &ready,
                                StopSignalsAtStart start)
{
    return SignalCliWhenReadyPid(
        args, sig, [&ready](pid_t) { return ready(); }, start);
}

SignalledRun SignalCliWhenReadyPid(const std::vector<std::string> &args,
                                   int sig,
                                   const std::function<bool(pid_t)> &ready,
                                   StopSignalsAtStart start)
{
    SignalledRun run;
    TempDir outputs;
    pid_t cli = SpawnCli(args, outputs.file("out.txt"), outputs.file("err.txt"), start);
    EXPECT_GT(cli, 0);
    int status = 0;
    while (!ready(cli)) {
        if (waitpid(cli, &status, WNOHANG) == cli) {
            run.endedEarly = true;
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    if (!run.endedEarly) {
        kill(cli, sig);
        waitpid(cli, &status, 0);
    }
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    run.out = ReadFile(outputs.file("out.txt"));
    run.err = ReadFile(outputs.file("err.txt"));
    return run;
}

} // namespace testsupport
