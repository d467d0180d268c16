// Tests of the project file: layout, key table, old formats, repairs and refused files.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "core/project_data_expect.h"
#include "core/project_file.h"
#include "core/tarnwick_data.h"
#include "support/test_support.h"

namespace {

using core::CapParam;
using core::CTarnwickData;
using core::ParamRange;
using core::SceneEntry;
using core::VideoInfo;
using nlohmann::json;
using testsupport::ExpectSameCaption;
using testsupport::ExpectSameData;
using testsupport::FillRichData;
using testsupport::ReadFile;
using testsupport::TempDir;
using testsupport::WriteFile;

// Loads path into a workspace with every field set and expects a refusal that leaves every
// field as it was, without a title update. Returns the error text.
std::string LoadRefused(const std::string &path)
{
    CTarnwickData data;
    FillRichData(data);
    CTarnwickData before(data);
    std::string error;
    EXPECT_FALSE(data.LoadProjectFile(path, &error));
    ExpectSameData(before, data);
    return error;
}

// A project with valid keys around one bad value, which must be refused with a reason that
// names the field.
void ExpectWrongTypeRefused(const json &bad, const std::string &reason)
{
    TempDir dir;
    std::string path = dir.file("bad.twproj");
    json doc = json::parse(R"({"input_file": "/other/x.mov", "output_folder": "/other",
        "threshold": 3, "play_vol": 1, "diff_list": [{"framNo_first": 1}, {"enable": false}],
        "capTitle": {"caption": "other"}})");
    doc.update(bad);
    ASSERT_TRUE(WriteFile(path, doc.dump()));
    EXPECT_EQ(LoadRefused(path), path + ": " + reason);
}

// Root keys in the order the text holds them (lines indented by exactly four spaces).
std::vector<std::string> RootKeysInTextOrder(const std::string &text)
{
    std::vector<std::string> keys;
    size_t pos = 0;
    while ((pos = text.find("\n    \"", pos)) != std::string::npos) {
        size_t start = pos + 6;
        size_t end = text.find('"', start);
        keys.push_back(text.substr(start, end - start));
        pos = end;
    }
    return keys;
}

TEST(ProjectFile, ThresholdIsClampedTo1000)
{
    TempDir dir;
    std::string path = dir.file("p.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"threshold": 5000})"));
    CTarnwickData data;
    ASSERT_TRUE(data.LoadProjectFile(path));
    EXPECT_EQ(data.threshold.dValue, 1000.0);
    EXPECT_EQ(data.threshold.strText, "1000");
}

TEST(ProjectFile, ParamValuesAreClampedAtTheLowEndAndTextRebuilt)
{
    TempDir dir;
    std::string path = dir.file("p.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"valid_min_unit": 0.25, "gamma": 1.755, "brightness": -7})"));
    CTarnwickData data;
    ASSERT_TRUE(data.LoadProjectFile(path));
    EXPECT_EQ(data.valid_min_unit.dValue, 1.0);
    EXPECT_EQ(data.valid_min_unit.strText, "1.0");
    EXPECT_EQ(data.gamma.dValue, 1.755);
    EXPECT_EQ(data.gamma.strText, "1.75");
    EXPECT_EQ(data.brightness.dValue, -1.0);
    EXPECT_EQ(data.brightness.strText, "-1.0");
}

