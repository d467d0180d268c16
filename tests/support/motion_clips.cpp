// Generated clips with a moving box on a still background, for the scene-scan tests.
#include "support/motion_clips.h"

#include <gtest/gtest.h>

namespace testsupport {

std::string MakeMotionClip(const TempDir &dir)
{
    std::string clip = dir.file("motion.mp4");
    EXPECT_TRUE(MakeClip(clip, kMotionSource));
    return clip;
}

std::string MakeLongClip(const TempDir &dir)
{
    std::string part = dir.file("part.mp4");
    EXPECT_TRUE(
        MakeClip(part,
                 "color=c=0x404040:s=320x240:r=25:d=10[bg];color=c=0xA0A0A0:s=64x64:r=25:d=10[box];"
                 "[bg][box]overlay=x='100*(clip(t,1,3)-1)':y=88:eval=frame"));
    std::string clip = dir.file("long.mp4");
    EXPECT_TRUE(LoopClip(clip, part, 89));
    return clip;
}

std::string MakeThreeSceneClip(const TempDir &dir)
{
    std::string clip = dir.file("m3.mp4");
    EXPECT_TRUE(MakeClip(
        clip,
        "color=c=0x404040:s=320x240:r=25:d=15[bg];color=c=0xA0A0A0:s=64x64:r=25:d=15[box];"
        "[bg][box]overlay=x='100*(clip(t,2,4)-2)-100*(clip(t,6.5,8.5)-6.5)+100*(clip(t,11,13)-"
        "11)':y=88:eval=frame",
        {"-f",
         "lavfi",
         "-i",
         "sine=f=440:d=15",
         "-c:v",
         "libx264",
         "-pix_fmt",
         "yuv420p",
         "-c:a",
         "aac",
         "-shortest"}));
    return clip;
}

} // namespace testsupport
