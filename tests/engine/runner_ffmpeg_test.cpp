// Tests of the runner against the real ffmpeg: progress of an encode, the stop, playback
// positions from showinfo, paths, two engines at once, and no tool outliving its program.
#include "engine/job_states.h"
#include "engine/tarnwick_process.h"

#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "core/language.h"
#include "engine_fixture.h"

extern char **environ;

namespace {

using engine::AppMessage;
using enginetest::EngineRig;
using enginetest::States;
using enginetest::Words;

constexpr int kTestJob = 9003;
constexpr const char *kOrphanMarkerVariable = "TW_H5_ORPHAN_MARKER";

std::string LongEncode(const std::string &output)
{
    return "ffmpeg -y -f lavfi -i testsrc2=size=160x120:rate=25:duration=3600 -c:v mpeg4 \"" +
           output + "\"";
}

void StartJob(EngineRig &rig, const std::function<int()> &fn)
{
    rig.engine.SetJobFunction(kTestJob, 0, [fn](int) { return fn(); });
    ASSERT_EQ(rig.engine.StartThread(kTestJob), 1);
}

TEST(RunnerFfmpeg, ProgressOfAnEncodeGrowsToTheFrameCount)
{
    testsupport::TempDir dir;
    EngineRig rig;
    std::string command = "ffmpeg -y -f lavfi -i testsrc2=size=160x120:rate=25:duration=4 "
                          "-c:v mpeg4 \"" +
                          dir.file("out.mp4") + "\"";
    StartJob(rig, [&] { return rig.engine.ExecuteCmdWithProgress(false, command, 100, 0); });
    rig.WaitForJob();
    EXPECT_EQ(rig.engine.nProcessExitCode, 0);
    std::vector<std::pair<int64_t, int64_t>> progress =
        Words(rig.Scene(), AppMessage::WM_APP_PROGRESS);
    ASSERT_FALSE(progress.empty());
    for (size_t i = 0; i < progress.size(); ++i) {
        EXPECT_EQ(progress[i].first, 100);
        if (i > 0) {
            EXPECT_GT(progress[i].second, progress[i - 1].second);
        }
    }
    EXPECT_EQ(progress.back().second, 100);
    EXPECT_TRUE(States(rig.Scene()).empty());
}

TEST(RunnerFfmpeg, StopEndsALongEncodeWithStopped)
{
    testsupport::TempDir dir;
    std::string output = dir.file("h5-stop-" + std::to_string(getpid()) + ".mp4");
    EngineRig rig;
    StartJob(rig, [&] {
        return rig.engine.ExecuteCmdWithProgress(false, LongEncode(output), 90000, 0);
    });
    rig.host.Loop().RunUntil(
        [&] { return !rig.Scene().MessagesOf(AppMessage::WM_APP_PROGRESS).empty(); });
    rig.engine.CancelProcess();
    EXPECT_FALSE(rig.engine.bThreadRunning);
    EXPECT_EQ(rig.engine.nProcessExitCode, engine::kJobStopped);
    std::vector<std::string> states = States(rig.Scene());
    ASSERT_EQ(states, (std::vector<std::string>{"5:"}));
    EXPECT_EQ(engine::StateName(5, false), "Stopped");
    EXPECT_EQ(testsupport::CountProcessesWith(output), 0);
}

// Plays a generated clip of 2 seconds at 25 fps (50 frames) through showinfo as a job, with
// nTotal as the total frame count, and waits for the job's end.
void PlayGeneratedClip(EngineRig &rig, const testsupport::TempDir &dir, int nTotal)
{
    std::string clip = dir.file("clip.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=160x120:rate=25:duration=2"));
    rig.data.viCurrent.fps = 25.0;
    std::string command = "ffmpeg -i \"" + clip + "\" -vf \"showinfo\" -f null -";
    StartJob(rig, [&] { return rig.engine.ExecuteCmdWithProgress(true, command, nTotal, 0); });
    rig.WaitForJob();
}