TEST(ProjectFile, OldSceneCaptionsAreReadAndWrittenInNewForm)
{
    TempDir dir;
    std::string path = dir.file("old.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"diff_list": [{"enable": false, "framNo_first": 10,
        "framNo_second": 60, "fileName": "/v/s.mp4", "capTime_first": 1.5,
        "capTime_second": 4.25, "caption": "古い字幕"}]})"));
    CTarnwickData data;
    ASSERT_TRUE(data.LoadProjectFile(path));
    ASSERT_EQ(data.diff_list.size(), 1u);
    CapParam expected;
    expected.capTime_first = 1.5;
    expected.capTime_second = 4.25;
    expected.caption = "古い字幕";
    ExpectSameCaption(data.diff_list[0].capParam, expected, "read");

    std::string saved = dir.file("new.twproj");
    ASSERT_TRUE(data.SaveProjectFile(saved));
    json scene = json::parse(ReadFile(saved))["diff_list"][0];
    json expectedScene = json::parse(R"({"capParam": {"bold": 0, "capTime_first": 1.5,
        "capTime_second": 4.25, "cap_pos_type": 2, "caption": "古い字幕", "color": 16777215,
        "encoding": 128, "font_name": "Yu Gothic UI", "font_size": 24, "italic": 0,
        "outline": 2, "strike_uut": 0, "underline": 0}, "enable": false, "fileName": "/v/s.mp4",
        "framNo_first": 10, "framNo_second": 60})");
    EXPECT_EQ(scene, expectedScene);
}

TEST(ProjectFile, CaptionObjectWinsOverSceneLevelKeys)
{
    TempDir dir;
    std::string path = dir.file("p.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"diff_list": [{"caption": "old", "capTime_first": 9,
        "capParam": {"caption": "new"}}]})"));
    CTarnwickData data;
    ASSERT_TRUE(data.LoadProjectFile(path));
    ASSERT_EQ(data.diff_list.size(), 1u);
    EXPECT_EQ(data.diff_list[0].capParam.caption, "new");
    EXPECT_EQ(data.diff_list[0].capParam.capTime_first, 0.0);
}

TEST(ProjectFile, ForeignPtsFileIsRepaired)
{
    TempDir dir;
    std::string path = dir.file("p.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"input_file": "/videos/trip.mov",
        "output_folder": "/work/out", "pts_file": "x.txt"})"));
    CTarnwickData data;
    ASSERT_TRUE(data.LoadProjectFile(path));
    EXPECT_EQ(data.pts_file, "/work/out/trip_pts.csv");
}

TEST(ProjectFile, PtsFileEndingInPtsCsvIsKeptWhateverItsCase)
{
    TempDir dir;
    std::string path = dir.file("p.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"input_file": "/videos/trip.mov",
        "output_folder": "/work/out/", "pts_file": "/elsewhere/Trip_PTS.CSV"})"));
    CTarnwickData data;
    ASSERT_TRUE(data.LoadProjectFile(path));
    EXPECT_EQ(data.pts_file, "/elsewhere/Trip_PTS.CSV");
}

TEST(ProjectFile, PtsListIsLoadedFromThePtsFile)
{
    TempDir dir;
    std::string path = dir.file("p.twproj");
    std::string pts = dir.file("clip_pts.csv");
    ASSERT_TRUE(WriteFile(pts, "0.000000\n0.040000\n\n0.080000\n"));
    ASSERT_TRUE(WriteFile(path, json({{"pts_file", pts}}).dump()));
    CTarnwickData data;
    data.pts_list = {7.0};
    ASSERT_TRUE(data.LoadProjectFile(path));
    EXPECT_EQ(data.pts_list, (std::vector<double>{0.0, 0.04, 0.08}));
}

TEST(ProjectFile, OpenedPathWinsOverStoredProjectFile)
{
    TempDir dir;
    std::string path = dir.file("moved.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"project_file": "/old/place/moved.twproj"})"));
    CTarnwickData data;
    ASSERT_TRUE(data.LoadProjectFile(path));
    EXPECT_EQ(data.project_file, path);
    EXPECT_EQ(data.BuildTitle().rfind("moved.twproj", 0), 0u) << data.BuildTitle();
}

