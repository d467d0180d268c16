// Tests of analyze and merge on the command line with the real tools: a progressive MP4 used
// as it is, an interlaced clip and a .mov converted, a variable-rate clip read frame by frame,
// a stopped conversion, the recordings of the footage folder scanning as their conversions do,
// and three files of other sizes, rates and sound joined into one film.
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

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

} // namespace
