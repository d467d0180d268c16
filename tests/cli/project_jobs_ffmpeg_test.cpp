// Tests of "tarnwickmp4-cli segments", of the project options that render and the scan
// commands take, and of render's JSON result, on generated clips.
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "core/tarnwick_data.h"
#include "support/motion_clips.h"
#include "support/test_support.h"

namespace {

namespace fs = std::filesystem;

using testsupport::FirstLine;
using testsupport::MakeMotionClip;
using testsupport::RunCli;
using testsupport::RunResult;
using testsupport::TempDir;

core::CTarnwickData Load(const std::string &projectFile)
{
    core::CTarnwickData project;
    EXPECT_TRUE(project.LoadProjectFile(projectFile));
    return project;
}

TEST(CliSegments, CutsEveryTickedSceneAndNoUntickedOne)
{
    TempDir dir;
    const std::string clip = MakeMotionClip(dir);
    ASSERT_EQ(RunCli({"extract", clip}).exitCode, 0);
    std::vector<std::string> segments;
    for (const core::SceneEntry &scene : Load(clip + ".twproj").diff_list) {
        segments.push_back(scene.fileName);
    }
    ASSERT_EQ(segments.size(), 2u);
    // The second scene is the current one, whose segment opening the project cuts anyway.
    ASSERT_EQ(RunCli({"edit", clip + ".twproj", "--untick", "1"}).exitCode, 0);
    for (const std::string &segment : segments) {
        fs::remove(segment);
    }
    RunResult r = RunCli({"segments", clip + ".twproj"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_TRUE(fs::is_regular_file(segments[1])) << "the ticked scene is cut";
    EXPECT_FALSE(fs::exists(segments[0])) << "the unticked scene is not";
    EXPECT_NE(r.out.find(segments[1]), std::string::npos) << r.out;
    EXPECT_NE(r.out.find(segments[0] + " (not written)"), std::string::npos) << r.out;
}

TEST(CliSegments, MissingProjectIsRefusedOnOneLine)
{
    TempDir dir;
    RunResult r = RunCli({"segments", dir.file("none.twproj")});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(r.err.rfind("tarnwickmp4-cli segments: ", 0), 0u) << r.err;
    EXPECT_EQ(r.err.find('\n'), r.err.size() - 1) << r.err;
}

TEST(CliRender, JsonNamesTheProjectTheFilmAndWhatWasRendered)
{
    TempDir dir;
    const std::string clip = MakeMotionClip(dir);
    ASSERT_EQ(RunCli({"extract", clip}).exitCode, 0);
    RunResult r = RunCli({"render", clip + ".twproj", "--transition", "--json"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const nlohmann::json result = nlohmann::json::parse(r.out);
    EXPECT_EQ(result["project"], clip + ".twproj");
    EXPECT_EQ(result["film"], clip + "_out/motion_trim.mp4");
    EXPECT_EQ(result["scenes"], 2);
    EXPECT_EQ(result["transition"], true);
    EXPECT_TRUE(fs::is_regular_file(result["film"].get<std::string>()));
}

TEST(CliRender, NewFolderAndNameTakeTheSegmentsAlongAndHoldTheFilm)
{
    TempDir dir;
    const std::string clip = MakeMotionClip(dir);
    ASSERT_EQ(RunCli({"extract", clip}).exitCode, 0);
    const std::string folder = dir.file("elsewhere");
    RunResult r = RunCli({"render",
                          clip + ".twproj",
                          "--output-folder",
                          folder,
                          "--output-name",
                          "night.mp4",
                          "--json"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const nlohmann::json result = nlohmann::json::parse(r.out);
    EXPECT_EQ(result["film"], folder + "/night.mp4");
    EXPECT_TRUE(fs::is_regular_file(folder + "/night.mp4"));
    const core::CTarnwickData saved = Load(clip + ".twproj");
    EXPECT_EQ(saved.output_folder, folder + "/");
    EXPECT_EQ(saved.output_name, "night.mp4");
    ASSERT_EQ(saved.diff_list.size(), 2u);
    for (const core::SceneEntry &scene : saved.diff_list) {
        EXPECT_EQ(scene.fileName.rfind(folder + "/", 0), 0u) << scene.fileName;
        EXPECT_TRUE(fs::is_regular_file(scene.fileName)) << scene.fileName;
    }
}

TEST(CliRender, ProjectOptionsAreClampedAndSavedWithTheProject)
{
    TempDir dir;
    const std::string clip = MakeMotionClip(dir);
    ASSERT_EQ(RunCli({"extract", clip}).exitCode, 0);
    RunResult r = RunCli({"render",
                          clip + ".twproj",
                          "--brightness",
                          "5",
                          "--gamma",
                          "1.5",
                          "--cinema-scope",
                          "--no-watermark",
                          "--preset",
                          "2",
                          "--output-name",
                          "film.mp4"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out, clip + "_out/film.mp4\n");
    const core::CTarnwickData project = Load(clip + ".twproj");
    EXPECT_EQ(project.brightness.dValue, 1.0) << "clamped to its bound";
    EXPECT_EQ(project.brightness.strText, "1.0");
    EXPECT_EQ(project.gamma.dValue, 1.5);
    EXPECT_EQ(project.cine_sco, 1);
    EXPECT_EQ(project.capWatermark.caption, "");
    EXPECT_EQ(project.output_name, "film.mp4");
    EXPECT_TRUE(fs::is_regular_file(clip + "_out/film.mp4"));
}

TEST(CliRender, WrongProjectOptionValueIsNamed)
{
    TempDir dir;
    RunResult r = RunCli({"render", dir.file("p.twproj"), "--gamma", "bright"});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(FirstLine(r.err), "tarnwickmp4-cli render: --gamma: \"bright\" is not a number");
    r = RunCli({"segments", dir.file("p.twproj"), "--preset", "7"});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(FirstLine(r.err),
              "tarnwickmp4-cli segments: --preset: 0 (best picture), 1 or 2 (smallest file) is "
              "wanted");
}

TEST(CliScan, OptionsOfOtherCommandsAreNotTaken)
{
    TempDir dir;
    RunResult r = RunCli({"scan", dir.file("a.mp4"), "--brightness", "0.5"});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(r.err,
              "tarnwickmp4-cli scan: --brightness does not apply to scan\n"
              "Usage: tarnwickmp4-cli scan VIDEO [--threshold N] [--valid-min S] [--cut-min S] "
              "[--json]\n");
}

} // namespace

namespace {

TEST(CliExtract, JsonListsTheScenesWithTheirSegmentsAndTheProject)
{
    TempDir dir;
    const std::string clip = MakeMotionClip(dir);
    RunResult r = RunCli({"extract", clip, "--json"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const nlohmann::json result = nlohmann::json::parse(r.out);
    EXPECT_EQ(result["file"], clip);
    EXPECT_EQ(result["default_scene"], false);
    EXPECT_EQ(result["project"], clip + ".twproj");
    ASSERT_EQ(result["scenes"].size(), 2u);
    for (const nlohmann::json &scene : result["scenes"]) {
        EXPECT_EQ(scene["written"], true);
        EXPECT_TRUE(fs::is_regular_file(scene["segment"].get<std::string>()));
        EXPECT_LT(scene["first"].get<int>(), scene["last"].get<int>());
    }
}

TEST(CliRun, JsonOfAClipWithoutMotionSaysItHoldsTheDefaultSceneAndNamesTheFilm)
{
    TempDir dir;
    const std::string clip = dir.file("still.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, "color=c=gray:size=160x120:rate=25:duration=4"));
    RunResult r = RunCli({"run", clip, "--json"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const nlohmann::json result = nlohmann::json::parse(r.out);
    EXPECT_EQ(result["default_scene"], true);
    EXPECT_EQ(result["scenes"].size(), 1u);
    EXPECT_EQ(result["project"], clip + ".twproj");
    ASSERT_TRUE(result["film"].is_string()) << r.out;
    EXPECT_TRUE(fs::is_regular_file(result["film"].get<std::string>()));
}

TEST(CliMerge, JsonNamesTheFilmAndTheChoices)
{
    TempDir dir;
    const std::string a = dir.file("a.mp4");
    const std::string b = dir.file("b.mp4");
    ASSERT_TRUE(testsupport::MakeClip(a, "testsrc2=size=160x120:rate=25:duration=1"));
    ASSERT_TRUE(testsupport::MakeClip(b, "testsrc2=size=320x240:rate=30:duration=1"));
    const std::string folder = dir.file("out");
    RunResult r = RunCli({"merge",
                          "--size",
                          "352x288",
                          "--rate",
                          "30000/1001",
                          "--output-folder",
                          folder,
                          "-o",
                          "both.mp4",
                          "--json",
                          a,
                          b});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const nlohmann::json result = nlohmann::json::parse(r.out);
    EXPECT_EQ(result["film"], folder + "/both.mp4");
    EXPECT_EQ(result["files"], 2);
    EXPECT_EQ(result["size"], "352x288");
    EXPECT_EQ(result["rate"], "30000/1001");
    EXPECT_EQ(result["transition"], false);
    EXPECT_TRUE(fs::is_regular_file(folder + "/both.mp4"));
}

} // namespace
