// Tests of the working MP4 with the real ffmpeg: an interlaced recording deinterlaced on the
// way, a progressive .mov converted as it is, and a stopped conversion that leaves no file
// under the working file's name.
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/project_names.h"
#include "core/source_stamp.h"
#include "engine/encoder_presets.h"
#include "engine/input_analysis.h"
#include "engine_fixture.h"

namespace {

namespace fs = std::filesystem;

using engine::AppMessage;
using enginetest::EngineRig;
using enginetest::States;
using Texts = std::vector<std::string>;

// Opens clip in the rig's project the way the analysis does before it decides.
void OpenForConversion(EngineRig &rig, const std::string &clip, const std::string &folder)
{
    core::DeriveProjectNames(rig.data, clip);
    rig.data.output_folder = folder + "/";
    ASSERT_EQ(rig.engine.OpenVideoFile(clip), 0);
}

// Runs ConvertToMp4 as a job's worker would and returns its result.
int Convert(EngineRig &rig, const std::string &clip, const std::string &target, bool bDeinterlace)
{
    int result = 99;
    rig.engine.SetJobFunction(9011, 0, [&](int) {
        result = rig.engine.ConvertToMp4(clip, target, bDeinterlace);
        return result;
    });
    EXPECT_EQ(rig.engine.StartThread(9011), 1);
    rig.WaitForJob();
    return result;
}

TEST(ConvertToMp4, InterlacedRecordingIsDeinterlacedIntoAProgressiveWorkingFile)
{
    testsupport::TempDir dir;
    const std::string clip = dir.file("match.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip,
                                      "testsrc2=size=160x120:rate=25:duration=2",
                                      {"-c:v",
                                       "libx264",
                                       "-pix_fmt",
                                       "yuv420p",
                                       "-flags",
                                       "+ilme+ildct",
                                       "-x264opts",
                                       "tff=1",
                                       "-field_order",
                                       "tt"}));
    EngineRig rig;
    OpenForConversion(rig, clip, dir.file("out"));
    ASSERT_EQ(rig.data.viCurrent.field_order, "tt");
    EXPECT_FALSE(engine::UsedAsItIs(clip, rig.data.viCurrent.field_order));
    const std::string target = engine::WorkingFilePath(rig.data);
    ASSERT_EQ(Convert(rig, clip, target, true), 0);
    EXPECT_TRUE(fs::exists(target));
    EXPECT_FALSE(fs::exists(core::PartialSegmentPath(target)));
    // The deinterlacer gives a picture per field; "-r" brings them back to 25 a second, with
    // at most a frame's worth of fields more at the end.
    const int frames = testsupport::DecodedFrames(target);
    EXPECT_GE(frames, 50);
    EXPECT_LE(frames, 52);
    // The MPEG-4 working file states no field order at all: it is no longer flagged interlaced.
    EngineRig probe;
    ASSERT_EQ(probe.engine.OpenVideoFile(target), 0);
    EXPECT_NE(probe.data.viCurrent.field_order, "tt");
    EXPECT_EQ(probe.data.viCurrent.r_frame_rate, "25/1");
    const auto stages = rig.Scene().MessagesOf(AppMessage::WM_APP_STAGE_BEGIN);
    ASSERT_FALSE(stages.empty());
    EXPECT_EQ(stages.back().text.value_or(""), "Change MP4");
    EXPECT_EQ(stages.back().lParam, 50);
    EXPECT_EQ(States(rig.Scene()), (Texts{"4:"}));
}

TEST(ConvertToMp4, ProgressiveMovIsConvertedWithItsFramesAndRate)
{
    testsupport::TempDir dir;
    const std::string clip = dir.file("phone.mov");
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=160x120:rate=30:duration=2"));
    EngineRig rig;
    OpenForConversion(rig, clip, dir.file("out"));
    ASSERT_EQ(rig.data.viCurrent.field_order, "progressive");
    EXPECT_FALSE(engine::UsedAsItIs(clip, "progressive"));
    const std::string target = engine::WorkingFilePath(rig.data);
    EXPECT_EQ(target, dir.file("out") + "/phone_input_ch.mp4");
    ASSERT_EQ(Convert(rig, clip, target, false), 0);
    EXPECT_EQ(testsupport::DecodedFrames(target), 60);
    EngineRig probe;
    ASSERT_EQ(probe.engine.OpenVideoFile(target), 0);
    EXPECT_EQ(probe.data.viCurrent.r_frame_rate, "30/1");
    EXPECT_EQ(probe.data.viCurrent.width, 160);
}