TEST(RunnerFfmpeg, NormalEndOfPlaybackReadsStoppedWithResultZero)
{
    testsupport::TempDir dir;
    EngineRig rig;
    ASSERT_NO_FATAL_FAILURE(PlayGeneratedClip(rig, dir, 50));
    EXPECT_EQ(rig.engine.nProcessExitCode, 0);
    EXPECT_EQ(States(rig.Scene()), (std::vector<std::string>{"5:"}));
    std::vector<std::pair<int64_t, int64_t>> positions =
        Words(rig.Scene(), AppMessage::WM_APP_POSITION);
    ASSERT_FALSE(positions.empty());
    EXPECT_EQ(positions.back(), (std::pair<int64_t, int64_t>{49, 50}));
    EXPECT_EQ(rig.engine.nPreviewFrame, 49);
    EXPECT_EQ(rig.engine.strPreviewTime.get(), "1.960000");
}

TEST(RunnerFfmpeg, PlaybackWithASmallTotalHoldsTheLastFrame)
{
    testsupport::TempDir dir;
    EngineRig rig;
    ASSERT_NO_FATAL_FAILURE(PlayGeneratedClip(rig, dir, 10));
    EXPECT_EQ(rig.engine.nPreviewFrame, 9);
    EXPECT_EQ(rig.engine.strPreviewTime.get(), "0.360000");
    EXPECT_EQ(Words(rig.Scene(), AppMessage::WM_APP_POSITION).back(),
              (std::pair<int64_t, int64_t>{49, 10}));
}

TEST(RunnerFfmpeg, StopDuringPlaybackGivesStoppedAndMinusTwo)
{
    std::string marker = "h5-playstop-" + std::to_string(getpid());
    EngineRig rig;
    rig.data.viCurrent.fps = 25.0;
    std::string command = "ffmpeg -re -f lavfi -i testsrc2=size=160x120:rate=25:duration=600 "
                          "-vf \"showinfo\" -metadata comment=" +
                          marker + " -f null -";
    rig.engine.SetJobFunction(engine::kJobPlayInput, 0, [&](int) {
        return rig.engine.ExecuteCmdWithProgress(true, command, 15000, 0);
    });
    ASSERT_EQ(rig.engine.StartThread(engine::kJobPlayInput), 1);
    rig.host.Loop().RunUntil(
        [&] { return !rig.Scene().MessagesOf(AppMessage::WM_APP_POSITION).empty(); });
    rig.engine.CancelProcess();
    EXPECT_EQ(rig.engine.nProcessExitCode, engine::kJobStopped);
    EXPECT_EQ(States(rig.Scene()), (std::vector<std::string>{"5:"}));
    EXPECT_EQ(rig.Scene().CaptureCalls(), 1);
    EXPECT_GT(rig.engine.nPreviewFrame, 0);
    EXPECT_EQ(testsupport::CountProcessesWith(marker), 0);
}

TEST(RunnerFfmpeg, PathWithSpacesAndNonAsciiReachesTheTool)
{
    testsupport::TempDir dir;
    std::string folder = dir.file("clip dir");
    ASSERT_EQ(mkdir(folder.c_str(), 0755), 0);
    std::string clip = folder + "/ビデオ 1.mp4";
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=160x120:rate=25:duration=1"));
    EngineRig rig;
    std::string output;
    EXPECT_EQ(rig.engine.ExecuteCmd("ffprobe -v error -show_entries format=filename -of "
                                    "default=nw=1:nk=1 \"" +
                                        clip + "\"",
                                    &output),
              0);
    EXPECT_EQ(output, clip + "\n");
}

