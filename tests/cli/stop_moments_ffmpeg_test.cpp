// Stops at every moment of a command, from its first instant on, with the real tools: a Ctrl-C or
// termination request before the first step, between steps or during a tool ends the command
// with exit 130 and leaves no tool running. Also the still against a held output folder, the
// title given to run, and the start of a playback from a time between key frames.
#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/job_lock.h"
#include "core/tarnwick_data.h"
#include "support/cli_signal.h"
#include "support/motion_clips.h"
#include "support/test_support.h"
#include "support/xvfb.h"

namespace {

namespace fs = std::filesystem;
using testsupport::SignalledRun;
using testsupport::StopSignalsAtStart;

// A tool whose name begins with tool (ffmpeg, ffprobe, ffplay; "ff": any) runs on file.
bool ToolRunsOn(const std::string &file, const std::string &tool = "ff")
{
    for (const fs::directory_entry &entry : fs::directory_iterator("/proc")) {
        const std::string line = testsupport::ReadFile(entry.path().string() + "/cmdline");
        const std::string program = line.substr(0, line.find('\0'));
        if (fs::path(program).filename().string().rfind(tool, 0) == 0 &&
            line.find(file) != std::string::npos) {
            return true;
        }
    }
    return false;
}

// A moment of the command's life at which the signal is sent.
struct Moment
{
    const char *name;
    StopSignalsAtStart start;
    std::function<bool(pid_t)> ready;
};

// The moments for a command whose project (or output folder) lock is lockFile and whose tools
// read clip: at once (the signal waits, blocked, for the program); as soon as the program
// catches it, before any step (started as a shell starts a background job, with the signals
// ignored); when the lock is taken, before the first tool; while a tool reads the clip.
std::vector<Moment> Moments(int sig, const std::string &lockFile, const std::string &clip)
{
    return {
        {"at once", StopSignalsAtStart::Blocked, [](pid_t) { return true; }},
        {"first instant",
         StopSignalsAtStart::Ignored,
         [sig](pid_t pid) { return testsupport::CatchesSignal(pid, sig); }},
        {"lock taken",
         StopSignalsAtStart::Ignored,
         [lockFile](pid_t) { return fs::exists(lockFile); }},
        {"tool running", StopSignalsAtStart::Ignored, [clip](pid_t) { return ToolRunsOn(clip); }},
    };
}

// Runs args once per moment with sig, prepare() before each; every run ends stopped.
void ExpectStoppedAtEveryMoment(const std::vector<std::string> &args,
                                int sig,
                                const std::string &lockFile,
                                const std::string &clip,
                                const std::function<void()> &prepare = {})
{
    for (const Moment &moment : Moments(sig, lockFile, clip)) {
        SCOPED_TRACE(args[0] + " " + moment.name + " " + std::to_string(sig));
        if (prepare) {
            prepare();
        }
        SignalledRun run =
            testsupport::SignalCliWhenReadyPid(args, sig, moment.ready, moment.start);
        ASSERT_FALSE(run.endedEarly) << run.err;
        EXPECT_EQ(run.exitCode, 130) << run.err;
        EXPECT_NE(run.err.find("stopped"), std::string::npos) << run.err;
        EXPECT_EQ(testsupport::CountProcessesWith(clip), 0);
    }
}

// Deletes the segments in folder, so that the next job cuts them again.
void DeleteSegments(const std::string &folder)
{
    for (const std::string &segment : testsupport::FilesMatching(folder, "_seg_")) {
        fs::remove(segment);
    }
}

TEST(StopMoments, RunEndsStoppedFromItsFirstInstant)
{
    testsupport::TempDir dir;
    const std::string clip = testsupport::MakeMotionClip(dir);
    ExpectStoppedAtEveryMoment({"run", clip}, SIGINT, clip + ".twproj.lock", clip);
    ExpectStoppedAtEveryMoment({"run", clip}, SIGTERM, clip + ".twproj.lock", clip);
}

TEST(StopMoments, RenderAndSegmentsEndStoppedFromTheirFirstInstant)
{
    testsupport::TempDir dir;
    const std::string clip = testsupport::MakeMotionClip(dir);
    testsupport::RunResult made = testsupport::RunCli({"extract", clip});
    ASSERT_EQ(made.exitCode, 0) << made.err;
    const std::string project = clip + ".twproj";
    const std::string folder = clip + "_out";
    auto recut = [&folder] { DeleteSegments(folder); };
    ExpectStoppedAtEveryMoment({"render", project}, SIGINT, project + ".lock", clip, recut);
    ExpectStoppedAtEveryMoment({"segments", project}, SIGTERM, project + ".lock", clip, recut);
}

TEST(StopMoments, MergeEndsStoppedFromItsFirstInstant)
{
    testsupport::TempDir dir;
    const std::string clip = testsupport::MakeMotionClip(dir);
    const std::string folder = dir.file("joined");
    const std::vector<std::string> args = {"merge",
                                           "--size",
                                           "352x288",
                                           "--rate",
                                           "10",
                                           "--output-folder",
                                           folder,
                                           "-o",
                                           "j.mp4",
                                           clip,
                                           clip};
    auto fresh = [&folder] { fs::remove_all(folder); };
    ExpectStoppedAtEveryMoment(args, SIGINT, folder + "/.tarnwickmp4.lock", clip, fresh);
    ExpectStoppedAtEveryMoment(args, SIGTERM, folder + "/.tarnwickmp4.lock", clip, fresh);
}

TEST(StillCommand, OutputFolderHeldByAJobIsRefused)
{
    testsupport::TempDir dir;
    const std::string clip = testsupport::MakeMotionClip(dir);
    const std::string folder = clip + "_out/";
    fs::create_directories(folder);
    core::JobLock held;
    std::string problem;
    ASSERT_TRUE(held.TryAcquire(core::FolderLockPath(folder), "render motion.mp4", &problem));
    testsupport::RunResult r = testsupport::RunCli({"still", clip, "--at", "1"});
    EXPECT_EQ(r.exitCode, 1) << r.err;
    EXPECT_NE(r.err.find("is in use by another job (process"), std::string::npos) << r.err;
    EXPECT_EQ(r.out, "");
    EXPECT_TRUE(testsupport::FilesMatching(folder, "_preview.jpg").empty());
    EXPECT_TRUE(testsupport::FilesMatching(folder, ".ass").empty());
    held.Release();
    r = testsupport::RunCli({"still", clip, "--at", "1"});
    EXPECT_EQ(r.exitCode, 0) << r.err;
}

TEST(RunCommand, EmptyTitleGivenMeansNoTitleAsInRender)
{
    testsupport::TempDir dir;
    const std::string clip = testsupport::MakeMotionClip(dir);
    testsupport::RunResult r = testsupport::RunCli({"run", clip, "--title", ""});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    core::CTarnwickData saved;
    ASSERT_TRUE(saved.LoadProjectFile(clip + ".twproj"));
    EXPECT_EQ(saved.capTitle.caption, "");

    r = testsupport::RunCli({"render", clip + ".twproj", "--title", "Garden"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    ASSERT_TRUE(saved.LoadProjectFile(clip + ".twproj"));
    EXPECT_EQ(saved.capTitle.caption, "Garden");
    r = testsupport::RunCli({"render", clip + ".twproj", "--title", ""});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    ASSERT_TRUE(saved.LoadProjectFile(clip + ".twproj"));
    EXPECT_EQ(saved.capTitle.caption, "");
}

TEST(PlayCommand, PositionIsNeverBeforeTheStartAskedForAndHasOneForm)
{
    testsupport::XvfbDisplay display;
    ASSERT_TRUE(display.Ready());
    testsupport::TempDir dir;
    // Key frames every 4 seconds: from 6 s the player begins at 4 s.
    const std::string clip = dir.file("sparse.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip,
                                      "testsrc2=size=160x120:rate=25:duration=10",
                                      {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-g", "100"}));
    // Stopped a second after the player started: it shows the frames from 4 s, not yet 6 s.
    std::optional<std::chrono::steady_clock::time_point> started;
    SignalledRun run = testsupport::SignalCliWhenReady({"play", clip, "--from", "6"}, SIGINT, [&] {
        if (!started && ToolRunsOn(clip, "ffplay")) {
            started = std::chrono::steady_clock::now();
        }
        return started && std::chrono::steady_clock::now() - *started > std::chrono::seconds(1);
    });
    ASSERT_FALSE(run.endedEarly) << run.err;
    EXPECT_EQ(run.exitCode, 130) << run.err;
    ASSERT_FALSE(run.out.empty()) << run.exitCode << run.err;
    EXPECT_GE(std::stod(run.out), 6.0) << run.out;
    EXPECT_EQ(run.out.size(), run.out.find('.') + 8) << run.out; // "%.6f" and a line end

    testsupport::RunResult end = testsupport::RunCli({"play", clip, "--from", "9"});
    ASSERT_EQ(end.exitCode, 0) << end.err;
    EXPECT_EQ(end.out, "9.960000\n");
}

} // namespace
