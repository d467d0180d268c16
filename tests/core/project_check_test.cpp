// Tests of the project check: the values of a loaded project that cannot be right, the warning
// list, the current row as saved and read, and the nesting count that runs before a project file
// is parsed.
#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/project_file.h"
#include "core/tarnwick_data.h"

namespace {

using core::CTarnwickData;
using core::ProjectWarnings;
using core::SceneEntry;
using Lines = std::vector<std::string>;

// A consistent project: a named video of 100 frames at 25 fps, two scenes inside it.
CTarnwickData GoodData()
{
    CTarnwickData data;
    data.input_file = "/videos/a.mov";
    data.output_folder = "/videos/a.mov_out/";
    data.output_name = "a_trim.mp4";
    data.pts_file = "/videos/a.mov_out/a_pts.csv";
    data.viInput.fps = 25;
    data.viInput.frame_num = 100;
    data.viInput.width = 320;
    data.viInput.height = 240;
    data.diff_list.emplace_back(0, 49, "/videos/a.mov_out/a_seg_0_49.mp4");
    data.diff_list.emplace_back(60, 99, "/videos/a.mov_out/a_seg_60_99.mp4");
    return data;
}

Lines Check(const CTarnwickData &data)
{
    ProjectWarnings warnings;
    core::CheckProjectData(data, warnings);
    return warnings.Lines();
}

TEST(ProjectDataCheck, ConsistentProjectGivesNoWarnings)
{
    EXPECT_EQ(Check(GoodData()), Lines{});
}

TEST(ProjectDataCheck, FreshProjectGivesNoWarnings)
{
    EXPECT_EQ(Check(CTarnwickData()), Lines{});
}

TEST(ProjectDataCheck, NegativeFrameNumbersAreNamedWithTheirScene)
{
    CTarnwickData data = GoodData();
    data.diff_list[1].framNo_first = -5;
    data.diff_list[1].framNo_second = 0;
    EXPECT_EQ(Check(data),
              Lines{"diff_list[1].framNo_first (scene 2): -5 is negative; frames count from 0"});
}

TEST(ProjectDataCheck, LastFrameBeforeFirstIsNamed)
{
    CTarnwickData data = GoodData();
    data.diff_list[0].framNo_first = 40;
    data.diff_list[0].framNo_second = 10;
    EXPECT_EQ(Check(data),
              Lines{"diff_list[0] (scene 1): framNo_second 10 is before framNo_first 40; the scene "
                    "has no frames"});
}

TEST(ProjectDataCheck, FramesAtOrBeyondFrameNumAreNamed)
{
    CTarnwickData data = GoodData();
    data.diff_list[1].framNo_second = 100;
    data.diff_list.emplace_back(150, 160, "/videos/a.mov_out/a_seg_150_160.mp4");
    EXPECT_EQ(Check(data),
              (Lines{"diff_list[1].framNo_second (scene 2): 100 is at or beyond frame_num 100; the "
                     "last frame is 99",
                     "diff_list[2].framNo_first (scene 3): 150 is at or beyond frame_num 100; the "
                     "last frame is 99",
                     "diff_list[2].framNo_second (scene 3): 160 is at or beyond frame_num 100; the "
                     "last frame is 99"}));
}

TEST(ProjectDataCheck, UnknownFrameCountBoundsNoFrame)
{
    CTarnwickData data = GoodData();
    data.viInput.frame_num = 0;
    data.diff_list[1].framNo_second = 5000000;
    data.diff_list[1].fileName = "/videos/a.mov_out/a_seg_60_5000000.mp4";
    EXPECT_EQ(Check(data), Lines{});
}

TEST(ProjectDataCheck, RateThatIsNotAboveZeroIsNamedWhenAVideoIsNamed)
{
    for (double fps : {0.0, -25.0}) {
        SCOPED_TRACE(fps);
        CTarnwickData data = GoodData();
        data.diff_list.clear();
        data.viInput.fps = fps;
        EXPECT_EQ(Check(data),
                  Lines{"fps: " + std::string(fps == 0 ? "0" : "-25") +
                        " is not a frame rate; the times of the scenes cannot be computed"});
    }
}

TEST(ProjectDataCheck, RateThatIsNotFiniteIsNamedWhenThereAreScenes)
{
    CTarnwickData data = GoodData();
    data.input_file.clear();
    data.viInput.fps = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Check(data),
              Lines{"fps: inf is not a frame rate; the times of the scenes cannot be computed"});
    data.viInput.fps = std::nan("");
    EXPECT_EQ(Check(data).size(), 1u);
}

