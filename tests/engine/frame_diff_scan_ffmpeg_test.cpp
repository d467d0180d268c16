// Tests of the frame-difference scan (job 1053) against the real ffmpeg: scenes and segments of
// a generated clip, threshold 0, frames beyond the announced count, a tool without frames, a
// picture without scan pixels, stops, the scene limit and a failed probe.
#include "engine/tarnwick_process.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/helpers.h"
#include "core/project_names.h"
#include "engine_fixture.h"
#include "support/motion_clips.h"
#include "workspace/scene_defaults.h"

namespace {

using engine::AppMessage;
using enginetest::EngineRig;
using enginetest::States;
using enginetest::Words;
using testsupport::MakeLongClip;
using testsupport::MakeMotionClip;
using testsupport::TempDir;

// A job number of the tests only: runs ExecuteCmdLoadVideo on the project as the test set it.
constexpr int kLoadJob = 9053;
// threshold 100 as the scan gets it.
constexpr int kDefaultThreshold = 10000;

// An engine on a headless host whose scene tab has the workspace's default-scene routine, and a
// project for clip as a new project names it.
struct ScanRig : EngineRig
{
    explicit ScanRig(const std::string &clip)
    {
        core::DeriveProjectNames(data, clip);
        Scene().SetDefaultSceneRoutine([this] { workspace::MakeDefaultScene(data); });
    }

    // Runs job nJob to its end and waits for the thread that follows a scan.
    int Run(int nJob)
    {
        EXPECT_EQ(engine.StartThread(nJob), 1);
        WaitForJob();
        engine.JoinAfterScanThread();
        return engine.nProcessExitCode;
    }

    // Probes the clip into viCurrent and viInput with frameNum as their count, then runs
    // ExecuteCmdLoadVideo as a job; with bStop a stop is asked for before the scan begins.
    int Load(const std::string &clip, int nThreshold, int frameNum, bool bStop = false)
    {
        EXPECT_EQ(engine.GetVideoInfoFfprobe(clip, data.viCurrent), 0);
        data.viCurrent.frame_num = frameNum;
        data.viInput = data.viCurrent;
        engine.SetJobFunction(kLoadJob, 0, [this, clip, nThreshold, bStop](int) {
            if (bStop) {
                engine.bCancel = 1;
            }
            return engine.ExecuteCmdLoadVideo(clip, nThreshold);
        });
        int result = Run(kLoadJob);
        engine.bCancel = 0;
        return result;
    }

