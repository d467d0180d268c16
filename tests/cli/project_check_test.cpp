// Tests of "tarnwickmp4-cli project check": facts of a good file, one-line refusals, rewriting,
// and garbled files that must never crash the program.
#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/tarnwick_data.h"
#include "support/test_support.h"

namespace {

using core::CTarnwickData;
using core::SceneEntry;
using testsupport::ReadFile;
using testsupport::RunCli;
using testsupport::RunResult;
using testsupport::TempDir;
using testsupport::WriteFile;

constexpr char kUsage[] = "Usage: tarnwickmp4-cli project check FILE [--write OUT]\n";

// A saved project with 12 scenes. frame_num is one digit, so no flip of a byte can turn it into
// a count that takes long to expand into frame times.
std::string WriteGoodProject(const TempDir &dir, const std::string &name)
{
    CTarnwickData data;
    data.input_file = "/videos/trip.mov";
    data.output_folder = "/videos/trip.mov_out/";
    data.output_name = "trip_trim.mp4";
    data.pts_file = dir.file("trip_pts_missing.csv");
    data.viInput.r_frame_rate = "25/1";
    data.viInput.fps = 25;
    data.viInput.frame_num = 5;
    data.threshold.dValue = 120;
    data.valid_min_unit.dValue = 2.5;
    for (int i = 0; i < 12; ++i) {
        SceneEntry scene(i * 10, i * 10 + 9, "/videos/trip.mov_out/trip_seg_" + std::to_string(i));
        scene.SetCaption(0, 1.5, "シーン" + std::to_string(i) + " 猫が通る");
        data.diff_list.push_back(scene);
    }
    std::string path = dir.file(name);
    EXPECT_TRUE(data.SaveProjectFile(path));
    return path;
}

// Exit status 2 with exactly one line on stderr that names the file, nothing on stdout.
void ExpectRefused(const RunResult &result, const std::string &path)
{
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    ASSERT_FALSE(result.err.empty());
    EXPECT_EQ(result.err.back(), '\n');
    EXPECT_NE(result.err.find(path), std::string::npos) << result.err;
}

RunResult Check(const std::string &path)
{
    return RunCli({"project", "check", path});
}

TEST(ProjectCheck, GoodFilePrintsItsFacts)
{
    TempDir dir;
    std::string path = WriteGoodProject(dir, "trip.twproj");
    RunResult result = Check(path);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out,
              "input_file: /videos/trip.mov\n"
              "output_folder: /videos/trip.mov_out/\n"
              "output_name: trip_trim.mp4\n"
              "scenes: 12\n"
              "threshold: 120\n"
              "valid_min_unit: 2.5\n"
              "cut_min_unit: 1.0\n");
    EXPECT_EQ(result.err, "");
}

TEST(ProjectCheck, MissingFileIsRefusedOnOneLine)
{
    TempDir dir;
    std::string path = dir.file("none.twproj");
    RunResult result = Check(path);
    ExpectRefused(result, path);
    EXPECT_EQ(result.err,
              "tarnwickmp4-cli: " + path + ": cannot open the file: No such file or directory\n");
}

TEST(ProjectCheck, EmptyFileIsRefusedOnOneLine)
{
    TempDir dir;
    std::string path = dir.file("empty.twproj");
    ASSERT_TRUE(WriteFile(path, ""));
    RunResult result = Check(path);
    ExpectRefused(result, path);
    EXPECT_EQ(result.err, "tarnwickmp4-cli: " + path + ": the file is empty\n");
}

TEST(ProjectCheck, NotJsonIsRefusedOnOneLine)
{
    TempDir dir;
    std::string path = dir.file("text.twproj");
    ASSERT_TRUE(WriteFile(path, "this is\nnot a project\n"));
    RunResult result = Check(path);
    ExpectRefused(result, path);
    EXPECT_NE(result.err.find("not a valid JSON file: [json.exception.parse_error.101]"),
              std::string::npos)
        << result.err;
}

TEST(ProjectCheck, WrongTypesAreRefusedOnOneLine)
{
    TempDir dir;
    std::string path = dir.file("types.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"diff_list": [{"framNo_first": "abc"}]})"));
    RunResult result = Check(path);
    ExpectRefused(result, path);
    EXPECT_EQ(result.err,
              "tarnwickmp4-cli: " + path +
                  ": [json.exception.type_error.302] type must be number, but is "
                  "string\n");
}

TEST(ProjectCheck, TruncatedFileIsRefusedOnOneLine)
{
    TempDir dir;
    std::string good = ReadFile(WriteGoodProject(dir, "good.twproj"));
    std::string path = dir.file("cut.twproj");
    ASSERT_TRUE(WriteFile(path, good.substr(0, good.size() / 2)));
    ExpectRefused(Check(path), path);
}

