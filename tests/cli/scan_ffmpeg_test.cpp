// Tests of "tarnwickmp4-cli scan" and "extract": the scenes of a generated clip as JSON and as a
// table, agreement with job 1053, segments and project of an extraction, bad inputs and
// arguments, Ctrl-C during a long scan, and a real recording.
#include <csignal>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "core/helpers.h"
#include "core/project_names.h"
#include "core/tarnwick_data.h"
#include "engine/headless_host.h"
#include "engine/tarnwick_process.h"
#include "support/cli_signal.h"
#include "support/motion_clips.h"
#include "support/test_support.h"
#include "workspace/scene_defaults.h"

namespace {

using testsupport::MakeLongClip;
using testsupport::MakeMotionClip;
using testsupport::RunCli;
using testsupport::TempDir;

std::vector<std::string> Keys(const nlohmann::ordered_json &object)
{
    std::vector<std::string> keys;
    for (auto it = object.begin(); it != object.end(); ++it) {
        keys.push_back(it.key());
    }
    return keys;
}

TEST(CliScan, JsonListsTheTwoScenesOfTheGeneratedClip)
{
    TempDir dir;
    std::string clip = MakeMotionClip(dir);
    testsupport::RunResult r = RunCli({"scan", clip, "--json"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.err, "");
    nlohmann::ordered_json root = nlohmann::ordered_json::parse(r.out);
    EXPECT_EQ(Keys(root),
              (std::vector<std::string>{"file", "fps", "frames", "default_scene", "scenes"}));
    EXPECT_EQ(root["default_scene"], false);
    EXPECT_EQ(root["file"], clip);
    EXPECT_EQ(root["fps"], 25.0);
    EXPECT_EQ(root["frames"], 300);
    ASSERT_EQ(root["scenes"].size(), 2u);
    const int expected[2][2] = {{51, 100}, {176, 225}};
    for (size_t i = 0; i < 2; ++i) {
        SCOPED_TRACE(i);
        const nlohmann::ordered_json &scene = root["scenes"][i];
        EXPECT_EQ(Keys(scene), (std::vector<std::string>{"first", "last", "start", "end"}));
        int first = scene["first"];
        int last = scene["last"];
        EXPECT_NEAR(first, expected[i][0], 3);
        EXPECT_NEAR(last, expected[i][1], 3);
        EXPECT_DOUBLE_EQ(scene["start"].get<double>(), first / 25.0);
        EXPECT_DOUBLE_EQ(scene["end"].get<double>(), (last + 1) / 25.0);
    }
    EXPECT_FALSE(std::filesystem::exists(clip + "_out"));
    EXPECT_FALSE(std::filesystem::exists(clip + ".twproj"));
}

// Job 1053 on an engine of this process, without cutting, on a new project for clip.
core::CTarnwickData SceneExtractWithoutCutting(const std::string &clip)
{
    core::CTarnwickData data;
    core::DeriveProjectNames(data, clip);
    engine::HeadlessHost host;
    engine::CTarnwickProcess engine;
    engine.pData = &data;
    engine.pHostDlg = &host;
    engine.bCutScenes = false;
    host.Tab(0).SetDefaultSceneRoutine([&data] { workspace::MakeDefaultScene(data); });
    EXPECT_EQ(engine.StartThread(engine::kJobSceneExtract), 1);
    host.Loop().RunUntil([&engine] { return !engine.bThreadRunning; });
    EXPECT_EQ(engine.nProcessExitCode, 0);
    return data;
}

TEST(CliScan, ScenesAreThoseOfSceneExtractionWithoutCutting)
{
    TempDir dir;
    std::string clip = MakeMotionClip(dir);
    core::CTarnwickData data = SceneExtractWithoutCutting(clip);
    nlohmann::ordered_json expected;
    expected["file"] = clip;
    expected["fps"] = data.viInput.fps;
    expected["frames"] = data.viInput.frame_num;
    expected["default_scene"] = false;
    expected["scenes"] = nlohmann::ordered_json::array();
    for (const core::SceneEntry &scene : data.diff_list) {
        expected["scenes"].push_back({{"first", scene.framNo_first},
                                      {"last", scene.framNo_second},
                                      {"start", scene.framNo_first / data.viInput.fps},
                                      {"end", (scene.framNo_second + 1) / data.viInput.fps}});
    }
    testsupport::RunResult r = RunCli({"scan", "--json", clip});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out, expected.dump(4) + "\n");
    EXPECT_EQ(data.diff_list.size(), 2u);
}

TEST(CliScan, JsonSaysWhenItShowsTheDefaultScene)
{
    TempDir dir;
    std::string clip = dir.file("still.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, "color=c=0x404040:s=320x240:r=25:d=2"));
    testsupport::RunResult r = RunCli({"scan", clip, "--json"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    nlohmann::ordered_json root = nlohmann::ordered_json::parse(r.out);
    EXPECT_EQ(root["default_scene"], true);
    ASSERT_EQ(root["scenes"].size(), 1u);
    EXPECT_EQ(root["scenes"][0]["first"], 0);
    EXPECT_EQ(root["scenes"][0]["last"], 49);
}

TEST(CliScan, TableSaysWhenItShowsTheDefaultScene)
{
    TempDir dir;
    std::string clip = dir.file("still.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, "color=c=0x404040:s=320x240:r=25:d=2"));
    testsupport::RunResult r = RunCli({"scan", clip});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out,
              "File: " + clip +
                  "\n"
                  "Frames: 50 at 25.000 fps\n"
                  "Scene   First    Last  Start        End          Length\n"
                  "    1       0      49  00:00:00.00  00:00:02.00  00:00:02.00\n"
                  "No motion found: the scene above is the default scene.\n");
}

// Frames that a segment file holds, by ffprobe's count of its packets.
int SegmentFrames(const std::string &file)
{
    testsupport::RunResult r = testsupport::RunProgram({"ffprobe",
                                                        "-v",
                                                        "error",
                                                        "-select_streams",
                                                        "v:0",
                                                        "-count_packets",
                                                        "-show_entries",
                                                        "stream=nb_read_packets",
                                                        "-of",
                                                        "csv=p=0",
                                                        file});
    return r.exitCode == 0 ? std::stoi(r.out) : -1;
}

TEST(CliExtract, WritesTheSegmentsAndTheProjectBesideTheVideo)
{
    TempDir dir;
    std::string clip = MakeMotionClip(dir);
    testsupport::RunResult r = RunCli({"extract", clip});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    core::CTarnwickData project;
    std::string error;
    ASSERT_TRUE(project.LoadProjectFile(clip + ".twproj", &error)) << error;
    EXPECT_EQ(project.input_file, clip);
    EXPECT_EQ(project.output_folder, clip + "_out/");
    ASSERT_EQ(project.diff_list.size(), 2u);
    for (const core::SceneEntry &scene : project.diff_list) {
        SCOPED_TRACE(scene.fileName);
        EXPECT_EQ(scene.fileName,
                  core::SegmentPath(project, scene.framNo_first, scene.framNo_second));
        EXPECT_EQ(SegmentFrames(scene.fileName), scene.framNo_second - scene.framNo_first + 1);
        EXPECT_NE(r.out.find("  " + scene.fileName + "\n"), std::string::npos) << r.out;
    }
    EXPECT_NE(r.out.find("Project: " + clip + ".twproj\n"), std::string::npos) << r.out;
}

TEST(CliExtract, OutputFolderAndClampedValuesGoIntoTheProject)
{
    TempDir dir;
    std::string clip = MakeMotionClip(dir);
    std::string folder = dir.file("segments");
    std::filesystem::create_directories(folder);
    std::string stale = folder + "/motion_seg_1_2.mp4";
    ASSERT_TRUE(testsupport::WriteFile(stale, "old"));
    testsupport::RunResult r = RunCli({"extract",
                                       clip,
                                       "--output-folder",
                                       folder,
                                       "--threshold",
                                       "5000",
                                       "--valid-min",
                                       "0",
                                       "--cut-min",
                                       "99"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_FALSE(std::filesystem::exists(stale));
    core::CTarnwickData project;
    ASSERT_TRUE(project.LoadProjectFile(clip + ".twproj"));
    EXPECT_EQ(project.output_folder, folder + "/");
    EXPECT_EQ(project.threshold.strText, "1000");
    EXPECT_EQ(project.valid_min_unit.strText, "1.0");
    EXPECT_EQ(project.cut_min_unit.strText, "10.0");
}

TEST(CliScan, BadInputsGiveOneLineNamingTheFile)
{
    TempDir dir;
    std::string missing = dir.file("gone.mp4");
    std::string text = dir.file("text.mp4");
    ASSERT_TRUE(testsupport::WriteFile(text, "hello"));
    std::string sound = dir.file("sound.m4a");
    ASSERT_TRUE(testsupport::MakeSoundClip(sound));
    std::string longName = dir.file(std::string(201, 'v') + ".mp4");
    ASSERT_TRUE(testsupport::WriteFile(longName, "not looked at"));
    struct Case
    {
        std::string command;
        std::string file;
        std::string problem;
    };
    for (const Case &c : std::vector<Case>{{"scan", missing, "does not exist"},
                                           {"extract", missing, "does not exist"},
                                           {"scan", dir.path(), "is a folder, not a video file"},
                                           {"scan", sound, "has no video stream"},
                                           {"extract", sound, "has no video stream"},
                                           {"scan", text, "is not a video file"},
                                           {"run",
                                            longName,
                                            "the file name is 201 bytes long without its "
                                            "extension; the files made from it need it to be "
                                            "200 bytes or fewer (a Japanese character takes 3): "
                                            "rename it"}}) {
        SCOPED_TRACE(c.command + " " + c.file);
        testsupport::RunResult r = RunCli({c.command, c.file});
        EXPECT_EQ(r.exitCode, 2);
        EXPECT_EQ(r.out, "");
        std::string head = "tarnwickmp4-cli " + c.command + ": " + c.file + ": " + c.problem;
        EXPECT_EQ(r.err.substr(0, head.size()), head);
        EXPECT_EQ(r.err.find('\n'), r.err.size() - 1) << r.err;
    }
    EXPECT_FALSE(std::filesystem::exists(sound + ".twproj"));
}

TEST(CliScan, RefusedVideoLeavesNoOutputFolderBehind)
{
    TempDir dir;
    std::string text = dir.file("text.mp4");
    ASSERT_TRUE(testsupport::WriteFile(text, "hello"));
    std::string sound = dir.file("sound.m4a");
    ASSERT_TRUE(testsupport::MakeSoundClip(sound));
    EXPECT_EQ(RunCli({"extract", sound}).exitCode, 2);
    EXPECT_EQ(RunCli({"run", text, "--output-folder", dir.file("new/a/b")}).exitCode, 2);
    EXPECT_FALSE(std::filesystem::exists(sound + "_out"));
    EXPECT_FALSE(std::filesystem::exists(dir.file("new")));
    // A folder that was there before stays, empty or not.
    std::filesystem::create_directories(dir.file("kept"));
    EXPECT_EQ(RunCli({"extract", sound, "--output-folder", dir.file("kept/x")}).exitCode, 2);
    EXPECT_TRUE(std::filesystem::is_directory(dir.file("kept")));
    EXPECT_FALSE(std::filesystem::exists(dir.file("kept/x")));
}

TEST(CliScan, PictureTooSmallToScanIsRefusedAlikeByScanExtractAndRun)
{
    for (const auto &[width, height] : {std::pair{2, 2}, std::pair{1, 1}}) {
        TempDir dir;
        const std::string clip = dir.file("tiny.avi");
        ASSERT_TRUE(testsupport::MakeClip(
            clip,
            core::StrPrintf("testsrc2=s=64x64:r=25:d=1,scale=%d:%d,format=gray", width, height),
            {"-c:v", "ffv1"}));
        for (const std::string command : {"scan", "extract", "run"}) {
            SCOPED_TRACE(command + " " + std::to_string(width));
            testsupport::RunResult r = RunCli({command, clip});
            EXPECT_EQ(r.exitCode, 2);
            EXPECT_EQ(r.out, "");
            EXPECT_EQ(r.err,
                      core::StrPrintf("tarnwickmp4-cli %s: %s: the picture is too small to scan "
                                      "(%dx%d)\n",
                                      command.c_str(),
                                      clip.c_str(),
                                      width,
                                      height));
            // Nothing is left behind: no project, no output folder, no working file.
            EXPECT_EQ(testsupport::FilesMatching(dir.path(), ""), std::vector<std::string>{clip});
        }
    }
}

TEST(CliScan, BadArgumentsAreNamedBeforeTheUsage)
{
    const std::string usage =
        "Usage: tarnwickmp4-cli scan VIDEO [--threshold N] [--valid-min S] [--cut-min S] "
        "[--json]\n";
    testsupport::ExpectArgumentProblems(
        "scan",
        usage,
        {
            {{"scan"}, "VIDEO is missing"},
            {{"scan", "a.mp4", "b.mp4"}, "unexpected argument \"b.mp4\""},
            {{"scan", "a.mp4", "--threshold"}, "--threshold needs a value"},
            {{"scan", "a.mp4", "--output-folder", "x"}, "--output-folder does not apply to scan"},
            {{"scan", "a.mp4", "--fast"}, "unknown option --fast"},
        });
    testsupport::RunResult r = RunCli({"extract", "a.mp4", "--cut-min", "1,5"});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(testsupport::FirstLine(r.err),
              "tarnwickmp4-cli extract: --cut-min: \"1,5\" is not a number");
    EXPECT_EQ(r.err.find("Usage: tarnwickmp4-cli extract VIDEO "), r.err.find('\n') + 1);
}

// True once a file stands in folder.
bool HasFile(const std::string &folder)
{
    std::error_code ec;
    return std::filesystem::exists(folder, ec) &&
           !std::filesystem::is_empty(std::filesystem::path(folder), ec);
}

// Runs the CLI on the long clip and sends sig once its scan runs and, for extract, once the
// first cut has begun; returns its exit status.
int StopDuringScan(const std::string &command, int sig, const TempDir &dir)
{
    std::string clip = MakeLongClip(dir);
    std::string scanMarker = "-i " + clip + " -vf scale=40:30";
    testsupport::SignalledRun run = testsupport::SignalCliWhenReady({command, clip}, sig, [&] {
        return testsupport::CountProcessesWith(scanMarker) != 0 &&
               (command != "extract" || HasFile(clip + "_out"));
    });
    EXPECT_FALSE(run.endedEarly) << "the scan ended before it could be stopped";
    EXPECT_EQ(testsupport::CountProcessesWith(dir.path()), 0);
    return run.exitCode;
}

TEST(CliScan, CtrlCStopsTheScanAndLeavesNoTool)
{
    TempDir dir;
    EXPECT_EQ(StopDuringScan("scan", SIGINT, dir), 130);
}

TEST(CliExtract, TerminationRequestKeepsTheScenesFoundAndTheirFinishedSegments)
{
    TempDir dir;
    EXPECT_EQ(StopDuringScan("extract", SIGTERM, dir), 130);
    core::CTarnwickData project;
    ASSERT_TRUE(project.LoadProjectFile(dir.file("long.mp4.twproj")));
    ASSERT_GE(project.diff_list.size(), 1u); // a cut had begun, so its scene was listed
    for (const core::SceneEntry &scene : project.diff_list) {
        // A cut that the stop interrupted leaves no file; a finished one holds its frames.
        if (std::filesystem::exists(scene.fileName)) {
            SCOPED_TRACE(scene.fileName);
            EXPECT_EQ(SegmentFrames(scene.fileName), scene.framNo_second - scene.framNo_first + 1);
        }
    }
}

TEST(CliScan, RealRecordingGivesOrderedScenesInsideTheVideo)
{
    std::string video = testsupport::FootageDir() + "/bgslibrary_video.avi";
    testsupport::RunResult r = RunCli({"scan", video, "--json"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    nlohmann::json root = nlohmann::json::parse(r.out);
    // The frames of the working MP4 that the AVI is converted to: its 374 frames at a constant
    // rate, which may give a frame or two more.
    int frames = root["frames"];
    EXPECT_GE(frames, 374);
    EXPECT_LE(frames, 376);
    const nlohmann::json &scenes = root["scenes"];
    ASSERT_GE(scenes.size(), 1u);
    int previousLast = -1;
    for (const nlohmann::json &scene : scenes) {
        int first = scene["first"];
        int last = scene["last"];
        EXPECT_GT(first, previousLast);
        EXPECT_LE(first, last);
        EXPECT_LT(last, frames);
        previousLast = last;
    }
    // Cars pass with empty road between them: the scan does not take the whole recording.
    EXPECT_GE(scenes.size(), 2u);
}

} // namespace
