// Tests of the frame times against the real ffprobe and ffmpeg: constant-rate clips that need
// only their first frames, variable-rate clips read in full, short lists, failures and stops,
// and the cut of a scene of a variable-rate clip at its true times.
#include "engine/tarnwick_process.h"

#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/helpers.h"
#include "core/project_names.h"
#include "engine/engine_fixture.h"
#include "engine/pts_parse.h"

namespace {

namespace fs = std::filesystem;

using engine::AppMessage;
using enginetest::EngineRig;
using enginetest::LogCapture;
using enginetest::States;
using enginetest::Words;
using Texts = std::vector<std::string>;
using WordList = std::vector<std::pair<int64_t, int64_t>>;

// Clips with times of their own are in Matroska, which keeps every frame's time. Matroska
// states no frame count, so the counting pass needs at least 150x50 pixels: 160x120.
const std::vector<std::string> kKeepTimes{
    "-c:v", "libx264", "-pix_fmt", "yuv420p", "-fps_mode", "passthrough"};

// frames frames of a test picture at rate (such as "25" or "30000/1001").
std::string MakeRegularClip(const testsupport::TempDir &dir,
                            const std::string &name,
                            const std::string &rate,
                            int frames)
{
    std::string path = dir.file(name);
    EXPECT_TRUE(testsupport::MakeClip(
        path,
        "testsrc2=size=64x48:rate=" + rate,
        {"-frames:v", std::to_string(frames), "-c:v", "libx264", "-pix_fmt", "yuv420p"}));
    return path;
}

// 100 frames whose luma is twice the frame number: frames 0 to 49 are 0.2 seconds apart, frames
// 50 to 99 follow from 10 seconds on at 0.04. The container says 25 frames a second.
std::string MakeVariableClip(const testsupport::TempDir &dir, const std::string &name)
{
    std::string path = dir.file(name);
    EXPECT_TRUE(testsupport::MakeClip(path,
                                      "nullsrc=size=160x120:rate=25:duration=4,"
                                      "geq=lum='N*2':cb=128:cr=128,"
                                      "setpts='if(lt(N,50),N*5,250+(N-50))/(25*TB)'",
                                      kKeepTimes));
    return path;
}

// A project on clip whose list file lies in its output folder, with the clip's facts probed.
void OpenProject(EngineRig &rig, const std::string &clip)
{
    core::DeriveProjectNames(rig.data, clip);
    rig.data.bUseCuda = 0;
    rig.data.nEncodePreset = 1;
    ASSERT_EQ(rig.engine.OpenVideoFile(clip), 0);
}

// The same for a clip of variable rate in Matroska. Matroska states no frame count, and the
// counting pass counts the frames of the constant rate that ffmpeg delivers, gaps filled; here
// the input's frame count is the number of frames the file holds.
void OpenVariableProject(EngineRig &rig, const std::string &clip)
{
    OpenProject(rig, clip);
    rig.data.viInput.frame_num = testsupport::DecodedFrames(clip);
    rig.data.viCurrent.frame_num = rig.data.viInput.frame_num;
}

// The lines of a text file.
Texts LinesOf(const std::string &path)
{
    Texts lines;
    std::string text = testsupport::ReadFile(path);
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) {
            end = text.size();
        }
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

// The list as "%.6f" texts.
Texts TextsOf(const std::vector<double> &values)
{
    Texts texts;
    for (double v : values) {
        texts.push_back(core::StrPrintf("%.6f", v));
    }
    return texts;
}

// Multiples of step, count of them.
Texts EvenTexts(int count, double step)
{
    Texts texts;
    for (int i = 0; i < count; ++i) {
        texts.push_back(core::StrPrintf("%.6f", i * step));
    }
    return texts;
}

// The frame times of clip as ffprobe prints them, counted from the first frame.
Texts FfprobeTimes(const std::string &clip)
{
    testsupport::RunResult r = testsupport::RunProgram({"ffprobe",
                                                        "-v",
                                                        "error",
                                                        "-select_streams",
                                                        "v:0",
                                                        "-show_entries",
                                                        "frame=pts_time",
                                                        "-of",
                                                        "csv=p=0",
                                                        clip});
    EXPECT_EQ(r.exitCode, 0);
    Texts texts;
    double first = 0;
    size_t start = 0;
    while (start < r.out.size()) {
        size_t end = r.out.find('\n', start);
        std::string line = r.out.substr(start, end - start);
        start = end == std::string::npos ? r.out.size() : end + 1;
        if (!line.empty() && line.back() == ',') {
            line.pop_back();
        }
        if (line.empty()) {
            continue;
        }
        double value = std::strtod(line.c_str(), nullptr);
        if (texts.empty()) {
            first = value;
        }
        texts.push_back(core::StrPrintf("%.6f", value - first));
    }
    return texts;
}

// The mean luma of each frame of a 160x120 video.
std::vector<double> FrameLumas(const std::string &path)
{
    testsupport::RunResult r = testsupport::RunProgram(
        {"ffmpeg", "-v", "error", "-i", path, "-f", "rawvideo", "-pix_fmt", "yuv420p", "-"});
    EXPECT_EQ(r.exitCode, 0) << r.err;
    const size_t frameSize = 160 * 120 * 3 / 2;
    const size_t lumaSize = 160 * 120;
    std::vector<double> means;
    for (size_t at = 0; at + frameSize <= r.out.size(); at += frameSize) {
        double sum = 0;
        for (size_t i = 0; i < lumaSize; ++i) {
            sum += static_cast<unsigned char>(r.out[at + i]);
        }
        means.push_back(sum / lumaSize);
    }
    return means;
}

TEST(PtsList, ConstantRateFileGivesEvenTimesFromItsFirstFrames)
{
    testsupport::TempDir dir;
    std::string clip = MakeRegularClip(dir, "steady clip.mp4", "25", 250);
    EngineRig rig;
    OpenProject(rig, clip);
    ASSERT_EQ(rig.data.viInput.frame_num, 250);
    LogCapture log;
    EXPECT_EQ(rig.engine.EnsurePtsList(clip), 0);
    rig.host.Loop().PumpMessages();

    Texts lines = LinesOf(rig.data.pts_file);
    EXPECT_EQ(lines, EvenTexts(251, 0.04));
    EXPECT_EQ(lines[2], "0.080000");
    EXPECT_EQ(lines[250], "10.000000");
    EXPECT_EQ(TextsOf(rig.data.pts_list), lines);
    // One ffprobe run, the check, ended once it had its hundred frames; no full read.
    EXPECT_EQ(
        log.LinesWithoutPositions("CTarnwickProcess::GetPtsListFromFfprobe"),
        (Texts{"CTarnwickProcess::GetPtsListFromFfprobe(N) " + engine::PtsListCommand(clip)}));
    EXPECT_EQ(log.LinesWithoutPositions("CTarnwickProcess::CheckPtsDeltaFromFirstFrames"),
              (Texts{"CTarnwickProcess::CheckPtsDeltaFromFirstFrames(N) mean=0.040000 "
                     "stddev=0.000000 range=0.000000"}));
    EXPECT_EQ(Words(rig.Scene(), AppMessage::WM_APP_STAGE_BEGIN), (WordList{{0, 250}}));
    EXPECT_EQ(Words(rig.Scene(), AppMessage::WM_APP_PROGRESS),
              (WordList{{250, 0}, {250, 100}, {250, 200}, {250, 250}}));
    EXPECT_EQ(States(rig.Scene()), (Texts{"4:"}));
}

TEST(PtsList, OnlyTheFirstHundredFramesAreRead)
{
    // Even for 400 frames, then twice as far apart: a read of the whole file would see that.
    testsupport::TempDir dir;
    std::string clip = dir.file("late change.mkv");
    ASSERT_TRUE(testsupport::MakeClip(clip,
                                      "testsrc2=size=160x120:rate=25:duration=40,"
                                      "setpts='if(lt(N,400),N,400+(N-400)*2)/(25*TB)'",
                                      kKeepTimes));
    ASSERT_EQ(FfprobeTimes(clip)[999], "63.920000");
    EngineRig rig;
    OpenVariableProject(rig, clip);
    ASSERT_EQ(rig.data.viInput.frame_num, 1000);
    ASSERT_EQ(rig.data.viInput.fps, 25.0);
    EXPECT_TRUE(rig.engine.CheckPtsDeltaFromFirstFrames(clip));
    EXPECT_EQ(rig.engine.EnsurePtsList(clip), 0);
    EXPECT_EQ(TextsOf(rig.data.pts_list), EvenTexts(1001, 0.04));
    EXPECT_EQ(LinesOf(rig.data.pts_file)[999], "39.960000");
}

TEST(PtsList, NtscRateWhoseTimesAlternateByAMicrosecondIsRegular)
{
    testsupport::TempDir dir;
    std::string clip = MakeRegularClip(dir, "ntsc.mp4", "30000/1001", 150);
    Texts times = FfprobeTimes(clip);
    ASSERT_EQ(Texts(times.begin(), times.begin() + 4),
              (Texts{"0.000000", "0.033367", "0.066733", "0.100100"}));
    EngineRig rig;
    OpenProject(rig, clip);
    ASSERT_EQ(rig.data.viInput.r_frame_rate, "30000/1001");
    LogCapture log;
    EXPECT_TRUE(rig.engine.CheckPtsDeltaFromFirstFrames(clip));
    Texts stats = log.LinesWithoutPositions("CTarnwickProcess::CheckPtsDeltaFromFirstFrames");
    EXPECT_EQ(stats,
              (Texts{"CTarnwickProcess::CheckPtsDeltaFromFirstFrames(N) mean=0.033367 "
                     "stddev=0.000000 range=0.000001"}));
    EXPECT_EQ(rig.engine.EnsurePtsList(clip), 0);
    EXPECT_EQ(TextsOf(rig.data.pts_list), EvenTexts(151, 1001.0 / 30000));
}

TEST(PtsList, EvenSpacingAtAnotherRateThanAnnouncedIsReadInFull)
{
    testsupport::TempDir dir;
    std::string clip = MakeRegularClip(dir, "steady.mp4", "25", 100);
    EngineRig rig;
    OpenProject(rig, clip);
    rig.data.viInput.fps = 30.0; // the file is spaced at 1/25
    LogCapture log;
    EXPECT_EQ(rig.engine.EnsurePtsList(clip), 0);
    rig.host.Loop().PumpMessages();
    EXPECT_EQ(log.LinesWithoutPositions("CTarnwickProcess::CheckPtsDeltaFromFirstFrames"),
              (Texts{"CTarnwickProcess::CheckPtsDeltaFromFirstFrames(N) mean=0.040000 "
                     "stddev=0.000000 range=0.000000"}));
    EXPECT_EQ(log.LinesWithoutPositions("CTarnwickProcess::GetPtsListFromFfprobe").size(), 2u);
    // The file's own times, not multiples of 1/30; one progress post per frame read.
    EXPECT_EQ(TextsOf(rig.data.pts_list), EvenTexts(101, 0.04));
    WordList progress = Words(rig.Scene(), AppMessage::WM_APP_PROGRESS);
    ASSERT_EQ(progress.size(), 100u);
    EXPECT_EQ(progress.front(), (std::pair<int64_t, int64_t>{100, 1}));
    EXPECT_EQ(progress.back(), (std::pair<int64_t, int64_t>{100, 100}));
    EXPECT_EQ(States(rig.Scene()), (Texts{"4:"}));
}

TEST(PtsList, VideoOfTwoFramesIsReadInFull)
{
    testsupport::TempDir dir;
    std::string clip = MakeRegularClip(dir, "two.mp4", "25", 2);
    EngineRig rig;
    OpenProject(rig, clip);
    ASSERT_EQ(rig.data.viInput.frame_num, 2);
    LogCapture log;
    EXPECT_FALSE(rig.engine.CheckPtsDeltaFromFirstFrames(clip));
    EXPECT_TRUE(log.Lines("CTarnwickProcess::CheckPtsDeltaFromFirstFrames").empty());
    EXPECT_EQ(rig.engine.EnsurePtsList(clip), 0);
    rig.host.Loop().PumpMessages();
    EXPECT_EQ(Words(rig.Scene(), AppMessage::WM_APP_PROGRESS), (WordList{{2, 1}, {2, 2}}));
    EXPECT_EQ(LinesOf(rig.data.pts_file), (Texts{"0.000000", "0.040000", "0.080000"}));
}

TEST(PtsList, ShortFullReadIsExtendedByTheFirstDelta)
{
    testsupport::TempDir dir;
    std::string clip = MakeRegularClip(dir, "short.mp4", "25", 50);
    EngineRig rig;
    OpenProject(rig, clip);
    rig.data.viInput.fps = 30.0;       // irregular for the check: the full read is made
    rig.data.viInput.frame_num = 60;   // ten frames more than the file holds
    rig.data.viCurrent.frame_num = 60; // (the progress total)
    EXPECT_EQ(rig.engine.EnsurePtsList(clip), 0);
    Texts lines = LinesOf(rig.data.pts_file);
    EXPECT_EQ(lines, EvenTexts(61, 0.04));
    EXPECT_EQ(lines.back(), "2.400000");
    EXPECT_EQ(TextsOf(rig.data.pts_list), lines);
}

TEST(PtsList, VariableRateClipIsReadInFullAndEqualsFfprobe)
{
    testsupport::TempDir dir;
    std::string clip = MakeVariableClip(dir, "variable clip.mkv");
    Texts times = FfprobeTimes(clip);
    ASSERT_EQ(times.size(), 100u);
    EngineRig rig;
    OpenVariableProject(rig, clip);
    ASSERT_EQ(rig.data.viInput.frame_num, 100);
    EXPECT_FALSE(rig.engine.CheckPtsDeltaFromFirstFrames(clip));
    EXPECT_EQ(rig.engine.EnsurePtsList(clip), 0);
    rig.host.Loop().PumpMessages();

    Texts lines = LinesOf(rig.data.pts_file);
    ASSERT_EQ(lines.size(), 101u);
    EXPECT_EQ(Texts(lines.begin(), lines.begin() + 100), times);
    EXPECT_EQ(lines[50], "10.000000");
    EXPECT_EQ(lines[100], "12.160000"); // the end of the last frame, by the first delta
    EXPECT_EQ(TextsOf(rig.data.pts_list), lines);
    EXPECT_EQ(Words(rig.Scene(), AppMessage::WM_APP_PROGRESS).size(), 100u);
    EXPECT_EQ(States(rig.Scene()), (Texts{"4:"}));

    // An opened project reads the same list back.
    std::vector<double> list = rig.data.pts_list;
    ASSERT_TRUE(rig.data.LoadPtsList(rig.data.pts_file));
    EXPECT_EQ(rig.data.pts_list, list);
}

TEST(PtsList, ToolErrorOfTheFullReadIsTheResultAndNoFileIsWritten)
{
    testsupport::TempDir dir;
    std::string broken = dir.file("broken.mp4");
    ASSERT_TRUE(testsupport::WriteFile(broken, "no video in here"));
    EngineRig rig;
    core::DeriveProjectNames(rig.data, broken);
    rig.data.viInput.frame_num = 10;
    rig.data.viInput.fps = 25.0;
    EXPECT_EQ(rig.engine.EnsurePtsList(broken), 1);
    EXPECT_EQ(States(rig.Scene()), (Texts{"3:ExitCode(1)"}));
    EXPECT_FALSE(fs::exists(rig.data.pts_file));
}

TEST(PtsList, StopDuringTheFullReadEndsStoppedWithoutAFile)
{
    testsupport::TempDir dir;
    std::string part = MakeRegularClip(dir, "part.mkv", "25", 100);
    std::string clip = dir.file("long.mkv");
    ASSERT_TRUE(testsupport::LoopClip(clip, part, 999));
    EngineRig rig;
    core::DeriveProjectNames(rig.data, clip);
    rig.data.viInput.frame_num = 100000;
    rig.data.viInput.fps = 30.0; // irregular for the check
    rig.data.viCurrent = rig.data.viInput;
    int result = 99;
    rig.engine.SetJobFunction(9007, 0, [&](int) {
        result = rig.engine.EnsurePtsList(clip);
        return result;
    });
    ASSERT_EQ(rig.engine.StartThread(9007), 1);
    rig.host.Loop().RunUntil([&] {
        return !rig.Scene().MessagesOf(AppMessage::WM_APP_PROGRESS).empty() ||
               !rig.engine.bThreadRunning;
    });
    rig.engine.CancelProcess();
    EXPECT_EQ(result, -2);
    EXPECT_EQ(States(rig.Scene()), (Texts{"5:"}));
    EXPECT_FALSE(fs::exists(rig.data.pts_file));
    EXPECT_LT(rig.data.pts_list.size(), 100001u);
    EXPECT_EQ(testsupport::CountProcessesWith(clip), 0);
}

TEST(PtsList, StopDuringTheCheckEndsStoppedWithoutAFile)
{
    testsupport::TempDir dir;
    std::string clip = MakeRegularClip(dir, "steady.mp4", "25", 250);
    EngineRig rig;
    OpenProject(rig, clip);
    rig.engine.bCancel = 1; // asked for before the check has read its frames
    int result = rig.engine.EnsurePtsList(clip);
    rig.engine.bCancel = 0;
    EXPECT_EQ(result, -2);
    EXPECT_EQ(States(rig.Scene()), (Texts{"5:"}));
    EXPECT_FALSE(fs::exists(rig.data.pts_file));
}

TEST(PtsList, SceneOfAVariableRateClipIsCutAtItsTrueTimes)
{
    testsupport::TempDir dir;
    std::string clip = MakeVariableClip(dir, "variable clip.mkv");
    EngineRig rig;
    OpenVariableProject(rig, clip);
    ASSERT_EQ(rig.engine.EnsurePtsList(clip), 0);
    ASSERT_EQ(rig.data.pts_list.size(), 101u);
    {
        std::lock_guard<std::mutex> lock(rig.data.sceneLock.m);
        rig.data.diff_list.emplace_back(60, 69, core::SegmentPath(rig.data, 60, 69));
    }
    // Frames 60 to 69 stand from 10.4 to 10.8 seconds; by their numbers they would be 2.4 to
    // 2.8, where frames 12 and 13 stand.
    ASSERT_EQ(rig.engine.CutSceneQuiet(clip, 0, rig.engine.Settings()), 0);
    core::SceneEntry scene = rig.data.diff_list.at(0);
    EXPECT_EQ(scene.framNo_second, 69); // the segment holds the scene's ten frames
    std::vector<double> lumas = FrameLumas(scene.fileName);
    ASSERT_EQ(lumas.size(), 10u);
    for (size_t i = 0; i < lumas.size(); ++i) {
        EXPECT_NEAR(lumas[i], 2.0 * (60 + static_cast<double>(i)), 1.0) << "frame " << i;
    }

    // The same scene by frame-number times shows other pictures.
    rig.data.pts_list.clear();
    fs::remove(scene.fileName);
    ASSERT_EQ(rig.engine.CutSceneQuiet(clip, 0, rig.engine.Settings()), 0);
    std::vector<double> wrong = FrameLumas(rig.data.diff_list.at(0).fileName);
    ASSERT_FALSE(wrong.empty());
    EXPECT_NEAR(wrong.front(), 24.0, 1.0);
}

} // namespace