TEST(ProjectDataCheck, RateIsNotNeededWithoutVideoOrScenes)
{
    CTarnwickData data;
    data.viInput.fps = 0;
    data.output_name = "x.mp4";
    EXPECT_EQ(Check(data), Lines{});
}

TEST(ProjectDataCheck, NegativeSizesAndFrameCountAreNamed)
{
    CTarnwickData data = GoodData();
    data.viInput.width = -320;
    data.viInput.height = -1;
    data.viInput.frame_num = -7;
    EXPECT_EQ(
        Check(data),
        (Lines{"frame_num: -7 is negative", "width: -320 is negative", "height: -1 is negative"}));
}

TEST(ProjectDataCheck, AspectSidesNotAboveZeroAreNamed)
{
    CTarnwickData data = GoodData();
    data.viInput.sar_num = -4;
    data.viInput.sar_den = 0;
    EXPECT_EQ(Check(data),
              (Lines{"sar_den: 0 is not above 0; the aspect ratio is undefined",
                     "sar_num: -4 is not above 0; the aspect ratio is undefined (only 0:1 stands "
                     "for an unknown one)"}));
    data.viInput.sar_num = 0;
    data.viInput.sar_den = 3;
    EXPECT_EQ(Check(data),
              Lines{"sar_num: 0 is not above 0; the aspect ratio is undefined (only 0:1 stands "
                    "for an unknown one)"});
}

TEST(ProjectDataCheck, UnknownAspectZeroToOneIsNotNamed)
{
    CTarnwickData data = GoodData();
    data.viInput.sar_num = 0;
    data.viInput.sar_den = 1;
    EXPECT_EQ(Check(data), Lines{});
}

TEST(ProjectDataCheck, PathsThatNoToolCanTakeAreNamed)
{
    CTarnwickData data = GoodData();
    data.input_file = "/videos/a\"b.mov";
    data.input_mp4_file = "/videos/a\nb.mp4";
    data.output_folder = "/videos/\x01out/";
    data.output_name = "trim\xFF.mp4";
    data.pts_file = "C:\\videos\\";
    data.diff_list[1].fileName = "/videos/\"seg\".mp4";
    EXPECT_EQ(Check(data),
              (Lines{"input_file: contains a double quote; no tool can be given this path",
                     "input_mp4_file: contains a line break; no tool can be given this path",
                     "output_folder: contains a control character; no tool can be given this path",
                     "output_name: is not valid UTF-8; no tool can be given this path",
                     "pts_file: ends with a backslash; no tool can be given this path",
                     "diff_list[1].fileName (scene 2): contains a double quote; no tool can be "
                     "given this path"}));
}

TEST(ProjectDataCheck, EmptyPathsAreNotNamed)
{
    CTarnwickData data = GoodData();
    data.input_mp4_file.clear();
    data.output_name.clear();
    data.diff_list[0].fileName.clear();
    EXPECT_EQ(Check(data), Lines{});
}

TEST(ProjectDataCheck, TextsThatAreNotUtf8AreNamed)
{
    CTarnwickData data = GoodData();
    data.viInput.r_frame_rate = "25\xC3/1";
    data.capTitle.caption = "\xE3\x81";
    data.capWatermark.font_name = "Im\xFFpact";
    data.diff_list[1].capParam.caption = "ok \xED\xA0\x80"; // an encoded surrogate
    EXPECT_EQ(Check(data),
              (Lines{"r_frame_rate: is not valid UTF-8; the project cannot be saved",
                     "capWatermark.font_name: is not valid UTF-8; the project cannot be saved",
                     "capTitle.caption: is not valid UTF-8; the project cannot be saved",
                     "diff_list[1].capParam.caption (scene 2): is not valid UTF-8; the project "
                     "cannot be saved"}));
}

