// Tests of the advisory job locks on a project and an output folder.
#include "core/job_lock.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "core/paths.h"
#include "support/test_support.h"

namespace {

using testsupport::ReadFile;
using testsupport::TempDir;

TEST(JobLock, SecondLockIsRefusedWithTheHoldersDescription)
{
    TempDir dir;
    const std::string path = core::ProjectLockPath(dir.file("clip.mp4.twproj"));
    core::JobLock first;
    std::string problem;
    ASSERT_TRUE(first.TryAcquire(path, "extract clip.mp4", &problem)) << problem;
    EXPECT_EQ(ReadFile(path), "process " + std::to_string(getpid()) + ": extract clip.mp4\n");

    core::JobLock second;
    EXPECT_FALSE(second.TryAcquire(path, "extract other.mp4", &problem));
    EXPECT_FALSE(second.Held());
    EXPECT_EQ(problem,
              "is in use by another job (process " + std::to_string(getpid()) +
                  ": extract clip.mp4)");
    // The refused job wrote nothing: the holder's text is intact.
    EXPECT_EQ(ReadFile(path), "process " + std::to_string(getpid()) + ": extract clip.mp4\n");
}

TEST(JobLock, ReleaseRemovesTheFileAndFreesTheLock)
{
    TempDir dir;
    const std::string path = core::FolderLockPath(dir.path());
    EXPECT_EQ(path, dir.path() + "/.tarnwickmp4.lock");
    {
        core::JobLock lock;
        ASSERT_TRUE(lock.TryAcquire(path, "a", nullptr));
        EXPECT_TRUE(std::filesystem::exists(path));
    }
    EXPECT_FALSE(std::filesystem::exists(path));
    core::JobLock again;
    EXPECT_TRUE(again.TryAcquire(path, "b", nullptr));
}

TEST(JobLock, FileLeftByAKilledHolderIsTakenOver)
{
    TempDir dir;
    const std::string path = dir.file("p.twproj.lock");
    pid_t child = fork();
    if (child == 0) {
        core::JobLock lock;
        lock.TryAcquire(path, "killed job", nullptr);
        _exit(lock.Held() ? 0 : 1); // ends without releasing: the file stays, the lock goes
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    ASSERT_TRUE(std::filesystem::exists(path));
    core::JobLock lock;
    std::string problem;
    EXPECT_TRUE(lock.TryAcquire(path, "next job", &problem)) << problem;
    EXPECT_EQ(ReadFile(path), "process " + std::to_string(getpid()) + ": next job\n");
}

TEST(JobLock, LockInAFolderThatCannotHoldFilesIsRefusedWithTheReason)
{
    TempDir dir;
    testsupport::WriteFile(dir.file("plain"), "x");
    const std::string path = core::FolderLockPath(dir.file("plain"));
    core::JobLock lock;
    std::string problem;
    EXPECT_FALSE(lock.TryAcquire(path, "job", &problem));
    EXPECT_EQ(problem, "cannot make the lock file " + path + ": Not a directory");
}

TEST(JobLock, LockHeldByAnotherProcessIsRefused)
{
    TempDir dir;
    const std::string path = dir.file("folder.lock");
    int ready[2];
    int finish[2];
    ASSERT_EQ(pipe(ready), 0);
    ASSERT_EQ(pipe(finish), 0);
    pid_t child = fork();
    if (child == 0) {
        core::JobLock lock;
        lock.TryAcquire(path, "other process", nullptr);
        char c = 'r';
        (void)!write(ready[1], &c, 1);
        (void)!read(finish[0], &c, 1); // holds the lock until told to end
        _exit(0);
    }
    char c = 0;
    ASSERT_EQ(read(ready[0], &c, 1), 1);
    core::JobLock lock;
    std::string problem;
    EXPECT_FALSE(lock.TryAcquire(path, "this process", &problem));
    EXPECT_EQ(problem,
              "is in use by another job (process " + std::to_string(child) + ": other process)");
    (void)!write(finish[1], &c, 1);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(lock.TryAcquire(path, "this process", &problem)) << problem;
}

TEST(JobLock, ProjectReachedThroughALinkIsLockedWhereItIs)
{
    TempDir dir;
    const std::string real = dir.file("clip.mp4.twproj");
    ASSERT_TRUE(testsupport::WriteFile(real, "{}"));
    std::filesystem::create_directory(dir.file("links"));
    std::filesystem::create_symlink("../clip.mp4.twproj", dir.file("links/other.twproj"));

    EXPECT_EQ(core::ProjectLockPath(dir.file("links/other.twproj")),
              core::RealPath(real) + ".lock");
    core::JobLock throughLink;
    std::string problem;
    ASSERT_TRUE(throughLink.TryAcquire(
        core::ProjectLockPath(dir.file("links/other.twproj")), "edit other.twproj", &problem))
        << problem;
    core::JobLock direct;
    EXPECT_FALSE(direct.TryAcquire(core::ProjectLockPath(real), "render clip.mp4", &problem));
    EXPECT_EQ(problem,
              "is in use by another job (process " + std::to_string(getpid()) +
                  ": edit other.twproj)");
}

TEST(JobLock, FolderReachedThroughALinkIsLockedInsideTheRealFolder)
{
    TempDir dir;
    std::filesystem::create_directory(dir.file("out"));
    std::filesystem::create_directory_symlink("out", dir.file("link_out"));
    EXPECT_EQ(core::FolderLockPath(dir.file("link_out") + "/"),
              core::RealPath(dir.file("out")) + "/.tarnwickmp4.lock");
}

} // namespace
