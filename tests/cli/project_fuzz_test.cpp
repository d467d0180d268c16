// Fuzz test of the project-file reader and "project check": thousands of seeded mutations of
// valid projects (types swapped, numbers at their limits, odd strings, invalid UTF-8, truncation,
// duplicated and deleted keys, deep nesting) must each load, load with warnings or be refused
// with one clear line, and never crash.
#include <algorithm>
#include <climits>
#include <cstdint>
#include <exception>
#include <limits>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "core/tarnwick_data.h"
#include "support/test_support.h"

namespace {

using core::CTarnwickData;
using core::SceneEntry;
using nlohmann::json;
using testsupport::ReadFile;
using testsupport::RunResult;
using testsupport::TempDir;
using testsupport::WriteFile;

constexpr int kFiles = 2400;
constexpr int kProcessEvery = 200; // every so many files also go through the real binary

// ---- Seeds: valid projects made by the program itself ----

std::string RichSeed(const TempDir &dir)
{
    CTarnwickData data;
    data.input_file = "/videos/trip.mov";
    data.output_folder = "/videos/trip.mov_out/";
    data.output_name = "trip_trim.mp4";
    data.pts_file = dir.file("trip_pts.csv"); // missing: times are spread evenly
    data.viInput.r_frame_rate = "25/1";
    data.viInput.fps = 25;
    data.viInput.frame_num = 300;
    data.viInput.width = 320;
    data.viInput.height = 240;
    data.list_idx = 2;
    data.threshold.dValue = 120;
    for (int i = 0; i < 6; ++i) {
        SceneEntry scene(i * 50,
                         i * 50 + 29,
                         "/videos/trip.mov_out/trip_seg_" + std::to_string(i * 50) + "_" +
                             std::to_string(i * 50 + 29) + ".mp4");
        scene.SetCaption(0, 1.5, "シーン" + std::to_string(i));
        data.diff_list.push_back(scene);
    }
    data.diff_list[3].bEnable = false;
    std::string path = dir.file("rich_seed.twproj");
    EXPECT_TRUE(data.SaveProjectFile(path));
    return ReadFile(path);
}

std::string NewProjectSeed(const TempDir &dir)
{
    CTarnwickData data;
    std::string path = dir.file("new_seed.twproj");
    EXPECT_TRUE(data.SaveProjectFile(path));
    return ReadFile(path);
}

// The older layout: scene captions in the scene objects and one caption style at the root.
std::string OldFormatSeed()
{
    return R"({"input_file": "/videos/old.mov", "output_folder": "/videos/old_out",
        "fps": 29.97, "frame_num": 90, "font_name": "Meiryo", "font_size": 40, "color": 255,
        "bold": 1, "cap_pos_type": 8, "threshold": 80, "gamma": 1.2, "cine_sco": true,
        "diff_list": [{"enable": true, "framNo_first": 0, "framNo_second": 10,
        "fileName": "/videos/old_out/s0.mp4", "capTime_first": 1.5, "capTime_second": 3.25,
        "caption": "古い字幕"}, {"framNo_first": 20, "framNo_second": 30,
        "fileName": "/videos/old_out/s1.mp4"}]})";
}

// ---- Mutations ----

// Values of every type, for a value whose type is swapped.
const std::vector<json> &OddValues()
{
    static const std::vector<json> values = {nullptr,
                                             true,
                                             false,
                                             0,
                                             -1,
                                             2.5,
                                             "x",
                                             "",
                                             json::array(),
                                             json::object(),
                                             json::array({1, "a", nullptr}),
                                             json{{"k", 1}}};
    return values;
}

// Numbers at the limits of int, int64, uint64 and double.
const std::vector<json> &LimitNumbers()
{
    static const std::vector<json> values = {INT_MIN,
                                             INT_MAX,
                                             int64_t(INT_MAX) + 1,
                                             int64_t(INT_MIN) - 1,
                                             std::numeric_limits<uint64_t>::max(),
                                             std::numeric_limits<int64_t>::min(),
                                             1e308,
                                             -1e308,
                                             -0.0,
                                             5e-324,
                                             4294967296.0,
                                             0,
                                             -1,
                                             0.5};
    return values;
}

