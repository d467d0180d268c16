// Tests of the decisions of opening an input: used as it is or converted, deinterlaced or not,
// the working MP4's command to the character, and the default cross-fade length.
#include "engine/input_analysis.h"

#include <gtest/gtest.h>

namespace engine {
namespace {

TEST(InputDecision, ProgressiveMp4WithCapitalsIsUsedAsItIs)
{
    EXPECT_TRUE(UsedAsItIs("/videos/GARDEN.MP4", "progressive"));
    EXPECT_FALSE(NeedsDeinterlace("progressive"));
}

TEST(InputDecision, Mp4WithTopFieldFirstIsConvertedWithDeinterlacing)
{
    EXPECT_FALSE(UsedAsItIs("/videos/match.mp4", "tt"));
    EXPECT_TRUE(NeedsDeinterlace("tt"));
}

TEST(InputDecision, Mp4WithoutFieldOrderCountsAsInterlaced)
{
    EXPECT_FALSE(UsedAsItIs("/videos/old.mp4", ""));
    EXPECT_TRUE(NeedsDeinterlace(""));
}

TEST(InputDecision, ProgressiveMovIsConvertedWithoutDeinterlacing)
{
    EXPECT_FALSE(UsedAsItIs("/videos/phone.mov", "progressive"));
    EXPECT_FALSE(NeedsDeinterlace("progressive"));
}

TEST(TransitionSeconds, NtscRateGivesFourteenFrames)
{
    // round(14.985) = 15, made even 14; 14 / 29.97 = 0.4671.
    EXPECT_DOUBLE_EQ(TransitionSeconds(29.97), 0.47);
}

TEST(TransitionSeconds, TwentyFiveRoundsHalfAwayFromZeroThenEven)
{
    // round(12.5) = 13, made even 12; 12 / 25 = 0.48.
    EXPECT_DOUBLE_EQ(TransitionSeconds(25.0), 0.48);
}

TEST(TransitionSeconds, NoRateGivesNoFade)
{
    EXPECT_EQ(TransitionSeconds(0.0), 0.0);
    EXPECT_EQ(TransitionSeconds(-5.0), 0.0);
}

TEST(TransitionSeconds, MergeRowCountsFramesAtTheSourceRateAndSecondsAtTheTarget)
{
    // 14 frames of a 29.97 source, shown at 60 frames a second.
    EXPECT_DOUBLE_EQ(MergeTransitionSeconds(29.97, 60.0), 0.23);
    // Without a target rate the source's rate counts.
    EXPECT_DOUBLE_EQ(MergeTransitionSeconds(29.97, 0.0), 0.47);
    EXPECT_EQ(MergeTransitionSeconds(0.0, 0.0), 0.0);
}

TEST(ConvertToMp4Command, InterlacedSourceIsDeinterlacedOnTheWay)
{
    EXPECT_EQ(ConvertToMp4Command("ffmpeg -y ",
                                  "/in/match.ts",
                                  "mpeg4 -qscale:v 1",
                                  29.97,
                                  "30000/1001",
                                  true,
                                  "/out/match_input_ch.partial.mp4"),
              "ffmpeg -y -i \"/in/match.ts\" -c:v mpeg4 -qscale:v 1 -g 30 -keyint_min 1 -r "
              "30000/1001 -c:a aac -b:a 192k -vf \"yadif=1,setpts=PTS-STARTPTS\" -af "
              "\"asetpts=PTS-STARTPTS\" -movflags +faststart \"/out/match_input_ch.partial.mp4\"");
}

TEST(ConvertToMp4Command, ProgressiveSourceHasNoDeinterlacer)
{
    EXPECT_EQ(ConvertToMp4Command("ffmpeg -y -hwaccel cuda ",
                                  "/in/phone.mov",
                                  "h264_nvenc -preset p1 -qp 23",
                                  25.0,
                                  "25/1",
                                  false,
                                  "/out/phone_input_gs.mp4"),
              "ffmpeg -y -hwaccel cuda -i \"/in/phone.mov\" -c:v h264_nvenc -preset p1 -qp 23 -g "
              "25 -keyint_min 1 -r 25/1 -c:a aac -b:a 192k -vf \"setpts=PTS-STARTPTS\" -af "
              "\"asetpts=PTS-STARTPTS\" -movflags +faststart \"/out/phone_input_gs.mp4\"");
}

} // namespace
} // namespace engine
