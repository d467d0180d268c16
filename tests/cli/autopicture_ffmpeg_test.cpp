// Tests of "tarnwickmp4-cli autopicture": the four values of generated clips, nothing left
// behind, bad inputs and paths, usage errors, and Ctrl-C while the frames are grabbed.
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/cli_signal.h"
#include "support/test_support.h"

namespace {

namespace fs = std::filesystem;
using testsupport::RunCli;
using testsupport::TempDir;

// Names of the files in folder.
std::vector<std::string> FilesIn(const std::string &folder)
{
    std::vector<std::string> names;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    return names;
}

TEST(CliAutoPicture, GrayClipGivesNeutralValuesAndFullContrast)
{
    TempDir dir;
    std::string clip = dir.file("gray.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, "color=c=gray:size=160x120:rate=25:duration=2"));
    testsupport::RunResult r = RunCli({"autopicture", clip});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out, "brightness 0.0\ncontrast 2.0\nsaturation 1.5\ngamma 1.0\n");
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(FilesIn(dir.path()), std::vector<std::string>{"gray.mp4"});
}

TEST(CliAutoPicture, DarkClipGivesMoreLightAndTheHighestGamma)
{
    TempDir dir;
    std::string clip = dir.file("dark clip.mkv");
    ASSERT_TRUE(testsupport::MakeClip(clip, "color=c=0x202020:size=160x120:rate=25:duration=2"));
    testsupport::RunResult r = RunCli({"autopicture", clip});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out, "brightness 0.38\ncontrast 2.0\nsaturation 1.5\ngamma 2.0\n");
    EXPECT_EQ(FilesIn(dir.path()), std::vector<std::string>{"dark clip.mkv"});
}

TEST(CliAutoPicture, BadInputsGiveOneLineNamingTheFile)
{
    TempDir dir;
    std::string missing = dir.file("gone.mp4");
    std::string text = dir.file("text.mp4");
    ASSERT_TRUE(testsupport::WriteFile(text, "hello"));
    std::string sound = dir.file("sound.m4a");
    ASSERT_TRUE(testsupport::MakeSoundClip(sound));
    struct Case
    {
        std::string file;
        std::string problem;
    };
    for (const Case &c : std::vector<Case>{{missing, "does not exist"},
                                           {dir.path(), "is a folder, not a video file"},
                                           {sound, "has no video stream"},
                                           {text, "is not a video file"}}) {
        SCOPED_TRACE(c.file);
        testsupport::RunResult r = RunCli({"autopicture", c.file});
        EXPECT_EQ(r.exitCode, 2);
        EXPECT_EQ(r.out, "");
        std::string head = "tarnwickmp4-cli autopicture: " + c.file + ": " + c.problem;
        EXPECT_EQ(r.err.substr(0, head.size()), head);
        EXPECT_EQ(r.err.find('\n'), r.err.size() - 1) << r.err;
    }
}

TEST(CliAutoPicture, PathsThatACommandCannotCarryAreRefused)
{
    TempDir dir;
    struct Case
    {
        std::string path;
        std::string problem;
    };
    for (const Case &c : std::vector<Case>{{dir.file("a\"b.mp4"), "contains a double quote"},
                                           {dir.file("a\nb.mp4"), "contains a line break"},
                                           {dir.file("a\xFF.mp4"), "is not valid UTF-8"},
                                           {dir.file("name\\"), "ends with a backslash"}}) {
        SCOPED_TRACE(c.path);
        ASSERT_TRUE(testsupport::WriteFile(c.path, "x")); // exists: the path alone is refused
        testsupport::RunResult r = RunCli({"autopicture", c.path});
        EXPECT_EQ(r.exitCode, 2);
        EXPECT_EQ(r.out, "");
        EXPECT_EQ(r.err, "tarnwickmp4-cli autopicture: " + c.path + ": " + c.problem + "\n");
    }
}

TEST(CliAutoPicture, BadArgumentsAreNamedBeforeTheUsage)
{
    testsupport::ExpectArgumentProblems(
        "autopicture",
        "Usage: tarnwickmp4-cli autopicture VIDEO\n",
        {
            {{"autopicture"}, "VIDEO is missing"},
            {{"autopicture", "a.mp4", "b.mp4"}, "unexpected argument \"b.mp4\""},
            {{"autopicture", "--json"}, "unknown option --json"},
        });
    testsupport::RunResult help = RunCli({"--help"});
    EXPECT_NE(help.out.find("  tarnwickmp4-cli autopicture VIDEO\n"), std::string::npos);
}

// Two minutes with a single key frame: every grab decodes from the start up to its time, so
// the later grabs take a while.
std::string MakeSlowSeekClip(const TempDir &dir)
{
    std::string clip = dir.file("onekey.mp4");
    EXPECT_TRUE(testsupport::MakeClip(clip,
                                      "testsrc2=size=320x240:rate=25:duration=120",
                                      {"-c:v",
                                       "libx264",
                                       "-preset",
                                       "ultrafast",
                                       "-x264-params",
                                       "keyint=infinite:scenecut=0",
                                       "-pix_fmt",
                                       "yuv420p"}));
    return clip;
}

// Sends sig to the CLI once a grab of clip runs; returns its exit status.
int StopDuringGrabs(int sig)
{
    TempDir dir;
    std::string clip = MakeSlowSeekClip(dir);
    std::string grab = "-i " + clip + " -frames:v 1";
    testsupport::SignalledRun run = testsupport::SignalCliWhenReady(
        {"autopicture", clip}, sig, [&grab] { return testsupport::CountProcessesWith(grab) != 0; });
    EXPECT_FALSE(run.endedEarly) << "the grabs ended before they could be stopped";
    EXPECT_EQ(testsupport::CountProcessesWith(grab), 0);
    EXPECT_EQ(FilesIn(dir.path()), std::vector<std::string>{"onekey.mp4"});
    return run.exitCode;
}

TEST(CliAutoPicture, CtrlCDuringTheGrabsStopsThemAndLeavesNoTool)
{
    EXPECT_EQ(StopDuringGrabs(SIGINT), 130);
}

TEST(CliAutoPicture, TerminationRequestStopsTheGrabsLikeCtrlC)
{
    EXPECT_EQ(StopDuringGrabs(SIGTERM), 130);
}

} // namespace