    std::vector<std::pair<int, int>> Ranges()
    {
        std::vector<std::pair<int, int>> ranges;
        for (const core::SceneEntry &scene : data.diff_list) {
            ranges.emplace_back(scene.framNo_first, scene.framNo_second);
        }
        return ranges;
    }
};

int ProbedFrames(EngineRig &rig, const std::string &file)
{
    return rig.engine.GetFrameCount(file);
}

TEST(FrameDiffScan, GeneratedClipGivesTwoScenesWithTheirSegments)
{
    TempDir dir;
    std::string clip = MakeMotionClip(dir);
    ScanRig rig(clip);
    ASSERT_EQ(rig.Run(engine::kJobSceneExtract), 0);

    ASSERT_EQ(rig.data.diff_list.size(), 2u);
    const int expected[2][2] = {{51, 100}, {176, 225}};
    for (size_t i = 0; i < 2; ++i) {
        SCOPED_TRACE(i);
        const core::SceneEntry &scene = rig.data.diff_list[i];
        EXPECT_NEAR(scene.framNo_first, expected[i][0], 3);
        EXPECT_NEAR(scene.framNo_second, expected[i][1], 3);
        EXPECT_EQ(scene.fileName,
                  rig.data.output_folder + "motion_seg_" + std::to_string(scene.framNo_first) +
                      "_" + std::to_string(scene.framNo_second) + ".mp4");
        EXPECT_TRUE(std::filesystem::is_regular_file(scene.fileName));
        EXPECT_EQ(ProbedFrames(rig, scene.fileName), scene.framNo_second - scene.framNo_first + 1);
        EXPECT_EQ(scene.capParam.caption, core::StrPrintf("Scene%03zu", i + 1));
        EXPECT_TRUE(scene.bEnable);
    }
    EXPECT_EQ(rig.Scene().DefaultSceneCalls(), 0);
    EXPECT_EQ(rig.data.list_idx, 1);
    EXPECT_EQ(States(rig.Scene()), (std::vector<std::string>{"6:", "4:"}));
    std::vector<std::pair<int64_t, int64_t>> progress =
        Words(rig.Scene(), AppMessage::WM_APP_PROGRESS);
    ASSERT_EQ(progress.size(), 300u);
    EXPECT_EQ(progress.front(), (std::pair<int64_t, int64_t>{300, 1}));
    EXPECT_EQ(progress.back(), (std::pair<int64_t, int64_t>{300, 300}));
    EXPECT_EQ(Words(rig.Scene(), AppMessage::WM_APP_STAGE_BEGIN).size(), 2u);
    // The thread after the scan opened the last scene's segment.
    EXPECT_EQ(rig.engine.strPreviewFile.get(), rig.data.diff_list[1].fileName);
    EXPECT_EQ(rig.engine.nPlayJob, engine::kJobPlayScenes);
}

TEST(FrameDiffScan, ThresholdZeroMakesOneSceneOfTheWholeVideo)
{
    TempDir dir;
    std::string clip = MakeMotionClip(dir);
    ScanRig rig(clip);
    rig.data.threshold.dValue = 0;
    rig.engine.bCutScenes = false;
    ASSERT_EQ(rig.Run(engine::kJobSceneExtract), 0);
    EXPECT_EQ(rig.Ranges(), (std::vector<std::pair<int, int>>{{0, 299}}));
    EXPECT_FALSE(std::filesystem::exists(rig.data.output_folder));
}

TEST(FrameDiffScan, FrameBeyondTheAnnouncedCountIsDroppedWithoutError)
{
    TempDir dir;
    std::string clip = MakeMotionClip(dir);
    ScanRig rig(clip);
    rig.engine.bCutScenes = false;
    // The tool delivers 300 frames where 299 were announced.
    ASSERT_EQ(rig.Load(clip, 0, 299), 0);
    EXPECT_EQ(rig.Ranges(), (std::vector<std::pair<int, int>>{{0, 298}}));
    std::vector<std::pair<int64_t, int64_t>> progress =
        Words(rig.Scene(), AppMessage::WM_APP_PROGRESS);
    ASSERT_EQ(progress.size(), 299u);
    EXPECT_EQ(progress.back(), (std::pair<int64_t, int64_t>{299, 299}));
    EXPECT_EQ(States(rig.Scene()), (std::vector<std::string>{"6:"}));
}

// An AVI that ends right after its header: the probe announces 50 frames, the tool delivers
// none and ends with 0.
std::string MakeHeaderOnlyAvi(const TempDir &dir)
{
    std::string full = dir.file("full.avi");
    EXPECT_TRUE(testsupport::MakeClip(full,
                                      "testsrc2=size=320x240:rate=25:duration=2",
                                      {"-c:v", "rawvideo", "-pix_fmt", "yuv420p"}));
    std::string data = testsupport::ReadFile(full);
    size_t movi = data.find("movi");
    EXPECT_NE(movi, std::string::npos);
    std::string cut = dir.file("cut.avi");
    EXPECT_TRUE(testsupport::WriteFile(cut, data.substr(0, movi + 4)));
    return cut;
}

TEST(FrameDiffScan, ToolThatEndsWellWithoutFramesLeavesTheDefaultScene)
{
    TempDir dir;
    std::string clip = MakeHeaderOnlyAvi(dir);
    ScanRig rig(clip);
    ASSERT_EQ(rig.Run(engine::kJobSceneExtract), 0);
    ASSERT_EQ(rig.data.viInput.frame_num, 50);
    EXPECT_EQ(rig.Ranges(), (std::vector<std::pair<int, int>>{{0, 49}}));
    EXPECT_EQ(rig.data.diff_list[0].capParam.caption, "Scene001");
    EXPECT_GE(rig.Scene().DefaultSceneCalls(), 1);
    EXPECT_EQ(Words(rig.Scene(), AppMessage::WM_APP_SCENES_CHANGED).back(),
              (std::pair<int64_t, int64_t>{0, 0}));
    EXPECT_TRUE(Words(rig.Scene(), AppMessage::WM_APP_PROGRESS).empty());
    EXPECT_EQ(States(rig.Scene()), (std::vector<std::string>{"6:", "4:"}));
}

TEST(FrameDiffScan, PictureWithoutScanPixelsFailsWithMinusOne)
{
    TempDir dir;
    std::string clip = dir.file("narrow.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, "color=c=gray:s=2x240:r=25:d=1"));
    ScanRig rig(clip);
    EXPECT_EQ(rig.Run(engine::kJobSceneExtract), -1);
    EXPECT_EQ(rig.data.viCurrent.width, 2);
    EXPECT_EQ(States(rig.Scene()), (std::vector<std::string>{"6:", "3:ExitCode(-1)"}));
    EXPECT_TRUE(Words(rig.Scene(), AppMessage::WM_APP_PROGRESS).empty());
    EXPECT_EQ(rig.Ranges(), (std::vector<std::pair<int, int>>{{0, 24}})); // the default scene
}

TEST(FrameDiffScan, StopBeyondTheAnnouncedCountWaitsForTheToolsOwnEnd)
{
    TempDir dir;
    std::string clip = MakeMotionClip(dir);
    ScanRig rig(clip);
    rig.engine.bCutScenes = false;
    // Every frame lies beyond an announced count of 0, and the stop stands from the start.
    EXPECT_EQ(rig.Load(clip, kDefaultThreshold, 0, true), 0);
    EXPECT_TRUE(Words(rig.Scene(), AppMessage::WM_APP_PROGRESS).empty());
    EXPECT_TRUE(rig.data.diff_list.empty()); // the default scene of an input without frames
}

TEST(FrameDiffScan, StopDuringTheScanKeepsFinishedScenesAndTheirSegments)
{
    TempDir dir;
    std::string clip = MakeLongClip(dir);
    ScanRig rig(clip);
    // Stop once the first scene's segment is finished: its cut corrects the record and says so
    // with a second notice for scene 0.
    int firstSceneNotices = 0;
    rig.Scene().SetOnMessage([&firstSceneNotices](const engine::JobMessage &msg) {
        if (msg.id == AppMessage::WM_APP_SCENES_CHANGED && msg.wParam == 0) {
            ++firstSceneNotices;
        }
    });
    ASSERT_EQ(rig.engine.StartThread(engine::kJobSceneExtract), 1);
    rig.host.Loop().RunUntil([&] { return firstSceneNotices >= 2 || !rig.engine.bThreadRunning; });
    ASSERT_TRUE(rig.engine.bThreadRunning) << "the scan ended before it could be stopped";
    rig.engine.CancelProcess();
    rig.engine.JoinAfterScanThread();
    // After the scan the last scene's still is made on the preview thread: a tool of its own,
    // started after the stop, that ends by itself. Only the tools of the scan must be gone.
    rig.engine.EndPreviewThread();

    EXPECT_EQ(rig.engine.nProcessExitCode, -2);
    EXPECT_EQ(States(rig.Scene()).back(), "5:");
    ASSERT_GE(rig.data.diff_list.size(), 1u);
    EXPECT_LT(rig.data.diff_list.size(), 80u);
    const core::SceneEntry &first = rig.data.diff_list[0];
    ASSERT_TRUE(std::filesystem::is_regular_file(first.fileName));
    EXPECT_EQ(ProbedFrames(rig, first.fileName), first.framNo_second - first.framNo_first + 1);
    EXPECT_EQ(testsupport::CountProcessesWith(dir.path()), 0);
}

// 4980 frames at 1 frame a second, 640x640 (scan picture 80x80): every third frame changes the
// whole picture by about 90 gray levels, the two after it stand still. With both units at one
// second every changing frame is a scene of its own, so the 999th scene ends at frame 2994, and
// the tool still has far more frames to write than the pipe holds.
std::string MakeBurstClip(const TempDir &dir)
{
    std::string part = dir.file("part.mp4");
    EXPECT_TRUE(testsupport::MakeClip(
        part,
        "color=c=0x404040:s=16x16:r=1:d=60,geq=lum='if(eq(mod(floor(N/3),2),0),64,144)'"
        ":cb=128:cr=128,scale=640:640:flags=neighbor"));
    std::string clip = dir.file("bursts.mp4");
    EXPECT_TRUE(testsupport::LoopClip(clip, part, 82));
    return clip;
}

TEST(FrameDiffScan, SceneLimitStopsTheToolAt999Scenes)
{
    TempDir dir;
    std::string clip = MakeBurstClip(dir);
    ScanRig rig(clip);
    rig.engine.bCutScenes = false;
    rig.data.threshold.dValue = 1000; // 309 changed pixels of 6400
    EXPECT_EQ(rig.Run(engine::kJobSceneExtract), -2);
    ASSERT_EQ(rig.data.viInput.frame_num, 4980);
    ASSERT_EQ(rig.data.diff_list.size(), 999u);
    EXPECT_EQ(rig.Ranges().front(), (std::pair<int, int>{0, 0}));
    EXPECT_EQ(rig.Ranges()[1], (std::pair<int, int>{3, 3}));
    EXPECT_EQ(rig.Ranges().back(), (std::pair<int, int>{2994, 2994}));
    EXPECT_EQ(rig.data.diff_list.back().capParam.caption, "Scene999");
    EXPECT_EQ(rig.data.list_idx, 998);
    EXPECT_EQ(States(rig.Scene()).back(), "5:");
    // Killed: the frames behind those still in the pipe never came.
    EXPECT_LT(Words(rig.Scene(), AppMessage::WM_APP_PROGRESS).size(), 4980u);
}

TEST(FrameDiffScan, FailedProbeEndsTheJobWithoutAState)
{
    TempDir dir;
    ScanRig rig(dir.file("missing.mp4"));
    EXPECT_EQ(rig.Run(engine::kJobSceneExtract), 1);
    EXPECT_TRUE(States(rig.Scene()).empty());
    EXPECT_EQ(Words(rig.Scene(), AppMessage::WM_APP_STAGE_BEGIN).size(), 1u);
    EXPECT_TRUE(rig.data.diff_list.empty());
    EXPECT_EQ(rig.Scene().DefaultSceneCalls(), 0);
}

TEST(FrameDiffScan, TruncatedFileCountsTheFramesReadAndSaysSoInTheLog)
{
    enginetest::LogCapture log;
    TempDir dir;
    // Eight seconds of 25 fps in an AVI, cut to half its bytes: the header still announces 200.
    std::string whole = dir.file("whole.avi");
    ASSERT_TRUE(testsupport::MakeClip(
        whole, "testsrc=size=160x120:rate=25:duration=8", {"-c:v", "mpeg4", "-an"}));
    std::string bytes = testsupport::ReadFile(whole);
    std::string clip = dir.file("cut.avi");
    ASSERT_TRUE(testsupport::WriteFile(clip, bytes.substr(0, bytes.size() / 2)));
    ScanRig rig(clip);
    rig.engine.bCutScenes = false;
    ASSERT_EQ(rig.Run(engine::kJobSceneExtract), 0);
    const int read = rig.engine.nScanFrames;
    EXPECT_EQ(rig.data.viInput.frame_num, 200);
    EXPECT_GT(read, 0);
    EXPECT_LT(read, 200);
    std::vector<std::string> notes;
    for (const std::string &line :
         log.LinesWithoutPositions("CTarnwickProcess::ExecuteCmdLoadVideo")) {
        if (line.find(") only ") != std::string::npos) {
            notes.push_back(line);
        }
    }
    EXPECT_EQ(notes,
              (std::vector<std::string>{core::StrPrintf(
                  "CTarnwickProcess::ExecuteCmdLoadVideo(N) only %d of 200 frames could be read; "
                  "the file looks truncated",
                  read)}));
    for (const core::SceneEntry &scene : rig.data.diff_list) {
        EXPECT_LE(scene.framNo_first, scene.framNo_second);
        EXPECT_LT(scene.framNo_second, read);
    }
}

TEST(FrameDiffScan, WholeFileLogsNoTruncation)
{
    enginetest::LogCapture log;
    TempDir dir;
    std::string clip = MakeMotionClip(dir);
    ScanRig rig(clip);
    rig.engine.bCutScenes = false;
    ASSERT_EQ(rig.Run(engine::kJobSceneExtract), 0);
    EXPECT_EQ(rig.engine.nScanFrames, rig.data.viInput.frame_num);
    EXPECT_TRUE(log.Lines("CTarnwickProcess::ExecuteCmdLoadVideo(").size() >= 1);
    for (const std::string &line : log.Lines("CTarnwickProcess::ExecuteCmdLoadVideo(")) {
        EXPECT_EQ(line.find("truncated"), std::string::npos) << line;
    }
}

} // namespace
