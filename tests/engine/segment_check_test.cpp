// Tests of the reading of a segment's last packets against the duration its header states.
#include "engine/segment_check.h"

#include <gtest/gtest.h>

namespace {

using engine::StreamReachesItsEnd;

// ffprobe's JSON with the stated duration and packets of 0.04 s from first to last.
std::string Answer(const std::string &duration, double first, double last)
{
    std::string packets;
    for (double t = first; t <= last + 1e-9; t += 0.04) {
        packets += std::string(packets.empty() ? "" : ",") + "{\"pts_time\": \"" +
                   std::to_string(t) + "\", \"duration_time\": \"0.040000\"}";
    }
    return "{\"packets\": [" + packets + "], \"programs\": [], \"streams\": [{\"duration\": \"" +
           duration + "\"}]}";
}

TEST(SegmentCheck, StreamWhoseLastPacketEndsAtItsStatedDurationIsWhole)
{
    EXPECT_TRUE(StreamReachesItsEnd(Answer("1.840000", 1.0, 1.8)));
}

TEST(SegmentCheck, StreamThatEndsEarlierThanItsHeaderSaysIsCutShort)
{
    EXPECT_FALSE(StreamReachesItsEnd(Answer("1.840000", 1.0, 1.76))); // one frame short
    EXPECT_FALSE(StreamReachesItsEnd(Answer("1.840000", 1.0, 0.0)));  // no packet at all
}

TEST(SegmentCheck, UnreadableAnswerIsNotWholeAndAStreamWithoutDurationIs)
{
    EXPECT_FALSE(StreamReachesItsEnd("partial file"));
    EXPECT_FALSE(StreamReachesItsEnd("{\"packets\": []}"));
    EXPECT_TRUE(StreamReachesItsEnd(Answer("N/A", 0.0, 0.0)));
}

TEST(SegmentCheck, CommandReadsOnlyTheLastStretchOfTheFirstVideoStream)
{
    EXPECT_EQ(engine::StreamEndCommand("/x/a b.mp4"),
              "ffprobe -v quiet -read_intervals 99999999% -select_streams v:0 -show_entries "
              "stream=duration:packet=pts_time,duration_time -print_format json \"/x/a b.mp4\"");
}

} // namespace
