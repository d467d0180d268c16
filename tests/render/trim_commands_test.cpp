// Tests of the pure pieces of the final render: names, merge levels, frame counts, the concat
// list and the command texts.
#include "render/trim_commands.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using render::MergeGroup;
using render::MergePlan;

render::EncodeArgs Args()
{
    render::EncodeArgs args;
    args.prefix = "ffmpeg -y ";
    args.encoderText = "mpeg4 -qscale:v 4";
    args.fps = 29.97;
    args.r_frame_rate = "30000/1001";
    return args;
}

std::vector<size_t> GroupSizes(const std::vector<MergeGroup> &level)
{
    std::vector<size_t> sizes;
    for (const MergeGroup &group : level) {
        sizes.push_back(group.count);
    }
    return sizes;
}

TEST(TrimNames, MergeFilesAndListAreNamedFromTheFolderAndTheBase)
{
    render::TrimNames names{"/out/", "trip"};
    EXPECT_EQ(names.MergeMask(), "/out/trip_merged*.mp4");
    EXPECT_EQ(names.Merged(), "/out/trip_merged.mp4");
    EXPECT_EQ(names.MergedPart(2), "/out/trip_merged_2.mp4");
    EXPECT_EQ(names.FileList(), "/out/trip_filelist.txt");
}

TEST(MergeBatchSize, TwentyFiveUpToFullHdFewerAboveIt)
{
    EXPECT_EQ(render::MergeBatchSize(1920, 1080), 25);
    EXPECT_EQ(render::MergeBatchSize(3840, 2160), 10);
    EXPECT_EQ(render::MergeBatchSize(4096, 2160), 9);
    EXPECT_EQ(render::MergeBatchSize(0, 0), 25);
}

TEST(MergePlan, SixtyScenesAtFullHdMakeThreeFilesThenTheMergedOne)
{
    MergePlan plan = render::PlanMerge(std::vector<double>(60, 2.0), 25, 0.5, 30.0);
    ASSERT_EQ(plan.levels.size(), 2u);
    EXPECT_EQ(GroupSizes(plan.levels[0]), (std::vector<size_t>{25, 25, 10}));
    EXPECT_EQ(plan.levels[0][1].first, 25u);
    EXPECT_EQ(plan.levels[0][2].first, 50u);
    EXPECT_EQ(GroupSizes(plan.levels[1]), (std::vector<size_t>{3}));
}

TEST(MergePlan, TwentySixScenesGiveGroupsOfTwentyFiveAndOne)
{
    MergePlan plan = render::PlanMerge(std::vector<double>(26, 1.0), 25, 0.5, 10.0);
    ASSERT_EQ(plan.levels.size(), 2u);
    EXPECT_EQ(GroupSizes(plan.levels[0]), (std::vector<size_t>{25, 1}));
    EXPECT_DOUBLE_EQ(plan.levels[0][0].duration, 25.0 - 24 * 0.5);
    EXPECT_DOUBLE_EQ(plan.levels[0][1].duration, 1.0);
    EXPECT_EQ(GroupSizes(plan.levels[1]), (std::vector<size_t>{2}));
}

TEST(MergePlan, TwoScenesMakeOneRun)
{
    MergePlan plan = render::PlanMerge({2.0, 3.0}, 25, 0.5, 10.0);
    ASSERT_EQ(plan.levels.size(), 1u);
    EXPECT_EQ(GroupSizes(plan.levels[0]), (std::vector<size_t>{2}));
    EXPECT_EQ(plan.nPlanned, 45);
}

TEST(MergePlan, ProgressBasesRunOverAllLevels)
{
    MergePlan plan = render::PlanMerge({2.0, 3.0, 4.0}, 2, 0.5, 10.0);
    ASSERT_EQ(plan.levels.size(), 2u);
    EXPECT_EQ(plan.levels[0][0].progressBase, 0);
    EXPECT_EQ(plan.levels[0][1].progressBase, 45);
    EXPECT_EQ(plan.levels[1][0].progressBase, 85);
    EXPECT_DOUBLE_EQ(plan.levels[1][0].duration, 8.0);
    EXPECT_EQ(plan.nPlanned, 165);
}

TEST(MergePlan, OneSceneNeedsNoRun)
{
    EXPECT_TRUE(render::PlanMerge({2.0}, 25, 0.5, 10.0).levels.empty());
    EXPECT_TRUE(render::PlanMerge({}, 25, 0.5, 10.0).levels.empty());
}

TEST(FadedFrameCount, EveryJoinShortensTheFilmByOneFade)
{
    EXPECT_EQ(render::FadedFrameCount(300, 30.0, 3, 0.5), 270);
    EXPECT_EQ(render::FadedFrameCount(301, 30.0, 2, 0.5), 286);
    EXPECT_EQ(render::FadedFrameCount(300, 0.0, 3, 0.5), 0);
}

