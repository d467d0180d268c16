// Tests of analyze and merge on the command line with the real tools: a progressive MP4 used
// as it is, an interlaced clip and a .mov converted, a variable-rate clip read frame by frame,
// a stopped conversion, the recordings of the footage folder scanning as their conversions do,
// three files of other sizes, rates and sound joined into one film, cross-faded films of the
// planned length, short first scenes refused, and merges stopped while the files are read.
#include <cmath>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

#include "core/helpers.h"
#include "core/tarnwick_data.h"
#include "support/cli_signal.h"
#include "support/test_support.h"

namespace {

namespace fs = std::filesystem;

using testsupport::RunCli;
using testsupport::TempDir;

nlohmann::json AnalyzeJson(const std::string &video, const std::string &folder)
{
    testsupport::RunResult r = RunCli({"analyze", video, "--output-folder", folder, "--json"});
    EXPECT_EQ(r.exitCode, 0) << r.err;
    return r.exitCode == 0 ? nlohmann::json::parse(r.out) : nlohmann::json::object();
}

std::string Probe(const std::string &path, const std::string &stream, const std::string &entries)
{
    return testsupport::RunProgram({"ffprobe",
                                    "-v",
                                    "error",
                                    "-select_streams",
                                    stream,
                                    "-show_entries",
                                    entries,
                                    "-of",
                                    "default=nw=1:nk=1",
                                    path})
        .out;
}

TEST(CliAnalyze, ProgressiveMp4IsUsedAsItIsWithComputedTimes)
{
    TempDir dir;
    const std::string clip = dir.file("clip.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=160x120:rate=25:duration=2"));
    testsupport::RunResult r = RunCli({"analyze", clip});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.out.find("Input: used as it is (a progressive MP4)\n"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("Frame times: " + clip +
                         "_out/clip_pts.csv (computed from the constant "
                         "frame rate)\n"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("Cross-fade: 0.48 s\n"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("Stream: 160x120, 25/1 (25.000 fps), 50 frames, progressive, without "
                         "sound\n"),
              std::string::npos)
        << r.out;
    // Frame count + 1 times, at 1/25 s.
    const std::string times = testsupport::ReadFile(clip + "_out/clip_pts.csv");
    EXPECT_EQ(times.rfind("0.000000\n0.040000\n0.080000\n", 0), 0u);
    EXPECT_EQ(std::count(times.begin(), times.end(), '\n'), 51);
}

TEST(CliAnalyze, InterlacedClipGetsADeinterlacedWorkingMp4)
{
    TempDir dir;
    const std::string clip = dir.file("match.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip,
                                      "testsrc2=size=160x120:rate=25:duration=2",
                                      {"-c:v",
                                       "libx264",
                                       "-pix_fmt",
                                       "yuv420p",
                                       "-flags",
                                       "+ilme+ildct",
                                       "-x264opts",
                                       "tff=1",
                                       "-field_order",
                                       "tt"}));
    nlohmann::json root = AnalyzeJson(clip, dir.file("out"));
    EXPECT_EQ(root["used_as_is"], false);
    EXPECT_EQ(root["source"]["field_order"], "tt");
    const std::string working = root["working_file"];
    EXPECT_EQ(working, dir.file("out") + "/match_input_ch.mp4");
    EXPECT_EQ(root["working_file_made"], true);
    EXPECT_TRUE(fs::exists(working));
    EXPECT_EQ(root["input"]["width"], 160);
    // A second opening trusts the working file.
    root = AnalyzeJson(clip, dir.file("out"));
    EXPECT_EQ(root["working_file_made"], false);
    EXPECT_EQ(root["working_file"], working);
}

TEST(CliAnalyze, ProgressiveMovIsConvertedAndKeepsItsRate)
{
    TempDir dir;
    const std::string clip = dir.file("walk.mov");
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=160x120:rate=30:duration=2"));
    nlohmann::json root = AnalyzeJson(clip, dir.file("out"));
    EXPECT_EQ(root["source"]["field_order"], "progressive");
    EXPECT_EQ(root["working_file"], dir.file("out") + "/walk_input_ch.mp4");
    EXPECT_EQ(root["input"]["r_frame_rate"], "30/1");
    EXPECT_EQ(root["input"]["frames"], 60);
    EXPECT_EQ(root["pts_source"], "computed");
}

TEST(CliAnalyze, VariableRateMp4IsReadFrameByFrame)
{
    TempDir dir;
    // An MP4 is read as it is, so its own times stand (an .mkv would be converted to a
    // constant rate first).
    const std::string clip = dir.file("vfr.mp4");
    ASSERT_TRUE(testsupport::MakeClip(
        clip,
        "testsrc2=size=160x120:rate=25:duration=8,setpts='if(lt(N,50),N*5,250+(N-50))/(25*TB)'",
        {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-fps_mode", "passthrough"}));
    nlohmann::json root = AnalyzeJson(clip, dir.file("out"));
    EXPECT_EQ(root["pts_source"], "read");
}

TEST(CliAnalyze, StoppedConversionLeavesNoWorkingFileAndTheNextOpeningConvertsAgain)
{
    TempDir dir;
    const std::string part = dir.file("part.mov");
    ASSERT_TRUE(testsupport::MakeClip(part, "testsrc2=size=640x360:rate=25:duration=4"));
    const std::string clip = dir.file("long.mov");
    ASSERT_TRUE(testsupport::LoopClip(clip, part, 30));
    const std::string folder = dir.file("out");
    const std::string working = folder + "/long_input_ch.mp4";
    testsupport::SignalledRun run =
        testsupport::SignalCliWhenReady({"analyze", clip, "--output-folder", folder}, SIGINT, [&] {
            return fs::exists(folder + "/long_input_ch.partial.mp4");
        });
    ASSERT_FALSE(run.endedEarly);
    EXPECT_EQ(run.exitCode, 130);
    EXPECT_NE(run.err.find("stopped while the video was analysed"), std::string::npos) << run.err;
    EXPECT_FALSE(fs::exists(working));
    EXPECT_TRUE(testsupport::FilesMatching(folder, "partial").empty());
    EXPECT_EQ(testsupport::CountProcessesWith(clip), 0);
    // Nothing half made is trusted: the next opening converts again.
    nlohmann::json root = AnalyzeJson(clip, folder);
    EXPECT_EQ(root["working_file"], working);
    EXPECT_EQ(root["working_file_made"], true);
    EXPECT_TRUE(fs::exists(working));
}

TEST(CliAnalyze, FileThatIsNotAVideoIsNamedWithExitTwo)
{
    TempDir dir;
    const std::string file = dir.file("notes.mp4");
    ASSERT_TRUE(testsupport::WriteFile(file, "not a video"));
    testsupport::RunResult r = RunCli({"analyze", file});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(r.err.rfind("tarnwickmp4-cli analyze: " + file + ": is not a video file", 0), 0u)
        << r.err;
}

// Every AVI recording of the footage folder is converted on opening; scan and extract then both
// read that conversion and list the same scenes.
TEST(CliAnalyze, FootageRecordingsAreConvertedAndScanAsTheirConversion)
{
    for (const char *name : {"vtest_480x360.avi", "bgslibrary_video.avi"}) {
        SCOPED_TRACE(name);
        TempDir dir;
        const std::string video = dir.file(name);
        fs::copy_file(testsupport::FootageDir() + "/" + name, video);
        nlohmann::json root = AnalyzeJson(video, dir.file("out"));
        ASSERT_EQ(root["used_as_is"], false);
        const std::string working = root["working_file"];
        const int sourceFrames = root["source"]["frames"];
        // The constant-rate conversion keeps the frames, give or take two.
        EXPECT_NEAR(testsupport::DecodedFrames(working), sourceFrames, 2);
        testsupport::RunResult scan = RunCli({"scan", video, "--json"});
        ASSERT_EQ(scan.exitCode, 0) << scan.err;
        testsupport::RunResult extract =
            RunCli({"extract", video, "--output-folder", dir.file("out")});
        ASSERT_EQ(extract.exitCode, 0) << extract.err;
        nlohmann::json scanned = nlohmann::json::parse(scan.out);
        nlohmann::json project = nlohmann::json::parse(testsupport::ReadFile(video + ".twproj"));
        EXPECT_EQ(project["input_mp4_file"], working);
        EXPECT_EQ(scanned["frames"], root["input"]["frames"]);
        ASSERT_EQ(scanned["scenes"].size(), project["diff_list"].size());
        ASSERT_GE(scanned["scenes"].size(), 1u);
        for (size_t i = 0; i < scanned["scenes"].size(); ++i) {
            EXPECT_EQ(scanned["scenes"][i]["first"], project["diff_list"][i]["framNo_first"]);
            EXPECT_EQ(scanned["scenes"][i]["last"], project["diff_list"][i]["framNo_second"]);
        }
    }
}

TEST(CliMerge, ThreeFilesOfOtherSizesRatesAndSoundBecomeOneFilm)
{
    TempDir dir;
    const std::string a = dir.file("a.mp4");
    const std::string b = dir.file("b.mov");
    const std::string c = dir.file("c.mp4");
    ASSERT_EQ(testsupport::RunProgram({"ffmpeg",
                                       "-v",
                                       "error",
                                       "-y",
                                       "-f",
                                       "lavfi",
                                       "-i",
                                       "testsrc2=size=320x240:rate=25:duration=2",
                                       "-f",
                                       "lavfi",
                                       "-i",
                                       "sine=duration=2",
                                       "-c:v",
                                       "libx264",
                                       "-pix_fmt",
                                       "yuv420p",
                                       "-c:a",
                                       "aac",
                                       a})
                  .exitCode,
              0);
    ASSERT_TRUE(testsupport::MakeClip(b, "testsrc2=size=160x90:rate=15:duration=2"));
    ASSERT_EQ(testsupport::RunProgram({"ffmpeg",
                                       "-v",
                                       "error",
                                       "-y",
                                       "-f",
                                       "lavfi",
                                       "-i",
                                       "testsrc2=size=200x200:rate=30000/1001:duration=2",
                                       "-f",
                                       "lavfi",
                                       "-i",
                                       "sine=duration=2",
                                       "-c:v",
                                       "libx264",
                                       "-pix_fmt",
                                       "yuv420p",
                                       "-c:a",
                                       "aac",
                                       c})
                  .exitCode,
              0);
    const std::string folder = dir.file("out");
    const std::vector<std::string> merge = {"merge",
                                            "--size",
                                            "352x288",
                                            "--rate",
                                            "30",
                                            "--output-folder",
                                            folder,
                                            "-o",
                                            "all.mp4",
                                            a,
                                            b,
                                            c};
    testsupport::RunResult r = RunCli(merge);
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string film = folder + "/all.mp4";
    EXPECT_EQ(r.out, film + "\n");
    EXPECT_EQ(Probe(film, "v:0", "stream=width,height,r_frame_rate"), "352\n288\n30/1\n");
    const double video = testsupport::StreamSeconds(film, "v");
    EXPECT_NEAR(video, 6.0, 0.1);
    EXPECT_NEAR(testsupport::StreamSeconds(film, "a"), video, 0.1);
    EXPECT_EQ(testsupport::FilesMatching(folder, "_seg_352x288_30.00.mp4").size(), 3u);
    // A second run converts nothing: the segments stay as they were.
    const auto stamp = fs::last_write_time(folder + "/b_seg_352x288_30.00.mp4");
    r = RunCli(merge);
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(fs::last_write_time(folder + "/b_seg_352x288_30.00.mp4"), stamp);
}

TEST(CliMerge, UnreadableFileIsNamedBeforeAnythingRuns)
{
    TempDir dir;
    const std::string a = dir.file("a.mp4");
    ASSERT_TRUE(testsupport::MakeClip(a, "testsrc2=size=160x120:rate=25:duration=1"));
    const std::string folder = dir.file("out");
    testsupport::RunResult r = RunCli({"merge",
                                       "--size",
                                       "352x288",
                                       "--rate",
                                       "30",
                                       "--output-folder",
                                       folder,
                                       "-o",
                                       "all.mp4",
                                       a,
                                       dir.file("missing.mp4")});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(r.err, "tarnwickmp4-cli merge: " + dir.file("missing.mp4") + ": does not exist\n");
    EXPECT_FALSE(fs::exists(folder));
}

TEST(CliMerge, FileOrFilmNameTooLongForTheNamesMadeFromItIsNamed)
{
    TempDir dir;
    const std::string a = dir.file("a.mp4");
    ASSERT_TRUE(testsupport::WriteFile(a, "not looked at"));
    const std::string longName = dir.file(std::string(210, 'v') + ".mov");
    ASSERT_TRUE(testsupport::WriteFile(longName, "not looked at"));
    testsupport::RunResult r =
        RunCli({"merge", "--size", "352x288", "--rate", "30", "-o", "all.mp4", a, longName});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(r.err,
              "tarnwickmp4-cli merge: " + longName +
                  ": the file name is 210 bytes long without its extension; the files made from "
                  "it need it to be 200 bytes or fewer (a Japanese character takes 3): rename "
                  "it\n");
    const std::string film = std::string(201, 'f') + ".mp4";
    r = RunCli({"merge", "--size", "352x288", "--rate", "30", "-o", film, a});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(
        r.err.rfind("tarnwickmp4-cli merge: --output-name " + film + ": the file name is 201", 0),
        0u)
        << r.err;
}

TEST(CliMerge, FileThatIsNotAVideoIsNamed)
{
    TempDir dir;
    const std::string a = dir.file("a.mp4");
    ASSERT_TRUE(testsupport::MakeClip(a, "testsrc2=size=160x120:rate=25:duration=1"));
    const std::string bad = dir.file("bad.mp4");
    ASSERT_TRUE(testsupport::WriteFile(bad, "not a video"));
    testsupport::RunResult r = RunCli({"merge",
                                       "--size",
                                       "352x288",
                                       "--rate",
                                       "30",
                                       "--output-folder",
                                       dir.file("out"),
                                       "-o",
                                       "all.mp4",
                                       a,
                                       bad});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_NE(r.err.find("tarnwickmp4-cli merge: " + bad + ": could not be read as a video ("),
              std::string::npos)
        << r.err;
}

TEST(CliMerge, SizeOutsideTheTableIsRefusedWithTheChoices)
{
    testsupport::RunResult r =
        RunCli({"merge", "--size", "100x100", "--rate", "30", "-o", "x.mp4", "a.mp4"});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(r.err,
              "tarnwickmp4-cli merge: --size 100x100: one of 4096x2160, 3840x2160, 2560x1440, "
              "1920x1080, 1280x720, 854x480, 720x576, 720x480, 352x288 is wanted\n"
              "Usage: tarnwickmp4-cli merge --size WxH --rate N/D [--transition] "
              "[--output-folder DIR] -o NAME [--json] FILE...\n");
}

// 15 s of 320x240 at 25 fps with a tone: a light box moves in seconds 2-4, 6.5-8.5 and 11-13.
std::string MakeThreeMotions(const TempDir &dir)
{
    const std::string clip = dir.file("m3.mp4");
    EXPECT_EQ(testsupport::RunProgram(
                  {"ffmpeg",
                   "-v",
                   "error",
                   "-y",
                   "-f",
                   "lavfi",
                   "-i",
                   "color=c=0x404040:s=320x240:r=25:d=15[bg];color=c=0xA0A0A0:s=64x64:r=25:d=15"
                   "[box];[bg][box]overlay=x='100*(clip(t,2,4)-2)-100*(clip(t,6.5,8.5)-6.5)+"
                   "100*(clip(t,11,13)-11)':y=88:eval=frame",
                   "-f",
                   "lavfi",
                   "-i",
                   "sine=frequency=440:duration=15",
                   "-c:v",
                   "libx264",
                   "-pix_fmt",
                   "yuv420p",
                   "-c:a",
                   "aac",
                   "-shortest",
                   clip})
                  .exitCode,
              0);
    return clip;
}

// The frames a cross-faded film of the project's ticked scenes is planned to hold at 25 fps
// with fades of 12 frames (0.48 s), counted here independently of the program.
int PlannedFadedFrames(const core::CTarnwickData &project)
{
    int frames = 0;
    int scenes = 0;
    for (const core::SceneEntry &scene : project.diff_list) {
        if (scene.bEnable) {
            frames += scene.framNo_second - scene.framNo_first + 1;
            ++scenes;
        }
    }
    return scenes < 2 ? frames : frames - (scenes - 1) * 12;
}

TEST(CliRun, CrossFadedFilmHoldsThePlannedFramesWithSoundToTheEnd)
{
    TempDir dir;
    const std::string clip = MakeThreeMotions(dir);
    testsupport::RunResult r = RunCli({"run", clip, "--transition"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    core::CTarnwickData project;
    ASSERT_TRUE(project.LoadProjectFile(clip + ".twproj"));
    ASSERT_EQ(project.diff_list.size(), 3u);
    const int frames = PlannedFadedFrames(project);
    const std::string film = clip + "_out/m3_trim.mp4";
    EXPECT_EQ(testsupport::DecodedFrames(film), frames);
    EXPECT_NEAR(testsupport::StreamSeconds(film, "v"), frames / 25.0, 0.001);
    EXPECT_NEAR(testsupport::StreamSeconds(film, "a"), frames / 25.0, 1 / 25.0);
    // Two scenes of the three: one join.
    project.diff_list[1].bEnable = false;
    ASSERT_TRUE(project.SaveProjectFile(clip + ".twproj"));
    r = RunCli({"render", clip + ".twproj"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(testsupport::DecodedFrames(film), PlannedFadedFrames(project));
    EXPECT_NEAR(testsupport::StreamSeconds(film, "a"), PlannedFadedFrames(project) / 25.0, 0.04);
}

// A scene shorter than the cross-fade is refused before the merge, with its number, whether it
// comes first or later.
TEST(CliRender, SceneShorterThanTheCrossFadeIsNamedInAnyPlace)
{
    TempDir dir;
    const std::string clip = MakeThreeMotions(dir);
    ASSERT_EQ(RunCli({"run", clip, "--transition"}).exitCode, 0);
    const std::string film = clip + "_out/m3_trim.mp4";
    fs::remove(film);
    for (const size_t place : {0u, 1u, 2u}) {
        core::CTarnwickData project;
        ASSERT_TRUE(project.LoadProjectFile(clip + ".twproj"));
        core::SceneEntry &scene = project.diff_list[place];
        const int first = scene.framNo_first;
        const int last = scene.framNo_second;
        scene.framNo_second = first + 5; // 6 frames, 0.24 s
        ASSERT_TRUE(project.SaveProjectFile(clip + ".twproj"));
        testsupport::RunResult r = RunCli({"render", clip + ".twproj"});
        EXPECT_NE(r.exitCode, 0) << place;
        EXPECT_NE(r.err.find(core::StrPrintf(
                      "scene %zu lasts 0.24 s, less than the cross-fade of 0.48 s", place + 1)),
                  std::string::npos)
            << r.err;
        EXPECT_FALSE(fs::exists(film)) << place;
        project.diff_list[place].framNo_second = last;
        ASSERT_TRUE(project.SaveProjectFile(clip + ".twproj"));
    }
}

// A merge stopped while it reads its files ends as stopped (130) at every moment, and names no
// file as unreadable: while a file is probed as it is added (a pipe that nobody writes keeps the
// probe waiting), while the frames of a file are counted as it is added and again in the
// analysis, and while the analysis converts it to a working MP4.
TEST(CliMerge, StopWhileTheFilesAreReadEndsWith130AndBlamesNoFile)
{
    TempDir dir;
    const std::string part = dir.file("part.mkv");
    ASSERT_TRUE(testsupport::MakeClip(part, "testsrc2=size=320x240:rate=25:duration=10"));
    // Matroska holds no frame count: the file is counted by decoding, which takes a while.
    const std::string source = dir.file("long.mkv");
    ASSERT_TRUE(testsupport::LoopClip(source, part, 30));
    const std::string pipe = dir.file("pipe.mp4");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string folder = dir.file("out");
    for (int moment = 0; moment < 4; ++moment) {
        fs::remove_all(folder);
        int counts = 0;
        bool counting = false;
        testsupport::SignalledRun run = testsupport::SignalCliWhenReady(
            {"merge",
             "--size",
             "352x288",
             "--rate",
             "24",
             "-o",
             "all.mp4",
             "--output-folder",
             folder,
             moment == 0 ? pipe : source},
            SIGINT,
            [&] {
                if (moment == 0) {
                    return testsupport::CountProcessesWith(pipe) > 1; // the command and ffprobe
                }
                if (moment == 3) {
                    return !testsupport::FilesMatching(folder, "partial").empty();
                }
                // The counting tool reads the source scaled: first for the drop, then for the
                // analysis.
                const bool now = testsupport::CountProcessesWith(source + " -vf") > 0;
                counts += now && !counting ? 1 : 0;
                counting = now;
                return now && counts == moment;
            });
        ASSERT_FALSE(run.endedEarly) << moment;
        EXPECT_EQ(run.exitCode, 130) << moment << run.err;
        EXPECT_EQ(run.err.find("could not be read"), std::string::npos) << moment << run.err;
        EXPECT_NE(run.err.find("stopped"), std::string::npos) << moment << run.err;
        EXPECT_EQ(testsupport::CountProcessesWith(source), 0);
        EXPECT_EQ(testsupport::CountProcessesWith(pipe), 0);
    }
}

} // namespace
