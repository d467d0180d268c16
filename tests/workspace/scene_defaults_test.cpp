// Tests of the default scene of the scene list.
#include "workspace/scene_defaults.h"

#include <gtest/gtest.h>

using core::CTarnwickData;

namespace {

CTarnwickData DataWithInput(int frames, double fps)
{
    CTarnwickData data;
    data.input_file = "/videos/trip.mov";
    data.output_folder = "/videos/trip.mov_out/";
    data.viInput.frame_num = frames;
    data.viInput.fps = fps;
    data.viInput.width = 640;
    data.diff_list.emplace_back(5, 9, "/old.mp4");
    return data;
}

} // namespace

TEST(MakeDefaultScene, CoversThreeSecondsFromFrameZero)
{
    CTarnwickData data = DataWithInput(1000, 30000.0 / 1001);
    workspace::MakeDefaultScene(data);
    ASSERT_EQ(data.diff_list.size(), 1u);
    const core::SceneEntry &s = data.diff_list[0];
    // ceil(29.97 * 3) = 90 frames: 0..89.
    EXPECT_EQ(s.framNo_first, 0);
    EXPECT_EQ(s.framNo_second, 89);
    EXPECT_TRUE(s.bEnable);
    EXPECT_TRUE(s.bAnalyzed);
    EXPECT_EQ(s.fileName, "/videos/trip.mov_out/trip_seg_0_89.mp4");
    EXPECT_EQ(s.capParam.caption, "Scene001");
    EXPECT_DOUBLE_EQ(s.capParam.capTime_first, 0.0);
    EXPECT_DOUBLE_EQ(s.capParam.capTime_second, 3.0); // 90 / 29.97 = 3.003 -> 3.00
    EXPECT_EQ(data.list_idx, 0);
    EXPECT_EQ(data.viCurrent.width, 640);
}

TEST(MakeDefaultScene, ShortInputGivesWholeInput)
{
    CTarnwickData data = DataWithInput(40, 25);
    workspace::MakeDefaultScene(data);
    ASSERT_EQ(data.diff_list.size(), 1u);
    EXPECT_EQ(data.diff_list[0].framNo_second, 39);
    EXPECT_DOUBLE_EQ(data.diff_list[0].capParam.capTime_second, 1.6);
}

TEST(MakeDefaultScene, NoFramesLeavesListEmpty)
{
    CTarnwickData data = DataWithInput(0, 25);
    data.list_idx = 3;
    workspace::MakeDefaultScene(data);
    EXPECT_TRUE(data.diff_list.empty());
    EXPECT_EQ(data.list_idx, 3);
}

TEST(MakeDefaultScene, ZeroRateGivesZeroLengthCaption)
{
    CTarnwickData data = DataWithInput(100, 0);
    workspace::MakeDefaultScene(data);
    // ceil(0 * 3) = 0 frames: last frame -1, a scene of no frames.
    ASSERT_EQ(data.diff_list.size(), 1u);
    EXPECT_EQ(data.diff_list[0].framNo_second, -1);
    EXPECT_DOUBLE_EQ(data.diff_list[0].capParam.capTime_second, 0.0);
}