TEST(ConvertToMp4, StoppedConversionLeavesNoWorkingFile)
{
    testsupport::TempDir dir;
    const std::string part = dir.file("part.mov");
    ASSERT_TRUE(testsupport::MakeClip(part, "testsrc2=size=640x360:rate=25:duration=4"));
    const std::string clip = dir.file("long.mov");
    ASSERT_TRUE(testsupport::LoopClip(clip, part, 150));
    EngineRig rig;
    OpenForConversion(rig, clip, dir.file("out"));
    const std::string target = engine::WorkingFilePath(rig.data);
    int result = 99;
    rig.engine.SetJobFunction(9011, 0, [&](int) {
        result = rig.engine.ConvertToMp4(clip, target, false);
        return result;
    });
    ASSERT_EQ(rig.engine.StartThread(9011), 1);
    rig.host.Loop().RunUntil([&] {
        return !rig.Scene().MessagesOf(AppMessage::WM_APP_PROGRESS).empty() ||
               !rig.engine.bThreadRunning;
    });
    rig.engine.CancelProcess();
    rig.WaitForJob();
    EXPECT_EQ(result, -2);
    EXPECT_FALSE(fs::exists(target));
    EXPECT_FALSE(fs::exists(core::PartialSegmentPath(target)));
    EXPECT_EQ(testsupport::CountProcessesWith(clip), 0);
}

TEST(ConvertToMp4, FinishedWorkingFileRecordsItsSource)
{
    testsupport::TempDir dir;
    const std::string clip = dir.file("phone.mov");
    const std::string other = dir.file("other.mov");
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=160x120:rate=25:duration=1"));
    ASSERT_TRUE(testsupport::MakeClip(other, "testsrc2=size=160x120:rate=25:duration=1"));
    EngineRig rig;
    OpenForConversion(rig, clip, dir.file("out"));
    const std::string target = engine::WorkingFilePath(rig.data);
    ASSERT_EQ(Convert(rig, clip, target, false), 0);
    EXPECT_TRUE(core::MadeFromSource(target, clip));
    EXPECT_FALSE(core::MadeFromSource(target, other));
    // The record names the real file: a link to it is the same source.
    const std::string link = dir.file("link.mov");
    fs::create_symlink(clip, link);
    EXPECT_TRUE(core::MadeFromSource(target, link));
}

TEST(ConvertToMp4, StoppedConversionOverAnotherSourcesFileLeavesItUntrusted)
{
    testsupport::TempDir dir;
    const std::string small = dir.file("small.mov");
    ASSERT_TRUE(testsupport::MakeClip(small, "testsrc2=size=160x120:rate=25:duration=1"));
    const std::string part = dir.file("part.mov");
    ASSERT_TRUE(testsupport::MakeClip(part, "testsrc2=size=640x360:rate=25:duration=4"));
    const std::string clip = dir.file("long.mov");
    ASSERT_TRUE(testsupport::LoopClip(clip, part, 150));
    EngineRig rig;
    OpenForConversion(rig, clip, dir.file("out"));
    const std::string target = engine::WorkingFilePath(rig.data);
    ASSERT_EQ(Convert(rig, small, target, false), 0);
    ASSERT_TRUE(core::MadeFromSource(target, small));
    ASSERT_EQ(rig.engine.OpenVideoFile(clip), 0);
    rig.Scene().ClearMessages();
    int result = 99;
    rig.engine.SetJobFunction(9011, 0, [&](int) {
        result = rig.engine.ConvertToMp4(clip, target, false);
        return result;
    });
    ASSERT_EQ(rig.engine.StartThread(9011), 1);
    rig.host.Loop().RunUntil([&] {
        return !rig.Scene().MessagesOf(AppMessage::WM_APP_PROGRESS).empty() ||
               !rig.engine.bThreadRunning;
    });
    rig.engine.CancelProcess();
    rig.WaitForJob();
    EXPECT_EQ(result, -2);
    // The file of the other source is still there, but no longer counts as any source's.
    EXPECT_TRUE(fs::exists(target));
    EXPECT_FALSE(core::MadeFromSource(target, small));
    EXPECT_FALSE(core::MadeFromSource(target, clip));
}

} // namespace