TEST(FadedFrameCount, AWholeNumberOfFramesIsNotLostToTheRoundingOfDoubles)
{
    // (57 / 25 - 2 x 0.48) x 25 and (41 / 24 - 3 x 0.5) x 24 come out just below 33 and 5.
    EXPECT_EQ(render::FadedFrameCount(57, 25.0, 3, 0.48), 33);
    EXPECT_EQ(render::FadedFrameCount(41, 24.0, 4, 0.5), 5);
    EXPECT_EQ(render::FadedFrameCount(153, 25.0, 3, 0.48), 129);
    EXPECT_EQ(render::FadedFrameCount(58, 30000.0 / 1001, 2, 0.47), 43); // 43.9, not 44
}

TEST(ConcatList, OneLinePerFileWithSingleQuotesEscaped)
{
    EXPECT_EQ(render::ConcatListText({"/o/a_seg_0_9.mp4", "/o/it's.mp4", "/o/a\\b [c];d'.mp4"}),
              "file '/o/a_seg_0_9.mp4'\nfile '/o/it'\\''s.mp4'\nfile '/o/a\\b [c];d'\\''.mp4'\n");
    EXPECT_EQ(render::ConcatListText({}), "");
}

TEST(TrimCommands, ConcatMergeCommand)
{
    EXPECT_EQ(render::ConcatMergeCommand(Args(), "/o/t_filelist.txt", "/o/t_merged.mp4"),
              "ffmpeg -y -f concat -safe 0 -i \"/o/t_filelist.txt\" -c:v mpeg4 -qscale:v 4 -g 30 "
              "-keyint_min 1 -r 30000/1001 -c:a pcm_s16le -vf \"setpts=PTS-STARTPTS\" -af "
              "\"asetpts=PTS-STARTPTS\" -movflags +faststart -f mov \"/o/t_merged.mp4\"");
}

TEST(TrimCommands, GraphMergeCommandWithAndWithoutAudio)
{
    EXPECT_EQ(render::GraphMergeCommand(
                  Args(), {"/o/a.mp4", "/o/b.mp4"}, "G;", true, "/o/t_merged_1.mp4"),
              "ffmpeg -y -i \"/o/a.mp4\" -i \"/o/b.mp4\" -filter_complex \"G;\" -map \"[vid]\" "
              "-map \"[aud]\" -c:v mpeg4 -qscale:v 4 -g 30 -keyint_min 1 -r 30000/1001 -c:a "
              "pcm_s16le -movflags +faststart -f mov \"/o/t_merged_1.mp4\"");
    EXPECT_EQ(render::GraphMergeCommand(Args(), {"/o/a.mp4"}, "G;", false, "/o/m.mp4"),
              "ffmpeg -y -i \"/o/a.mp4\" -filter_complex \"G;\" -map \"[vid]\" -c:v mpeg4 "
              "-qscale:v 4 -g 30 -keyint_min 1 -r 30000/1001 -c:a pcm_s16le -movflags "
              "+faststart -f mov \"/o/m.mp4\"");
}

TEST(TrimCommands, FinalEncodeCommandPutsTheChainBeforeTheTimeReset)
{
    EXPECT_EQ(render::FinalEncodeCommand(Args(), "/o/t_merged.mp4", "hue=s=1.00,", "/o/t.mp4"),
              "ffmpeg -y -i \"/o/t_merged.mp4\" -c:v mpeg4 -qscale:v 4 -g 30 -keyint_min 1 -r "
              "30000/1001 -c:a aac -b:a 192k -vf \"hue=s=1.00,setpts=PTS-STARTPTS\" -af "
              "\"asetpts=PTS-STARTPTS\" -movflags +faststart \"/o/t.mp4\"");
}

TEST(TrimCommands, FinalEncodeEndsPictureAndSoundAtThePlannedFrames)
{
    EXPECT_EQ(render::FinalEncodeCommand(Args(), "/o/t_merged.mp4", "hue=s=1.00,", "/o/t.mp4", 129),
              "ffmpeg -y -i \"/o/t_merged.mp4\" -c:v mpeg4 -qscale:v 4 -g 30 -keyint_min 1 -r "
              "30000/1001 -c:a aac -b:a 192k -vf \"hue=s=1.00,trim=end_frame=129,"
              "setpts=PTS-STARTPTS\" -af \"asetpts=PTS-STARTPTS,apad,atrim=duration=4.304304\" "
              "-movflags +faststart \"/o/t.mp4\"");
    // No plan, no end.
    EXPECT_EQ(render::FinalEncodeCommand(Args(), "/m.mp4", "", "/t.mp4", 0),
              render::FinalEncodeCommand(Args(), "/m.mp4", "", "/t.mp4"));
}

} // namespace
