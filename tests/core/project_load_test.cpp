// Tests of loading a project file: the limits checked before parsing, type errors that name
// their field, and the warnings about values that are read but cannot be right.
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/project_data_expect.h"
#include "core/project_file.h"
#include "core/tarnwick_data.h"
#include "support/test_support.h"

namespace {

using core::CTarnwickData;
using testsupport::ExpectSameData;
using testsupport::FillRichData;
using testsupport::TempDir;
using testsupport::WriteFile;
using Lines = std::vector<std::string>;

// A consistent project around the keys of extra (a JSON text of members, without braces).
std::string Project(const std::string &extra)
{
    std::string text = R"({"input_file": "/videos/a.mov", "output_folder": "/videos/a.mov_out/",
        "fps": 25.0, "frame_num": 100)";
    return text + (extra.empty() ? "" : ", " + extra) + "}";
}

// Loads text from a file and expects success; returns the warnings.
Lines LoadWarnings(const std::string &text)
{
    TempDir dir;
    std::string path = dir.file("p.twproj");
    EXPECT_TRUE(WriteFile(path, text));
    CTarnwickData data;
    std::string error;
    Lines warnings{"left from before"};
    EXPECT_TRUE(data.LoadProjectFile(path, &error, &warnings)) << error;
    return warnings;
}

// Loads path into a workspace with every field set, expects a refusal that leaves it untouched
// and no warnings; returns the error text.
std::string LoadRefused(const std::string &path)
{
    CTarnwickData data;
    FillRichData(data);
    CTarnwickData before(data);
    std::string error;
    Lines warnings{"left from before"};
    EXPECT_FALSE(data.LoadProjectFile(path, &error, &warnings));
    ExpectSameData(before, data);
    EXPECT_TRUE(warnings.empty());
    EXPECT_EQ(error.find('\n'), std::string::npos);
    return error;
}

std::string RefusedText(const std::string &text)
{
    TempDir dir;
    std::string path = dir.file("p.twproj");
    EXPECT_TRUE(WriteFile(path, text));
    std::string error = LoadRefused(path);
    EXPECT_EQ(error.rfind(path + ": ", 0), 0u) << error;
    return error.substr(std::min(error.size(), path.size() + 2));
}

TEST(ProjectLoad, ConsistentProjectHasNoWarnings)
{
    EXPECT_EQ(LoadWarnings(Project(R"("diff_list": [{"framNo_first": 0, "framNo_second": 99,
        "fileName": "/videos/a.mov_out/a_seg_0_99.mp4"}], "list_idx": 0)")),
              Lines{});
}

TEST(ProjectLoad, FileOverTheSizeLimitIsRefusedBeforeReading)
{
    TempDir dir;
    std::string path = dir.file("huge.twproj");
    ASSERT_TRUE(WriteFile(path, "{}"));
    std::filesystem::resize_file(path, core::kMaxProjectFileBytes + 1);
    EXPECT_EQ(LoadRefused(path),
              path + ": the file is 67108865 bytes; a project file is at most 64 MiB");
}

TEST(ProjectLoad, FileAtTheSizeLimitIsRead)
{
    std::string text = Project("");
    text += std::string(core::kMaxProjectFileBytes - text.size(), ' ');
    EXPECT_EQ(LoadWarnings(text), Lines{});
}

TEST(ProjectLoad, NestingDeeperThanAProjectNeedsIsRefused)
{
    std::string text = Project(R"("x": [[[[[[[[1]]]]]]]])");
    size_t ninth = text.find("[[[[[[[[") + 7; // the root is the first level
    EXPECT_EQ(RefusedText(text),
              "not a project file: arrays and objects are nested more than 8 deep at byte " +
                  std::to_string(ninth + 1));
    EXPECT_EQ(RefusedText(std::string(5000000, '[')),
              "not a project file: arrays and objects are nested more than 8 deep at byte 9");
}

TEST(ProjectLoad, BinaryFileIsRefusedAsNotJsonText)
{
    const std::string binary =
        "not a project file: it holds binary data (a video, perhaps), not the JSON text of a "
        "project";
    // The start of an MP4 file, and its "[" and "{" bytes further on.
    std::string mp4("\0\0\0\x20"
                    "ftypisom\0\0\x02\0isomiso2avc1mp41",
                    32);
    mp4 += std::string(20, '[') + "moov";
    EXPECT_EQ(RefusedText(mp4), binary);
    // One NUL byte anywhere, even after a whole project.
    EXPECT_EQ(RefusedText(Project("") + std::string(1, '\0')), binary);
}