TEST(ProjectFile, OutputFolderGetsATrailingSlash)
{
    TempDir dir;
    std::string path = dir.file("p.twproj");
    CTarnwickData data;
    ASSERT_TRUE(WriteFile(path, R"({"output_folder": "/videos/out"})"));
    ASSERT_TRUE(data.LoadProjectFile(path));
    EXPECT_EQ(data.output_folder, "/videos/out/");
    ASSERT_TRUE(WriteFile(path, R"({"output_folder": "/videos/out/"})"));
    ASSERT_TRUE(data.LoadProjectFile(path));
    EXPECT_EQ(data.output_folder, "/videos/out/");
    ASSERT_TRUE(WriteFile(path, R"({"output_folder": ""})"));
    ASSERT_TRUE(data.LoadProjectFile(path));
    EXPECT_EQ(data.output_folder, "/");
}

TEST(ProjectFile, SavedKeysAreSorted)
{
    TempDir dir;
    std::string path = dir.file("p.twproj");
    CTarnwickData data;
    FillRichData(data);
    ASSERT_TRUE(data.SaveProjectFile(path));
    std::string text = ReadFile(path);
    size_t title = text.find("\"capTitle\"");
    size_t watermark = text.find("\"capWatermark\"");
    size_t contrast = text.find("\"contrast\"");
    ASSERT_NE(title, std::string::npos);
    EXPECT_LT(title, watermark);
    EXPECT_LT(watermark, contrast);
    std::vector<std::string> keys = RootKeysInTextOrder(text);
    EXPECT_EQ(keys.size(), 33u);
    EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end()));
}

TEST(ProjectFile, SavedFileLayoutIsExact)
{
    TempDir dir;
    std::string path = dir.file("a.twproj");
    CTarnwickData data;
    data.input_file = "/v/a.mov";
    data.output_folder = "/v/a.mov_out/";
    data.output_name = "a_trim.mp4";
    data.pts_file = "/v/a.mov_out/a_pts.csv";
    data.cine_sco = 1;
    data.list_idx = 0;
    data.viInput.r_frame_rate = "25/1";
    data.viInput.fps = 25;
    data.viInput.frame_num = 50;
    data.viInput.width = 320;
    data.viInput.height = 240;
    data.viInput.field_order = "progressive";
    SceneEntry scene(0, 49, "/v/a.mov_out/a_seg_0_49.mp4");
    scene.SetCaption(0, 2, "Hi");
    data.diff_list.push_back(scene);
    ASSERT_TRUE(data.SaveProjectFile(path));
    const std::string expected = "\xEF\xBB\xBF"
                                 R"({
    "brightness": 0.0,
    "capTitle": {
        "bold": -1,
        "capTime_first": 0.0,
        "capTime_second": 3.0,
        "cap_pos_type": 5,
        "caption": "",
        "color": 16777215,
        "encoding": 128,
        "font_name": "Yu Gothic UI",
        "font_size": 32,
        "italic": 0,
        "outline": 2,
        "strike_uut": 0,
        "underline": 0
    },
    "capWatermark": {
        "bold": 0,
        "capTime_first": 0.0,
        "capTime_second": 36000.0,
        "cap_pos_type": 5,
        "caption": "TarnwickMP4\\NBrindlemoor.",
        "color": 3238002687,
        "encoding": 0,
        "font_name": "Impact",
        "font_size": 37,
        "italic": 0,
        "outline": 0,
        "strike_uut": 0,
        "underline": 0
    },
    "cine_sco": true,
    "contrast": 1.0,
    "cut_min_unit": 1.0,
    "diff_list": [
        {
            "capParam": {
                "bold": 0,
                "capTime_first": 0.0,
                "capTime_second": 2.0,
                "cap_pos_type": 2,
                "caption": "Hi",
                "color": 16777215,
                "encoding": 128,
                "font_name": "Yu Gothic UI",
                "font_size": 24,
                "italic": 0,
                "outline": 2,
                "strike_uut": 0,
                "underline": 0
            },
            "enable": true,
            "fileName": "/v/a.mov_out/a_seg_0_49.mp4",
            "framNo_first": 0,
            "framNo_second": 49
        }
    ],
    "field_order": "progressive",
    "fps": 25.0,
    "frame_num": 50,
    "gamma": 1.0,
    "height": 240,
    "input_file": "/v/a.mov",
    "input_mp4_file": "",
    "list_idx": 0,
    "output_folder": "/v/a.mov_out/",
    "output_name": "a_trim.mp4",
    "play_loop": false,
    "play_scene_loop": false,
    "play_vol": 5,
    "primaries": false,
    "project_file": "",
    "pts_file": "/v/a.mov_out/a_pts.csv",
    "r_frame_rate": "25/1",
    "rotation": 0,
    "sar_den": 1,
    "sar_num": 1,
    "saturation": 1.0,
    "start_frame": 0,
    "threshold": 100.0,
    "transition": false,
    "valid_min_unit": 1.0,
    "width": 320
})"
                                 "\n";
    EXPECT_EQ(ReadFile(path), expected);
}

