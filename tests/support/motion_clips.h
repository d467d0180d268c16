// Generated clips with a moving box on a still background, for the scene-scan tests.
#pragma once

#include <string>

#include "support/test_support.h"

namespace testsupport {

// 12 seconds of 320x240 at 25 fps: a dark still background with a light 64x64 box that moves
// 100 pixels a second during seconds 2 to 4 (right) and 7 to 9 (back). Box and background differ
// by 96 gray levels, inside the range that the measure counts.
inline constexpr const char *kMotionSource =
    "color=c=0x404040:s=320x240:r=25:d=12[bg];color=c=0xA0A0A0:s=64x64:r=25:d=12[box];"
    "[bg][box]overlay=x='100*(clip(t,2,4)-2)-100*(clip(t,7,9)-7)':y=88:eval=frame";

// dir/motion.mp4 made from kMotionSource; a failure to make it fails the current test.
std::string MakeMotionClip(const TempDir &dir);

// dir/long.mp4: ten seconds with the box moving in seconds 1 to 3 (dir/part.mp4), looped to 15
// minutes by stream copy. A failure to make it fails the current test.
std::string MakeLongClip(const TempDir &dir);

// dir/m3.mp4: 15 seconds of 320x240 at 25 fps with a sine tone; the box moves right in seconds 2
// to 4, back in 6.5 to 8.5 and right again in 11 to 13: three scenes of 50 frames (51-100,
// 163-212, 276-325). A failure to make it fails the current test.
std::string MakeThreeSceneClip(const TempDir &dir);

} // namespace testsupport