TEST(ProjectLoad, NestingUpToTheLimitIsRead)
{
    EXPECT_EQ(LoadWarnings(Project(R"("x": [[[[[[[1]]]]]]], "y": "[[[[[[[[[[")")), Lines{});
}

TEST(ProjectLoad, MoreScenesThanTheLimitAreRefused)
{
    std::string scenes = "0";
    for (size_t i = 1; i <= core::kMaxProjectScenes; ++i) {
        scenes += ",0";
    }
    EXPECT_EQ(RefusedText(R"({"diff_list": [)" + scenes + "]}"),
              "not a project file: diff_list holds more than 200000 scenes");
}

TEST(ProjectLoad, ScenesUpToTheLimitAreRead)
{
    std::string scenes = "{}";
    for (size_t i = 1; i < core::kMaxProjectScenes; ++i) {
        scenes += ",{}";
    }
    TempDir dir;
    std::string path = dir.file("p.twproj");
    ASSERT_TRUE(WriteFile(path, Project(R"("diff_list": [)" + scenes + "]")));
    CTarnwickData data;
    std::vector<std::string> warnings;
    ASSERT_TRUE(data.LoadProjectFile(path, nullptr, &warnings));
    EXPECT_EQ(data.diff_list.size(), core::kMaxProjectScenes);
    EXPECT_EQ(warnings, Lines{});
}

TEST(ProjectLoad, TypeErrorNamesTheFieldAndTheScene)
{
    EXPECT_EQ(RefusedText(Project(R"("diff_list": [{"framNo_first": 1}, {},
        {"framNo_first": "12"}])")),
              "diff_list[2].framNo_first (scene 3): expected a number, found a string");
    EXPECT_EQ(RefusedText(Project(R"("diff_list": [{}, {"capParam": {"font_size": [24]}}])")),
              "diff_list[1].capParam.font_size (scene 2): expected a number, found an array");
    EXPECT_EQ(RefusedText(Project(R"("diff_list": [{"fileName": null}])")),
              "diff_list[0].fileName (scene 1): expected a string, found null");
    EXPECT_EQ(RefusedText(Project(R"("capTitle": {"caption": {"text": "x"}})")),
              "capTitle.caption: expected a string, found an object");
}

TEST(ProjectLoad, ControlCharactersAndInvalidUtf8OfTheLibraryTextArePrinted)
{
    std::string error = RefusedText("{\"input_file\": \"a\xFF\x01\"}");
    EXPECT_EQ(error.rfind("not a valid JSON file: [json.exception.parse_error.101] ", 0), 0u)
        << error;
    EXPECT_NE(error.find("\\xFF"), std::string::npos) << error;
    for (char c : error) {
        EXPECT_TRUE(static_cast<unsigned char>(c) >= 0x20 && c != 0x7F) << error;
    }
}

TEST(ProjectLoad, MissingInputFileIsNoted)
{
    EXPECT_EQ(LoadWarnings("{}"), Lines{"input_file: missing; the project names no video"});
}

TEST(ProjectLoad, EmptyInputFileIsNoted)
{
    EXPECT_EQ(LoadWarnings(R"({"input_file": ""})"),
              Lines{"input_file: empty; the project names no video"});
}

TEST(ProjectLoad, RootKeysOfWrongTypeAreNotedAndIgnored)
{
    EXPECT_EQ(LoadWarnings(Project(R"("diff_list": "x", "cine_sco": 0, "play_vol": null,
        "output_name": 5, "gamma": "1.0")")),
              (Lines{"output_name: expected a string, found a number; ignored",
                     "cine_sco: expected true or false, found a number; ignored",
                     "diff_list: expected an array of scenes, found a string; ignored",
                     "gamma: expected a number, found a string; ignored",
                     "play_vol: expected a number, found null; ignored"}));
}

TEST(ProjectLoad, InputFileOfWrongTypeIsNotedOnce)
{
    EXPECT_EQ(LoadWarnings(R"({"input_file": ["/videos/a.mov"]})"),
              Lines{"input_file: expected a string, found an array; ignored"});
}

TEST(ProjectLoad, ClampedParametersAreNoted)
{
    EXPECT_EQ(LoadWarnings(Project(R"("threshold": 5000, "valid_min_unit": 0.25,
        "brightness": -1, "gamma": 1e308)")),
              (Lines{"threshold: 5000 is outside 0 to 1000; read as 1000",
                     "valid_min_unit: 0.25 is outside 1 to 10; read as 1.0",
                     "gamma: 1e+308 is outside 0.1 to 2; read as 2.0"}));
}

TEST(ProjectLoad, IntegersThatDoNotComeThroughWholeAreNoted)
{
    EXPECT_EQ(LoadWarnings(Project(R"("list_idx": 2.5, "rotation": 4294967386,
        "start_frame": -2147483649, "height": 1e12, "play_vol": 7.0,
        "diff_list": [{"framNo_first": 1.5, "framNo_second": true}])")),
              (Lines{"diff_list[0].framNo_first (scene 1): 1.5 is not a 32-bit whole number; "
                     "read as 1",
                     "list_idx: 2.5 is not a 32-bit whole number; read as 2",
                     "height: 1000000000000.0 is not a 32-bit whole number; read as 2147483647",
                     "rotation: 4294967386 is not a 32-bit whole number; read as 90",
                     "start_frame: -2147483649 is not a 32-bit whole number; read as "
                     "2147483647",
                     "list_idx: 2 is outside the list of 1 scene (0 to 0); the list is kept and "
                     "scene 1 becomes the current one"}));
}

TEST(ProjectLoad, ScenesAndCaptionsThatAreNotObjectsAreNoted)
{
    EXPECT_EQ(LoadWarnings(Project(R"("diff_list": [{}, "x", {"capParam": []}],
        "capTitle": null)")),
              (Lines{"diff_list[1] (scene 2): expected a scene object, found a string; read with "
                     "default values",
                     "diff_list[2].capParam (scene 3): expected a caption object, found an array; "
                     "read with default values",
                     "capTitle: expected a caption object, found null; read with default values"}));
}

TEST(ProjectLoad, ValuesTheCheckFindsAreNotedAfterTheReader)
{
    EXPECT_EQ(LoadWarnings(Project(R"("width": -4, "diff_list": [{"framNo_first": -5,
        "framNo_second": 10}, {"framNo_first": 30, "framNo_second": 20},
        {"framNo_first": 90, "framNo_second": 100}], "threshold": -1)")),
              (Lines{"threshold: -1 is outside 0 to 1000; read as 0",
                     "width: -4 is negative",
                     "diff_list[0].framNo_first (scene 1): -5 is negative; frames count from 0",
                     "diff_list[1] (scene 2): framNo_second 20 is before framNo_first 30; the "
                     "scene has no frames",
                     "diff_list[2].framNo_second (scene 3): 100 is at or beyond frame_num 100; "
                     "the last frame is 99"}));
}

TEST(ProjectLoad, RateZeroWithAVideoIsNoted)
{
    EXPECT_EQ(LoadWarnings(R"({"input_file": "/videos/a.mov", "fps": 0})"),
              Lines{"fps: 0 is not a frame rate; the times of the scenes cannot be computed"});
}

TEST(ProjectLoad, PathsInTheFileThatNoToolCanTakeAreNoted)
{
    EXPECT_EQ(LoadWarnings(Project(R"("output_name": "a\"b.mp4", "input_mp4_file": "x\u0007y",
        "diff_list": [{"fileName": "/s\r\n.mp4"}])")),
              (Lines{"input_mp4_file: contains a control character; no tool can be given this "
                     "path",
                     "output_name: contains a double quote; no tool can be given this path",
                     "diff_list[0].fileName (scene 1): contains a line break; no tool can be "
                     "given this path"}));
}

TEST(ProjectLoad, UnknownKeysAreNeitherKeptNorNoted)
{
    TempDir dir;
    std::string path = dir.file("p.twproj");
    ASSERT_TRUE(WriteFile(path, Project(R"("future_key": {"a": [1, 2, {"b": null}]},
        "diff_list": [{"framNo_second": 9, "extra": [[["x"]]], "capParam": {"what": 1,
        "caption": "c"}}])")));
    CTarnwickData data;
    std::vector<std::string> warnings;
    ASSERT_TRUE(data.LoadProjectFile(path, nullptr, &warnings));
    EXPECT_EQ(warnings, Lines{});
    ASSERT_EQ(data.diff_list.size(), 1u);
    EXPECT_EQ(data.diff_list[0].framNo_second, 9);
    EXPECT_EQ(data.diff_list[0].capParam.caption, "c");
}

TEST(ProjectLoad, DuplicateKeysTakeTheLastValue)
{
    TempDir dir;
    std::string path = dir.file("p.twproj");
    ASSERT_TRUE(WriteFile(path, Project(R"("diff_list": [{}, {}], "threshold": 7,
        "diff_list": [{"framNo_first": 3, "framNo_first": 4, "framNo_second": 5}])")));
    CTarnwickData data;
    ASSERT_TRUE(data.LoadProjectFile(path));
    ASSERT_EQ(data.diff_list.size(), 1u);
    EXPECT_EQ(data.diff_list[0].framNo_first, 4);
    EXPECT_EQ(data.threshold.dValue, 7.0);
}

} // namespace
