// Tests of the merge rows' analysis with the real tools: the facts of each source and of its
// segment at the chosen rate and size, a segment already in place, rows analysed before, and
// the rate and size tables.
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/merge_formats.h"
#include "core/source_stamp.h"
#include "engine_fixture.h"

namespace {

namespace fs = std::filesystem;

using engine::AppMessage;
using enginetest::EngineRig;
using enginetest::States;
using Texts = std::vector<std::string>;

// A merge rig: the merge tab's project with one row per source and segment.
struct MergeRig : EngineRig
{
    MergeRig()
    {
        engine.bMergeMode = 1;
        data.output_name = "film.mp4";
    }
    void Add(const std::string &source, const std::string &segment)
    {
        core::SceneEntry row;
        row.strWorkFile = source;
        row.fileName = segment;
        data.diff_list.push_back(row);
    }
    // Job 1053 on the merge tab: the analysis of the rows.
    int Run()
    {
        EXPECT_EQ(engine.StartThread(engine::kJobSceneExtract), 1);
        WaitForJob();
        return engine.nProcessExitCode;
    }
};

TEST(MergeFormats, TablesHoldTheTenRatesAndNineSizes)
{
    EXPECT_EQ(core::kMergeRateCount, 10);
    EXPECT_EQ(core::kMergeSizeCount, 9);
    EXPECT_EQ(core::MergeRateText(core::MergeRateAt(5)), "30000/1001");
    EXPECT_DOUBLE_EQ(core::MergeRateFps(core::MergeRateAt(2)), 60.0);
    EXPECT_EQ(core::MergeSizeAt(6).width, 720);
    EXPECT_EQ(core::MergeSizeAt(6).height, 576);
    // An index outside a table takes its nearest row.
    EXPECT_EQ(core::MergeRateText(core::MergeRateAt(99)), "10/1");
    EXPECT_EQ(core::MergeSizeAt(-1).width, 4096);
}

TEST(ProcessAnalysis, RowsGetTheirFactsAndTheirSegmentsPlannedFacts)
{
    testsupport::TempDir dir;
    const std::string clip = dir.file("a.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=160x120:rate=25:duration=2"));
    MergeRig rig;
    rig.data.output_folder = dir.file("out") + "/";
    rig.engine.nRateIndex = 4; // 30/1
    rig.engine.nSizeIndex = 8; // 352x288
    rig.Add(clip, dir.file("out") + "/a_seg_352x288_30.00.mp4");
    ASSERT_EQ(rig.Run(), 0);
    const core::SceneEntry &row = rig.data.diff_list[0];
    EXPECT_TRUE(row.bAnalyzed);
    EXPECT_EQ(row.strWorkFile, clip);
    EXPECT_EQ(row.viIn.frame_num, 50);
    EXPECT_EQ(row.viOut.r_frame_rate, "30/1");
    EXPECT_EQ(row.viOut.frame_num, 60); // two seconds at 30 a second
    EXPECT_EQ(row.viOut.width, 352);
    EXPECT_EQ(row.viOut.height, 288);
    EXPECT_EQ(row.framNo_first, 0);
    EXPECT_EQ(row.framNo_second, 59);
    // 25 fps: 12 frames of the source shown at 30 a second.
    EXPECT_DOUBLE_EQ(rig.data.dTransitionSec, 0.4);
    EXPECT_EQ(States(rig.Scene()).back(), "4:");
}

TEST(ProcessAnalysis, SegmentWithTheWantedSizeAndRateCountsWithItsRealFrames)
{
    testsupport::TempDir dir;
    const std::string clip = dir.file("a.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=160x120:rate=25:duration=2"));
    fs::create_directories(dir.file("out"));
    const std::string segment = dir.file("out") + "/a_seg_352x288_30.00.mp4";
    // 61 frames where 60 are planned.
    ASSERT_TRUE(
        testsupport::MakeClip(segment, "testsrc2=size=352x288:rate=30", {"-frames:v", "61"}));
    // Converted from this source, as its record says: without it the segment is made anew.
    ASSERT_TRUE(core::WriteSourceStamp(segment, clip));
    MergeRig rig;
    rig.data.output_folder = dir.file("out") + "/";
    rig.engine.nRateIndex = 4;
    rig.engine.nSizeIndex = 8;
    rig.Add(clip, segment);
    ASSERT_EQ(rig.Run(), 0);
    EXPECT_EQ(rig.data.diff_list[0].viOut.frame_num, 61);
}

TEST(ProcessAnalysis, AllRowsAnalysedSendsNothingAndSucceeds)
{
    MergeRig rig;
    rig.Add("/nowhere/a.mp4", "/nowhere/a_seg.mp4");
    rig.data.diff_list[0].bAnalyzed = true;
    ASSERT_EQ(rig.Run(), 0);
    EXPECT_TRUE(rig.Scene().MessagesOf(AppMessage::WM_APP_STAGE_BEGIN).empty());
    EXPECT_TRUE(States(rig.Scene()).empty());
}

TEST(ProcessAnalysis, FailingRowEndsTheLoopAndLeavesTheRestUnanalysed)
{
    testsupport::TempDir dir;
    const std::string clip = dir.file("a.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=160x120:rate=25:duration=1"));
    const std::string broken = dir.file("b.mp4");
    ASSERT_TRUE(testsupport::WriteFile(broken, "not a video"));
    MergeRig rig;
    rig.data.output_folder = dir.file("out") + "/";
    rig.Add(clip, dir.file("out") + "/a_seg.mp4");
    rig.Add(broken, dir.file("out") + "/b_seg.mp4");
    rig.Add(clip, dir.file("out") + "/c_seg.mp4");
    EXPECT_NE(rig.Run(), 0);
    EXPECT_TRUE(rig.data.diff_list[0].bAnalyzed);
    EXPECT_FALSE(rig.data.diff_list[1].bAnalyzed);
    EXPECT_FALSE(rig.data.diff_list[2].bAnalyzed);
    EXPECT_EQ(States(rig.Scene()).back().rfind("3:ExitCode(", 0), 0u);
}

TEST(BackgroundCheck, MergeTabCheckAnalysesTheRowFromItsSource)
{
    testsupport::TempDir dir;
    const std::string clip = dir.file("a.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=160x120:rate=25:duration=1"));
    MergeRig rig;
    rig.data.output_folder = dir.file("out") + "/";
    rig.Add(clip, dir.file("out") + "/a_seg.mp4");
    rig.engine.StartQueueThread(1);
    rig.engine.EnqueueSceneCheck(0, true);
    rig.host.Loop().RunUntil([&rig] { return !States(rig.Scene()).empty(); });
    EXPECT_EQ(States(rig.Scene()).back(), "4:");
    std::lock_guard<std::mutex> lock(rig.data.sceneLock.m);
    EXPECT_TRUE(rig.data.diff_list[0].bAnalyzed);
    EXPECT_EQ(rig.data.diff_list[0].viIn.frame_num, 25);
    EXPECT_EQ(rig.engine.nProcessID, 0); // the job number is put back
}

} // namespace
