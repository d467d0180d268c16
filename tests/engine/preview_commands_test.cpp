// Tests of the pure pieces of stills and playback: paths, command texts, position rules.
#include "engine/preview_commands.h"

#include <gtest/gtest.h>

namespace {

TEST(PreviewImagePathTest, SceneTabNamesTheStillAfterTheInput)
{
    EXPECT_EQ(
        engine::PreviewImagePath("/v/walk_out/", "/v/walk.cam.mp4", "walk.cam_trim.mp4", false),
        "/v/walk_out/walk.cam_preview.jpg");
}

TEST(PreviewImagePathTest, MergeTabNamesTheStillAfterTheOutput)
{
    EXPECT_EQ(engine::PreviewImagePath("/v/out/", "/v/first.mp4", "film.mp4", true),
              "/v/out/film_preview.jpg");
}

TEST(PreviewTimeTextTest, EmptyTimeTakesTheStillAtZero)
{
    EXPECT_EQ(engine::PreviewTimeText(""), "0.000000");
}

TEST(PreviewTimeTextTest, GivenTimeIsHandedOnUnchanged)
{
    EXPECT_EQ(engine::PreviewTimeText("12.5"), "12.5");
    EXPECT_EQ(engine::PreviewTimeText("0"), "0");
}

TEST(StillCommandTest, OneFrameThroughTheChainIntoTheJpeg)
{
    EXPECT_EQ(engine::BuildStillCommand(false,
                                        "1.500000",
                                        "/v/a b.mp4",
                                        "scale=480:270,pad=480:480:0:105:0x505050",
                                        "/v/out/a b_preview.jpg"),
              "ffmpeg -y -ss 1.500000 -i \"/v/a b.mp4\" -frames:v 1 -vf "
              "\"scale=480:270,pad=480:480:0:105:0x505050\" \"/v/out/a b_preview.jpg\"");
}

TEST(StillCommandTest, CudaDecodesOnTheGraphicsCard)
{
    EXPECT_EQ(engine::BuildStillCommand(true, "0.000000", "/v/a.mp4", "null", "/o/a_preview.jpg"),
              "ffmpeg -y -hwaccel cuda -ss 0.000000 -i \"/v/a.mp4\" -frames:v 1 -vf \"null\" "
              "\"/o/a_preview.jpg\"");
}

engine::PlayerArgs Player(int play_vol)
{
    engine::PlayerArgs args;
    args.left = 640;
    args.top = 120;
    args.ss = "12.500000";
    args.file = "/v/walk.mp4";
    args.t = "60.000000";
    args.play_vol = play_vol;
    args.chain = "scale=480:270,pad=480:480:0:105:0x505050";
    return args;
}

TEST(PlayerCommandTest, VolumeFiveReadsVolumeZeroPointZeroFive)
{
    EXPECT_EQ(engine::BuildPlayerCommand(Player(5)),
              "ffplay -window_title \"TWREVIEW\" -noborder -autoexit -left 640 -top 120 -ss "
              "12.500000 -i \"/v/walk.mp4\" -t 60.000000 -af \"volume=0.050000\" -vf "
              "\"scale=480:270,pad=480:480:0:105:0x505050,showinfo\"");
}

TEST(PlayerCommandTest, FullVolumeReadsOne)
{
    EXPECT_EQ(engine::BuildPlayerCommand(Player(100)),
              "ffplay -window_title \"TWREVIEW\" -noborder -autoexit -left 640 -top 120 -ss "
              "12.500000 -i \"/v/walk.mp4\" -t 60.000000 -af \"volume=1.000000\" -vf "
              "\"scale=480:270,pad=480:480:0:105:0x505050,showinfo\"");
}

TEST(PlaybackRestartTest, StartsOverAtTextZeroOrAtTheLastFrame)
{
    EXPECT_TRUE(engine::IsPlaybackRestart("0", 0, 100));
    EXPECT_TRUE(engine::IsPlaybackRestart("3.960000", 99, 100));
    EXPECT_TRUE(engine::IsPlaybackRestart("5.0", 150, 100));
    EXPECT_TRUE(engine::IsPlaybackRestart("0.000000", 0, 0)); // nothing known of the file
}

TEST(PlaybackRestartTest, ResumesAfterAStopInTheMiddle)
{
    EXPECT_FALSE(engine::IsPlaybackRestart("12.500000", 312, 1000));
    EXPECT_FALSE(engine::IsPlaybackRestart("0.000000", 0, 100)); // only the text "0" restarts
    EXPECT_FALSE(engine::IsPlaybackRestart("3.92", 98, 100));
}

TEST(NextLoopStartTest, EndOfFileFallsBackToZero)
{
    EXPECT_EQ(engine::NextLoopStart("3.960000", 99, 100), "0.000000");
}

TEST(NextLoopStartTest, EarlierEndKeepsThePosition)
{
    EXPECT_EQ(engine::NextLoopStart("2.04", 51, 100), "2.04");
}

TEST(FirstSceneToPlayTest, LoopAfterTheEndOfASceneGoesOnToTheNext)
{
    EXPECT_EQ(engine::FirstSceneToPlay(1, 4, true, 49, 50), 2);
}

TEST(FirstSceneToPlayTest, LastRowOrNoLoopOrMidSceneStays)
{
    EXPECT_EQ(engine::FirstSceneToPlay(3, 4, true, 49, 50), 3);  // no row follows
    EXPECT_EQ(engine::FirstSceneToPlay(1, 4, false, 49, 50), 1); // no loop
    EXPECT_EQ(engine::FirstSceneToPlay(1, 4, true, 20, 50), 1);  // stopped inside the scene
    EXPECT_EQ(engine::FirstSceneToPlay(7, 4, true, 49, 50), 7);  // beyond the rows: nothing
}

} // namespace
