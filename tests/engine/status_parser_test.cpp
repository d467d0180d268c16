// Tests of the status-text parser on lines copied from ffmpeg's status output and from the
// showinfo filter: partial lines, repeats, line limits, buffer bounds, positions.
#include "engine/status_parser.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using engine::FrameOfCapture;
using engine::PlaybackPositionOf;
using engine::StatusParser;

const std::string kStatus20 =
    "frame=   20 fps=0.0 q=-0.0 size=       0kB time=00:00:00.76 bitrate=N/A speed=1.5x    \r";
const std::string kStatus75 = "frame=   75 fps=0.0 q=16.9 Lsize=     152kB time=00:00:02.96 "
                              "bitrate= 420.8kbits/s speed=64.7x    \n";

std::vector<int> Frames(const std::vector<engine::StatusMatch> &matches)
{
    std::vector<int> frames;
    for (const auto &m : matches) {
        frames.push_back(m.frame);
    }
    return frames;
}

std::string ShowinfoLine(int n, const std::string &ptsTime)
{
    return "[Parsed_showinfo_1 @ 0x563052120900] n:" + std::to_string(n) +
           " pts:   6000 pts_time:" + ptsTime +
           "    pos:    23412 fmt:yuv420p sar:1/1 s:320x240 i:P iskey:0 type:P checksum:0D2C\n";
}

TEST(StatusParser, ReadsTheFrameOfAStatusLine)
{
    StatusParser parser(false, 0.0, 0);
    std::vector<engine::StatusMatch> matches = parser.Feed(kStatus20);
    ASSERT_EQ(matches.size(), 1u);
    EXPECT_EQ(matches[0].frame, 20);
    EXPECT_EQ(matches[0].capture, "20");
    EXPECT_EQ(parser.Buffer(),
              "0.0 q=-0.0 size=       0kB time=00:00:00.76 bitrate=N/A speed=1.5x    \r");
}

TEST(StatusParser, ChunkEndingInsideAStatusLineMatchesWithTheNextChunk)
{
    StatusParser parser(false, 0.0, 0);
    EXPECT_EQ(Frames(parser.Feed(kStatus20 + "frame=   4")), std::vector<int>{20});
    EXPECT_EQ(parser.Buffer().substr(parser.Buffer().size() - 10), "frame=   4");
    EXPECT_EQ(Frames(parser.Feed(
                  "1 fps=40 q=2.0 size=      12kB time=00:00:01.60 bitrate= 61.4kbits/s\r")),
              std::vector<int>{41});
}

TEST(StatusParser, RepeatedFrameNumberIsReportedOnce)
{
    StatusParser parser(false, 0.0, 0);
    EXPECT_EQ(Frames(parser.Feed(kStatus20 + kStatus20)), std::vector<int>{20});
    EXPECT_TRUE(parser.Feed(kStatus20).empty());
    EXPECT_EQ(Frames(parser.Feed(kStatus75)), std::vector<int>{75});
}

TEST(StatusParser, EveryStatusLineOfAChunkReports)
{
    StatusParser parser(false, 0.0, 0);
    EXPECT_EQ(Frames(parser.Feed("frame=    1 fps=0.0 q=3.5 size=       0kB time=00:00:00.00 "
                                 "bitrate=4512.8kbits/s speed=N/A    \r" +
                                 kStatus20 + kStatus75)),
              (std::vector<int>{1, 20, 75}));
}

TEST(StatusParser, MatchStaysWithinOneLine)
{
    StatusParser parser(false, 0.0, 0);
    EXPECT_TRUE(parser.Feed("frame=    5 q=1.0\nfps=3\n").empty());
    EXPECT_EQ(Frames(parser.Feed("frame=    5 q=1.0\rframe=    6 fps=0.0\r")), std::vector<int>{6});
}

TEST(StatusParser, TextWithoutMatchKeepsOnlyItsLast4096Characters)
{
    StatusParser parser(false, 0.0, 0);
    parser.Feed(std::string(8192, 'x'));
    EXPECT_EQ(parser.Buffer().size(), 8192u);
    parser.Feed("y");
    EXPECT_EQ(parser.Buffer(), std::string(4095, 'x') + "y");
}

TEST(StatusParser, NumberTooLargeForAnIntIsSkipped)
{
    StatusParser parser(false, 0.0, 0);
    EXPECT_TRUE(parser.Feed("frame=99999999999 fps=0.0 q=1\r").empty());
    EXPECT_EQ(Frames(parser.Feed("frame=    3 fps=0.0 q=1\r")), std::vector<int>{3});
}

TEST(StatusParser, PlaybackTurnsPtsTimeIntoFrames)
{
    StatusParser parser(true, 25.0, 0);
    std::string text =
        "[Parsed_showinfo_1 @ 0x5630] config in time_base: 1/12800, frame_rate: 25/1\n" +
        ShowinfoLine(0, "0      ") + ShowinfoLine(1, "0.04") + ShowinfoLine(2, "0.08");
    std::vector<engine::StatusMatch> matches = parser.Feed(text);
    // A whole second is printed without a decimal point and is passed over.
    ASSERT_EQ(Frames(matches), (std::vector<int>{1, 2}));
    EXPECT_EQ(matches[1].capture, "0.08");
}

