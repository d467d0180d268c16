// Tests of the final render (job 1006) against the real tools: the film's length with and
// without cross-fades, merge levels, sound, captions, the reuse of good segments, a stop in the
// final encode, and the edge cases of the precheck and the merge.
#include "engine/tarnwick_process.h"

#include <cmath>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/helpers.h"
#include "core/project_names.h"
#include "engine/engine_fixture.h"
#include "render/render_project.h"
#include "support/test_support.h"

namespace {

namespace fs = std::filesystem;

using engine::AppMessage;
using enginetest::EngineRig;
using enginetest::LogCapture;
using testsupport::DecodedFrames;
using testsupport::StreamSeconds;
using testsupport::TempDir;

using rendertest::kFps;
using rendertest::kOneFrame;
using rendertest::RenderProject;

// Cut commands that ran, from the log.
int CutsInLog(LogCapture &log)
{
    int cuts = 0;
    for (const std::string &line : log.Lines("CTarnwickProcess::ExecuteCmd")) {
        // A still of a finished segment reads it with -ss too, but writes no segment.
        cuts += line.find("_seg_") != std::string::npos &&
                line.find(" -ss ") != std::string::npos &&
                line.find("_preview.jpg") == std::string::npos;
    }
    return cuts;
}

bool LogHas(LogCapture &log, const std::string &part)
{
    for (const std::string &line : log.Lines("CTarnwickProcess::")) {
        if (line.find(part) != std::string::npos) {
            return true;
        }
    }
    return false;
}

TEST(TrimJob, WithoutTransitionTheFilmLastsTheSumOfTheTickedScenes)
{
    RenderProject p(12);
    p.AddScene(0, 49);
    p.AddScene(60, 79, false);
    p.AddScene(100, 149);
    p.AddScene(200, 249);
    ASSERT_EQ(p.Render(), 0);
    EXPECT_NEAR(StreamSeconds(p.Output(), "v"), 150 / kFps, kOneFrame);
    EXPECT_GT(StreamSeconds(p.Output(), "a"), 0) << "the segments have sound, so has the film";
    EXPECT_FALSE(fs::exists(p.rig.data.diff_list[1].fileName)) << "a disabled scene is not cut";
    EXPECT_TRUE(testsupport::FilesMatching(p.rig.data.output_folder, "_merged").empty());
    EXPECT_TRUE(fs::exists(p.rig.data.output_folder + "clip_filelist.txt"));
}

// Every character of a name that the program accepts, the single quote above all, reaches the
// concat list, the merge graph and the caption file whole.
TEST(TrimJob, AwkwardNamesRenderWithAndWithoutTransition)
{
    RenderProject p(6, true, "it's [a], b;c=d.mp4", "out a:b,c[d];e'f\\g");
    p.AddScene(0, 49);
    p.AddScene(100, 149);
    ASSERT_EQ(p.Render(), 0);
    EXPECT_NEAR(StreamSeconds(p.Output(), "v"), 100 / kFps, kOneFrame);
    EXPECT_EQ(p.Output(), p.dir.file("out a:b,c[d];e'f\\g/it's [a], b;c=d_trim.mp4"));
    p.rig.data.transition = 1;
    p.rig.data.dTransitionSec = 0.48;
    ASSERT_EQ(p.Render(), 0);
    EXPECT_LT(StreamSeconds(p.Output(), "v"), 100 / kFps - 0.2);
}

// ffmpeg would wait for ever in a cross-fade into a scene shorter than the fade: the job names
// the scene and ends before the merge.
TEST(TrimJob, SceneShorterThanTheCrossFadeEndsTheJobNamingIt)
{
    RenderProject p(6);
    p.AddScene(0, 49);
    p.AddScene(60, 69, false);
    p.AddScene(100, 104); // 0.2 s
    p.rig.data.transition = 1;
    p.rig.data.dTransitionSec = 0.48;
    EXPECT_EQ(p.Render(), engine::kJobCannotStart);
    EXPECT_EQ(enginetest::States(p.rig.Scene()).back(),
              "3:scene 3 lasts 0.20 s, less than the cross-fade of 0.48 s: lengthen it, untick it "
              "or join without cross-fades");
    EXPECT_FALSE(fs::exists(p.Output()));
    EXPECT_TRUE(testsupport::FilesMatching(p.rig.data.output_folder, "_merged").empty());
    // Without the cross-fade the same scenes make a film.
    p.rig.data.transition = 0;
    ASSERT_EQ(p.Render(), 0);
    EXPECT_NEAR(StreamSeconds(p.Output(), "v"), 55 / kFps, kOneFrame);
}

TEST(TrimJob, WithTransitionEveryJoinShortensTheFilmByOneFade)
{
    RenderProject p(12);
    p.AddScene(0, 49);
    p.AddScene(100, 149);
    p.AddScene(200, 249);
    p.rig.data.transition = 1;
    p.rig.data.dTransitionSec = 0.48;
    ASSERT_EQ(p.Render(), 0);
    EXPECT_NEAR(StreamSeconds(p.Output(), "v"), 150 / kFps - 2 * 0.48, kOneFrame);
    EXPECT_GT(StreamSeconds(p.Output(), "a"), 0);
}

TEST(TrimJob, TwentySixScenesWithTransitionPassThroughTwoLevels)
{
    LogCapture log;
    RenderProject p(12);
    for (int i = 0; i < 26; ++i) {
        p.AddScene(i * 10, i * 10 + 9);
    }
    p.rig.data.transition = 1;
    p.rig.data.dTransitionSec = 0.08;
    ASSERT_EQ(p.Render(), 0);
    EXPECT_NEAR(StreamSeconds(p.Output(), "v"), 260 / kFps - 25 * 0.08, kOneFrame);
    // Level one: 25 scenes into _merged_1, the 26th alone into _merged_2; level two joins them.
    EXPECT_TRUE(LogHas(log, "clip_merged_1.mp4\""));
    EXPECT_TRUE(LogHas(log, "clip_merged_2.mp4\""));
    EXPECT_FALSE(LogHas(log, "clip_merged_3.mp4\""));
    EXPECT_TRUE(testsupport::FilesMatching(p.rig.data.output_folder, "_merged").empty());
}

TEST(TrimJob, SegmentsWithoutSoundGiveAFilmWithoutSound)
{
    RenderProject p(6, false);
    p.AddScene(0, 49);
    p.AddScene(100, 149);
    p.rig.data.transition = 1;
    p.rig.data.dTransitionSec = 0.48;
    ASSERT_EQ(p.Render(), 0);
    EXPECT_NEAR(StreamSeconds(p.Output(), "v"), 100 / kFps - 0.48, kOneFrame);
    EXPECT_LT(StreamSeconds(p.Output(), "a"), 0) << "no sound is invented";
}

TEST(TrimJob, SecondRenderCutsNothingAndGivesAFilmOfTheSameLength)
{
    LogCapture log;
    RenderProject p(12);
    p.AddScene(0, 49);
    p.AddScene(100, 149);
    ASSERT_EQ(p.Render(), 0);
    const int firstCuts = CutsInLog(log);
    EXPECT_EQ(firstCuts, 2);
    const double first = StreamSeconds(p.Output(), "v");
    ASSERT_EQ(p.Render(), 0);
    EXPECT_EQ(CutsInLog(log), firstCuts);
    EXPECT_NEAR(StreamSeconds(p.Output(), "v"), first, kOneFrame);
}

TEST(TrimJob, StopInTheFinalEncodeLeavesNoFilmKeepsTheSegmentsAndTheNextRenderMergesAtOnce)
{
    LogCapture log;
    RenderProject p(12);
    p.AddScene(0, 99);
    p.AddScene(150, 249);
    bool stopped = false;
    p.rig.Scene().SetOnMessage([&](const engine::JobMessage &msg) {
        // The second "Final Merge" stage with a frame count is the final encode.
        if (!stopped && msg.id == AppMessage::WM_APP_STAGE_BEGIN && msg.lParam > 0 &&
            msg.text.value_or("") == "Final Merge") {
            stopped = true;
            p.rig.engine.bCancel = 1;
        }
    });
    ASSERT_EQ(p.rig.engine.StartThread(engine::kJobFinalOutput), 1);
    p.rig.WaitForJob();
    p.rig.engine.bCancel = 0;
    p.rig.Scene().SetOnMessage({});
    ASSERT_TRUE(stopped);
    EXPECT_EQ(p.rig.engine.nProcessExitCode, -2);
    EXPECT_FALSE(fs::exists(p.Output()));
    EXPECT_FALSE(fs::exists(core::PartialSegmentPath(p.Output())));
    for (const core::SceneEntry &scene : p.rig.data.diff_list) {
        EXPECT_EQ(DecodedFrames(scene.fileName), 100) << scene.fileName;
    }
    const int cuts = CutsInLog(log);
    ASSERT_EQ(p.Render(), 0);
    EXPECT_EQ(CutsInLog(log), cuts) << "the next render starts with the merge";
    EXPECT_TRUE(fs::exists(p.Output()));
}

TEST(TrimJob, NoSceneTickedFailsTheMergeAndMakesNoFilm)
{
    RenderProject p(4);
    p.AddScene(0, 49, false);
    EXPECT_NE(p.Render(), 0);
    EXPECT_FALSE(fs::exists(p.Output()));
}

TEST(TrimJob, OneTickedSceneWithTransitionTakesTheConcatForm)
{
    LogCapture log;
    RenderProject p(4);
    p.AddScene(0, 49);
    p.rig.data.transition = 1;
    ASSERT_EQ(p.Render(), 0);
    EXPECT_TRUE(LogHas(log, "-f concat -safe 0"));
    EXPECT_FALSE(LogHas(log, "-filter_complex"));
    EXPECT_NEAR(StreamSeconds(p.Output(), "v"), 50 / kFps, kOneFrame);
}

TEST(TrimJob, TwoScenesWithTransitionMakeOneGraphRunAndNoNumberedFile)
{
    LogCapture log;
    RenderProject p(6);
    p.AddScene(0, 49);
    p.AddScene(100, 149);
    p.rig.data.transition = 1;
    p.rig.data.dTransitionSec = 0.48;
    ASSERT_EQ(p.Render(), 0);
    EXPECT_TRUE(LogHas(log, "-filter_complex"));
    EXPECT_TRUE(LogHas(log, "clip_merged.mp4\""));
    EXPECT_FALSE(LogHas(log, "clip_merged_1.mp4"));
}

TEST(TrimJob, StaleSegmentIsCutAgainBeforeTheMerge)
{
    RenderProject p(6);
    p.AddScene(0, 49);
    p.AddScene(100, 149);
    fs::create_directories(p.rig.data.output_folder);
    // A segment of the wrong length where the first scene's file belongs.
    ASSERT_TRUE(testsupport::MakeClip(p.rig.data.diff_list[0].fileName,
                                      "testsrc2=size=160x120:rate=25:duration=1"));
    ASSERT_EQ(p.Render(), 0);
    EXPECT_EQ(DecodedFrames(p.rig.data.diff_list[0].fileName), 50);
    EXPECT_NEAR(StreamSeconds(p.Output(), "v"), 100 / kFps, kOneFrame);
}

TEST(TrimJob, CaptionsTitleAndWatermarkGoIntoTheWholeFilmFile)
{
    RenderProject p(6);
    p.AddScene(0, 49);
    p.AddScene(100, 149);
    p.rig.data.capTitle.caption = "Morning walk";
    p.rig.data.diff_list[1].SetCaption(0.0, 1.0, "Second scene");
    ASSERT_EQ(p.Render(), 0);
    std::string ass = testsupport::ReadFile(p.rig.data.output_folder + "clip_all.ass");
    EXPECT_NE(ass.find("Dialogue: 1,00:00:00.00,00:00:03.00,Title,,0,0,0,,Morning walk\r\n"),
              std::string::npos)
        << ass;
    EXPECT_NE(ass.find(",00:00:04.04,Watermark,,0,0,0,,TarnwickMP4\\NBrindlemoor.\r\n"),
              std::string::npos)
        << ass;
    EXPECT_NE(ass.find("Dialogue: 0,00:00:02.00,00:00:03.04,Scene002,,0,0,0,,Second scene\r\n"),
              std::string::npos)
        << ass;
}

TEST(TrimJob, FinishedFilmBecomesThePreviewFileFromItsStart)
{
    RenderProject p(4);
    p.AddScene(0, 49);
    p.rig.engine.nPreviewFrame = 7;
    ASSERT_EQ(p.Render(), 0);
    EXPECT_EQ(p.rig.engine.strPreviewFile.get(), p.Output());
    EXPECT_EQ(p.rig.engine.nPreviewFrame, 0);
    EXPECT_EQ(p.rig.engine.nPlayJob, engine::kJobPlayOutput);
}

} // namespace