// Strings with quotes, line breaks, control characters and other things paths must not hold.
const std::vector<json> &OddStrings()
{
    static const std::vector<json> values = {"a\"b",
                                             "\"",
                                             "line\nbreak",
                                             "tab\there",
                                             "\x01 control",
                                             "back\\",
                                             "C:\\x\\",
                                             "ünïcödé 字幕",
                                             "",
                                             "%s%n%d",
                                             std::string(10000, 'a'),
                                             std::string("nul\0byte", 8),
                                             "{\\fad(500,500)}title",
                                             "/videos/a b/c.mov",
                                             "\x7F"};
    return values;
}

class Mutator
{
public:
    explicit Mutator(uint32_t seed)
        : m_random(seed)
    {
    }

    size_t Below(size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(m_random); }
    bool Chance(int percent) { return Below(100) < static_cast<size_t>(percent); }
    template <typename T> const T &Pick(const std::vector<T> &items)
    {
        return items[Below(items.size())];
    }

    // One to three changes of the document's values, then sometimes one of its text.
    std::string Mutate(const std::string &seed, std::string &what)
    {
        json doc = json::parse(seed);
        size_t changes = 1 + Below(3);
        for (size_t i = 0; i < changes; ++i) {
            ChangeValue(doc, what);
        }
        std::string text = Chance(20) ? DuplicateKey(doc, what) : doc.dump(Chance(50) ? 4 : -1);
        if (Chance(40)) {
            ChangeText(text, what);
        }
        return text;
    }

private:
    static void Collect(json &node, std::vector<json *> &all)
    {
        all.push_back(&node);
        if (node.is_structured()) {
            for (json &child : node) {
                Collect(child, all);
            }
        }
    }

    // A node of the document that passes keep, or any node when none does.
    template <typename Keep> json &PickNode(json &doc, Keep keep)
    {
        std::vector<json *> all;
        Collect(doc, all);
        std::vector<json *> kept;
        std::copy_if(all.begin(), all.end(), std::back_inserter(kept), keep);
        return *Pick(kept.empty() ? all : kept);
    }

    void ChangeValue(json &doc, std::string &what)
    {
        switch (Below(5)) {
        case 0:
            PickNode(doc, [](json *) { return true; }) = Pick(OddValues());
            what += " swap-type";
            break;
        case 1:
            PickNode(doc, [](json *n) { return n->is_number(); }) = Pick(LimitNumbers());
            what += " limit-number";
            break;
        case 2:
            PickNode(doc, [](json *n) { return n->is_string(); }) = Pick(OddStrings());
            what += " odd-string";
            break;
        case 3:
            DeleteKey(doc);
            what += " delete-key";
            break;
        default:
            what += " nest-" + std::to_string(Nest(doc));
            break;
        }
    }

    void DeleteKey(json &doc)
    {
        json &object = PickNode(doc, [](json *n) { return n->is_object() && !n->empty(); });
        if (object.is_object() && !object.empty()) {
            auto it = object.begin();
            std::advance(it, Below(object.size()));
            object.erase(it);
        }
    }

    // Wraps a node in arrays and objects by turns; returns how many.
    size_t Nest(json &doc)
    {
        json &node = PickNode(doc, [](json *) { return true; });
        size_t levels = Pick(std::vector<size_t>{1, 2, 4, 7, 12, 1000});
        for (size_t i = 0; i < levels; ++i) {
            node = i % 2 == 0 ? json::array({node}) : json{{"n", node}};
        }
        return levels;
    }

