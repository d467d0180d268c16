// Tests of the scan's command text: the software and the CUDA prefix, and the scan size of a
// full-HD video.
#include "engine/scan_command.h"

#include <string>

#include <gtest/gtest.h>

#include "engine/changed_pixels.h"

namespace {

TEST(ScanCommand, SoftwareDecodingOfAFullHdVideo)
{
    int w = engine::ScanDimension(1920);
    int h = engine::ScanDimension(1080);
    EXPECT_EQ(engine::ScanCommand(false, "/videos/trip.mov", w, h),
              "ffmpeg -y -loglevel quiet -blocksize 1048576 -i \"/videos/trip.mov\" -vf "
              "\"scale=240:135\" -f rawvideo -pix_fmt gray -");
}

TEST(ScanCommand, CudaDecodingPutsTheHardwareFlagInThePrefix)
{
    EXPECT_EQ(engine::ScanCommand(true, "/videos/a b.mp4", 240, 135),
              "ffmpeg -y -hwaccel cuda -loglevel quiet -blocksize 1048576 -i \"/videos/a b.mp4\" "
              "-vf \"scale=240:135\" -f rawvideo -pix_fmt gray -");
}

TEST(ScanCommand, OddSizesAreWrittenAsGiven)
{
    EXPECT_EQ(engine::ScanCommand(false, "x.mp4", 241, 0),
              "ffmpeg -y -loglevel quiet -blocksize 1048576 -i \"x.mp4\" -vf \"scale=241:0\" -f "
              "rawvideo -pix_fmt gray -");
}

} // namespace