TEST(ProjectWarnings, KeepsAtMostItsLimitAndCountsTheRest)
{
    ProjectWarnings warnings;
    EXPECT_TRUE(warnings.Empty());
    for (size_t i = 0; i < ProjectWarnings::kMaxLines + 25; ++i) {
        // Built in two steps: GCC 12 warns falsely (-Wrestrict) on a literal plus a string here.
        std::string line = std::to_string(i);
        warnings.Add(line.insert(0, 1, 'w'));
    }
    EXPECT_FALSE(warnings.Empty());
    Lines lines = warnings.Lines();
    ASSERT_EQ(lines.size(), ProjectWarnings::kMaxLines + 1);
    EXPECT_EQ(lines.front(), "w0");
    EXPECT_EQ(lines[ProjectWarnings::kMaxLines - 1], "w99");
    EXPECT_EQ(lines.back(), "... and 25 more warnings");
}

TEST(ProjectDataCheck, ManyBadScenesGiveABoundedList)
{
    CTarnwickData data = GoodData();
    data.diff_list.assign(5000, SceneEntry(-1, -1, "/videos/s.mp4"));
    Lines lines = Check(data);
    ASSERT_EQ(lines.size(), ProjectWarnings::kMaxLines + 1);
    EXPECT_EQ(lines.back(), "... and 9900 more warnings");
}

TEST(JsonNestingDepth, CountsArraysAndObjects)
{
    EXPECT_EQ(core::JsonNestingDepth("", 8), 0);
    EXPECT_EQ(core::JsonNestingDepth("42", 8), 0);
    EXPECT_EQ(core::JsonNestingDepth("{}", 8), 1);
    EXPECT_EQ(core::JsonNestingDepth(R"({"a": [{"b": {}}], "c": [[]]})", 8), 4);
}