TEST(ProjectFile, SaveWritesTheEarlierProjectPathThenTakesTheNewOne)
{
    TempDir dir;
    std::string first = dir.file("first.twproj");
    std::string second = dir.file("second.twproj");
    CTarnwickData data;
    ASSERT_TRUE(data.SaveProjectFile(first));
    EXPECT_EQ(json::parse(ReadFile(first))["project_file"], "");
    EXPECT_EQ(data.project_file, first);
    ASSERT_TRUE(data.SaveProjectFile(second));
    EXPECT_EQ(json::parse(ReadFile(second))["project_file"], first);
    EXPECT_EQ(data.project_file, second);
    EXPECT_EQ(data.BuildTitle().rfind("second.twproj", 0), 0u) << data.BuildTitle();
}

TEST(ProjectFile, JapaneseCaptionsRoundTrip)
{
    TempDir dir;
    std::string path = dir.file("日本語.twproj");
    CTarnwickData saved;
    FillRichData(saved);
    ASSERT_TRUE(saved.SaveProjectFile(path));
    std::string text = ReadFile(path);
    EXPECT_NE(text.find("\"caption\": \"シーン0 猫が通る\""), std::string::npos);
    EXPECT_NE(text.find("\"caption\": \"{\\\\fad(500,500)}旅の記録\""), std::string::npos);

    CTarnwickData loaded;
    ASSERT_TRUE(loaded.LoadProjectFile(path));
    // Only what the file carries is compared; the rest is the loading workspace's own.
    CTarnwickData expected(loaded);
    expected.project_file = path;
    expected.input_file = saved.input_file;
    expected.input_mp4_file = saved.input_mp4_file;
    expected.output_folder = saved.output_folder;
    expected.output_name = saved.output_name;
    expected.pts_file = saved.pts_file;
    expected.diff_list.clear();
    for (SceneEntry entry : saved.diff_list) {
        entry.bAnalyzed = false;
        entry.strOriginalFile.clear();
        entry.strWorkFile.clear();
        entry.viIn = VideoInfo();
        entry.viOut = VideoInfo();
        expected.diff_list.push_back(entry);
    }
    expected.cine_sco = saved.cine_sco;
    expected.transition = saved.transition;
    expected.primaries = saved.primaries;
    for (ParamRange CTarnwickData::*param : {&CTarnwickData::threshold,
                                             &CTarnwickData::brightness,
                                             &CTarnwickData::saturation,
                                             &CTarnwickData::contrast,
                                             &CTarnwickData::gamma,
                                             &CTarnwickData::valid_min_unit,
                                             &CTarnwickData::cut_min_unit}) {
        expected.*param = saved.*param;
    }
    expected.play_scene_loop = saved.play_scene_loop;
    expected.play_loop = saved.play_loop;
    expected.list_idx = saved.list_idx;
    expected.viInput = saved.viInput;
    expected.viInput.bHasAudio = false;
    expected.play_vol = saved.play_vol;
    expected.capWatermark = saved.capWatermark;
    expected.capTitle = saved.capTitle;
    ExpectSameData(expected, loaded);
    EXPECT_EQ(loaded.diff_list[1].bEnable, false);
    EXPECT_EQ(loaded.diff_list[0].capParam.caption, "シーン0 猫が通る");
}