    // The document's text with one key of one object written twice, the second time with an
    // odd value.
    std::string DuplicateKey(json &doc, std::string &what)
    {
        json &object = PickNode(doc, [](json *n) { return n->is_object() && !n->empty(); });
        if (!object.is_object() || object.empty()) {
            return doc.dump();
        }
        auto it = object.begin();
        std::advance(it, Below(object.size()));
        const std::string key = it.key();
        const json original = it.value();
        it.value() = "@@duplicate@@";
        std::string text = doc.dump();
        const json second = Pick(std::vector<json>{nullptr, "dup", 7, json::array(), original});
        std::string both = original.dump() + ", " + json(key).dump() + ": " + second.dump();
        text.replace(text.find("\"@@duplicate@@\""), 15, both);
        what += " duplicate-key";
        return text;
    }

    void ChangeText(std::string &text, std::string &what)
    {
        if (text.empty()) {
            return;
        }
        switch (Below(5)) {
        case 0: { // bytes that are not UTF-8, just inside a string
            static const std::vector<std::string> kBad = {
                "\xFF", "\xC3", "\xED\xA0\x80", "\xC0\xAF", "\xF4\x90\x80\x80", "\x80"};
            size_t quote = text.find('"', Below(text.size()));
            text.insert(quote == std::string::npos ? 0 : quote + 1, Pick(kBad));
            what += " invalid-utf8";
            break;
        }
        case 1: { // a number written beyond what a double or an integer holds
            static const std::vector<std::string> kHuge = {"1e400",
                                                           "-1e400",
                                                           "1e-400",
                                                           "123456789012345678901234567890",
                                                           "-0",
                                                           "1E+2147483648",
                                                           "0.0000000000000000000000001"};
            size_t colon = text.find(": ", Below(text.size()));
            if (colon != std::string::npos) {
                size_t end = text.find_first_of(",}]\n", colon);
                text.replace(
                    colon + 2, end == std::string::npos ? 0 : end - colon - 2, Pick(kHuge));
            }
            what += " huge-number";
            break;
        }
        case 2:
            text.resize(Below(text.size()));
            what += " truncate";
            break;
        case 3: {
            size_t flips = 1 + Below(4);
            for (size_t i = 0; i < flips; ++i) {
                text[Below(text.size())] = static_cast<char>(Below(256));
            }
            what += " flip-bytes";
            break;
        }
        default: { // a raw control character inside a string
            size_t quote = text.find('"', Below(text.size()));
            text.insert(quote == std::string::npos ? 0 : quote + 1,
                        1,
                        Pick(std::vector<char>{'\x01', '\t', '\n', '\x1B', '\x7F'}));
            what += " control-char";
            break;
        }
        }
    }

    std::mt19937 m_random;
};

// ---- Checks ----

std::vector<std::string> SplitLines(const std::string &text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        lines.push_back(line);
    }
    return lines;
}

bool HasControlCharacter(const std::string &text)
{
    return std::any_of(text.begin(), text.end(), [](char c) { return c >= 0 && c < 0x20; });
}

// The standard error of a check that ended with status: nothing for 0, one line naming the file
// for 2, warning lines naming the file for 3.
void ExpectClearMessages(int status, const std::string &err, const std::string &path)
{
    ASSERT_TRUE(status == 0 || status == 2 || status == 3) << "exit " << status << ": " << err;
    if (status == 0) {
        EXPECT_EQ(err, "");
        return;
    }
    ASSERT_FALSE(err.empty());
    EXPECT_EQ(err.back(), '\n');
    std::vector<std::string> lines = SplitLines(err);
    if (status == 2) {
        ASSERT_EQ(lines.size(), 1u) << err;
        EXPECT_EQ(lines[0].rfind("tarnwickmp4-cli: " + path + ": ", 0), 0u) << lines[0];
        EXPECT_GT(lines[0].size(), path.size() + 20) << lines[0];
    }
    for (const std::string &line : lines) {
        EXPECT_FALSE(HasControlCharacter(line)) << line;
        if (status == 3) {
            EXPECT_EQ(line.rfind("tarnwickmp4-cli: " + path + ": warning: ", 0), 0u) << line;
        }
    }
}

