// Tests of the frame times without the media tools: the ffprobe command, the reading of its
// lines (text copied from real ffprobe output), the regularity test, the extension of a short
// list, and the list job when ffprobe cannot run, cannot be given the path, or is not needed.
#include "engine/pts_parse.h"

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/helpers.h"
#include "engine/engine_fixture.h"
#include "engine/tarnwick_process.h"

namespace {

namespace fs = std::filesystem;

using engine::AppMessage;
using engine::ExtendPtsList;
using engine::IsConstantFrameRate;
using engine::PtsDeltaStats;
using engine::PtsDeltaStatsOf;
using engine::PtsLineReader;
using enginetest::EngineRig;
using enginetest::LogCapture;
using enginetest::States;
using enginetest::Words;
using Texts = std::vector<std::string>;
using WordList = std::vector<std::pair<int64_t, int64_t>>;

// ffprobe's list of a two-frame clip at 25 frames a second: the first frame's line carries a
// comma and is followed by an empty line.
const char *kTwoFramesAt25 = "0.000000,\n\n0.040000\n";
// The first frames of a 30000/1001 clip in MP4.
const char *kNtscFrames = "0.000000,\n\n0.033367\n0.066733\n0.100100\n0.133467\n0.166833\n"
                          "0.200200\n0.233567\n0.266933\n0.300300\n0.333667\n0.367033\n0.400400\n";
// The first frames of a 25 frames a second clip whose stream starts at 1.5 seconds.
const char *kOffsetFrames = "1.500000,\n\n1.540000\n1.580000\n1.620000\n1.660000\n";

// Reads a whole list without a limit.
std::vector<double> ValuesOf(const std::string &text, Texts *pTexts = nullptr)
{
    Texts texts;
    std::vector<double> values;
    PtsLineReader reader(-1);
    reader.Feed(text, texts, values);
    if (pTexts != nullptr) {
        *pTexts = texts;
    }
    return values;
}

// n lines of evenly spaced times, each with a line end.
std::string EvenLines(int n, double step)
{
    std::string text;
    for (int i = 0; i < n; ++i) {
        text += core::StrPrintf("%.6f\n", i * step);
    }
    return text;
}

// Texts of a message kind, "(none)" for a message without one.
Texts TextsOf(const engine::HeadlessTab &tab, AppMessage id)
{
    Texts result;
    for (const engine::JobMessage &msg : tab.MessagesOf(id)) {
        result.push_back(msg.text.value_or("(none)"));
    }
    return result;
}

// While it lives, PATH names only an empty folder: no tool can be found.
class NoToolsOnPath
{
public:
    NoToolsOnPath()
        : m_old(std::getenv("PATH"))
    {
        setenv("PATH", m_dir.path().c_str(), 1);
    }
    ~NoToolsOnPath() { setenv("PATH", m_old.c_str(), 1); }

private:
    std::string m_old;
    testsupport::TempDir m_dir;
};

// A project whose input has frames frames at fps, with its list file in a folder of dir.
void SetInput(EngineRig &rig, const testsupport::TempDir &dir, int frames, double fps)
{
    rig.data.input_file = dir.file("clip.mp4");
    rig.data.output_folder = dir.file("out") + "/";
    rig.data.pts_file = dir.file("out/clip_pts.csv");
    rig.data.viInput.frame_num = frames;
    rig.data.viInput.fps = fps;
    rig.data.viCurrent = rig.data.viInput;
}

TEST(PtsListCommand, ListsTheFrameTimesOfTheFirstVideoStream)
{
    EXPECT_EQ(engine::PtsListCommand("/videos/my clip.mkv"),
              "ffprobe -v error -select_streams v:0 -show_entries frame=pts_time -of csv=p=0 "
              "\"/videos/my clip.mkv\"");
}

TEST(PtsText, SixDecimals)
{
    EXPECT_EQ(engine::PtsText(0.04), "0.040000");
    EXPECT_EQ(engine::PtsText(1.0 / 30), "0.033333");
}

TEST(PtsLineReader, CommaAndEmptyLineOfTheFirstFrameAreDropped)
{
    Texts texts;
    std::vector<double> values = ValuesOf(kTwoFramesAt25, &texts);
    EXPECT_EQ(texts, (Texts{"0.000000", "0.040000"}));
    EXPECT_EQ(values, (std::vector<double>{0.0, 0.04}));
}

TEST(PtsLineReader, TimesCountFromTheFirstFrame)
{
    Texts texts;
    ValuesOf(kOffsetFrames, &texts);
    EXPECT_EQ(texts, (Texts{"0.000000", "0.040000", "0.080000", "0.120000", "0.160000"}));
}

TEST(PtsLineReader, LineSplitAcrossChunksIsTakenWhole)
{
    Texts texts;
    std::vector<double> values;
    PtsLineReader reader(-1);
    std::vector<int> counts;
    auto onLine = [&](int count) { counts.push_back(count); };
    EXPECT_FALSE(reader.Feed("0.000000,\n\n0.04", texts, values, onLine));
    EXPECT_EQ(reader.Pending(), "0.04");
    EXPECT_FALSE(reader.Feed("0000\r\n0.080000\n", texts, values, onLine));
    EXPECT_EQ(texts, (Texts{"0.000000", "0.040000", "0.080000"}));
    EXPECT_EQ(counts, (std::vector<int>{1, 2, 3}));
    EXPECT_TRUE(reader.Pending().empty());
}

TEST(PtsLineReader, LimitLeavesTheRestOfTheChunkPending)
{
    Texts texts;
    std::vector<double> values;
    PtsLineReader reader(engine::kPtsCheckLines);
    EXPECT_TRUE(reader.Feed(EvenLines(120, 0.04), texts, values));
    EXPECT_EQ(values.size(), 101u);
    EXPECT_EQ(texts.back(), "4.000000");
    EXPECT_EQ(reader.Pending().substr(0, 9), "4.040000\n");
    // What still stood in the pipe: one more line per chunk.
    EXPECT_TRUE(reader.Feed("4.800000\n", texts, values));
    EXPECT_EQ(values.size(), 102u);
    EXPECT_EQ(texts.back(), "4.040000");
}

TEST(PtsLineReader, LastLineWithoutLineEndIsTakenAsItStands)
{
    Texts texts;
    std::vector<double> values;
    PtsLineReader reader(-1);
    reader.Feed("1.500000,\n\n1.540000\n1.58", texts, values);
    EXPECT_TRUE(reader.TakeLastLine(texts, values));
    EXPECT_EQ(texts, (Texts{"0.000000", "0.040000", "0.080000"}));
    EXPECT_EQ(reader.Count(), 2); // the last line is not counted
    EXPECT_FALSE(reader.TakeLastLine(texts, values));
}

TEST(PtsLineReader, EachValueIsTheNumberOfItsText)
{
    Texts texts;
    std::vector<double> values = ValuesOf("0.1234567\n0.2\n", &texts);
    EXPECT_EQ(texts, (Texts{"0.000000", "0.076543"}));
    EXPECT_EQ(values[1], 0.076543);
}

TEST(ExtendPtsList, ShortFullReadIsExtendedByTheFirstDelta)
{
    Texts texts;
    std::vector<double> values = ValuesOf("0.000000,\n\n0.040000\n0.100000\n", &texts);
    ExtendPtsList(texts, values, 5);
    EXPECT_EQ(texts,
              (Texts{"0.000000", "0.040000", "0.100000", "0.140000", "0.180000", "0.220000"}));
    EXPECT_EQ(values.size(), 6u);
    EXPECT_EQ(values.back(), 0.22);
}

TEST(ExtendPtsList, ListThatReachesTheFrameCountStays)
{
    Texts texts;
    std::vector<double> values = ValuesOf(EvenLines(4, 0.04), &texts);
    ExtendPtsList(texts, values, 3); // frame count + 1 already
    EXPECT_EQ(values.size(), 4u);
    ExtendPtsList(texts, values, 2); // longer than needed: kept
    EXPECT_EQ(values.size(), 4u);
}

TEST(ExtendPtsList, SingleTimeKnowsNoDeltaAndStays)
{
    Texts texts{"0.000000"};
    std::vector<double> values{0.0};
    ExtendPtsList(texts, values, 5);
    EXPECT_EQ(values.size(), 1u);
}

TEST(PtsDeltaStats, NtscRateWhoseTimesAlternateByAMicrosecondIsRegular)
{
    std::optional<PtsDeltaStats> stats = PtsDeltaStatsOf(ValuesOf(kNtscFrames));
    ASSERT_TRUE(stats);
    EXPECT_EQ(engine::PtsText(stats->range), "0.000001");
    EXPECT_TRUE(IsConstantFrameRate(*stats, 30000.0 / 1001));
}

TEST(PtsDeltaStats, EvenSpacingAtAnotherRateThanAnnouncedIsIrregular)
{
    std::optional<PtsDeltaStats> stats = PtsDeltaStatsOf(ValuesOf(EvenLines(101, 0.04)));
    ASSERT_TRUE(stats);
    EXPECT_LT(stats->range, 1e-9);
    EXPECT_LT(stats->stddev, 1e-9);
    EXPECT_TRUE(IsConstantFrameRate(*stats, 25.0));
    EXPECT_FALSE(IsConstantFrameRate(*stats, 30.0)); // the mean differs from 1 / 30
}

TEST(PtsDeltaStats, TwoFramesAreTooFewForTheCheck)
{
    EXPECT_FALSE(PtsDeltaStatsOf(ValuesOf(kTwoFramesAt25)));
    EXPECT_TRUE(PtsDeltaStatsOf(ValuesOf("0.000000,\n\n0.040000\n0.080000\n")));
}

TEST(PtsDeltaStats, UnevenSpacingIsIrregular)
{
    std::optional<PtsDeltaStats> stats =
        PtsDeltaStatsOf(ValuesOf("0.000000,\n\n0.040000\n0.080000\n0.120000\n0.360000\n"));
    ASSERT_TRUE(stats);
    EXPECT_EQ(engine::PtsText(stats->mean), "0.090000");
    EXPECT_EQ(engine::PtsText(stats->range), "0.200000");
    EXPECT_EQ(engine::PtsText(stats->stddev), "0.086603"); // population form
    EXPECT_FALSE(IsConstantFrameRate(*stats, 25.0));
}

TEST(PtsDeltaStats, RateOfZeroNeverPasses)
{
    std::optional<PtsDeltaStats> stats = PtsDeltaStatsOf(ValuesOf(EvenLines(10, 0.04)));
    ASSERT_TRUE(stats);
    EXPECT_FALSE(IsConstantFrameRate(*stats, 0.0));
}

TEST(PtsFileText, EveryTimeOnALineOfItsOwn)
{
    EXPECT_EQ(engine::PtsFileText({"0.000000", "0.040000"}), "0.000000\n0.040000\n");
    EXPECT_EQ(engine::PtsFileText({}), "");
}

TEST(EnsurePtsList, ReopenedProjectWithItsFileAndListInPlaceReturnsAtOnce)
{
    testsupport::TempDir dir;
    EngineRig rig;
    SetInput(rig, dir, 3, 25.0);
    fs::create_directories(dir.file("out"));
    ASSERT_TRUE(testsupport::WriteFile(rig.data.pts_file, "0.000000\n0.050000\n0.110000\n0.2\n"));
    ASSERT_TRUE(rig.data.LoadPtsList(rig.data.pts_file));
    LogCapture log;
    NoToolsOnPath noTools;
    EXPECT_EQ(rig.engine.EnsurePtsList(rig.data.input_file), 0);
    rig.host.Loop().PumpMessages();
    EXPECT_TRUE(rig.Scene().Messages().empty()); // no stage, no state
    EXPECT_TRUE(log.Lines("CTarnwickProcess::").empty());
    EXPECT_EQ(rig.data.pts_list, (std::vector<double>{0.0, 0.05, 0.11, 0.2}));
}

TEST(EnsurePtsList, ListOfAnotherLengthIsMadeAgain)
{
    testsupport::TempDir dir;
    EngineRig rig;
    SetInput(rig, dir, 4, 25.0);
    fs::create_directories(dir.file("out"));
    ASSERT_TRUE(testsupport::WriteFile(rig.data.pts_file, "0.000000\n0.050000\n0.110000\n0.2\n"));
    ASSERT_TRUE(rig.data.LoadPtsList(rig.data.pts_file));
    NoToolsOnPath noTools;
    EXPECT_EQ(rig.engine.EnsurePtsList(rig.data.input_file), 0);
    EXPECT_EQ(TextsOf(rig.Scene(), AppMessage::WM_APP_STAGE_BEGIN), (Texts{"Frame Rate Analysis"}));
    EXPECT_EQ(testsupport::ReadFile(rig.data.pts_file),
              "0.000000\n0.040000\n0.080000\n0.120000\n0.160000\n");
}

TEST(EnsurePtsList, WithoutFfprobeTheTimesFollowFromTheRate)
{
    testsupport::TempDir dir;
    EngineRig rig;
    SetInput(rig, dir, 250, 25.0);
    NoToolsOnPath noTools;
    EXPECT_EQ(rig.engine.EnsurePtsList(rig.data.input_file), 0);
    rig.host.Loop().PumpMessages();

    EXPECT_EQ(TextsOf(rig.Scene(), AppMessage::WM_APP_STAGE_BEGIN), (Texts{"Frame Rate Analysis"}));
    EXPECT_EQ(Words(rig.Scene(), AppMessage::WM_APP_STAGE_BEGIN), (WordList{{0, 250}}));
    // The check and the full read both fail to start; the job goes on with computed times.
    EXPECT_EQ(States(rig.Scene()),
              (Texts{"3:CreateProcess failed with error 2",
                     "3:CreateProcess failed with error 2",
                     "4:"}));
    EXPECT_EQ(Words(rig.Scene(), AppMessage::WM_APP_PROGRESS),
              (WordList{{250, 0}, {250, 100}, {250, 200}, {250, 250}}));
    ASSERT_EQ(rig.data.pts_list.size(), 251u);
    EXPECT_EQ(rig.data.pts_list[1], 0.04);
    EXPECT_EQ(rig.data.pts_list[250], 10.0);
    std::string text = testsupport::ReadFile(rig.data.pts_file);
    EXPECT_EQ(text.substr(0, 27), "0.000000\n0.040000\n0.080000\n");
    EXPECT_EQ(text.substr(text.size() - 19), "9.960000\n10.000000\n");
    EXPECT_TRUE(testsupport::FilesMatching(dir.file("out"), ".tmp").empty());

    // The file reads back to the same list.
    std::vector<double> list = rig.data.pts_list;
    ASSERT_TRUE(rig.data.LoadPtsList(rig.data.pts_file));
    EXPECT_EQ(rig.data.pts_list, list);
}

TEST(EnsurePtsList, ProgressCountsAgainstTheFileProbedLast)
{
    testsupport::TempDir dir;
    EngineRig rig;
    SetInput(rig, dir, 120, 25.0);
    rig.data.viCurrent.frame_num = 30;
    NoToolsOnPath noTools;
    EXPECT_EQ(rig.engine.EnsurePtsList(rig.data.input_file), 0);
    EXPECT_EQ(Words(rig.Scene(), AppMessage::WM_APP_STAGE_BEGIN), (WordList{{0, 120}}));
    EXPECT_EQ(Words(rig.Scene(), AppMessage::WM_APP_PROGRESS),
              (WordList{{30, 0}, {30, 100}, {30, 30}}));
    EXPECT_EQ(rig.data.pts_list.size(), 121u);
}

TEST(EnsurePtsList, UnwritableOutputFolderFailsWithMinusOne)
{
    testsupport::TempDir dir;
    EngineRig rig;
    SetInput(rig, dir, 10, 25.0);
    ASSERT_TRUE(testsupport::WriteFile(dir.file("out"), "a file where the folder should be"));
    NoToolsOnPath noTools;
    EXPECT_EQ(rig.engine.EnsurePtsList(rig.data.input_file), -1);
    ASSERT_FALSE(States(rig.Scene()).empty());
    EXPECT_EQ(States(rig.Scene()).back(), "3:ExitCode(-1)");
    EXPECT_EQ(testsupport::ReadFile(dir.file("out")), "a file where the folder should be");
}

TEST(EnsurePtsList, StopWhileComputingEndsStoppedWithoutAFile)
{
    testsupport::TempDir dir;
    EngineRig rig;
    SetInput(rig, dir, 1000, 25.0);
    NoToolsOnPath noTools;
    rig.engine.bCancel = 1;
    EXPECT_EQ(rig.engine.EnsurePtsList(rig.data.input_file), -2);
    rig.engine.bCancel = 0;
    ASSERT_FALSE(States(rig.Scene()).empty());
    EXPECT_EQ(States(rig.Scene()).back(), "5:");
    EXPECT_LT(rig.data.pts_list.size(), 1001u);
    EXPECT_FALSE(fs::exists(rig.data.pts_file));
}

TEST(EnsurePtsList, PathThatCannotBePassedIsRefusedBeforeFfprobeRuns)
{
    testsupport::TempDir dir;
    EngineRig rig;
    SetInput(rig, dir, 10, 25.0);
    LogCapture log;
    std::string path = dir.file("bad\"name.mp4");
    EXPECT_EQ(rig.engine.EnsurePtsList(path), 0);
    std::string command =
        "CTarnwickProcess::GetPtsListFromFfprobe(N) [NG:-1] " + engine::PtsListCommand(path);
    EXPECT_EQ(log.LinesWithoutPositions("CTarnwickProcess::GetPtsListFromFfprobe"),
              (Texts{command, command}));
    Texts states = States(rig.Scene());
    ASSERT_EQ(states.size(), 3u);
    EXPECT_EQ(states[0].substr(0, 33), "3:The path cannot be passed to th");
    EXPECT_EQ(states[2], "4:");
    EXPECT_EQ(rig.data.pts_list.size(), 11u);
}

} // namespace
