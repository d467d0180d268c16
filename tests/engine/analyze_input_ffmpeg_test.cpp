// Tests of the analysis of a newly opened input with the real tools: which inputs get a working
// MP4, what the project holds afterwards, the stages it reports, and a second opening that
// trusts the working file.
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/project_names.h"
#include "engine/encoder_presets.h"
#include "engine_fixture.h"

namespace {

namespace fs = std::filesystem;

using engine::AppMessage;
using enginetest::EngineRig;
using enginetest::States;
using Texts = std::vector<std::string>;

// The stage names a tab received, in order.
Texts Stages(const engine::HeadlessTab &tab)
{
    Texts names;
    for (const engine::JobMessage &msg : tab.MessagesOf(AppMessage::WM_APP_STAGE_BEGIN)) {
        names.push_back(msg.text.value_or(""));
    }
    return names;
}

// A new project for clip, named as opening it names one, then the analysis of the opening.
int Open(EngineRig &rig, const std::string &clip)
{
    rig.data.ResetProject(false);
    core::DeriveProjectNames(rig.data, clip);
    return rig.engine.AnalyzeInputFile(false, -1);
}

TEST(AnalyzeInputFile, ProgressiveMp4WithCapitalsIsUsedAsItIs)
{
    testsupport::TempDir dir;
    const std::string clip = dir.file("GARDEN.MP4");
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=160x120:rate=25:duration=2"));
    EngineRig rig;
    ASSERT_EQ(Open(rig, clip), 0);
    EXPECT_TRUE(rig.data.input_mp4_file.empty());
    EXPECT_EQ(Stages(rig.Scene()), (Texts{"File Analysis", "Frame Rate Analysis"}));
    EXPECT_EQ(rig.data.viSource.frame_num, 50);
    EXPECT_EQ(rig.data.viInput.frame_num, 50);
    EXPECT_EQ(rig.data.pts_list.size(), 51u);
    EXPECT_TRUE(fs::exists(rig.data.pts_file));
    EXPECT_DOUBLE_EQ(rig.data.dTransitionSec, 0.48);
    EXPECT_EQ(States(rig.Scene()).back(), "4:");
    EXPECT_EQ(rig.engine.nProcessID, 0);
}

TEST(AnalyzeInputFile, MovGetsAWorkingMp4ThatLaterWorkReads)
{
    testsupport::TempDir dir;
    const std::string clip = dir.file("phone.mov");
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=160x120:rate=30:duration=2"));
    EngineRig rig;
    ASSERT_EQ(Open(rig, clip), 0);
    const std::string working = clip + "_out/phone_input_ch.mp4";
    EXPECT_EQ(rig.data.input_mp4_file, working);
    EXPECT_TRUE(fs::exists(working));
    EXPECT_EQ(Stages(rig.Scene()), (Texts{"File Analysis", "Change MP4", "Frame Rate Analysis"}));
    EXPECT_EQ(rig.engine.strPreviewFile.get(), working);
    EXPECT_EQ(rig.data.viInput.frame_num, 60);
    // 30 fps: round(15) = 15, made even 14, 14 / 30 = 0.4667.
    EXPECT_DOUBLE_EQ(rig.data.dTransitionSec, 0.47);
    EXPECT_EQ(States(rig.Scene()).back(), "4:");
}

TEST(AnalyzeInputFile, SecondOpeningWithTheWorkingFileInPlaceConvertsNothing)
{
    testsupport::TempDir dir;
    const std::string clip = dir.file("phone.mov");
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=160x120:rate=25:duration=2"));
    {
        EngineRig first;
        ASSERT_EQ(Open(first, clip), 0);
    }
    const std::string working = clip + "_out/phone_input_ch.mp4";
    const auto written = fs::last_write_time(working);
    EngineRig rig;
    ASSERT_EQ(Open(rig, clip), 0);
    EXPECT_EQ(rig.data.input_mp4_file, working);
    EXPECT_EQ(Stages(rig.Scene()), (Texts{"File Analysis", "Frame Rate Analysis"}));
    EXPECT_EQ(fs::last_write_time(working), written);
}

TEST(AnalyzeInputFile, UnreadableInputFailsWithoutChangingTheProject)
{
    testsupport::TempDir dir;
    const std::string clip = dir.file("broken.mov");
    ASSERT_TRUE(testsupport::WriteFile(clip, "not a video at all"));
    EngineRig rig;
    EXPECT_NE(Open(rig, clip), 0);
    EXPECT_TRUE(rig.data.input_mp4_file.empty());
    EXPECT_FALSE(fs::exists(clip + "_out/broken_input_ch.mp4"));
    EXPECT_EQ(States(rig.Scene()).back(), "3:");
    EXPECT_EQ(rig.engine.nProcessID, 0);
}

} // namespace