TEST(StatusParser, PlaybackCountsFromTheStartFrame)
{
    StatusParser parser(true, 30.0, 15);
    EXPECT_EQ(Frames(parser.Feed(ShowinfoLine(16, "1.033333"))), std::vector<int>{16});
}

TEST(StatusParser, PlaybackLineOfAnotherFilterDoesNotMatch)
{
    StatusParser parser(true, 25.0, 0);
    EXPECT_TRUE(parser.Feed("[Parsed_scale_0 @ 0x5630] pts_time:1.5\n").empty());
}

TEST(PlaybackPositionOf, FrameBeyondTheTotalStopsAtTheLastFrame)
{
    engine::PlaybackPosition pos = PlaybackPositionOf(150, "5.99", 100, 25.0);
    EXPECT_EQ(pos.nPreviewFrame, 99);
    EXPECT_EQ(pos.strPreviewTime, "3.960000");
}

TEST(PlaybackPositionOf, BeforeTheEndTheToolsTimeTextIsKept)
{
    engine::PlaybackPosition pos = PlaybackPositionOf(50, "2.000000", 100, 25.0);
    EXPECT_EQ(pos.nPreviewFrame, 50);
    EXPECT_EQ(pos.strPreviewTime, "2.000000");
}

TEST(PlaybackPositionOf, TimeTextHasOneFormBeforeAndAtTheEnd)
{
    EXPECT_EQ(PlaybackPositionOf(41, "1.64", 100, 25.0).strPreviewTime, "1.640000");
    EXPECT_EQ(PlaybackPositionOf(99, "3.96", 100, 25.0).strPreviewTime, "3.960000");
    // showinfo's "%.6g" of a long recording.
    EXPECT_EQ(PlaybackPositionOf(25000000, "1e+06", 30000000, 25.0).strPreviewTime,
              "1000000.000000");
}

TEST(PlaybackPositionOf, FramesBeforeTheStartAskedForStandAtTheStart)
{
    // Asked for 6 s, the player begins at the key frame of 4.2 s.
    engine::PlaybackPosition pos = PlaybackPositionOf(105, "4.2", 300, 25.0, 150, "6");
    EXPECT_EQ(pos.nPreviewFrame, 150);
    EXPECT_EQ(pos.strPreviewTime, "6.000000");
    // From 6.01 s the first frame is 151 (6.04 s): frame 150 begins before it.
    pos = PlaybackPositionOf(150, "6", 300, 25.0, 151, "6.01");
    EXPECT_EQ(pos.nPreviewFrame, 151);
    EXPECT_EQ(pos.strPreviewTime, "6.010000");
    pos = PlaybackPositionOf(151, "6.04", 300, 25.0, 150, "6");
    EXPECT_EQ(pos.nPreviewFrame, 151);
    EXPECT_EQ(pos.strPreviewTime, "6.040000");
}

TEST(PlaybackPositionOf, ZeroRateAtTheEndGivesZeroSeconds)
{
    engine::PlaybackPosition pos = PlaybackPositionOf(120, "4.8", 100, 0.0);
    EXPECT_EQ(pos.nPreviewFrame, 99);
    EXPECT_EQ(pos.strPreviewTime, "0.000000");
}

TEST(FrameOfCapture, RoundsSecondsTimesRateToNearest)
{
    EXPECT_EQ(FrameOfCapture("5.99", true, 25.0, 0), 150); // 149.75
    EXPECT_EQ(FrameOfCapture("0.02", true, 25.0, 0), 1);   // 0.5 rounds up
    EXPECT_EQ(FrameOfCapture("0.5", true, 30.0, 15), 0);
    EXPECT_EQ(FrameOfCapture("0.1", true, 30.0, 15), -12);
    EXPECT_EQ(FrameOfCapture("1.5", true, 0.0, 0), 0);
}

TEST(FrameOfCapture, NumbersThatDoNotFitAreEmpty)
{
    EXPECT_EQ(FrameOfCapture("2147483647", false, 0.0, 0), 2147483647);
    EXPECT_EQ(FrameOfCapture("2147483648", false, 0.0, 0), std::nullopt);
    EXPECT_EQ(FrameOfCapture("99999999999.0", true, 25.0, 0), std::nullopt);
    EXPECT_EQ(FrameOfCapture("1" + std::string(400, '0') + ".0", true, 25.0, 0), std::nullopt);
}

TEST(ChunkText, EndsAtTheFirstZeroByte)
{
    const char chunk[] = {'a', 'b', '\0', 'c', 'd'};
    EXPECT_EQ(engine::ChunkText(chunk, 5), "ab");
    EXPECT_EQ(engine::ChunkText(chunk, 2), "ab");
    EXPECT_EQ(engine::ChunkText(chunk, 0), "");
}

} // namespace
