// Tests of "tarnwickmp4-cli project check": facts of a good file, one-line refusals, rewriting,
// and garbled files that must never crash the program.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/resource.h>

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

// A saved project with 12 scenes, all inside its 120 frames. frame_num has three digits, so no
// flip of a byte can turn it into a count that takes long to expand into frame times.
std::string WriteGoodProject(const TempDir &dir, const std::string &name)
{
    CTarnwickData data;
    data.input_file = "/videos/trip.mov";
    data.output_folder = "/videos/trip.mov_out/";
    data.output_name = "trip_trim.mp4";
    data.pts_file = dir.file("trip_pts_missing.csv");
    data.viInput.r_frame_rate = "25/1";
    data.viInput.fps = 25;
    data.viInput.frame_num = 120;
    data.threshold.dValue = 120;
    data.valid_min_unit.dValue = 2.5;
    for (int i = 0; i < 12; ++i) {
        SceneEntry scene(i * 10,
                         i * 10 + 9,
                         "/videos/trip.mov_out/trip_seg_" + std::to_string(i * 10) + "_" +
                             std::to_string(i * 10 + 9) + ".mp4");
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

// Exit status 3, the facts on stdout and only warning lines on stderr, each naming the file.
// Returns the warnings without their prefix.
std::vector<std::string> ExpectWarningLines(const RunResult &result, const std::string &path)
{
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.out.find("scenes: "), std::string::npos) << result.out;
    EXPECT_FALSE(result.err.empty());
    std::vector<std::string> warnings;
    const std::string prefix = "tarnwickmp4-cli: " + path + ": warning: ";
    size_t pos = 0;
    while (pos < result.err.size()) {
        size_t end = result.err.find('\n', pos);
        if (end == std::string::npos) {
            ADD_FAILURE() << "unterminated line: " << result.err.substr(pos);
            break;
        }
        std::string line = result.err.substr(pos, end - pos);
        EXPECT_EQ(line.rfind(prefix, 0), 0u) << line;
        warnings.push_back(line.substr(std::min(line.size(), prefix.size())));
        pos = end + 1;
    }
    return warnings;
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
                  ": diff_list[0].framNo_first (scene 1): expected a number, found a string\n");
}

TEST(ProjectCheck, TruncatedFileIsRefusedOnOneLine)
{
    TempDir dir;
    std::string good = ReadFile(WriteGoodProject(dir, "good.twproj"));
    std::string path = dir.file("cut.twproj");
    ASSERT_TRUE(WriteFile(path, good.substr(0, good.size() / 2)));
    ExpectRefused(Check(path), path);
}