// Loads the file into a workspace; returns whether it loaded. Nothing may escape as an exception.
bool LoadDirectly(const std::string &path, size_t &warningCount)
{
    CTarnwickData data;
    std::string error;
    std::vector<std::string> warnings;
    bool loaded = false;
    try {
        loaded = data.LoadProjectFile(path, &error, &warnings);
    } catch (const std::exception &e) {
        ADD_FAILURE() << "LoadProjectFile threw: " << e.what();
        return false;
    }
    if (!loaded) {
        EXPECT_EQ(error.rfind(path + ": ", 0), 0u) << error;
        EXPECT_FALSE(HasControlCharacter(error)) << error;
        EXPECT_TRUE(warnings.empty());
    }
    for (const std::string &warning : warnings) {
        EXPECT_FALSE(warning.empty());
        EXPECT_FALSE(HasControlCharacter(warning)) << warning;
    }
    warningCount = warnings.size();
    return loaded;
}

// Runs the command in this process; returns its exit status.
int CheckInProcess(const std::vector<std::string> &args, const std::string &path)
{
    std::ostringstream out;
    std::ostringstream err;
    cli::CliOutput io{out, err};
    int status = -1;
    try {
        status = cli::RunProjectCommand(args, io);
    } catch (const std::exception &e) {
        ADD_FAILURE() << "project check threw: " << e.what();
        return -1;
    }
    ExpectClearMessages(status, err.str(), path);
    return status;
}

// The start of a file's text, printable, for a failure message.
std::string Excerpt(const std::string &text)
{
    static const char kHex[] = "0123456789ABCDEF";
    std::string shown;
    for (char c : text.substr(0, 300)) {
        const auto byte = static_cast<uint8_t>(c);
        if (byte >= 0x20 && byte < 0x7F) {
            shown += c;
        } else {
            shown += {'\\', 'x', kHex[byte >> 4], kHex[byte & 15]};
        }
    }
    return shown;
}

TEST(ProjectFuzz, MutatedProjectsLoadOrAreRefusedClearly)
{
    TempDir dir;
    const std::vector<std::string> seeds = {RichSeed(dir), NewProjectSeed(dir), OldFormatSeed()};
    for (const std::string &seed : seeds) {
        ASSERT_FALSE(seed.empty());
    }
    Mutator mutator(20240611);
    std::map<int, int> statuses;
    const std::string path = dir.file("fuzz.twproj");
    const std::string written = dir.file("fuzz_written.twproj");
    for (int i = 0; i < kFiles; ++i) {
        std::string what = "seed " + std::to_string(i % seeds.size()) + ":";
        std::string text = mutator.Mutate(seeds[i % seeds.size()], what);
        SCOPED_TRACE("file " + std::to_string(i) + what + "\n" + Excerpt(text));
        ASSERT_TRUE(WriteFile(path, text));

        size_t warningCount = 0;
        bool loaded = LoadDirectly(path, warningCount);
        std::vector<std::string> args = {"check", path};
        if (i % 25 == 0) {
            args.insert(args.end(), {"--write", written});
        }
        int status = CheckInProcess(args, path);
        ++statuses[status];
        EXPECT_EQ(status, !loaded ? 2 : warningCount > 0 ? 3 : 0);

        if (i % kProcessEvery == 0) {
            std::string own = dir.file("fuzz_" + std::to_string(i) + ".twproj");
            ASSERT_TRUE(WriteFile(own, text));
            RunResult result = testsupport::RunCli({"project", "check", own});
            EXPECT_EQ(result.exitCode, status) << result.err;
            ExpectClearMessages(result.exitCode, result.err, own);
        }
        if (HasFatalFailure()) {
            return;
        }
    }
    // The mix must reach every outcome, or the mutations test less than they seem to.
    for (int status : {0, 2, 3}) {
        EXPECT_GE(statuses[status], 50) << "exit " << status;
    }
}

} // namespace