TEST(JsonNestingDepth, IgnoresBracketsInsideStrings)
{
    EXPECT_EQ(core::JsonNestingDepth(R"({"a": "[[[[{{{{", "b": "\"[[[["})", 2), 1);
    EXPECT_EQ(core::JsonNestingDepth(R"(["\\", [[]]])", 8), 3);
}

TEST(JsonNestingDepth, StopsAtTheFirstBracketPastTheLimit)
{
    size_t offset = 0;
    EXPECT_EQ(core::JsonNestingDepth("[[[1], [[[[2]]]]]]", 4, &offset), 5);
    EXPECT_EQ(offset, 9u);
    const std::string deep(1000000, '[');
    EXPECT_EQ(core::JsonNestingDepth(deep, 8, &offset), 9);
    EXPECT_EQ(offset, 8u);
}

TEST(JsonNestingDepth, StrayClosingBracketsDoNotGoBelowZero)
{
    EXPECT_EQ(core::JsonNestingDepth("]]]][[", 8), 2);
}

} // namespace

namespace {

Lines CheckRow(const CTarnwickData &data)
{
    ProjectWarnings warnings;
    core::CheckCurrentRow(data, warnings);
    return warnings.Lines();
}

// Writes data to a project file and reads the file back as JSON text.
std::string SavedText(CTarnwickData &data, const std::string &name)
{
    const std::string path = ::testing::TempDir() + name;
    EXPECT_TRUE(data.SaveProjectFile(path));
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    std::remove(path.c_str());
    return text.str();
}

} // namespace

TEST(ProjectDataCheck, SegmentNamedAfterOtherFramesIsNamed)
{
    CTarnwickData data = GoodData();
    data.diff_list[1].framNo_first = 61; // moved without its segment following
    data.diff_list[0].fileName = "/videos/a.mov_out/cut.mp4";
    EXPECT_EQ(Check(data),
              (Lines{"diff_list[0].fileName (scene 1): cut.mp4 is not named after the scene's "
                     "frames 0 to 49 (it should end in _0_49.mp4); the next render cuts the "
                     "scene again",
                     "diff_list[1].fileName (scene 2): a_seg_60_99.mp4 is not named after the "
                     "scene's frames 61 to 99 (it should end in _61_99.mp4); the next render "
                     "cuts the scene again"}));
}

TEST(ProjectDataCheck, ReversedSceneIsNamedOnceNotAgainForItsSegment)
{
    CTarnwickData data = GoodData();
    data.diff_list[1].framNo_first = 99;
    data.diff_list[1].framNo_second = 60;
    EXPECT_EQ(Check(data),
              Lines{"diff_list[1] (scene 2): framNo_second 60 is before framNo_first 99; the "
                    "scene has no frames"});
}

TEST(ProjectDataCheck, SceneWithoutASegmentNameIsNotNamed)
{
    CTarnwickData data = GoodData();
    data.diff_list[0].fileName.clear();
    EXPECT_EQ(Check(data), Lines{});
}

TEST(ProjectCurrentRow, RowOfTheListOrNoRowOfAnEmptyListIsRight)
{
    CTarnwickData data = GoodData();
    data.list_idx = 1;
    EXPECT_EQ(CheckRow(data), Lines{});
    data.diff_list.clear();
    data.list_idx = -1;
    EXPECT_EQ(CheckRow(data), Lines{});
}

TEST(ProjectCurrentRow, RowBeforeOrPastTheListIsNamedWithTheSceneTaken)
{
    CTarnwickData data = GoodData();
    data.list_idx = -1;
    EXPECT_EQ(CheckRow(data),
              Lines{"list_idx: -1 is outside the list of 2 scenes (0 to 1); the list is kept and "
                    "scene 1 becomes the current one"});
    data.list_idx = 2;
    EXPECT_EQ(CheckRow(data),
              Lines{"list_idx: 2 is outside the list of 2 scenes (0 to 1); the list is kept and "
                    "scene 2 becomes the current one"});
}

TEST(ProjectCurrentRow, RowOfAnEmptyListIsNamed)
{
    CTarnwickData data;
    data.list_idx = 0;
    EXPECT_EQ(CheckRow(data),
              Lines{"list_idx: 0 names a scene, but the list is empty; -1 is read"});
}

TEST(ProjectFileSave, NoCurrentRowIsSavedAsTheFirstRowOfTheList)
{
    // While a job runs no row is current; the file must still hold the list as it stands.
    CTarnwickData data = GoodData();
    data.list_idx = -1;
    EXPECT_NE(SavedText(data, "row_none.twproj").find("\"list_idx\": 0,"), std::string::npos);
    data.list_idx = 5;
    EXPECT_NE(SavedText(data, "row_past.twproj").find("\"list_idx\": 1,"), std::string::npos);
    data.list_idx = 1;
    EXPECT_NE(SavedText(data, "row_kept.twproj").find("\"list_idx\": 1,"), std::string::npos);
    EXPECT_EQ(data.list_idx, 1) << "saving changes nothing in memory";
    CTarnwickData empty;
    empty.list_idx = 3;
    EXPECT_NE(SavedText(empty, "row_empty.twproj").find("\"list_idx\": -1,"), std::string::npos);
}

TEST(ProjectFileSave, NoCurrentRowSavedIsReadBackWithoutWarning)
{
    CTarnwickData data = GoodData();
    data.list_idx = -1;
    const std::string path = ::testing::TempDir() + "row_back.twproj";
    ASSERT_TRUE(data.SaveProjectFile(path));
    CTarnwickData read;
    std::vector<std::string> warnings;
    ASSERT_TRUE(read.LoadProjectFile(path, nullptr, &warnings));
    std::remove(path.c_str());
    EXPECT_EQ(read.list_idx, 0);
    EXPECT_EQ(read.diff_list.size(), 2u);
    EXPECT_EQ(warnings, Lines{});
}

TEST(ProjectFileLoad, RowInTheFileOutsideTheListIsWarnedAndAMissingRowIsNot)
{
    const std::string path = ::testing::TempDir() + "row_file.twproj";
    const std::string scenes = R"("input_file": "/v/a.mov", "fps": 25, "frame_num": 100,
        "diff_list": [{"framNo_first": 0, "framNo_second": 9}, {"framNo_first": 20,
        "framNo_second": 29}])";
    std::vector<std::string> warnings;
    CTarnwickData read;
    std::ofstream(path, std::ios::binary) << "{" << scenes << R"(, "list_idx": -1})";
    ASSERT_TRUE(read.LoadProjectFile(path, nullptr, &warnings));
    EXPECT_EQ(warnings,
              Lines{"list_idx: -1 is outside the list of 2 scenes (0 to 1); the list is kept and "
                    "scene 1 becomes the current one"});
    std::ofstream(path, std::ios::binary) << "{" << scenes << "}";
    CTarnwickData fresh;
    ASSERT_TRUE(fresh.LoadProjectFile(path, nullptr, &warnings));
    EXPECT_EQ(warnings, Lines{});
    std::remove(path.c_str());
}
