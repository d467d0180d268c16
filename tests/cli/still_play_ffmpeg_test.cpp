// Tests of tarnwickmp4-cli still and play with the real tools; play runs on a virtual display.
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/project_names.h"
#include "core/tarnwick_data.h"
#include "support/cli_signal.h"
#include "support/test_support.h"
#include "support/xvfb.h"

namespace {

namespace fs = std::filesystem;
using testsupport::RunCli;

constexpr const char *kFourSeconds = "testsrc2=size=160x120:rate=25:duration=4";

// "width,height" of a picture file as ffprobe reads it.
std::string PictureSize(const std::string &path)
{
    testsupport::RunResult r = testsupport::RunProgram(
        {"ffprobe", "-v", "error", "-show_entries", "stream=width,height", "-of", "csv=p=0", path});
    return r.out.substr(0, r.out.find('\n'));
}

size_t LineCount(const std::string &text)
{
    size_t lines = 0;
    for (char c : text) {
        lines += c == '\n' ? 1 : 0;
    }
    return lines;
}

TEST(StillCommand, PrintsTheJpegOfANewProjectAtTheGivenTime)
{
    testsupport::TempDir dir;
    const std::string clip = dir.file("clip.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, kFourSeconds));
    testsupport::RunResult r = RunCli({"still", clip, "--at", "1.5"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string still = dir.file("clip.mp4_out/clip_preview.jpg");
    EXPECT_EQ(r.out, still + "\n");
    EXPECT_EQ(PictureSize(still), "480,480");
}

TEST(StillCommand, SceneOfAProjectIsWrittenToItsOutputFolder)
{
    testsupport::TempDir dir;
    const std::string clip = dir.file("clip.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, kFourSeconds));
    core::CTarnwickData data;
    core::DeriveProjectNames(data, clip);
    data.output_folder = dir.file("stills") + "/";
    data.diff_list.emplace_back(25, 74, core::SegmentPath(data, 25, 74));
    ASSERT_TRUE(data.SaveProjectFile(data.project_file));

    testsupport::RunResult r =
        RunCli({"still", clip, "--project", data.project_file, "--scene", "1", "--at", "2"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out, dir.file("stills/clip_preview.jpg") + "\n");
    EXPECT_TRUE(fs::exists(dir.file("stills/clip_preview.jpg")));

    r = RunCli({"still", clip, "--project", data.project_file, "--scene", "2"});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_NE(r.err.find("there is no scene 2"), std::string::npos) << r.err;
}

TEST(StillCommand, WrongArgumentsAndMissingVideoAreRefused)
{
    testsupport::TempDir dir;
    EXPECT_EQ(RunCli({"still"}).exitCode, 2);
    EXPECT_EQ(RunCli({"still", dir.file("x.mp4"), "--scene", "1"}).exitCode, 2); // no project
    EXPECT_EQ(RunCli({"still", dir.file("x.mp4"), "--at", "-1"}).exitCode, 2);
    testsupport::RunResult r = RunCli({"still", dir.file("gone.mp4")});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_NE(r.err.find("does not exist"), std::string::npos) << r.err;
}

TEST(PlayCommand, WithoutADisplayFailsWithOneClearLine)
{
    testsupport::TempDir dir;
    const std::string clip = dir.file("clip.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, kFourSeconds));
    std::optional<std::string> saved;
    if (const char *display = std::getenv("DISPLAY")) {
        saved = display;
    }
    unsetenv("DISPLAY");
    testsupport::RunResult r = RunCli({"play", clip});
    if (saved) {
        setenv("DISPLAY", saved->c_str(), 1);
    }
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, "tarnwickmp4-cli play: no X display to play on: DISPLAY is not set\n");
    EXPECT_EQ(r.out, "");
}

TEST(PlayCommand, PlaysToTheEndWithAPositionLineAndPrintsTheLastPosition)
{
    testsupport::XvfbDisplay display;
    ASSERT_TRUE(display.Ready());
    testsupport::TempDir dir;
    const std::string clip = dir.file("clip.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, kFourSeconds));
    testsupport::RunResult r = RunCli({"play", clip, "--volume", "20"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out, "3.960000\n");
    // The tab's readout: at the last frame the time stands at the file's end.
    EXPECT_NE(r.err.find("Position 00:00:04.00/00:00:04.00 Frm:99/99\n"), std::string::npos)
        << r.err;
    EXPECT_GE(LineCount(r.err), 4u); // a line for every new second
}

TEST(PlayCommand, CtrlCStopsThePlayerAndTheNextPlayStartsAtThePrintedTime)
{
    testsupport::XvfbDisplay display;
    ASSERT_TRUE(display.Ready());
    testsupport::TempDir dir;
    const std::string clip = dir.file("clip.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, kFourSeconds));
    // Once the player runs (the only tool that reads the clip up to a length), about 2 seconds
    // pass (a loaded machine may take a while before the first frame shows); the opening of
    // the video before it probes the clip too.
    const std::string player = "-i " + clip + " -t ";
    std::optional<std::chrono::steady_clock::time_point> started;
    testsupport::SignalledRun run = testsupport::SignalCliWhenReady({"play", clip}, SIGINT, [&] {
        if (!started && testsupport::CountProcessesWith(player) >= 1) {
            started = std::chrono::steady_clock::now();
        }
        return started &&
               std::chrono::steady_clock::now() - *started > std::chrono::milliseconds(2000);
    });
    ASSERT_FALSE(run.endedEarly) << run.err;
    EXPECT_EQ(run.exitCode, 130) << run.err;
    ASSERT_EQ(LineCount(run.out), 1u) << run.out;
    const std::string printed = run.out.substr(0, run.out.size() - 1);
    EXPECT_GT(std::stod(printed), 0.3);
    EXPECT_LT(std::stod(printed), 3.9);
    EXPECT_EQ(testsupport::CountProcessesWith(clip), 0); // no player left

    testsupport::RunResult again = RunCli({"play", clip, "--from", printed});
    ASSERT_EQ(again.exitCode, 0) << again.err;
    EXPECT_EQ(
        again.err.rfind("tarnwickmp4-cli play: " + clip + " from " + printed + " seconds\n", 0), 0u)
        << again.err;
    EXPECT_EQ(again.out, "3.960000\n");
}

} // namespace