TEST(ProjectCheck, BadArgumentsPrintUsage)
{
    const std::vector<std::vector<std::string>> cases = {
        {"project"},
        {"project", "check"},
        {"project", "verify", "a.twproj"},
        {"project", "check", "a.twproj", "b.twproj"},
        {"project", "check", "--bogus", "a.twproj"},
        {"project", "check", "a.twproj", "--write"},
        {"project", "check", "a.twproj", "--write", "x", "--write", "y"},
    };
    for (const auto &args : cases) {
        SCOPED_TRACE(args.back());
        RunResult result = RunCli(args);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.err, kUsage);
        EXPECT_EQ(result.out, "");
    }
}

TEST(ProjectCheck, WriteProducesWhatSaveProjectFileWrites)
{
    TempDir dir;
    std::string path = WriteGoodProject(dir, "trip.twproj");
    CTarnwickData data;
    ASSERT_TRUE(data.LoadProjectFile(path));
    std::string expected = dir.file("expected.twproj");
    ASSERT_TRUE(data.SaveProjectFile(expected));

    std::string out = dir.file("out.twproj");
    RunResult result = RunCli({"project", "check", "--write", out, path});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
    std::string written = ReadFile(out);
    EXPECT_FALSE(written.empty());
    EXPECT_EQ(written, ReadFile(expected));
}

TEST(ProjectCheck, WriteFailureExitsOneWithOneLine)
{
    TempDir dir;
    std::string path = WriteGoodProject(dir, "trip.twproj");
    std::string out = dir.file("no/such/folder/out.twproj");
    RunResult result = RunCli({"project", "check", path, "--write", out});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_NE(result.err.find(out), std::string::npos) << result.err;
}

// Runs the check on bytes; the program must end normally, with 0, or with 2 and one line.
void ExpectNoCrash(const TempDir &dir, const std::string &bytes, int index)
{
    std::string path = dir.file("garbled" + std::to_string(index) + ".twproj");
    ASSERT_TRUE(WriteFile(path, bytes));
    RunResult result = Check(path);
    ASSERT_TRUE(result.exitCode == 0 || result.exitCode == 2)
        << "exit " << result.exitCode << " for file " << index << ": " << result.err;
    if (result.exitCode == 2) {
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        EXPECT_NE(result.err.find(path), std::string::npos) << result.err;
    }
}

TEST(ProjectCheck, SpecialFilesNeverCrash)
{
    TempDir dir;
    const std::string deep(100000, '[');
    const std::vector<std::string> files = {
        deep + std::string(100000, ']'),
        deep,
        R"({"diff_list": [)" + deep + std::string(100000, ']') + "]}",
        R"({"capTitle": {"caption": )" + std::string(50000, '{') + "}}",
        R"({"threshold": 1e308, "list_idx": -1e308, "width": 123456789012345678901234567890,
            "play_vol": -9223372036854775808, "capTitle": {"color": -1e300, "bold": 1e300}})",
        R"({"threshold": 1e400})",
        R"({"threshold": NaN, "fps": Infinity})",
        R"({"threshold": "NaN", "fps": "-inf"})",
        "{\"input_file\": \"\xFF\xFE\x80\"}",
        "\xEF\xBB\xBF",
        "\xEF\xBB\xBF{}",
        "\xEF\xBB",
        std::string("{\"a\": \"\0\"}", 10),
        "{\"diff_list\": [{\"capParam\": {\"caption\": \"\\ud800\"}}]}",
    };
    for (size_t i = 0; i < files.size(); ++i) {
        SCOPED_TRACE(i);
        ExpectNoCrash(dir, files[i], static_cast<int>(i));
    }
}

TEST(ProjectCheck, GarbledFilesNeverCrash)
{
    TempDir dir;
    std::string good = ReadFile(WriteGoodProject(dir, "good.twproj"));
    ASSERT_FALSE(good.empty());
    std::mt19937 random(20240611);
    auto below = [&](size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(random); };
    int index = 0;
    for (int i = 0; i < 100; ++i) {
        std::string bytes(below(400), '\0');
        for (char &c : bytes) {
            c = static_cast<char>(below(256));
        }
        ExpectNoCrash(dir, bytes, index++);
    }
    for (int i = 0; i < 100; ++i) {
        ExpectNoCrash(dir, good.substr(0, below(good.size())), index++);
    }
    for (int i = 0; i < 150; ++i) {
        std::string bytes = good;
        size_t flips = 1 + below(3);
        for (size_t f = 0; f < flips; ++f) {
            bytes[below(bytes.size())] = static_cast<char>(below(256));
        }
        ExpectNoCrash(dir, bytes, index++);
    }
}

} // namespace