TEST(ProjectFile, OldFormatRootCaptionKeysOnlySetTheTitle)
{
    TempDir dir;
    std::string path = dir.file("old.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"input_file": "/videos/old.trip.mov",
        "output_folder": "/videos/out", "font_name": "Meiryo", "font_size": 40, "color": 255,
        "bold": 1, "italic": 1, "underline": 1, "strike_uut": 1, "encoding": 1,
        "cap_pos_type": 8, "diff_list": [{"framNo_first": 0, "framNo_second": 10,
        "fileName": "/videos/out/s.mp4", "capTime_first": 1.5, "capTime_second": 3.25,
        "caption": "古い字幕"}, {"framNo_first": 20, "framNo_second": 30}]})"));
    CTarnwickData data;
    ASSERT_TRUE(data.LoadProjectFile(path));
    ASSERT_EQ(data.diff_list.size(), 2u);
    CapParam first;
    first.capTime_first = 1.5;
    first.capTime_second = 3.25;
    first.caption = "古い字幕";
    ExpectSameCaption(data.diff_list[0].capParam, first, "scene 0");
    ExpectSameCaption(data.diff_list[1].capParam, CapParam(), "scene 1");
    CapParam title = core::DefaultTitle();
    title.caption = "{\\fad(500,500)}/videos/old.trip";
    ExpectSameCaption(data.capTitle, title, "capTitle");
    ExpectSameCaption(data.capWatermark, core::DefaultWatermark(), "capWatermark");
}

TEST(ProjectFile, OldFormatKeepsATitleThatIsThere)
{
    TempDir dir;
    std::string path = dir.file("old.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"input_file": "/videos/a.mov", "font_name": "Meiryo",
        "capTitle": {"caption": "Mine"}})"));
    CTarnwickData data;
    ASSERT_TRUE(data.LoadProjectFile(path));
    EXPECT_EQ(data.capTitle.caption, "Mine");
}

TEST(ProjectFile, FontNameThatIsNotAStringMakesNoTitle)
{
    TempDir dir;
    std::string path = dir.file("old.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"input_file": "/videos/a.mov", "font_name": 5})"));
    CTarnwickData data;
    ASSERT_TRUE(data.LoadProjectFile(path));
    EXPECT_EQ(data.capTitle.caption, "");
}

TEST(ProjectFile, WrongTypeInSceneIsRefusedAndDataUntouched)
{
    ExpectWrongTypeRefused(
        json::parse(R"({"diff_list": [{"framNo_first": "abc"}]})"),
        "diff_list[0].framNo_first (scene 1): expected a number, found a string");
}

TEST(ProjectFile, NonBooleanEnableIsRefusedAndDataUntouched)
{
    ExpectWrongTypeRefused(json::parse(R"({"diff_list": [{"enable": 1}]})"),
                           "diff_list[0].enable (scene 1): expected true or false, found a number");
}

TEST(ProjectFile, WrongTypeInCapParamIsRefusedAndDataUntouched)
{
    ExpectWrongTypeRefused(
        json::parse(R"({"diff_list": [{"capParam": {"caption": 5}}]})"),
        "diff_list[0].capParam.caption (scene 1): expected a string, found a number");
}

TEST(ProjectFile, WrongTypeInOldSceneCaptionIsRefusedAndDataUntouched)
{
    ExpectWrongTypeRefused(
        json::parse(R"({"diff_list": [{"capTime_first": "1.5"}]})"),
        "diff_list[0].capTime_first (scene 1): expected a number, found a string");
}

