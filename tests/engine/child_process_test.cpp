// Tests of the child process: one pipe for both outputs, /dev/null input, own process group,
// pipe size, start failures, kill with a remembered code, reaping, and the child's signals.
#include "engine/child_process.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fstream>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/test_support.h"

namespace {

using engine::ChildProcess;

std::string ReadAll(ChildProcess &child)
{
    std::string text;
    char buf[512];
    long n = 0;
    while ((n = child.Read(buf, sizeof buf)) > 0) {
        text.append(buf, static_cast<size_t>(n));
    }
    return text;
}

// Waits (without reaping) until the child has ended.
void AwaitEnd(pid_t pid)
{
    for (;;) {
        siginfo_t info{};
        if (waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
            info.si_pid == pid) {
            return;
        }
        usleep(1000);
    }
}

TEST(ChildProcess, ReadsOutputAndExitCode)
{
    ChildProcess child;
    ASSERT_EQ(child.Start("printf \"a b%s\" c"), 0);
    EXPECT_EQ(ReadAll(child), "a bc");
    EXPECT_EQ(child.Wait(), 0);
    EXPECT_EQ(child.Wait(), 0);
}

TEST(ChildProcess, ReportsTheToolsExitStatus)
{
    ChildProcess child;
    ASSERT_EQ(child.Start("false"), 0);
    ReadAll(child);
    EXPECT_EQ(child.Wait(), 1);
}

TEST(ChildProcess, StandardErrorSharesThePipe)
{
    ChildProcess child;
    ASSERT_EQ(child.Start("ls -d / /tw-no-such-folder"), 0);
    std::string text = ReadAll(child);
    EXPECT_NE(text.find("/\n"), std::string::npos) << text;
    EXPECT_NE(text.find("tw-no-such-folder"), std::string::npos) << text;
    EXPECT_EQ(child.Wait(), 2);
}

TEST(ChildProcess, StandardInputIsDevNull)
{
    ChildProcess child;
    ASSERT_EQ(child.Start("readlink /proc/self/fd/0"), 0);
    EXPECT_EQ(ReadAll(child), "/dev/null\n");
    EXPECT_EQ(child.Wait(), 0);
}

TEST(ChildProcess, RunsInItsOwnProcessGroup)
{
    ChildProcess child;
    ASSERT_EQ(child.Start("cat /proc/self/stat"), 0);
    std::string stat = ReadAll(child);
    child.Wait();
    // "pid (comm) state ppid pgrp ..."
    size_t close = stat.rfind(')');
    ASSERT_NE(close, std::string::npos);
    int ppid = 0;
    int pgrp = 0;
    char state = 0;
    ASSERT_EQ(sscanf(stat.c_str() + close + 1, " %c %d %d", &state, &ppid, &pgrp), 3);
    EXPECT_EQ(pgrp, child.Pid());
    EXPECT_EQ(ppid, getpid());
}

TEST(ChildProcess, PipeIsRaisedTowardsFourMebibytes)
{
    long limit = 0;
    std::ifstream("/proc/sys/fs/pipe-max-size") >> limit;
    ChildProcess child;
    ASSERT_EQ(child.Start("true"), 0);
    EXPECT_EQ(fcntl(child.ReadFd(), F_GETPIPE_SZ), std::min(limit, 0x400000L));
    child.Wait();
}

TEST(ChildProcess, MissingToolFailsWithNoSuchFile)
{
    ChildProcess child;
    errno = 0;
    EXPECT_EQ(child.Start("tw-no-such-tool-h5 -version"), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(child.Pid(), 0);
}

TEST(ChildProcess, FileThatIsNoProgramFailsWithItsReason)
{
    testsupport::TempDir dir;
    std::string path = dir.file("plain.txt");
    ASSERT_TRUE(testsupport::WriteFile(path, "not a program"));
    ChildProcess child;
    errno = 0;
    EXPECT_EQ(child.Start("\"" + path + "\""), -1);
    EXPECT_EQ(errno, EACCES);
}

TEST(ChildProcess, KillGivesTheRememberedExitCode)
{
    ChildProcess child;
    ASSERT_EQ(child.Start("sleep 30.5171"), 0);
    child.Kill(-2);
    ReadAll(child);
    EXPECT_EQ(child.Wait(), -2);
    EXPECT_EQ(testsupport::CountProcessesWith("sleep 30.5171"), 0);
}

TEST(ChildProcess, KillAfterTheChildEndedKeepsItsOwnExitCode)
{
    ChildProcess child;
    ASSERT_EQ(child.Start("false"), 0);
    ReadAll(child);
    AwaitEnd(child.Pid());
    child.Kill(-2);
    EXPECT_EQ(child.Wait(), 1);
}

TEST(ChildProcess, EndBySignalGives128PlusTheSignal)
{
    ChildProcess child;
    ASSERT_EQ(child.Start("sleep 30.5172"), 0);
    kill(child.Pid(), SIGTERM);
    ReadAll(child);
    EXPECT_EQ(child.Wait(), 128 + SIGTERM);
}

TEST(ChildProcess, DestructorKillsAndReapsARunningChild)
{
    pid_t pid = 0;
    {
        ChildProcess child;
        ASSERT_EQ(child.Start("sleep 30.5173"), 0);
        pid = child.Pid();
        ASSERT_EQ(testsupport::CountProcessesWith("sleep 30.5173"), 1);
    }
    EXPECT_EQ(testsupport::CountProcessesWith("sleep 30.5173"), 0);
    EXPECT_EQ(kill(pid, 0), -1); // reaped: no zombie left
}

TEST(ChildProcess, MovedChildStaysTheSameChild)
{
    ChildProcess first;
    ASSERT_EQ(first.Start("printf moved"), 0);
    pid_t pid = first.Pid();
    ChildProcess second(std::move(first));
    EXPECT_EQ(first.Pid(), 0);
    EXPECT_EQ(second.Pid(), pid);
    EXPECT_EQ(ReadAll(second), "moved");
    EXPECT_EQ(second.Wait(), 0);
}

TEST(ChildProcess, ExtraEnvironmentReachesTheChild)
{
    ChildProcess child;
    child.SetExtraEnvironment({"TW_H5_TEST=ビデオ 1"});
    ASSERT_EQ(child.Start("printenv TW_H5_TEST"), 0);
    EXPECT_EQ(ReadAll(child), "ビデオ 1\n");
    child.Wait();
}

TEST(ChildProcess, ChildStartsWithNoBlockedOrIgnoredSignals)
{
    sigset_t block;
    sigemptyset(&block);
    sigaddset(&block, SIGUSR2);
    sigset_t old;
    pthread_sigmask(SIG_BLOCK, &block, &old);
    struct sigaction ignore
    {
    };
    ignore.sa_handler = SIG_IGN;
    struct sigaction oldAction
    {
    };
    sigaction(SIGUSR1, &ignore, &oldAction);

    ChildProcess child;
    ASSERT_EQ(child.Start("grep -E \"^Sig(Blk|Ign):\" /proc/self/status"), 0);
    std::string text = ReadAll(child);
    child.Wait();
    sigaction(SIGUSR1, &oldAction, nullptr);
    pthread_sigmask(SIG_SETMASK, &old, nullptr);
    EXPECT_EQ(text, "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
}

TEST(ChildProcess, WorksWhenTheParentsStandardDescriptorsAreClosed)
{
    int saved[3];
    for (int fd = 0; fd < 3; ++fd) {
        saved[fd] = fcntl(fd, F_DUPFD_CLOEXEC, 10);
        close(fd);
    }
    std::string text;
    int started = -1;
    int exitCode = -1;
    {
        ChildProcess child;
        started = child.Start("readlink /proc/self/fd/0");
        if (started == 0) {
            text = ReadAll(child);
            exitCode = child.Wait();
        }
    }
    for (int fd = 0; fd < 3; ++fd) {
        dup2(saved[fd], fd);
        close(saved[fd]);
    }
    EXPECT_EQ(started, 0);
    EXPECT_EQ(text, "/dev/null\n");
    EXPECT_EQ(exitCode, 0);
}

TEST(ChildProcess, PathWithSpacesAndNonAsciiArrivesIntact)
{
    ChildProcess child;
    ASSERT_EQ(child.Start("printf %s \"clip dir/ビデオ 1.mp4\""), 0);
    EXPECT_EQ(ReadAll(child), "clip dir/ビデオ 1.mp4");
    child.Wait();
}

} // namespace
