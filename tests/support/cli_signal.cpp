// Stopping the command-line front end with a signal while it works, as Ctrl-C would.
#include "support/cli_signal.h"

#include <chrono>
#include <csignal>
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
               const std::string &errPath)
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
    pid_t pid = 0;
    int rc = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return rc == 0 ? pid : -1;
}

} // namespace

SignalledRun SignalCliWhenReady(const std::vector<std::string> &args,
                                int sig,
                                const std::function<bool()> &ready)
{
    SignalledRun run;
    TempDir outputs;
    pid_t cli = SpawnCli(args, outputs.file("out.txt"), outputs.file("err.txt"));
    EXPECT_GT(cli, 0);
    int status = 0;
    while (!ready()) {
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