TEST(ProjectCheck, BadArgumentsAreNamedBeforeTheUsage)
{
    testsupport::ExpectArgumentProblems(
        "project",
        kUsage,
        {
            {{"project"}, "the command word \"check\" is missing"},
            {{"project", "check"}, "FILE is missing"},
            {{"project", "verify", "a.twproj"},
             "\"verify\" is not a project command; \"check\" is the one there is"},
            {{"project", "check", "a.twproj", "b.twproj"}, "unexpected argument \"b.twproj\""},
            {{"project", "check", "--bogus", "a.twproj"}, "unknown option --bogus"},
            {{"project", "check", "a.twproj", "--write"}, "--write needs a value"},
            {{"project", "check", "a.twproj", "--write", "x", "--write", "y"},
             "--write is given twice"},
        });
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

// Runs the check on bytes; the program must end normally: with 0 and nothing on stderr, with 2
// and one line that names the file, or with 3 and only warning lines.
void ExpectNoCrash(const TempDir &dir, const std::string &bytes, int index)
{
    std::string path = dir.file("garbled" + std::to_string(index) + ".twproj");
    ASSERT_TRUE(WriteFile(path, bytes));
    RunResult result = Check(path);
    ASSERT_TRUE(result.exitCode == 0 || result.exitCode == 2 || result.exitCode == 3)
        << "exit " << result.exitCode << " for file " << index << ": " << result.err;
    if (result.exitCode == 0) {
        EXPECT_EQ(result.err, "");
    } else if (result.exitCode == 2) {
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        EXPECT_NE(result.err.find(path), std::string::npos) << result.err;
    } else {
        ExpectWarningLines(result, path);
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

TEST(ProjectCheck, NullRootIsRefusedOnOneLine)
{
    TempDir dir;
    std::string path = dir.file("null.twproj");
    ASSERT_TRUE(WriteFile(path, "null\n"));
    RunResult result = Check(path);
    ExpectRefused(result, path);
    EXPECT_EQ(result.err,
              "tarnwickmp4-cli: " + path +
                  ": not a project file: the JSON root is null, not an object\n");
}

TEST(ProjectCheck, VideoGivenForAProjectIsCalledBinaryData)
{
    TempDir dir;
    std::string path = dir.file("clip.mp4");
    ASSERT_TRUE(WriteFile(path,
                          std::string("\0\0\0\x20"
                                      "ftypisom\0\0\x02\0[[[[[[[[[[",
                                      26)));
    const std::string line = path + ": not a project file: it holds binary data (a video, "
                                    "perhaps), not the JSON text of a project\n";
    RunResult result = Check(path);
    ExpectRefused(result, path);
    EXPECT_EQ(result.err, "tarnwickmp4-cli: " + line);
    result = RunCli({"scenes", path});
    ExpectRefused(result, path);
    EXPECT_EQ(result.err, "tarnwickmp4-cli scenes: " + line);
}

TEST(ProjectCheck, EmptyObjectWarnsThatNoVideoIsNamed)
{
    TempDir dir;
    std::string path = dir.file("empty.twproj");
    ASSERT_TRUE(WriteFile(path, "{}"));
    RunResult result = Check(path);
    EXPECT_EQ(ExpectWarningLines(result, path),
              std::vector<std::string>{"input_file: missing; the project names no video"});
    EXPECT_EQ(result.out.rfind("input_file: \n", 0), 0u) << result.out;
}

TEST(ProjectCheck, SceneListOfWrongTypeWarns)
{
    TempDir dir;
    std::string path = dir.file("list.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"input_file": "/v/a.mov", "fps": 25, "diff_list": "x"})"));
    EXPECT_EQ(ExpectWarningLines(Check(path), path),
              std::vector<std::string>{
                  "diff_list: expected an array of scenes, found a string; ignored"});
}

TEST(ProjectCheck, NegativeAndReversedFramesWarn)
{
    TempDir dir;
    std::string path = dir.file("frames.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"input_file": "/v/a.mov", "fps": 25, "frame_num": 50,
        "diff_list": [{"framNo_first": 0, "framNo_second": 9},
        {"framNo_first": -3, "framNo_second": 4}, {"framNo_first": 30, "framNo_second": 20},
        {"framNo_first": 45, "framNo_second": 50}]})"));
    EXPECT_EQ(ExpectWarningLines(Check(path), path),
              (std::vector<std::string>{
                  "diff_list[1].framNo_first (scene 2): -3 is negative; frames count from 0",
                  "diff_list[2] (scene 3): framNo_second 20 is before framNo_first 30; the scene "
                  "has no frames",
                  "diff_list[3].framNo_second (scene 4): 50 is at or beyond frame_num 50; the "
                  "last frame is 49"}));
}

TEST(ProjectCheck, RowOutsideTheListAndSegmentOfOtherFramesWarn)
{
    // What a job killed while no row was current left, and a split whose later part kept the
    // old segment's name.
    TempDir dir;
    std::string path = dir.file("row.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"input_file": "/v/m3.mp4", "fps": 25, "frame_num": 375,
        "list_idx": -1, "diff_list": [{"framNo_first": 50, "framNo_second": 74,
        "fileName": "/v/m3_out/m3_seg_50_74.mp4"}, {"framNo_first": 75, "framNo_second": 101,
        "fileName": "/v/m3_out/m3_seg_50_101.mp4"}]})"));
    EXPECT_EQ(ExpectWarningLines(Check(path), path),
              (std::vector<std::string>{
                  "diff_list[1].fileName (scene 2): m3_seg_50_101.mp4 is not named after the "
                  "scene's frames 75 to 101 (it should end in _75_101.mp4); the next render cuts "
                  "the scene again",
                  "list_idx: -1 is outside the list of 2 scenes (0 to 1); the list is kept and "
                  "scene 1 becomes the current one"}));
}

TEST(ProjectCheck, RateZeroWarns)
{
    TempDir dir;
    std::string path = dir.file("rate.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"input_file": "/v/a.mov", "fps": 0})"));
    EXPECT_EQ(ExpectWarningLines(Check(path), path),
              std::vector<std::string>{
                  "fps: 0 is not a frame rate; the times of the scenes cannot be computed"});
}

TEST(ProjectCheck, TypeErrorNamesTheFieldAndScene)
{
    TempDir dir;
    std::string path = dir.file("third.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"diff_list": [{}, {}, {"framNo_first": "7"}]})"));
    RunResult result = Check(path);
    ExpectRefused(result, path);
    EXPECT_EQ(result.err,
              "tarnwickmp4-cli: " + path +
                  ": diff_list[2].framNo_first (scene 3): expected a number, found a string\n");
}

