// Tests of "tarnwickmp4-cli probe": the facts as one JSON object, ffprobe's text by kind, the
// messages for files that cannot be probed, usage errors, and Ctrl-C during a long count.
#include <csignal>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support/cli_signal.h"
#include "support/test_support.h"

namespace {

using testsupport::RunCli;
using testsupport::TempDir;

const char *kSource = "testsrc2=size=320x240:rate=25:duration=2";

TEST(CliProbe, PrintsTheFactsAsOneJsonObject)
{
    TempDir dir;
    std::string clip = dir.file("a.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, kSource));
    testsupport::RunResult r = RunCli({"probe", clip});
    EXPECT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out,
              "{\n"
              "    \"r_frame_rate\": \"25/1\",\n"
              "    \"fps\": 25.0,\n"
              "    \"frame_num\": 50,\n"
              "    \"width\": 320,\n"
              "    \"height\": 240,\n"
              "    \"rotation\": 0,\n"
              "    \"start_frame\": 0,\n"
              "    \"field_order\": \"progressive\",\n"
              "    \"sar_num\": 1,\n"
              "    \"sar_den\": 1,\n"
              "    \"has_audio\": false\n"
              "}\n");
    EXPECT_EQ(r.err, "");
}

TEST(CliProbe, CountsTheFramesOfAnMkvClip)
{
    TempDir dir;
    std::string clip = dir.file("ビデオ 1.mkv");
    ASSERT_TRUE(testsupport::MakeClip(clip, kSource));
    testsupport::RunResult r = RunCli({"probe", clip});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    nlohmann::json facts = nlohmann::json::parse(r.out);
    EXPECT_EQ(facts["frame_num"], 50);
}

TEST(CliProbe, KindPrintsFfprobesOwnText)
{
    TempDir dir;
    std::string clip = dir.file("a.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, kSource));
    testsupport::RunResult format = RunCli({"probe", clip, "--kind", "3"});
    ASSERT_EQ(format.exitCode, 0) << format.err;
    nlohmann::json j = nlohmann::json::parse(format.out);
    EXPECT_TRUE(j.contains("format"));
    EXPECT_FALSE(j.contains("streams"));
    testsupport::RunResult audio = RunCli({"probe", "--kind", "5", clip});
    ASSERT_EQ(audio.exitCode, 0) << audio.err;
    EXPECT_TRUE(nlohmann::json::parse(audio.out)["streams"].empty());
}

TEST(CliProbe, BadKindOrArgumentsAreNamedBeforeTheUsage)
{
    testsupport::ExpectArgumentProblems(
        "probe",
        "Usage: tarnwickmp4-cli probe FILE [--kind N]\n",
        {
            {{"probe"}, "FILE is missing"},
            {{"probe", "a.mp4", "--kind", "6"}, "--kind: \"6\" is not a whole number from 1 to 5"},
            {{"probe", "a.mp4", "--kind", "0"}, "--kind: \"0\" is not a whole number from 1 to 5"},
            {{"probe", "a.mp4", "--kind"}, "--kind needs a value"},
            {{"probe", "a.mp4", "--kind", "1", "--kind", "2"}, "--kind is given twice"},
            {{"probe", "a.mp4", "b.mp4"}, "unexpected argument \"b.mp4\""},
        });
}

TEST(CliProbe, MissingFileIsNamed)
{
    TempDir dir;
    std::string path = dir.file("gone.mp4");
    testsupport::RunResult r = RunCli({"probe", path});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, "tarnwickmp4-cli probe: " + path + ": does not exist\n");
}

TEST(CliProbe, UnreadableFileIsNamed)
{
    TempDir dir;
    testsupport::RunResult r = RunCli({"probe", dir.path()});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, "tarnwickmp4-cli probe: " + dir.path() + ": is not a readable file\n");
}

TEST(CliProbe, FileThatIsNoVideoGivesTheToolsReason)
{
    TempDir dir;
    std::string path = dir.file("text.mp4");
    ASSERT_TRUE(testsupport::WriteFile(path, "hello"));
    testsupport::RunResult r = RunCli({"probe", path});
    EXPECT_EQ(r.exitCode, 1);
    std::string head = "tarnwickmp4-cli probe: " + path + ": probe failed: ";
    EXPECT_EQ(r.err.substr(0, head.size()), head);
    EXPECT_NE(r.err.find("Invalid data found when processing input"), std::string::npos) << r.err;
}

TEST(CliProbe, AudioOnlyFileHasNoVideoStream)
{
    TempDir dir;
    std::string path = dir.file("sound.m4a");
    ASSERT_TRUE(testsupport::MakeSoundClip(path));
    testsupport::RunResult r = RunCli({"probe", path});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, "tarnwickmp4-cli probe: " + path + ": has no video stream\n");
}

// A clip of 20,000 frames in a container that states no count: counting it takes seconds.
std::string MakeLongMkv(const TempDir &dir)
{
    std::string shortClip = dir.file("short.mkv");
    EXPECT_TRUE(testsupport::MakeClip(shortClip, "testsrc2=size=320x240:rate=25:duration=4"));
    std::string longClip = dir.file("long.mkv");
    EXPECT_TRUE(testsupport::LoopClip(longClip, shortClip, 200));
    return longClip;
}

// Sends sig to the CLI once its frame count runs; returns its exit status.
int StopDuringCount(int sig)
{
    TempDir dir;
    std::string clip = MakeLongMkv(dir);
    std::string counter = "-i " + clip + " -vf";
    testsupport::SignalledRun run = testsupport::SignalCliWhenReady(
        {"probe", clip}, sig, [&counter] { return testsupport::CountProcessesWith(counter) != 0; });
    EXPECT_FALSE(run.endedEarly) << "the count ended before it could be stopped";
    EXPECT_EQ(testsupport::CountProcessesWith(counter), 0);
    return run.exitCode;
}

TEST(CliProbe, CtrlCDuringALongCountStopsItAndLeavesNoTool)
{
    EXPECT_EQ(StopDuringCount(SIGINT), 130);
}

TEST(CliProbe, TerminationRequestStopsTheCountLikeCtrlC)
{
    EXPECT_EQ(StopDuringCount(SIGTERM), 130);
}

} // namespace
