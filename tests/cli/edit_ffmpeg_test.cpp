// Tests of scenes and edit on the command line: the list as the tab shows it, a round trip
// without change, a scene left out and another split before a render, edits that name a scene
// that does not exist, splits exactly where asked, and refused edits that delete nothing.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support/motion_clips.h"
#include "support/test_support.h"

namespace {

namespace fs = std::filesystem;

using testsupport::RunCli;
using testsupport::TempDir;

nlohmann::json Scenes(const std::string &project)
{
    testsupport::RunResult r = RunCli({"scenes", project, "--json"});
    EXPECT_EQ(r.exitCode, 0) << r.err;
    return r.exitCode == 0 ? nlohmann::json::parse(r.out) : nlohmann::json::object();
}

TEST(CliEdit, RoundTripWithoutChangeLeavesTheFileByteForByte)
{
    TempDir dir;
    const std::string clip = testsupport::MakeMotionClip(dir);
    ASSERT_EQ(RunCli({"extract", clip}).exitCode, 0);
    const std::string project = clip + ".twproj";
    const std::string before = testsupport::ReadFile(project);
    testsupport::RunResult r = RunCli({"edit", project});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(testsupport::ReadFile(project), before);
}

// Like the motion clip, but each stretch of motion lasts three seconds, so that a scene can be
// split into two parts of at least a second each.
constexpr const char *kLongerMotion =
    "color=c=0x404040:s=320x240:r=25:d=12[bg];color=c=0xA0A0A0:s=64x64:r=25:d=12[box];"
    "[bg][box]overlay=x='60*(clip(t,1,4)-1)-60*(clip(t,6,9)-6)':y=88:eval=frame";

TEST(CliEdit, UntickedSceneLeavesTheFilmShorterByExactlyItsLength)
{
    TempDir dir;
    const std::string clip = dir.file("motion.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, kLongerMotion));
    testsupport::RunResult run = RunCli({"run", clip});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const std::string project = clip + ".twproj";
    nlohmann::json list = Scenes(project);
    ASSERT_EQ(list["scenes"].size(), 2u) << list.dump();
    const std::string film = clip + "_out/motion_trim.mp4";
    const int before = testsupport::DecodedFrames(film);
    const int first = list["scenes"][0]["frames"];
    const int second = list["scenes"][1]["frames"];
    EXPECT_EQ(before, first + second);
    // Leave the first scene out and split the second in its middle.
    const int splitAt =
        (list["scenes"][1]["first"].get<int>() + list["scenes"][1]["last"].get<int>()) / 2;
    testsupport::RunResult edit =
        RunCli({"edit", project, "--untick", "1", "--split", "2", std::to_string(splitAt)});
    ASSERT_EQ(edit.exitCode, 0) << edit.err;
    list = Scenes(project);
    ASSERT_EQ(list["scenes"].size(), 3u);
    EXPECT_EQ(list["scenes"][0]["ticked"], false);
    EXPECT_EQ(list["scenes"][0]["output_start"], nullptr);
    EXPECT_EQ(list["scenes"][2]["first"], splitAt);
    EXPECT_EQ(list["scenes"][1]["frames"].get<int>() + list["scenes"][2]["frames"].get<int>(),
              second);
    testsupport::RunResult render = RunCli({"render", project});
    ASSERT_EQ(render.exitCode, 0) << render.err;
    EXPECT_EQ(testsupport::DecodedFrames(film), before - first);
}

TEST(CliEdit, SceneThatDoesNotExistSavesNothing)
{
    TempDir dir;
    const std::string clip = testsupport::MakeMotionClip(dir);
    ASSERT_EQ(RunCli({"extract", clip}).exitCode, 0);
    const std::string project = clip + ".twproj";
    const std::string before = testsupport::ReadFile(project);
    testsupport::RunResult r = RunCli({"edit", project, "--untick", "1", "--delete", "9"});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(r.err,
              "tarnwickmp4-cli edit: " + project +
                  ": scene 9 does not exist: the project has 2 scenes; nothing was saved\n");
    EXPECT_EQ(testsupport::ReadFile(project), before);
}

TEST(CliEdit, DeletingTheOnlySceneLeavesTheDefaultScene)
{
    TempDir dir;
    const std::string clip = testsupport::MakeMotionClip(dir);
    ASSERT_EQ(RunCli({"extract", clip}).exitCode, 0);
    const std::string project = clip + ".twproj";
    ASSERT_EQ(RunCli({"edit", project, "--delete", "2", "--delete", "1"}).exitCode, 0);
    nlohmann::json list = Scenes(project);
    ASSERT_EQ(list["scenes"].size(), 1u);
    EXPECT_EQ(list["scenes"][0]["first"], 0);
    EXPECT_EQ(list["scenes"][0]["caption"], "Scene001");
}

TEST(CliEdit, MoveBeyondTheEndAndCaptionWithBracesAndLineBreak)
{
    TempDir dir;
    const std::string clip = testsupport::MakeMotionClip(dir);
    ASSERT_EQ(RunCli({"extract", clip}).exitCode, 0);
    const std::string project = clip + ".twproj";
    nlohmann::json list = Scenes(project);
    const int firstOfScene1 = list["scenes"][0]["first"];
    testsupport::RunResult r = RunCli(
        {"edit", project, "--move", "1", "99", "--caption", "1", "a {b}\nc", "--title", "Garden"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    list = Scenes(project);
    EXPECT_EQ(list["scenes"][1]["first"], firstOfScene1); // now the last
    EXPECT_EQ(list["scenes"][0]["caption"], "a {b}\nc");
    nlohmann::json file = nlohmann::json::parse(testsupport::ReadFile(project));
    EXPECT_EQ(file["capTitle"]["caption"], "Garden");
}

} // namespace

namespace {

TEST(CliEdit, SplitOfASceneTooShortForTwoPartsIsRefusedAndSavesNothing)
{
    TempDir dir;
    const std::string clip = testsupport::MakeMotionClip(dir);
    ASSERT_EQ(RunCli({"extract", clip}).exitCode, 0);
    const std::string project = clip + ".twproj";
    nlohmann::json list = Scenes(project);
    ASSERT_EQ(list["scenes"].size(), 2u) << list.dump();
    // The scene list uses the input's rate: lengths in seconds, and the minimum of each part.
    EXPECT_GT(list["scenes"][0]["seconds"].get<double>(), 1.0);
    const int frames = list["scenes"][1]["frames"];
    ASSERT_LT(frames, 50) << "two parts of a second each at 25 fps would fit";
    const std::string before = testsupport::ReadFile(project);
    const int middle =
        (list["scenes"][1]["first"].get<int>() + list["scenes"][1]["last"].get<int>()) / 2;
    testsupport::RunResult edit = RunCli({"edit", project, "--split", "2", std::to_string(middle)});
    EXPECT_EQ(edit.exitCode, 2);
    EXPECT_NE(edit.err.find("too few to split: each part needs at least 25"), std::string::npos)
        << edit.err;
    EXPECT_EQ(testsupport::ReadFile(project), before);
}

} // namespace

namespace {

TEST(CliEdit, RefusedEditDeletesNoSegmentOfAnEarlierEdit)
{
    TempDir dir;
    const std::string clip = testsupport::MakeThreeSceneClip(dir);
    ASSERT_EQ(RunCli({"extract", clip}).exitCode, 0);
    const std::string project = clip + ".twproj";
    nlohmann::json list = Scenes(project);
    ASSERT_EQ(list["scenes"].size(), 3u) << list.dump();
    const int first = list["scenes"][0]["first"];
    const int last = list["scenes"][0]["last"];
    const int at = (first + last + 1) / 2; // the middle, where a split of 50 frames can begin
    const std::string before = testsupport::ReadFile(project);
    testsupport::RunResult r =
        RunCli({"edit", project, "--split", "1", std::to_string(at), "--delete", "9"});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_NE(r.err.find("nothing was saved"), std::string::npos) << r.err;
    EXPECT_EQ(testsupport::ReadFile(project), before);
    for (const nlohmann::json &scene : list["scenes"]) {
        EXPECT_TRUE(fs::is_regular_file(scene["segment"].get<std::string>())) << scene.dump();
    }
}

TEST(CliEdit, SplitBeginsTheLaterPartExactlyAtTheFrameGiven)
{
    TempDir dir;
    const std::string clip = dir.file("motion.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, kLongerMotion));
    ASSERT_EQ(RunCli({"extract", clip}).exitCode, 0);
    const std::string project = clip + ".twproj";
    const std::string original = testsupport::ReadFile(project);
    nlohmann::json list = Scenes(project);
    const int first = list["scenes"][0]["first"];
    const int last = list["scenes"][0]["last"];
    ASSERT_GE(last - first + 1, 52) << "each part keeps 25 frames, with room to choose";
    // The ends of what can be honoured and a frame in between.
    for (int at : {first + 25, first + 26, last - 24}) {
        SCOPED_TRACE(at);
        ASSERT_TRUE(testsupport::WriteFile(project, original));
        testsupport::RunResult r = RunCli({"edit", project, "--split", "1", std::to_string(at)});
        ASSERT_EQ(r.exitCode, 0) << r.err;
        list = Scenes(project);
        EXPECT_EQ(list["scenes"][0]["first"], first);
        EXPECT_EQ(list["scenes"][0]["last"], at - 1);
        EXPECT_EQ(list["scenes"][1]["first"], at);
        EXPECT_EQ(list["scenes"][1]["last"], last);
    }
    // Outside that range nothing moves, and the message names the range.
    const std::string range = "must begin at frame " + std::to_string(first + 25) + " to " +
                              std::to_string(last - 24) +
                              ", so that each part keeps at least "
                              "25 frames; nothing was saved";
    for (int at : {first, first + 1, first + 24, last - 23, last, last + 1}) {
        SCOPED_TRACE(at);
        ASSERT_TRUE(testsupport::WriteFile(project, original));
        testsupport::RunResult r = RunCli({"edit", project, "--split", "1", std::to_string(at)});
        EXPECT_EQ(r.exitCode, 2);
        EXPECT_NE(r.err.find(range), std::string::npos) << r.err;
        EXPECT_EQ(testsupport::ReadFile(project), original);
    }
}

} // namespace
