// Tests of the common helpers: time-code text, rates, parameter text, paths and files.
#include "core/helpers.h"
#include "core/paths.h"
#include "core/time_codes.h"

#include <filesystem>
#include <thread>

#include <gtest/gtest.h>

#include "support/test_support.h"

namespace {

namespace fs = std::filesystem;
using core::ParamRange;
using core::VideoInfo;
using testsupport::TempDir;
using testsupport::WriteFile;

TEST(StrPrintf, FormatsLikePrintf)
{
    EXPECT_EQ(core::StrPrintf("%s-%d-%.2f", "a", 7, 1.5), "a-7-1.50");
    EXPECT_EQ(core::StrPrintf("%s", ""), "");
}

TEST(SecondsToTimeCode, SplitsHoursMinutesSeconds)
{
    EXPECT_EQ(core::SecondsToTimeCode(3661.5, false), "01:01:01.50");
}

TEST(SecondsToTimeCode, ShortFormKeepsOneHourDigit)
{
    EXPECT_EQ(core::SecondsToTimeCode(3661.5, true), "1:01:01.50");
}

TEST(SecondsToTimeCode, ShortFormLosesTensOfHours)
{
    EXPECT_EQ(core::SecondsToTimeCode(36000, true), "0:00:00.00");
    EXPECT_EQ(core::SecondsToTimeCode(36000, false), "10:00:00.00");
}

TEST(SecondsToTimeCode, RoundsBeforeSplitting)
{
    EXPECT_EQ(core::SecondsToTimeCode(59.999, false), "00:01:00.00");
}

TEST(SecondsToTimeCode, RoundsToNearestHundredth)
{
    EXPECT_EQ(core::SecondsToTimeCode(0, false), "00:00:00.00");
    EXPECT_EQ(core::SecondsToTimeCode(1.236, false), "00:00:01.24");
    EXPECT_EQ(core::SecondsToTimeCode(1.234, false), "00:00:01.23");
    EXPECT_EQ(core::SecondsToTimeCode(59.99, false), "00:00:59.99");
}

TEST(SecondsToText, UsesCallersFormat)
{
    EXPECT_EQ(core::SecondsToText(1.5, "%.6f"), "1.500000");
    EXPECT_EQ(core::SecondsToText(2.25, "t=%.1f s"), "t=2.2 s");
}

TEST(ParseTimeCode, CombinesFields)
{
    EXPECT_EQ(core::ParseTimeCode("10:00:00.00"), 36000.0);
    EXPECT_EQ(core::ParseTimeCode("00:00:03.00"), 3.0);
    EXPECT_EQ(core::ParseTimeCode("01:02:03.45"), 3723 + 45 / 100.0);
}

TEST(ParseTimeCode, LastFieldIsAlwaysHundredths)
{
    EXPECT_EQ(core::ParseTimeCode("00:00:01.5"), 1 + 5 / 100.0);
    EXPECT_EQ(core::ParseTimeCode("00:00:01.500"), 1 + 500 / 100.0);
}

TEST(UpdateParamText, IntegerTypeGivesWholeNumber)
{
    ParamRange param;
    param.nType = 1;
    param.dValue = 100;
    core::UpdateParamText(param);
    EXPECT_EQ(param.strText, "100");
    param.dValue = 7.9;
    core::UpdateParamText(param);
    EXPECT_EQ(param.strText, "7");
}

TEST(UpdateParamText, DecimalKeepsAtLeastOneDigit)
{
    const struct
    {
        double value;
        const char *text;
    } cases[] = {
        {1, "1.0"},
        {1.5, "1.5"},
        {0.25, "0.25"},
        {-0.001, "0.0"},
        {0, "0.0"},
        {-1, "-1.0"},
        {10, "10.0"},
        {0.1, "0.1"},
        {2.005, "2.0"},
        {0.999, "1.0"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.value);
        ParamRange param;
        param.nType = 0;
        param.dValue = c.value;
        core::UpdateParamText(param);
        EXPECT_EQ(param.strText, c.text);
    }
}

TEST(SnapFrameRate, SnapsNtscRate)
{
    VideoInfo info;
    info.fps = 29.97;
    info.r_frame_rate = "2997/100";
    core::SnapFrameRate(info, false);
    EXPECT_EQ(info.r_frame_rate, "30000/1001");
    EXPECT_EQ(info.fps, 30000.0 / 1001);
}

TEST(SnapFrameRate, KeepsRateFarFromCandidates)
{
    VideoInfo info;
    info.fps = 29.0;
    info.r_frame_rate = "29/1";
    info.frame_num = 290;
    core::SnapFrameRate(info, true);
    EXPECT_EQ(info.r_frame_rate, "29/1");
    EXPECT_EQ(info.fps, 29.0);
    EXPECT_EQ(info.frame_num, 290);
}

TEST(SnapFrameRate, KeepsRateJustOutsideTolerance)
{
    VideoInfo info;
    info.fps = 23.9;
    info.r_frame_rate = "239/10";
    core::SnapFrameRate(info, false);
    EXPECT_EQ(info.r_frame_rate, "239/10");
    EXPECT_EQ(info.fps, 23.9);
}

TEST(SnapFrameRate, KeepsTwentyFourAndFortyEight)
{
    for (double fps : {24.0, 48.0}) {
        SCOPED_TRACE(fps);
        VideoInfo info;
        info.fps = fps;
        info.r_frame_rate = "orig";
        core::SnapFrameRate(info, false);
        EXPECT_EQ(info.r_frame_rate, "orig");
        EXPECT_EQ(info.fps, fps);
    }
}

TEST(SnapFrameRate, SnapsIntegerRates)
{
    VideoInfo info;
    info.fps = 25.001;
    core::SnapFrameRate(info, false);
    EXPECT_EQ(info.r_frame_rate, "25/1");
    EXPECT_EQ(info.fps, 25.0);

    info.fps = 59.9401;
    core::SnapFrameRate(info, false);
    EXPECT_EQ(info.r_frame_rate, "60000/1001");
}

TEST(SnapFrameRate, AdjustFramesKeepsWholeCounts)
{
    VideoInfo info;
    info.fps = 29.97;
    info.frame_num = 1234;
    core::SnapFrameRate(info, true);
    EXPECT_EQ(info.frame_num, 1234);

    VideoInfo empty;
    empty.fps = 25.0;
    empty.frame_num = 0;
    core::SnapFrameRate(empty, true);
    EXPECT_EQ(empty.frame_num, 0);
}

TEST(GetThreadCount, ScalesWithProcessors)
{
    EXPECT_EQ(core::GetThreadCountFor(false, 4), 2);
    EXPECT_EQ(core::GetThreadCountFor(false, 8), 4);
    EXPECT_EQ(core::GetThreadCountFor(false, 9), 6);
    EXPECT_EQ(core::GetThreadCountFor(false, 64), 6);
}

TEST(GetThreadCount, BoundariesOfTheSteps)
{
    EXPECT_EQ(core::GetThreadCountFor(false, 1), 2);
    EXPECT_EQ(core::GetThreadCountFor(false, 5), 4);
    EXPECT_EQ(core::GetThreadCountFor(false, 12), 6);
}

TEST(GetThreadCount, UnknownProcessorCountGivesTwo)
{
    EXPECT_EQ(core::GetThreadCountFor(false, 0), 2);
}

TEST(GetThreadCount, ForcedGivesFour)
{
    EXPECT_EQ(core::GetThreadCountFor(true, 64), 4);
    EXPECT_EQ(core::GetThreadCountFor(true, 0), 4);
    EXPECT_EQ(core::GetThreadCount(true), 4);
}

TEST(GetThreadCount, UsesThisMachine)
{
    int count = core::GetThreadCount(false);
    EXPECT_EQ(count, core::GetThreadCountFor(false, std::thread::hardware_concurrency()));
}

TEST(ReplaceExtension, ReplacesFromLastDot)
{
    EXPECT_EQ(core::ReplaceExtension("/v/clip.mov", ".mp4"), "/v/clip.mp4");
    EXPECT_EQ(core::ReplaceExtension("/v/clip.a.b", "_pts.csv"), "/v/clip.a_pts.csv");
}

TEST(ReplaceExtension, PathWithoutDotUnchanged)
{
    EXPECT_EQ(core::ReplaceExtension("/v/clip", ".mp4"), "/v/clip");
}

TEST(ReplaceExtension, DotInFolderNameCounts)
{
    EXPECT_EQ(core::ReplaceExtension("/a.b/file", ".x"), "/a.x");
}

TEST(SetTrailingSeparator, AddsAndRemovesOne)
{
    EXPECT_EQ(core::SetTrailingSeparator("/out", true), "/out/");
    EXPECT_EQ(core::SetTrailingSeparator("/out/", true), "/out/");
    EXPECT_EQ(core::SetTrailingSeparator("/out/", false), "/out");
    EXPECT_EQ(core::SetTrailingSeparator("/out//", false), "/out/");
    EXPECT_EQ(core::SetTrailingSeparator("/out", false), "/out");
    EXPECT_EQ(core::SetTrailingSeparator("", true), "");
}

TEST(IsMp4File, ComparesExtensionIgnoringCase)
{
    EXPECT_TRUE(core::IsMp4File("/v/clip.mp4"));
    EXPECT_TRUE(core::IsMp4File("/v/clip.MP4"));
    EXPECT_TRUE(core::IsMp4File("/v/clip.Mp4"));
    EXPECT_FALSE(core::IsMp4File("/v/clip.mov"));
    EXPECT_FALSE(core::IsMp4File("/v/clip.mp4.bak"));
    EXPECT_FALSE(core::IsMp4File("/v/clip.mp"));
    EXPECT_FALSE(core::IsMp4File("/v/clip"));
    EXPECT_FALSE(core::IsMp4File("/v.mp4/clip"));
}

TEST(FolderPart, KeepsTheTextUpToTheLastSeparator)
{
    EXPECT_EQ(core::FolderPart("/home/u/proj.twproj"), "/home/u/");
    EXPECT_EQ(core::FolderPart("/home/u/"), "/home/u/");
    EXPECT_EQ(core::FolderPart("proj.twproj"), "");
}

TEST(FileNamePart, TakesTextAfterLastSeparator)
{
    EXPECT_EQ(core::FileNamePart("/home/u/proj.twproj"), "proj.twproj");
    EXPECT_EQ(core::FileNamePart("proj.twproj"), "proj.twproj");
    EXPECT_EQ(core::FileNamePart("/home/u/"), "");
    EXPECT_EQ(core::FileNamePart(""), "");
}

TEST(DeleteByPattern, DeletesMatchingFilesOnly)
{
    TempDir dir;
    ASSERT_TRUE(WriteFile(dir.file("clip_0001.mp4"), "a"));
    ASSERT_TRUE(WriteFile(dir.file("clip_0002.mp4"), "b"));
    ASSERT_TRUE(WriteFile(dir.file("clip_0001.txt"), "c"));
    ASSERT_TRUE(WriteFile(dir.file("other.mp4"), "d"));
    fs::create_directory(dir.file("clip_dir.mp4"));

    core::DeleteByPattern(dir.file("clip_*.mp4"));

    EXPECT_FALSE(fs::exists(dir.file("clip_0001.mp4")));
    EXPECT_FALSE(fs::exists(dir.file("clip_0002.mp4")));
    EXPECT_TRUE(fs::exists(dir.file("clip_0001.txt")));
    EXPECT_TRUE(fs::exists(dir.file("other.mp4")));
    EXPECT_TRUE(fs::is_directory(dir.file("clip_dir.mp4")));
}

TEST(DeleteByPattern, PlainNameDeletesThatFile)
{
    TempDir dir;
    ASSERT_TRUE(WriteFile(dir.file("a.txt"), "a"));
    ASSERT_TRUE(WriteFile(dir.file("ab.txt"), "b"));
    core::DeleteByPattern(dir.file("a.txt"));
    EXPECT_FALSE(fs::exists(dir.file("a.txt")));
    EXPECT_TRUE(fs::exists(dir.file("ab.txt")));
}

TEST(DeleteByPattern, MissingFolderIsIgnored)
{
    TempDir dir;
    core::DeleteByPattern(dir.file("missing/*.mp4"));
    EXPECT_TRUE(fs::is_directory(dir.path()));
}

TEST(DeleteTree, RemovesNestedFolders)
{
    TempDir dir;
    std::string root = dir.file("tree");
    ASSERT_TRUE(core::CreateFolders(root + "/a/b"));
    ASSERT_TRUE(WriteFile(root + "/top.txt", "1"));
    ASSERT_TRUE(WriteFile(root + "/a/mid.txt", "2"));
    ASSERT_TRUE(WriteFile(root + "/a/b/deep.txt", "3"));

    EXPECT_TRUE(core::DeleteTree(root));
    EXPECT_FALSE(fs::exists(root));
    EXPECT_TRUE(fs::is_directory(dir.path()));
}

TEST(DeleteTree, MissingFolderGivesTrue)
{
    TempDir dir;
    EXPECT_TRUE(core::DeleteTree(dir.file("missing")));
}

TEST(DeleteTree, LinkedFolderKeepsItsContent)
{
    TempDir dir;
    std::string root = dir.file("tree");
    std::string outside = dir.file("outside");
    ASSERT_TRUE(core::CreateFolders(root));
    ASSERT_TRUE(core::CreateFolders(outside));
    ASSERT_TRUE(WriteFile(outside + "/keep.txt", "k"));
    fs::create_directory_symlink(outside, root + "/link");

    EXPECT_TRUE(core::DeleteTree(root));
    EXPECT_FALSE(fs::exists(root));
    EXPECT_TRUE(fs::exists(outside + "/keep.txt"));
}

TEST(CreateFolders, CreatesParentsAndAcceptsExisting)
{
    TempDir dir;
    std::string nested = dir.file("x/y/z");
    EXPECT_TRUE(core::CreateFolders(nested));
    EXPECT_TRUE(fs::is_directory(nested));
    EXPECT_TRUE(core::CreateFolders(nested));
}

TEST(CreateFolders, FailsOnFileInTheWay)
{
    TempDir dir;
    ASSERT_TRUE(WriteFile(dir.file("file"), "f"));
    EXPECT_FALSE(core::CreateFolders(dir.file("file/sub")));
    EXPECT_FALSE(core::CreateFolders(""));
}

TEST(StripFadeTag, ReplacesEveryFadeBlock)
{
    EXPECT_EQ(core::StripFadeTag("{\\fad(500,500)}Hello"), "{}Hello");
    EXPECT_EQ(core::StripFadeTag("{\\fad(0,1200)}A{\\fad(10,20)}B"), "{}A{}B");
}

TEST(StripFadeTag, LeavesOtherTextAlone)
{
    EXPECT_EQ(core::StripFadeTag("Hello"), "Hello");
    EXPECT_EQ(core::StripFadeTag("{\\fad(a,b)}Hi"), "{\\fad(a,b)}Hi");
    EXPECT_EQ(core::StripFadeTag("{\\fad(500,500)\\b1}Hi"), "{\\fad(500,500)\\b1}Hi");
    EXPECT_EQ(core::StripFadeTag("{\\an5}Hi"), "{\\an5}Hi");
}

} // namespace