TEST(ProjectFile, WrongTypeInCapWatermarkIsRefusedAndDataUntouched)
{
    ExpectWrongTypeRefused(json::parse(R"({"capWatermark": {"font_size": "big"}})"),
                           "capWatermark.font_size: expected a number, found a string");
}

TEST(ProjectFile, WrongTypeInCapTitleIsRefusedAndDataUntouched)
{
    ExpectWrongTypeRefused(json::parse(R"({"capTitle": {"capTime_first": true}})"),
                           "capTitle.capTime_first: expected a number, found a boolean");
}

TEST(ProjectFile, ColourOfWrongTypeIsRefusedAndDataUntouched)
{
    ExpectWrongTypeRefused(json::parse(R"({"capTitle": {"color": "white"}})"),
                           "capTitle.color: expected a number, found a string");
}

TEST(ProjectFile, MissingFileIsRefusedAndDataUntouched)
{
    TempDir dir;
    std::string path = dir.file("none.twproj");
    EXPECT_EQ(LoadRefused(path), path + ": cannot open the file: No such file or directory");
}

TEST(ProjectFile, EmptyFileIsRefusedAndDataUntouched)
{
    TempDir dir;
    std::string path = dir.file("empty.twproj");
    ASSERT_TRUE(WriteFile(path, ""));
    EXPECT_EQ(LoadRefused(path), path + ": the file is empty");
}

TEST(ProjectFile, FolderIsRefusedAndDataUntouched)
{
    TempDir dir;
    EXPECT_EQ(LoadRefused(dir.path()), dir.path() + ": not a regular file");
}

TEST(ProjectFile, InvalidJsonIsRefusedWithTheParserMessage)
{
    TempDir dir;
    std::string path = dir.file("bad.twproj");
    ASSERT_TRUE(WriteFile(path, "{\"threshold\": 5,"));
    std::string error = LoadRefused(path);
    std::string front = path + ": not a valid JSON file: [json.exception.parse_error.101] ";
    EXPECT_EQ(error.substr(0, front.size()), front) << error;
    EXPECT_EQ(error.find('\n'), std::string::npos);
}

TEST(ProjectFile, NonObjectRootIsRefusedAndDataUntouched)
{
    const struct
    {
        const char *text;
        const char *found;
    } cases[] = {
        {"null", "null"},
        {"[1, 2]", "an array"},
        {"42", "a number"},
        {"\"text\"", "a string"},
        {"true", "a boolean"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text);
        TempDir dir;
        std::string path = dir.file("p.twproj");
        ASSERT_TRUE(WriteFile(path, c.text));
        EXPECT_EQ(LoadRefused(path),
                  path + ": not a project file: the JSON root is " + c.found + ", not an object");
    }
}

TEST(ProjectFile, RootKeysOfWrongTypeAreSkipped)
{
    TempDir dir;
    std::string path = dir.file("p.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"input_file": 5, "output_folder": "/o/", "threshold": "x",
        "cine_sco": 0, "list_idx": "3", "fps": "25", "play_vol": null, "diff_list": {},
        "r_frame_rate": 30})"));
    CTarnwickData data;
    FillRichData(data);
    CTarnwickData before(data);
    ASSERT_TRUE(data.LoadProjectFile(path));
    EXPECT_EQ(data.input_file, before.input_file);
    EXPECT_EQ(data.output_folder, "/o/");
    EXPECT_EQ(data.threshold.dValue, before.threshold.dValue);
    EXPECT_EQ(data.threshold.strText, before.threshold.strText);
    EXPECT_EQ(data.cine_sco, 1);
    EXPECT_EQ(data.list_idx, before.list_idx);
    EXPECT_EQ(data.viInput.fps, before.viInput.fps);
    EXPECT_EQ(data.viInput.r_frame_rate, before.viInput.r_frame_rate);
    EXPECT_EQ(data.play_vol, before.play_vol);
    EXPECT_TRUE(data.diff_list.empty());
}

