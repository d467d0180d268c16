// Tests of the conversion command of a merge source: the silent track of a source without
// sound and the whole command text.
#include "render/conversion_commands.h"

#include <gtest/gtest.h>

#include "render/video_filter.h"

TEST(SilenceArgs, SourceWithoutSoundGetsTenHoursOfStereoSilenceCutToThePicture)
{
    EXPECT_EQ(render::SilenceArgs(false),
              "-f lavfi -t 36000.000000 -i anullsrc=channel_layout=stereo:sample_rate=44100 "
              "-shortest ");
}

TEST(SilenceArgs, SourceWithSoundGetsNothing)
{
    EXPECT_EQ(render::SilenceArgs(true), "");
}

TEST(ConvertInputCommand, RateIndexFiveWritesTheNtscRateAndAKeyFrameEveryThirtyFrames)
{
    const render::EncodeArgs args{"ffmpeg -y ", "mpeg4 -qscale:v 4", 30000.0 / 1001, "30000/1001"};
    EXPECT_EQ(render::ConvertInputCommand(args,
                                          "/v/a.mov",
                                          render::SilenceArgs(false),
                                          render::ConformingChain(352, 288),
                                          "/v/out/a_seg_352x288_29.97.partial.mp4"),
              "ffmpeg -y -i \"/v/a.mov\" -f lavfi -t 36000.000000 -i "
              "anullsrc=channel_layout=stereo:sample_rate=44100 -shortest -c:v mpeg4 -qscale:v 4 "
              "-pix_fmt yuv420p -g 30 -keyint_min 1 -r 30000/1001 -c:a aac -b:a 192k -vf "
              "\"scale=iw*sar:ih,setsar=1,scale=352:288:force_original_aspect_ratio=decrease,"
              "pad=352:288:(ow-iw)/2:(oh-ih)/2,fps=30000/1001,setpts=PTS-STARTPTS,setsar=1\" -af "
              "\"asetpts=PTS-STARTPTS\" -movflags +faststart "
              "\"/v/out/a_seg_352x288_29.97.partial.mp4\"");
}

TEST(ConvertInputCommand, SourceWithSoundHasNoSecondInput)
{
    const render::EncodeArgs args{
        "ffmpeg -y -hwaccel cuda ", "h264_nvenc -preset p1 -qp 23", 60.0, "60/1"};
    EXPECT_EQ(
        render::ConvertInputCommand(args, "/a.mp4", "", "CHAIN", "/b.mp4"),
        "ffmpeg -y -hwaccel cuda -i \"/a.mp4\" -c:v h264_nvenc -preset p1 -qp 23 -pix_fmt "
        "yuv420p -g 60 -keyint_min 1 -r 60/1 -c:a aac -b:a 192k -vf "
        "\"CHAIN,fps=60/1,setpts=PTS-STARTPTS,setsar=1\" -af \"asetpts=PTS-STARTPTS\" -movflags "
        "+faststart \"/b.mp4\"");
}

TEST(ConvertInputCommand, PlannedFramesEndThePictureThatTheFpsFilterBringsToTheRate)
{
    const render::EncodeArgs args{"ffmpeg -y ", "libx264", 24.0, "24/1"};
    EXPECT_EQ(render::ConvertInputCommand(args, "/a.mp4", "", "CHAIN", "/b.mp4", 96),
              "ffmpeg -y -i \"/a.mp4\" -c:v libx264 -pix_fmt yuv420p -g 24 -keyint_min 1 -r 24/1 "
              "-c:a aac -b:a 192k -vf \"CHAIN,fps=24/1,trim=end_frame=96,setpts=PTS-STARTPTS,"
              "setsar=1\" -af \"asetpts=PTS-STARTPTS\" -movflags +faststart \"/b.mp4\"");
}
