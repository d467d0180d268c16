// Tests of "tarnwickmp4-cli render" and "run": the finished film of a generated clip and of a
// real recording, the reuse of segments, the progress lines, bad projects and a stop.
#include <algorithm>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/helpers.h"
#include "core/tarnwick_data.h"
#include "support/cli_signal.h"
#include "support/motion_clips.h"
#include "support/test_support.h"

namespace {

namespace fs = std::filesystem;

using testsupport::MakeMotionClip;
using testsupport::RunCli;
using testsupport::RunResult;
using testsupport::TempDir;

// Frames of the enabled scenes of a saved project.
int TickedFrames(const std::string &projectFile)
{
    core::CTarnwickData project;
    EXPECT_TRUE(project.LoadProjectFile(projectFile));
    int frames = 0;
    for (const core::SceneEntry &scene : project.diff_list) {
        frames += scene.bEnable ? scene.framNo_second - scene.framNo_first + 1 : 0;
    }
    return frames;
}

bool IsOneLine(const std::string &text)
{
    return !text.empty() && text.find('\n') == text.size() - 1;
}

// The file decodes from start to end without an error.
bool Plays(const std::string &file)
{
    RunResult r = testsupport::RunProgram({"ffmpeg", "-v", "error", "-i", file, "-f", "null", "-"});
    return r.exitCode == 0 && r.err.empty();
}

TEST(CliRender, RunMakesTheFilmOfTheScenesAndSavesTheProject)
{
    TempDir dir;
    std::string clip = MakeMotionClip(dir);
    RunResult r = RunCli({"run", clip});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string film = clip + "_out/motion_trim.mp4";
    EXPECT_NE(r.out.find("\nFilm: " + film + "\n"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("Project: " + clip + ".twproj\n"), std::string::npos) << r.out;
    EXPECT_NEAR(testsupport::StreamSeconds(film, "v"),
                TickedFrames(clip + ".twproj") / 25.0,
                1 / 25.0 + 1e-6);
    EXPECT_TRUE(Plays(film));
    // Not a terminal: the progress comes as plain lines, one per stage and tenth.
    EXPECT_NE(r.err.find("Scene Extract  100%  300/300  00:00:"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("\nFinal Merge  100%  "), std::string::npos) << r.err;
    EXPECT_EQ(r.err.find('\r'), std::string::npos);
}

TEST(CliRender, RunWithTransitionAndTitleShortensTheFilmByTheFades)
{
    TempDir dir;
    std::string clip = MakeMotionClip(dir);
    RunResult r = RunCli({"run",
                          clip,
                          "--transition",
                          "--title",
                          "Garden",
                          "--output-name",
                          "garden.mp4",
                          "--output-folder",
                          dir.file("films")});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string film = dir.file("films/garden.mp4");
    core::CTarnwickData project;
    ASSERT_TRUE(project.LoadProjectFile(clip + ".twproj"));
    ASSERT_EQ(project.diff_list.size(), 2u);
    EXPECT_EQ(project.transition, 1);
    EXPECT_EQ(project.capTitle.caption, "Garden");
    EXPECT_NEAR(testsupport::StreamSeconds(film, "v"),
                TickedFrames(clip + ".twproj") / 25.0 - 0.48,
                1 / 25.0 + 1e-6);
    std::string ass = testsupport::ReadFile(dir.file("films/motion_all.ass"));
    EXPECT_NE(ass.find(",Title,,0,0,0,,Garden\r\n"), std::string::npos) << ass;
}

TEST(CliRender, SecondRenderOfTheProjectCutsNothing)
{
    TempDir dir;
    std::string clip = MakeMotionClip(dir);
    ASSERT_EQ(RunCli({"extract", clip}).exitCode, 0);
    std::vector<std::string> segments = testsupport::FilesMatching(clip + "_out", "_seg_");
    ASSERT_EQ(segments.size(), 2u);
    std::vector<fs::file_time_type> times;
    for (const std::string &segment : segments) {
        times.push_back(fs::last_write_time(segment));
    }
    RunResult first = RunCli({"render", clip + ".twproj"});
    ASSERT_EQ(first.exitCode, 0) << first.err;
    EXPECT_EQ(first.out, clip + "_out/motion_trim.mp4\n");
    RunResult second = RunCli({"render", clip + ".twproj"});
    ASSERT_EQ(second.exitCode, 0) << second.err;
    for (size_t i = 0; i < segments.size(); ++i) {
        EXPECT_EQ(fs::last_write_time(segments[i]), times[i]) << segments[i];
    }
    EXPECT_TRUE(Plays(clip + "_out/motion_trim.mp4"));
}

TEST(CliRender, ProjectWhoseVideoIsGoneIsRefusedOnOneLine)
{
    TempDir dir;
    std::string clip = MakeMotionClip(dir);
    ASSERT_EQ(RunCli({"extract", clip}).exitCode, 0);
    fs::remove(clip);
    RunResult r = RunCli({"render", clip + ".twproj"});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(r.err,
              "tarnwickmp4-cli render: " + clip + ".twproj: its video " + clip +
                  " does not exist any more; put it back or extract again\n");
    EXPECT_FALSE(fs::exists(clip + "_out/motion_trim.mp4"));
}

TEST(CliRender, ProjectWithNoSceneTickedIsRefusedInWordsAUserUnderstands)
{
    TempDir dir;
    std::string clip = MakeMotionClip(dir);
    ASSERT_EQ(RunCli({"extract", clip}).exitCode, 0);
    core::CTarnwickData project;
    ASSERT_TRUE(project.LoadProjectFile(clip + ".twproj"));
    for (core::SceneEntry &scene : project.diff_list) {
        scene.bEnable = false;
    }
    ASSERT_TRUE(project.SaveProjectFile(clip + ".twproj"));
    RunResult r = RunCli({"render", clip + ".twproj"});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(r.err,
              "tarnwickmp4-cli render: " + clip +
                  ".twproj: no scene is ticked, so there is nothing to render; tick at "
                  "least one scene\n");
}

TEST(CliRender, OutputFolderThatCannotBeWrittenFailsWithItsReason)
{
    TempDir dir;
    std::string clip = MakeMotionClip(dir);
    ASSERT_EQ(RunCli({"extract", clip}).exitCode, 0);
    ASSERT_TRUE(testsupport::WriteFile(dir.file("plain"), "x"));
    RunResult r = RunCli({"render", clip + ".twproj", "--output-folder", dir.file("plain/sub")});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err,
              "tarnwickmp4-cli render: cannot create the output folder " + dir.file("plain/sub") +
                  ": Not a directory\n");
}

TEST(CliRender, FailuresOfRenderAndSegmentsNameTheFileTheFolderAndTheToolsReason)
{
    TempDir dir;
    std::string clip = MakeMotionClip(dir);
    ASSERT_EQ(RunCli({"run", clip}).exitCode, 0);
    const std::string folder = clip + "_out/";
    const std::string film = folder + "motion_trim.mp4";
    const std::string before = testsupport::ReadFile(film);
    // The film's partial name is a folder that holds a file: the final encode cannot write.
    fs::create_directories(folder + "motion_trim.partial.mp4/kept");
    RunResult r = RunCli({"render", clip + ".twproj", "--title", "Other"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find("tarnwickmp4-cli render: " + clip +
                         ".twproj: the render failed: the film motion_trim.mp4 could not be "
                         "written to " +
                         folder + ": ffmpeg: " + folder +
                         "motion_trim.partial.mp4: Is a directory\n"),
              std::string::npos)
        << r.err;
    EXPECT_TRUE(testsupport::ReadFile(film) == before) << "the previous film stays";
    fs::remove_all(folder + "motion_trim.partial.mp4");
    // A segment that cannot be written names its scene.
    core::CTarnwickData project;
    ASSERT_TRUE(project.LoadProjectFile(clip + ".twproj"));
    const std::string segment = project.diff_list[0].fileName;
    const std::string partial = segment.substr(0, segment.size() - 4) + ".partial.mp4";
    fs::remove(segment);
    fs::create_directories(partial + "/kept");
    r = RunCli({"segments", clip + ".twproj"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find(": the cut failed: the segment of scene 1, " +
                         fs::path(segment).filename().string() + " could not be written to " +
                         folder + ": ffmpeg: " + partial + ": Is a directory\n"),
              std::string::npos)
        << r.err;
    fs::remove_all(partial);
    // A scene whose frames are reversed is named, by render and segments alike.
    project.diff_list[0].framNo_second = project.diff_list[0].framNo_first - 10;
    ASSERT_TRUE(project.SaveProjectFile(clip + ".twproj"));
    const std::string reversed = core::StrPrintf(
        "scene 1 ends at frame %d, before it begins at frame %d: correct or delete it\n",
        project.diff_list[0].framNo_second,
        project.diff_list[0].framNo_first);
    r = RunCli({"render", clip + ".twproj"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find(": the render failed: " + reversed), std::string::npos) << r.err;
    r = RunCli({"segments", clip + ".twproj"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find(": the cut failed: " + reversed), std::string::npos) << r.err;
}

TEST(CliRender, CaptionWithALineBreakStaysOnItsSceneRow)
{
    TempDir dir;
    std::string clip = MakeMotionClip(dir);
    ASSERT_EQ(RunCli({"extract", clip}).exitCode, 0);
    ASSERT_EQ(RunCli({"edit", clip + ".twproj", "--caption", "1", "Fox\nat dusk"}).exitCode, 0);
    RunResult r = RunCli({"scenes", clip + ".twproj"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.out.find("  Fox / at dusk\n"), std::string::npos) << r.out;
    EXPECT_EQ(std::count(r.out.begin(), r.out.end(), '\n'), 3) << r.out; // heading, 2 rows
}

TEST(CliRender, BadArgumentsAndNamesAreRefused)
{
    TempDir dir;
    RunResult r = RunCli({"render"});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(r.err,
              "tarnwickmp4-cli render: PROJECT is missing\n"
              "Usage: tarnwickmp4-cli render PROJECT [--threshold N] [--valid-min S] [--cut-min S] "
              "[--brightness N] [--contrast N] [--saturation N] [--gamma N] [--cinema-scope] "
              "[--auto-picture] [--transition] [--title TEXT] [--no-watermark] [--preset 0|1|2] "
              "[--cuda] [--output-folder DIR] [--output-name NAME] [--json]\n");
    r = RunCli({"render", dir.file("missing.twproj")});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_TRUE(IsOneLine(r.err)) << r.err;
    r = RunCli({"render", dir.file("p.twproj"), "--output-name", "sub/film.mp4"});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(r.err,
              "tarnwickmp4-cli render: --output-name sub/film.mp4: a file name is wanted, "
              "without a folder (use --output-folder for that)\n");
    r = RunCli({"run", dir.file("v.mp4"), "--output-name", "a\"b.mp4"});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_TRUE(IsOneLine(r.err)) << r.err;
}

TEST(CliRender, CtrlCDuringTheRenderLeavesNoFilmAndNoTool)
{
    TempDir dir;
    std::string clip = dir.file("long.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=320x240:rate=25:duration=60"));
    const std::string film = clip + "_out/long_trim.mp4";
    testsupport::SignalledRun run =
        testsupport::SignalCliWhenReady({"run", clip, "--threshold", "0"}, SIGINT, [&] {
            return !testsupport::FilesMatching(clip + "_out", "_merged").empty() ||
                   !testsupport::FilesMatching(clip + "_out", "trim.partial").empty();
        });
    ASSERT_FALSE(run.endedEarly) << run.err;
    EXPECT_EQ(run.exitCode, 130);
    EXPECT_NE(run.err.find(": stopped; the finished segments are kept"), std::string::npos)
        << run.err;
    EXPECT_FALSE(fs::exists(film));
    EXPECT_TRUE(testsupport::FilesMatching(clip + "_out", "trim").empty());
    EXPECT_EQ(testsupport::CountProcessesWith(dir.path()), 0);
    const std::vector<std::string> segments = testsupport::FilesMatching(clip + "_out", "_seg_");
    EXPECT_FALSE(segments.empty()) << "the segments stay for the next render";
    for (const std::string &segment : segments) {
        EXPECT_EQ(segment.find(".partial."), std::string::npos) << segment;
        EXPECT_GT(testsupport::DecodedFrames(segment), 0) << segment << " is whole";
    }
}

TEST(CliRender, RunOnARealRecordingGivesAFilmThatPlays)
{
    TempDir dir;
    // The recording stays where it is; the project and the film go beside a link to it.
    std::string video = dir.file("traffic_camera.mp4");
    fs::create_symlink(testsupport::FootageDir() + "/traffic_camera.mp4", video);
    RunResult r = RunCli({"run", video, "--transition"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string film = video + "_out/traffic_camera_trim.mp4";
    EXPECT_GT(testsupport::StreamSeconds(film, "v"), 1.0);
    EXPECT_TRUE(Plays(film));
}

} // namespace