TEST(ProjectFile, SceneListIsClearedWhenTheKeyIsMissing)
{
    TempDir dir;
    std::string path = dir.file("p.twproj");
    ASSERT_TRUE(WriteFile(path, "{}"));
    CTarnwickData data;
    FillRichData(data);
    ASSERT_TRUE(data.LoadProjectFile(path));
    EXPECT_TRUE(data.diff_list.empty());
}

TEST(ProjectFile, IntegerFieldsTakeFloatsTruncatedAndSaturated)
{
    TempDir dir;
    std::string path = dir.file("p.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"list_idx": 2.9, "width": -3.7, "height": 1e12,
        "frame_num": 4294967297, "play_vol": true})"));
    CTarnwickData data;
    ASSERT_TRUE(data.LoadProjectFile(path));
    EXPECT_EQ(data.list_idx, 2);
    EXPECT_EQ(data.viInput.width, -3);
    EXPECT_EQ(data.viInput.height, 2147483647);
    EXPECT_EQ(data.viInput.frame_num, 1);
    EXPECT_EQ(data.play_vol, 5); // a boolean is not a number at the root
}

TEST(ProjectFile, PartialCaptionObjectStartsFromDefaults)
{
    TempDir dir;
    std::string path = dir.file("p.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"capWatermark": {"caption": "W", "font_size": 50}})"));
    CTarnwickData data;
    FillRichData(data);
    ASSERT_TRUE(data.LoadProjectFile(path));
    CapParam expected;
    expected.caption = "W";
    expected.font_size = 50;
    ExpectSameCaption(data.capWatermark, expected, "capWatermark");
}

TEST(ProjectFile, NonObjectScenesAndCaptionsReadAsDefaults)
{
    TempDir dir;
    std::string path = dir.file("p.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"diff_list": [5, "x", null, [1]], "capTitle": 7,
        "capWatermark": [], "output_folder": "/o/"})"));
    CTarnwickData data;
    FillRichData(data);
    ASSERT_TRUE(data.LoadProjectFile(path));
    ASSERT_EQ(data.diff_list.size(), 4u);
    for (size_t i = 0; i < data.diff_list.size(); ++i) {
        testsupport::ExpectSameScene(data.diff_list[i], SceneEntry(), i);
    }
    ExpectSameCaption(data.capTitle, CapParam(), "capTitle");
    ExpectSameCaption(data.capWatermark, CapParam(), "capWatermark");
}

TEST(ProjectFile, ColourIsReadFromBooleanSignedUnsignedAndFloat)
{
    const struct
    {
        const char *text;
        uint32_t colour;
    } cases[] = {
        {"true", 1u},
        {"false", 0u},
        {"-1", 0xFFFFFFFFu},
        {"255.9", 255u},
        {"-1.5", 0xFFFFFFFFu},
        {"4294967297", 1u},
        {"3238002687", 0xC0FFFFFFu},
        {"1e10", 1410065408u},
    };
    TempDir dir;
    std::string path = dir.file("p.twproj");
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text);
        ASSERT_TRUE(WriteFile(path, std::string(R"({"capTitle": {"color": )") + c.text + "}}"));
        CTarnwickData data;
        ASSERT_TRUE(data.LoadProjectFile(path));
        EXPECT_EQ(data.capTitle.color, c.colour);
    }
}

TEST(ProjectFile, InvalidUtf8SaveFailsAndTheOldFileStays)
{
    TempDir dir;
    std::string path = dir.file("p.twproj");
    ASSERT_TRUE(WriteFile(path, "OLD CONTENT"));
    for (int where = 0; where < 2; ++where) {
        SCOPED_TRACE(where);
        CTarnwickData data;
        FillRichData(data);
        if (where == 0) {
            data.input_file = "/videos/\xFF.mov";
        } else {
            data.diff_list[2].capParam.caption = "ab\xC3";
        }
        CTarnwickData before(data);
        std::string error;
        EXPECT_FALSE(data.SaveProjectFile(path, &error));
        EXPECT_EQ(error.rfind(path + ": not saved, a text of the project is not valid UTF-8 "
                                     "([json.exception.type_error.316] ",
                              0),
                  0u)
            << error;
        EXPECT_EQ(ReadFile(path), "OLD CONTENT");
        ExpectSameData(before, data);
        EXPECT_FALSE(std::filesystem::exists(path + ".tmp"));
    }
}