TEST(ProjectCheck, OversizedFileIsRefusedOnOneLine)
{
    TempDir dir;
    std::string path = dir.file("huge.twproj");
    ASSERT_TRUE(WriteFile(path, "{}"));
    std::filesystem::resize_file(path, 100'000'000);
    RunResult result = Check(path);
    ExpectRefused(result, path);
    EXPECT_EQ(result.err,
              "tarnwickmp4-cli: " + path +
                  ": the file is 100000000 bytes; a project file is at most 64 MiB\n");
}

TEST(ProjectCheck, DeepNestingIsRefusedOnOneLine)
{
    TempDir dir;
    std::string path = dir.file("deep.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"diff_list": [{"capParam": {"caption": [[[[[]]]]]}}]})"));
    RunResult result = Check(path);
    ExpectRefused(result, path);
    EXPECT_EQ(result.err,
              "tarnwickmp4-cli: " + path +
                  ": not a project file: arrays and objects are nested more than 8 deep at byte "
                  "45\n");
}

TEST(ProjectCheck, WriteWithWarningsWritesAndExitsThree)
{
    TempDir dir;
    std::string path = dir.file("warned.twproj");
    ASSERT_TRUE(WriteFile(path, R"({"input_file": "/v/a.mov", "fps": 25, "threshold": 5000})"));
    std::string out = dir.file("out.twproj");
    RunResult result = RunCli({"project", "check", path, "--write", out});
    EXPECT_EQ(ExpectWarningLines(result, path),
              std::vector<std::string>{"threshold: 5000 is outside 0 to 1000; read as 1000"});
    CTarnwickData written;
    std::vector<std::string> warnings;
    ASSERT_TRUE(written.LoadProjectFile(out, nullptr, &warnings));
    EXPECT_EQ(written.threshold.dValue, 1000.0);
    EXPECT_EQ(warnings, std::vector<std::string>{});
}

TEST(ProjectCheck, WriteFailureExitsOneEvenWithWarnings)
{
    TempDir dir;
    std::string path = dir.file("warned.twproj");
    ASSERT_TRUE(WriteFile(path, "{}"));
    std::string out = dir.file("no/such/folder/out.twproj");
    RunResult result = RunCli({"project", "check", path, "--write", out});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 2) << result.err;
    EXPECT_NE(result.err.find(path + ": warning: input_file: missing"), std::string::npos)
        << result.err;
    EXPECT_NE(result.err.find(out + ": cannot write the file: "), std::string::npos) << result.err;
}

// Largest memory of the check of a 22 MB file whose values are unread (KiB). Read whole into one
// document, the file takes about 540 MB.
#ifdef __SANITIZE_ADDRESS__
// AddressSanitizer keeps freed blocks in a quarantine of 256 MB and adds its shadow memory.
constexpr long kBulkyFileMaxKiB = 700 * 1024;
#else
constexpr long kBulkyFileMaxKiB = 100 * 1024;
#endif

// Unread keys and containers where a single value belongs are dropped while parsing, so a large
// file of them costs little more memory than its own size.
TEST(ProjectCheck, UnreadValuesTakeLittleMemory)
{
    TempDir dir;
    std::string path = dir.file("bulky.twproj");
    std::string text = R"({"input_file": "/v/a.mov", "fps": 25, "future": [)";
    for (int i = 0; i < 1'000'000; ++i) {
        text += "[[[1,2,3]]],";
    }
    text += R"(0], "width": [)";
    for (int i = 0; i < 1'000'000; ++i) {
        text += "[{\"a\":1}],";
    }
    text += "0]}";
    ASSERT_TRUE(WriteFile(path, text));
    RunResult result = Check(path);
    EXPECT_EQ(ExpectWarningLines(result, path),
              std::vector<std::string>{"width: expected a number, found an array; ignored"});
    struct rusage usage = {};
    ASSERT_EQ(getrusage(RUSAGE_CHILDREN, &usage), 0);
    // ru_maxrss is in KiB: the largest child so far, the check of a 22 MB file among them.
    EXPECT_LT(usage.ru_maxrss, kBulkyFileMaxKiB) << text.size() << " bytes";
}

TEST(ProjectCheck, PathWithAQuoteIsRefusedWhereItEnters)
{
    TempDir dir;
    std::string good = WriteGoodProject(dir, "good.twproj");
    std::string quoted = dir.file("a\" -report \"b.twproj");
    std::filesystem::copy_file(good, quoted);
    const std::string problem = ": the path contains a double quote, which a tool's command "
                                "line cannot carry; rename it or its folder\n";
    RunResult r = RunCli({"project", "check", quoted});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, "tarnwickmp4-cli: " + quoted + problem);
    r = RunCli({"project", "check", good, "--write", quoted + ".new"});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(r.err, "tarnwickmp4-cli: " + quoted + ".new" + problem);
    EXPECT_FALSE(std::filesystem::exists(quoted + ".new"));
}

} // namespace
