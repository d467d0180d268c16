// Tests of the project data model: defaults, reset, title, frame times and time text.
#include "core/tarnwick_data.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/helpers.h"
#include "core/language.h"
#include "support/test_support.h"

namespace {

using core::CapParam;
using core::CTarnwickData;
using core::ParamRange;
using core::SceneEntry;
using testsupport::TempDir;
using testsupport::WriteFile;

void ExpectParam(const ParamRange &param,
                 double value,
                 double minValue,
                 double maxValue,
                 double step,
                 int type,
                 const std::string &text)
{
    EXPECT_EQ(param.dValue, value);
    EXPECT_EQ(param.dMin, minValue);
    EXPECT_EQ(param.dMax, maxValue);
    EXPECT_EQ(param.dStep, step);
    EXPECT_EQ(param.nType, type);
    EXPECT_EQ(param.strText, text);
}

// A project with a named file and a source, for the title tests.
CTarnwickData MakeTitledProject()
{
    CTarnwickData data;
    data.project_file = "/home/u/projects/holiday.twproj";
    data.input_file = "/home/u/videos/beach.mts";
    data.viSource.frame_num = 250;
    data.viSource.fps = 25;
    data.viSource.width = 1920;
    data.viSource.height = 1080;
    data.viCurrent.fps = 25;
    return data;
}

TEST(CTarnwickData, NewInstanceHoldsTableDefaults)
{
    CTarnwickData data;
    ExpectParam(data.threshold, 100, 0, 1000, 1, 1, "100");
    ExpectParam(data.valid_min_unit, 1, 1, 10, 0.01, 0, "1.0");
    ExpectParam(data.cut_min_unit, 1, 1, 10, 0.01, 0, "1.0");
    ExpectParam(data.brightness, 0, -1, 1, 0.01, 0, "0.0");
    ExpectParam(data.saturation, 1, 0, 3, 0.01, 0, "1.0");
    ExpectParam(data.contrast, 1, 0, 2, 0.01, 0, "1.0");
    ExpectParam(data.gamma, 1, 0.1, 2, 0.01, 0, "1.0");
}

TEST(CTarnwickData, NewInstanceIsFreshProject)
{
    CTarnwickData data;
    EXPECT_EQ(data.project_file, "");
    EXPECT_EQ(data.input_file, "");
    EXPECT_TRUE(data.diff_list.empty());
    EXPECT_TRUE(data.pts_list.empty());
    EXPECT_EQ(data.cine_sco, 0);
    EXPECT_EQ(data.transition, 0);
    EXPECT_EQ(data.primaries, 0);
    EXPECT_EQ(data.play_loop, 0);
    EXPECT_EQ(data.play_scene_loop, 0);
    EXPECT_EQ(data.list_idx, -1);
    EXPECT_EQ(data.nListSubItem, -1);
    EXPECT_EQ(data.play_vol, 5);
    EXPECT_EQ(data.nEncodePreset, 0);
    EXPECT_EQ(data.bAutoSave, 0);
    EXPECT_EQ(data.bReopenLast, 0);
    EXPECT_EQ(data.dTransitionSec, 0.5);
    EXPECT_EQ(data.capWatermark.caption, "TarnwickMP4\\NBrindlemoor.");
    EXPECT_EQ(data.capTitle.capTime_second, 3.0);
}

TEST(CTarnwickData, UseCudaFollowsHardwareProbe)
{
    CTarnwickData data;
    EXPECT_EQ(data.bUseCuda, core::HasCuda() ? 1 : 0);
    EXPECT_EQ(core::HasCuda(), core::HasCuda());
}

TEST(DefaultWatermark, MatchesDefaultTable)
{
    CapParam cap = core::DefaultWatermark();
    EXPECT_EQ(cap.capTime_first, 0.0);
    EXPECT_EQ(cap.capTime_second, 36000.0);
    EXPECT_EQ(cap.caption, "TarnwickMP4\\NBrindlemoor.");
    EXPECT_EQ(cap.cap_pos_type, 5);
    EXPECT_EQ(cap.font_name, "Impact");
    EXPECT_EQ(cap.font_size, 37);
    EXPECT_EQ(cap.color, 0xC0FFFFFFu);
    EXPECT_EQ(cap.bold, 0);
    EXPECT_EQ(cap.italic, 0);
    EXPECT_EQ(cap.underline, 0);
    EXPECT_EQ(cap.strike_uut, 0);
    EXPECT_EQ(cap.encoding, 0);
    EXPECT_EQ(cap.outline, 0);
}

TEST(DefaultTitle, MatchesDefaultTable)
{
    CapParam cap = core::DefaultTitle();
    EXPECT_EQ(cap.capTime_first, 0.0);
    EXPECT_EQ(cap.capTime_second, 3.0);
    EXPECT_EQ(cap.caption, "");
    EXPECT_EQ(cap.cap_pos_type, 5);
    EXPECT_EQ(cap.font_name, "Yu Gothic UI");
    EXPECT_EQ(cap.font_size, 32);
    EXPECT_EQ(cap.color, 0xFFFFFFu);
    EXPECT_EQ(cap.bold, -1);
    EXPECT_EQ(cap.italic, 0);
    EXPECT_EQ(cap.underline, 0);
    EXPECT_EQ(cap.strike_uut, 0);
    EXPECT_EQ(cap.encoding, 128);
    EXPECT_EQ(cap.outline, 2);
}

TEST(ResetProject, KeepsPlayLoopAndClearsSelection)
{
    CTarnwickData data;
    data.diff_list.emplace_back(0, 99, "/out/a_0001.mp4");
    data.diff_list.emplace_back(200, 299, "/out/a_0002.mp4");
    data.list_idx = 1;
    data.play_loop = 1;

    data.ResetProject(false);

    EXPECT_EQ(data.play_loop, 1);
    EXPECT_EQ(data.list_idx, -1);
    EXPECT_TRUE(data.diff_list.empty());
}

TEST(ResetProject, ReturnsProjectFieldsToDefaults)
{
    CTarnwickData data;
    data.input_file = "/v/in.mts";
    data.input_mp4_file = "/v/in.mp4";
    data.output_folder = "/out/";
    data.output_name = "in_trim.mp4";
    data.pts_file = "/v/in_pts.csv";
    data.pts_list = {0.0, 0.04};
    data.threshold.dValue = 300;
    data.gamma.dValue = 1.7;
    data.cine_sco = 1;
    data.transition = 1;
    data.primaries = 1;
    data.nListSubItem = 2;
    data.play_scene_loop = 1;
    data.viCurrent.fps = 25;
    data.viInput.frame_num = 100;
    data.viSource.width = 640;
    data.dTransitionSec = 1.0;
    data.play_vol = 9;
    data.capWatermark.caption = "mine";
    data.capTitle.caption = "title";

    data.ResetProject(false);

    ExpectParam(data.threshold, 100, 0, 1000, 1, 1, "100");
    ExpectParam(data.gamma, 1, 0.1, 2, 0.01, 0, "1.0");
    EXPECT_EQ(data.input_file, "");
    EXPECT_EQ(data.input_mp4_file, "");
    EXPECT_EQ(data.output_folder, "");
    EXPECT_EQ(data.output_name, "");
    EXPECT_EQ(data.pts_file, "");
    EXPECT_TRUE(data.pts_list.empty());
    EXPECT_EQ(data.cine_sco, 0);
    EXPECT_EQ(data.transition, 0);
    EXPECT_EQ(data.primaries, 0);
    EXPECT_EQ(data.nListSubItem, -1);
    EXPECT_EQ(data.play_scene_loop, 0);
    EXPECT_EQ(data.viCurrent.fps, 0.0);
    EXPECT_EQ(data.viInput.frame_num, 0);
    EXPECT_EQ(data.viSource.width, 0);
    EXPECT_EQ(data.dTransitionSec, 0.5);
    EXPECT_EQ(data.play_vol, 5);
    EXPECT_EQ(data.capWatermark.caption, "TarnwickMP4\\NBrindlemoor.");
    EXPECT_EQ(data.capTitle.caption, "");
}

TEST(ResetProject, KeepsProgramSwitches)
{
    CTarnwickData data;
    data.bAutoSave = 1;
    data.bReopenLast = 1;
    data.bUseCuda = 1;
    data.nEncodePreset = 2;
    data.rcMainWindow = {10, 20, 810, 620};

    data.ResetProject(false);

    EXPECT_EQ(data.bAutoSave, 1);
    EXPECT_EQ(data.bReopenLast, 1);
    EXPECT_EQ(data.bUseCuda, 1);
    EXPECT_EQ(data.nEncodePreset, 2);
    EXPECT_EQ(data.rcMainWindow.left, 10);
    EXPECT_EQ(data.rcMainWindow.top, 20);
    EXPECT_EQ(data.rcMainWindow.right, 810);
    EXPECT_EQ(data.rcMainWindow.bottom, 620);
}

TEST(ResetProject, ForgetsProjectPathAndTheTitleIsUntitledAgain)
{
    CTarnwickData data;
    data.project_file = "/p/a.twproj";

    data.ResetProject(false);

    EXPECT_EQ(data.project_file, "");
    EXPECT_EQ(data.BuildTitle(), core::LoadStringById(core::kIdsUntitled));
}

TEST(ResetProject, KeepProjectPathLeavesPath)
{
    CTarnwickData data;
    data.project_file = "/p/a.twproj";

    data.ResetProject(true);

    EXPECT_EQ(data.project_file, "/p/a.twproj");
}

TEST(Title, UnsavedProjectUsesResourceString)
{
    CTarnwickData data;
    data.input_file = "/v/in.mp4";
    data.viSource.frame_num = 10;
    EXPECT_EQ(data.BuildTitle(), core::LoadStringById(core::kIdsUntitled));
}

TEST(Title, DescribesSource)
{
    CTarnwickData data = MakeTitledProject();
    EXPECT_EQ(data.BuildTitle(),
              "holiday.twproj \"beach.mts 0:00:10.00 Frm:250 FPS:25.00 W1920xH1080\"");
}

TEST(Title, FormsWithZeroRate)
{
    CTarnwickData data = MakeTitledProject();
    data.viCurrent.fps = 0;
    EXPECT_EQ(data.BuildTitle(),
              "holiday.twproj \"beach.mts 0:00:00.00 Frm:250 FPS:25.00 W1920xH1080\"");
}

TEST(Title, InterlacedSourceDoublesDurationOnly)
{
    CTarnwickData data = MakeTitledProject();
    data.viSource.field_order = "tt";
    EXPECT_EQ(data.BuildTitle(),
              "holiday.twproj \"beach.mts 0:00:20.00 Frm:250 FPS:25.00 "
              "W1920xH1080 field_order:tt\"");
}

TEST(Title, ProgressiveSourceWithRotation)
{
    CTarnwickData data = MakeTitledProject();
    data.viSource.field_order = "progressive";
    data.viSource.rotation = -90;
    data.viSource.fps = 29.97;
    EXPECT_EQ(data.BuildTitle(),
              "holiday.twproj \"beach.mts 0:00:10.00 Frm:250 FPS:29.97 "
              "W1920xH1080 Rot:-90 field_order:progressive\"");
}

TEST(Title, ShortFormDropsTensOfHours)
{
    CTarnwickData data = MakeTitledProject();
    data.viSource.frame_num = 25 * 36005;
    EXPECT_EQ(data.BuildTitle(),
              "holiday.twproj \"beach.mts 0:00:05.00 Frm:900125 FPS:25.00 W1920xH1080\"");
}

TEST(LoadPtsList, MissingFileGivesEvenTimes)
{
    TempDir dir;
    CTarnwickData data;
    data.viInput.frame_num = 100;
    data.viInput.fps = 25;
    ASSERT_TRUE(data.LoadPtsList(dir.file("missing_pts.csv")));
    ASSERT_EQ(data.pts_list.size(), 101u);
    EXPECT_EQ(core::StrPrintf("%.6f", data.pts_list.front()), "0.000000");
    EXPECT_EQ(core::StrPrintf("%.6f", data.pts_list[1]), "0.040000");
    EXPECT_EQ(core::StrPrintf("%.6f", data.pts_list[50]), "2.000000");
    EXPECT_EQ(core::StrPrintf("%.6f", data.pts_list.back()), "4.000000");
    EXPECT_EQ(data.pts_list.back(), 4.0);
    EXPECT_EQ(data.pts_list[1], 0.04);
}

TEST(LoadPtsList, MissingFileWithoutRateGivesNoTimes)
{
    TempDir dir;
    CTarnwickData data;
    data.pts_list = {1.0};
    data.viInput.frame_num = 100;
    data.viInput.fps = 0;
    EXPECT_FALSE(data.LoadPtsList(dir.file("missing_pts.csv")));
    EXPECT_TRUE(data.pts_list.empty());
}

TEST(LoadPtsList, ImpossibleFrameCountGivesNoTimes)
{
    TempDir dir;
    CTarnwickData data;
    data.viInput.frame_num = 2147483647;
    data.viInput.fps = 25;
    EXPECT_FALSE(data.LoadPtsList(dir.file("missing_pts.csv")));
    EXPECT_TRUE(data.pts_list.empty());
}

TEST(LoadPtsList, ReadsTrimmedLinesAndSkipsEmptyOnes)
{
    TempDir dir;
    std::string path = dir.file("clip_pts.csv");
    ASSERT_TRUE(WriteFile(path, "0.000000\r\n  0.040000\t\n\n   \nbad\n0.120000 \n0.16abc"));
    CTarnwickData data;
    data.pts_list = {9.0};
    ASSERT_TRUE(data.LoadPtsList(path));
    std::vector<double> expected = {0.0, 0.04, 0.0, 0.12, 0.16};
    EXPECT_EQ(data.pts_list, expected);
}

TEST(LoadPtsList, EmptyFileGivesTrue)
{
    TempDir dir;
    std::string path = dir.file("empty_pts.csv");
    ASSERT_TRUE(WriteFile(path, ""));
    CTarnwickData data;
    data.viInput.frame_num = 10;
    data.viInput.fps = 25;
    EXPECT_TRUE(data.LoadPtsList(path));
    EXPECT_TRUE(data.pts_list.empty());
}

TEST(SceneEntry, FrameConstructorSetsBothFlags)
{
    SceneEntry entry(10, 59, "/out/a_0001.mp4");
    EXPECT_TRUE(entry.bAnalyzed);
    EXPECT_TRUE(entry.bEnable);
    EXPECT_EQ(entry.framNo_first, 10);
    EXPECT_EQ(entry.framNo_second, 59);
    EXPECT_EQ(entry.fileName, "/out/a_0001.mp4");
    EXPECT_EQ(entry.strWorkFile, "");
    EXPECT_EQ(entry.capParam.font_name, "Yu Gothic UI");

    SceneEntry source;
    EXPECT_FALSE(source.bAnalyzed);
    EXPECT_TRUE(source.bEnable);
}

TEST(SceneEntry, SetCaptionRoundsToHundredths)
{
    SceneEntry entry(0, 99, "/out/a.mp4");
    entry.SetCaption(1.236, 5.001, "{\\an2}Hello");
    EXPECT_EQ(entry.capParam.capTime_first, 1.24);
    EXPECT_EQ(entry.capParam.capTime_second, 5.0);
    EXPECT_EQ(entry.capParam.caption, "{\\an2}Hello");
}

TEST(GetOutputPath, JoinsFolderAndName)
{
    CTarnwickData data;
    data.output_folder = "/out/";
    data.output_name = "clip_trim.mp4";
    EXPECT_EQ(data.GetOutputPath(), "/out/clip_trim.mp4");
}

TEST(GetOutputPath, EmptyWhenEitherPartIsEmpty)
{
    CTarnwickData data;
    data.output_folder = "/out/";
    EXPECT_EQ(data.GetOutputPath(), "");
    data.output_folder.clear();
    data.output_name = "clip_trim.mp4";
    EXPECT_EQ(data.GetOutputPath(), "");
}

TEST(FrameToTimeCode, TruncatesToHundredths)
{
    CTarnwickData data;
    data.viCurrent.fps = 1000;
    EXPECT_EQ(data.FrameToTimeCode(1996), "00:00:01.99");
}

TEST(FrameToTimeCode, SplitsHoursMinutesSeconds)
{
    CTarnwickData data;
    data.viCurrent.fps = 25;
    EXPECT_EQ(data.FrameToTimeCode(0), "00:00:00.00");
    EXPECT_EQ(data.FrameToTimeCode(25 * 3661 + 12), "01:01:01.48");
}

TEST(FrameToTimeCode, ZeroRateGivesZeroTime)
{
    CTarnwickData data;
    data.viCurrent.fps = 0;
    EXPECT_EQ(data.FrameToTimeCode(500), "00:00:00.00");
}

TEST(FrameToTimeCodeAt, HundredthsCanReachHundred)
{
    CTarnwickData data;
    EXPECT_EQ(data.FrameToTimeCodeAt(1996, 1000), "00:00:01.100");
}

TEST(FrameToTimeCodeAt, FallsBackToCurrentRate)
{
    CTarnwickData data;
    data.viCurrent.fps = 25;
    EXPECT_EQ(data.FrameToTimeCodeAt(50, 0), "00:00:02.00");
    EXPECT_EQ(data.FrameToTimeCodeAt(50, 50), "00:00:01.00");
    data.viCurrent.fps = 0;
    EXPECT_EQ(data.FrameToTimeCodeAt(50, 0), "00:00:00.00");
}

TEST(FrameToText, FormatsSecondsOfFrame)
{
    CTarnwickData data;
    data.viCurrent.fps = 25;
    EXPECT_EQ(data.FrameToText(1, 0, "%.6f"), "0.040000");
    EXPECT_EQ(data.FrameToText(3, 30000.0 / 1001, "%.6f"), "0.100100");
    data.viCurrent.fps = 0;
    EXPECT_EQ(data.FrameToText(3, 0, "%.6f"), "0.000000");
}

} // namespace