TEST(ProjectFile, UnwritableTargetFailsWithDataUnchanged)
{
    TempDir dir;
    std::string folderTarget = dir.file("folder.twproj");
    std::filesystem::create_directory(folderTarget);
    for (const std::string &path : {folderTarget, dir.file("no/such/p.twproj")}) {
        SCOPED_TRACE(path);
        CTarnwickData data;
        FillRichData(data);
        CTarnwickData before(data);
        std::string error;
        EXPECT_FALSE(data.SaveProjectFile(path, &error));
        EXPECT_EQ(error.rfind(path + ": cannot write the file: ", 0), 0u) << error;
        ExpectSameData(before, data);
        EXPECT_FALSE(std::filesystem::exists(path + ".tmp"));
    }
    EXPECT_TRUE(std::filesystem::is_directory(folderTarget));
}

TEST(ProjectFile, SaveReplacesTheFileWholeAndKeepsItsPermissions)
{
    TempDir dir;
    std::string path = dir.file("p.twproj");
    ASSERT_TRUE(WriteFile(path, std::string(100000, 'x')));
    std::filesystem::permissions(path, std::filesystem::perms(0640));
    CTarnwickData data;
    ASSERT_TRUE(data.SaveProjectFile(path));
    std::string text = ReadFile(path);
    EXPECT_EQ(text.substr(0, 4), "\xEF\xBB\xBF{");
    EXPECT_EQ(text.back(), '\n');
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0640));
    size_t files = 0;
    for (const auto &entry : std::filesystem::directory_iterator(dir.path())) {
        EXPECT_EQ(entry.path().string(), path);
        ++files;
    }
    EXPECT_EQ(files, 1u);
}

TEST(CheckJsonKey, AnswersEachKindName)
{
    json object = json::parse(R"({"i": -1, "u": 1, "f": 1.5, "s": "x", "b": true, "a": [],
        "o": {}, "n": null})");
    object["u"] = 1u;
    const struct
    {
        const char *key;
        const char *kind;
        bool expected;
    } cases[] = {
        {"i", "is_number", true},         {"u", "is_number", true},
        {"f", "is_number", true},         {"s", "is_number", false},
        {"b", "is_number", false},        {"i", "is_number_integer", true},
        {"u", "is_number_integer", true}, {"f", "is_number_integer", false},
        {"f", "is_number_float", true},   {"i", "is_number_float", false},
        {"u", "is_number_float", false},  {"s", "is_string", true},
        {"i", "is_string", false},        {"b", "is_boolean", true},
        {"i", "is_boolean", false},       {"a", "is_array", true},
        {"o", "is_array", false},         {"n", "is_string", false},
        {"missing", "is_number", false},  {"i", "is_object", false},
        {"n", "is_null", false},          {"i", "", false},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.key) + " " + c.kind);
        EXPECT_EQ(core::CheckJsonKey(object, c.key, c.kind), c.expected);
    }
}

TEST(CheckJsonKey, NonObjectRootGivesFalse)
{
    for (const char *text : {"[\"i\"]", "1", "\"i\"", "null", "true"}) {
        SCOPED_TRACE(text);
        json root = json::parse(text);
        for (const char *kind : {"is_number", "is_string", "is_boolean", "is_array"}) {
            EXPECT_FALSE(core::CheckJsonKey(root, "i", kind));
        }
    }
}

} // namespace
