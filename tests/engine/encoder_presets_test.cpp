// Tests of the encoder tables, the tool prefix, the key-frame and rate arguments and the name of
// an input's working file.
#include "engine/encoder_presets.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "support/test_support.h"

namespace {

using engine::EncoderText;
using engine::IntermediateName;

TEST(EncoderPresets, HardwareSmallestFileSelectsNvencQp28AndItsWorkingName)
{
    EXPECT_EQ(EncoderText(1, 2), "h264_nvenc -preset p1 -qp 28");
    EXPECT_EQ(IntermediateName(1, 2), "_input_gl.mp4");
}

TEST(EncoderPresets, TablesHoldEveryPreset)
{
    EXPECT_EQ(EncoderText(0, 0), "mpeg4 -qscale:v 1");
    EXPECT_EQ(EncoderText(0, 1), "mpeg4 -qscale:v 4");
    EXPECT_EQ(EncoderText(0, 2), "mpeg4 -qscale:v 7");
    EXPECT_EQ(EncoderText(1, 0), "h264_nvenc -preset p1 -qp 18");
    EXPECT_EQ(EncoderText(1, 1), "h264_nvenc -preset p1 -qp 23");
    EXPECT_EQ(IntermediateName(0, 0), "_input_ch.mp4");
    EXPECT_EQ(IntermediateName(0, 1), "_input_cs.mp4");
    EXPECT_EQ(IntermediateName(0, 2), "_input_cl.mp4");
    EXPECT_EQ(IntermediateName(1, 0), "_input_gh.mp4");
    EXPECT_EQ(IntermediateName(1, 1), "_input_gs.mp4");
}

TEST(EncoderPresets, ToolPrefixEndsInOneBlank)
{
    EXPECT_EQ(engine::ToolPrefix(false), "ffmpeg -y ");
    EXPECT_EQ(engine::ToolPrefix(true), "ffmpeg -y -hwaccel cuda ");
}

TEST(EncoderPresets, FrameRate2997GivesKeyFrameEvery30)
{
    EXPECT_EQ(engine::KeyFrameArgs(29.97), "-g 30 -keyint_min 1");
    EXPECT_EQ(engine::KeyFrameArgs(30000.0 / 1001.0), "-g 30 -keyint_min 1");
}

TEST(EncoderPresets, FrameRateZeroGivesG0)
{
    EXPECT_EQ(engine::KeyFrameArgs(0.0), "-g 0 -keyint_min 1");
}

TEST(EncoderPresets, KeyFrameIntervalRoundsToNearest)
{
    EXPECT_EQ(engine::KeyFrameArgs(23.976), "-g 24 -keyint_min 1");
    EXPECT_EQ(engine::KeyFrameArgs(12.5), "-g 13 -keyint_min 1");
}

TEST(EncoderPresets, RateArgumentCarriesTheFraction)
{
    EXPECT_EQ(engine::RateArgs("30000/1001"), "-r 30000/1001");
}

TEST(EncoderPresets, WorkingFileOfTripMtsIsInTheOutputFolder)
{
    core::CTarnwickData data;
    data.input_file = "/home/u/videos/trip.mts";
    data.output_folder = "/home/u/out/";
    data.bUseCuda = 0;
    data.nEncodePreset = 1;
    EXPECT_EQ(engine::WorkingFilePath(data), "/home/u/out/trip_input_cs.mp4");
}

TEST(EncoderPresets, SwitchingCudaLeavesTheOldWorkingFileAndNamesANewOne)
{
    testsupport::TempDir dir;
    core::CTarnwickData data;
    data.input_file = "/home/u/videos/trip.mts";
    data.output_folder = dir.path() + "/";
    data.nEncodePreset = 1;
    data.bUseCuda = 0;
    std::string software = engine::WorkingFilePath(data);
    ASSERT_TRUE(testsupport::WriteFile(software, "working file"));
    data.bUseCuda = 1;
    std::string hardware = engine::WorkingFilePath(data);
    EXPECT_EQ(software, dir.path() + "/trip_input_cs.mp4");
    EXPECT_EQ(hardware, dir.path() + "/trip_input_gs.mp4");
    EXPECT_TRUE(std::filesystem::exists(software));
    EXPECT_FALSE(std::filesystem::exists(hardware)); // to be made under its own name
}

} // namespace