TEST(RunnerFfmpeg, TwoEnginesRunJobsAtTheSameTime)
{
    testsupport::TempDir dir;
    EngineRig first;
    EngineRig second;
    first.data.viCurrent.fps = 25.0;
    second.data.viCurrent.fps = 30.0;
    auto encode = [&dir](const std::string &name, int seconds, int rate) {
        return "ffmpeg -y -f lavfi -i testsrc2=size=160x120:rate=" + std::to_string(rate) +
               ":duration=" + std::to_string(seconds) + " -c:v mpeg4 \"" + dir.file(name) + "\"";
    };
    std::string commandA = encode("a.mp4", 2, 25);
    std::string commandB = encode("b.mp4", 3, 30);
    StartJob(first, [&] { return first.engine.ExecuteCmdWithProgress(false, commandA, 50, 0); });
    StartJob(second, [&] { return second.engine.ExecuteCmdWithProgress(false, commandB, 90, 0); });
    while (first.engine.bThreadRunning || second.engine.bThreadRunning) {
        first.host.Loop().PumpMessages();
        second.host.Loop().PumpMessages();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    first.host.Loop().PumpMessages();
    second.host.Loop().PumpMessages();
    EXPECT_EQ(first.engine.nProcessExitCode, 0);
    EXPECT_EQ(second.engine.nProcessExitCode, 0);
    std::vector<std::pair<int64_t, int64_t>> a = Words(first.Scene(), AppMessage::WM_APP_PROGRESS);
    std::vector<std::pair<int64_t, int64_t>> b = Words(second.Scene(), AppMessage::WM_APP_PROGRESS);
    ASSERT_FALSE(a.empty());
    ASSERT_FALSE(b.empty());
    for (const auto &p : a) {
        EXPECT_EQ(p.first, 50);
    }
    for (const auto &p : b) {
        EXPECT_EQ(p.first, 90);
    }
    EXPECT_EQ(a.back().second, 50);
    EXPECT_EQ(b.back().second, 90);
    EXPECT_EQ(Words(first.Scene(), AppMessage::WM_APP_PROCESS_FINISHED).size(), 1u);
    EXPECT_EQ(Words(second.Scene(), AppMessage::WM_APP_PROCESS_FINISHED).size(), 1u);
    EXPECT_EQ(first.data.viCurrent.fps, 25.0);
    EXPECT_EQ(second.data.viCurrent.fps, 30.0);
}

// When this binary is started with the marker in its environment, it is not a test run but
// the program that KilledProgramLeavesNoToolRunning kills: before any test it runs a long
// encode as a job and then waits for messages forever. (Google Test sets environments up only
// when a test is selected, so the helper is started with one, which it never reaches.)
class OrphanHelperEnvironment : public ::testing::Environment
{
public:
    void SetUp() override
    {
        const char *marker = std::getenv(kOrphanMarkerVariable);
        if (marker == nullptr) {
            return;
        }
        EngineRig rig;
        std::string command = LongEncode(marker);
        StartJob(rig, [&] { return rig.engine.ExecuteCmd(command); });
        rig.host.Loop().RunUntil([] { return false; });
    }
};

[[maybe_unused]] ::testing::Environment *const kOrphanHelper =
    ::testing::AddGlobalTestEnvironment(new OrphanHelperEnvironment);

// Waits a bounded while for a condition that other processes make true.
bool Eventually(const std::function<bool()> &condition)
{
    for (int i = 0; i < 3000; ++i) {
        if (condition()) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return condition();
}

TEST(RunnerFfmpeg, KilledProgramLeavesNoToolRunning)
{
    testsupport::TempDir dir;
    std::string marker = dir.file("h5-orphan-" + std::to_string(getpid()) + ".mp4");
    std::vector<std::string> env;
    for (char **p = environ; *p != nullptr; ++p) {
        env.emplace_back(*p);
    }
    env.push_back(std::string(kOrphanMarkerVariable) + "=" + marker);
    std::vector<std::string> args = {
        "/proc/self/exe", "--gtest_filter=RunnerFfmpeg.KilledProgramLeavesNoToolRunning"};
    std::vector<char *> argv;
    for (std::string &a : args) {
        argv.push_back(a.data());
    }
    argv.push_back(nullptr);
    std::vector<char *> envp;
    for (std::string &e : env) {
        envp.push_back(e.data());
    }
    envp.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    pid_t helper = 0;
    ASSERT_EQ(posix_spawn(&helper, argv[0], &actions, nullptr, argv.data(), envp.data()), 0);
    posix_spawn_file_actions_destroy(&actions);

    bool started = Eventually([&] {
        return testsupport::CountProcessesWith(marker) == 1 ||
               waitpid(helper, nullptr, WNOHANG) != 0;
    });
    ASSERT_TRUE(started);
    ASSERT_EQ(testsupport::CountProcessesWith(marker), 1) << "the helper did not start the tool";
    kill(helper, SIGKILL);
    int status = 0;
    waitpid(helper, &status, 0);
    EXPECT_TRUE(Eventually([&] { return testsupport::CountProcessesWith(marker) == 0; }));
    EXPECT_EQ(testsupport::CountProcessesWith(marker), 0);
}

} // namespace
