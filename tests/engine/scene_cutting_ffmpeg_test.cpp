// Tests of scene cutting against the real ffmpeg and ffprobe: single cuts, the correction of a
// record after a cut, the segment output job with its freshness rule and its stop, and the
// background check of a scene on the queue thread.
#include "engine/tarnwick_process.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "core/project_names.h"
#include "engine/cut_fixture.h"
#include "engine/engine_fixture.h"
#include "engine/job_pool.h"

namespace {

namespace fs = std::filesystem;

using core::SceneEntry;
using cuttest::CutProject;
using cuttest::DecodedFrames;
using cuttest::FramesOf;
using cuttest::kClipSource;
using engine::AppMessage;
using engine::JobMessage;
using enginetest::EngineRig;
using enginetest::States;
using enginetest::Words;

fs::file_time_type ModifiedAt(const std::string &path)
{
    return fs::last_write_time(path);
}

bool EndsWith(const std::string &text, const std::string &tail)
{
    return text.size() >= tail.size() &&
           text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

std::vector<std::string> Texts(const engine::HeadlessTab &tab, AppMessage id)
{
    std::vector<std::string> result;
    for (const JobMessage &msg : tab.MessagesOf(id)) {
        result.push_back(msg.text.value_or("(none)"));
    }
    return result;
}

TEST(SceneCutting, OneFrameSceneIsCutFromTheTimeListAndNamedWithItsFrameTwice)
{
    CutProject p;
    for (int i = 0; i < 100; ++i) {
        p.rig.data.pts_list.push_back(i / 25.0);
    }
    int n = p.AddScene(7, 7);
    EXPECT_TRUE(EndsWith(p.Scene(n).fileName, "/seg out/my clip_seg_7_7.mp4"));
    EXPECT_EQ(p.rig.engine.CutSceneQuiet(p.clip, n, p.rig.engine.Settings()), 0);
    SceneEntry scene = p.Scene(n);
    EXPECT_EQ(scene.framNo_second, 7);
    EXPECT_TRUE(EndsWith(scene.fileName, "/seg out/my clip_seg_7_7.mp4"));
    EXPECT_EQ(scene.viIn.frame_num, 1);
    EXPECT_EQ(scene.viIn.width, 160);
    EXPECT_EQ(DecodedFrames(scene.fileName), 1);
}

TEST(SceneCutting, FewerFramesThanPlannedCorrectTheRecordAndMoveTheFile)
{
    CutProject p;
    int n = p.AddScene(1000, 1299);
    std::string planned = p.Scene(n).fileName;
    fs::create_directories(p.rig.data.output_folder);
    // The encoder's 299 frames for the 300 of the plan.
    ASSERT_TRUE(
        testsupport::MakeClip(planned,
                              "testsrc2=size=160x120:rate=25:duration=12",
                              {"-frames:v", "299", "-c:v", "libx264", "-pix_fmt", "yuv420p"}));
    p.rig.engine.UpdateSceneFile(n, 299);
    p.rig.host.Loop().PumpMessages();

    SceneEntry scene = p.Scene(n);
    EXPECT_EQ(scene.framNo_first, 1000);
    EXPECT_EQ(scene.framNo_second, 1298);
    EXPECT_EQ(scene.fileName, core::SegmentPath(p.rig.data, 1000, 1298));
    EXPECT_TRUE(EndsWith(scene.fileName, "_seg_1000_1298.mp4"));
    EXPECT_FALSE(fs::exists(planned));
    EXPECT_EQ(DecodedFrames(scene.fileName), 299);
    EXPECT_EQ(Words(p.rig.Scene(), AppMessage::WM_APP_SCENES_CHANGED),
              (std::vector<std::pair<int64_t, int64_t>>{{n, 0}}));

    // Fresh from then on: the check of the current scene leaves it alone.
    auto before = ModifiedAt(scene.fileName);
    p.SetListIndex(n);
    EXPECT_EQ(p.rig.engine.CutCurrentScene(), 0);
    EXPECT_TRUE(p.rig.Scene().MessagesOf(AppMessage::WM_APP_STAGE_BEGIN).empty());
    EXPECT_EQ(ModifiedAt(scene.fileName), before);
}

TEST(SceneCutting, RealCutPastTheEndOfTheInputIsCorrectedToWhatTheEncoderDelivered)
{
    CutProject p;
    int n = p.AddScene(90, 109); // the clip ends at frame 99
    std::string planned = p.Scene(n).fileName;
    EXPECT_EQ(p.rig.engine.CutScene(p.clip, n, 20, 0, true, p.rig.engine.Settings()), 0);
    p.rig.host.Loop().PumpMessages();

    SceneEntry scene = p.Scene(n);
    EXPECT_EQ(scene.framNo_second, 99);
    EXPECT_TRUE(EndsWith(scene.fileName, "_seg_90_99.mp4"));
    EXPECT_FALSE(fs::exists(planned));
    EXPECT_EQ(DecodedFrames(scene.fileName), 10);
    EXPECT_EQ(scene.viIn.frame_num, 0); // CutScene leaves viIn alone
    EXPECT_EQ(Words(p.rig.Scene(), AppMessage::WM_APP_CURRENT_SCENE),
              (std::vector<std::pair<int64_t, int64_t>>{{n, 0}}));

    auto before = ModifiedAt(scene.fileName);
    p.rig.Scene().ClearMessages();
    p.SetListIndex(n);
    EXPECT_EQ(p.rig.engine.CutCurrentScene(), 0);
    EXPECT_TRUE(p.rig.Scene().MessagesOf(AppMessage::WM_APP_STAGE_BEGIN).empty());
    EXPECT_EQ(ModifiedAt(scene.fileName), before);
}

TEST(SceneCutting, FailedCutDeletesItsFileAndLeavesTheRecord)
{
    CutProject p;
    int n = p.AddScene(10, 29);
    std::string fileName = p.Scene(n).fileName;
    fs::create_directories(p.rig.data.output_folder);
    ASSERT_TRUE(testsupport::WriteFile(fileName, "left over"));
    int result = p.rig.engine.CutSceneQuiet(p.dir.file("missing.mp4"), n, p.rig.engine.Settings());
    EXPECT_NE(result, 0);
    EXPECT_NE(result, -2);
    EXPECT_FALSE(fs::exists(fileName));
    SceneEntry scene = p.Scene(n);
    EXPECT_EQ(scene.framNo_second, 29);
    EXPECT_EQ(scene.fileName, fileName);
    EXPECT_EQ(scene.viIn.frame_num, 0);
}

TEST(SceneCutting, QuietCutsRunSideBySideWhileTheListGrows)
{
    CutProject p;
    {
        engine::JobPool pool(engine::JobPool::Limit{2});
        std::vector<int> results(5, 99);
        const engine::JobSettings settings = p.rig.engine.Settings();
        for (int i = 0; i < 5; ++i) {
            int n = p.AddScene(i * 20, i * 20 + 19);
            pool.Run([&p, &results, &settings, n] {
                results[n] = p.rig.engine.CutSceneQuiet(p.clip, n, settings);
            });
        }
        pool.WaitAll();
        EXPECT_EQ(results, std::vector<int>(5, 0));
    }
    p.rig.host.Loop().PumpMessages();
    for (int i = 0; i < 5; ++i) {
        SceneEntry scene = p.Scene(i);
        EXPECT_EQ(scene.viIn.frame_num, 20) << i;
        EXPECT_EQ(FramesOf(scene), 20) << i;
        EXPECT_EQ(DecodedFrames(scene.fileName), 20) << i;
    }
    EXPECT_EQ(Words(p.rig.Scene(), AppMessage::WM_APP_SCENES_CHANGED).size(), 5u);
}

TEST(CutCurrentScene, WithoutACurrentSceneReturnsMinusOne)
{
    CutProject p;
    p.AddScene(0, 9);
    p.SetListIndex(-1);
    EXPECT_EQ(p.rig.engine.CutCurrentScene(), -1);
    EXPECT_TRUE(p.rig.Scene().Messages().empty());
}

TEST(CutCurrentScene, RecutsAStaleSceneAndAnswersWithTheProbeBeforeTheCut)
{
    CutProject p;
    p.AddScene(0, 9);
    int n = p.AddScene(20, 44);
    p.SetListIndex(n);
    // No segment yet: the probe finds no frame, so the answer is -1 although the cut works.
    EXPECT_EQ(p.rig.engine.CutCurrentScene(), -1);
    p.rig.host.Loop().PumpMessages();
    EXPECT_EQ(Texts(p.rig.Scene(), AppMessage::WM_APP_STAGE_BEGIN),
              (std::vector<std::string>{"Segment Output (002)"}));
    EXPECT_EQ(Words(p.rig.Scene(), AppMessage::WM_APP_STAGE_BEGIN),
              (std::vector<std::pair<int64_t, int64_t>>{{0, 25}}));
    EXPECT_EQ(States(p.rig.Scene()), (std::vector<std::string>{"4:"}));
    EXPECT_TRUE(p.rig.Scene().MessagesOf(AppMessage::WM_APP_CURRENT_SCENE).empty());
    EXPECT_EQ(DecodedFrames(p.Scene(n).fileName), 25);
}

// ---- Job 1052 ----

TEST(SegmentOutputJob, CutsEveryTickedSceneAgainAndReportsEach)
{
    CutProject p;
    int fresh = p.AddScene(0, 29);
    int disabled = p.AddScene(30, 59, false);
    int stale = p.AddScene(60, 99);
    ASSERT_EQ(p.rig.engine.CutSceneQuiet(p.clip, fresh, p.rig.engine.Settings()), 0);
    p.rig.host.Loop().PumpMessages();
    std::string freshFile = p.Scene(fresh).fileName;
    auto freshTime = ModifiedAt(freshFile);
    // A segment of the wrong length stands where the stale scene's file belongs.
    ASSERT_TRUE(
        testsupport::MakeClip(p.Scene(stale).fileName, "testsrc2=size=160x120:rate=25:duration=1"));
    auto staleTime = ModifiedAt(p.Scene(stale).fileName);
    p.rig.Scene().ClearMessages();

    ASSERT_EQ(p.rig.engine.StartThread(engine::kJobSegmentOutput), 1);
    p.rig.WaitForJob();

    EXPECT_EQ(p.rig.engine.nProcessExitCode, 0);
    // A good segment is cut again too: the encoder settings may have changed since.
    EXPECT_NE(ModifiedAt(freshFile), freshTime);
    EXPECT_NE(ModifiedAt(p.Scene(stale).fileName), staleTime);
    EXPECT_FALSE(fs::exists(p.Scene(disabled).fileName));
    for (int n : {fresh, stale}) {
        SceneEntry scene = p.Scene(n);
        EXPECT_EQ(DecodedFrames(scene.fileName), FramesOf(scene)) << n;
    }
    EXPECT_EQ(FramesOf(p.Scene(stale)), 40);
    const engine::HeadlessTab &tab = p.rig.Scene();
    EXPECT_EQ(Texts(tab, AppMessage::WM_APP_STAGE_BEGIN),
              (std::vector<std::string>{"Segment Output"}));
    EXPECT_EQ(Words(tab, AppMessage::WM_APP_STAGE_BEGIN),
              (std::vector<std::pair<int64_t, int64_t>>{{0, 70}}));
    EXPECT_EQ(Texts(tab, AppMessage::WM_APP_STAGE_TEXT),
              (std::vector<std::string>{"Segment Output (001)", "Segment Output (003)"}));
    EXPECT_EQ(Words(tab, AppMessage::WM_APP_CURRENT_SCENE),
              (std::vector<std::pair<int64_t, int64_t>>{{fresh, 0}, {stale, 0}}));
    EXPECT_EQ(States(tab), (std::vector<std::string>{"4:"}));
    EXPECT_EQ(Words(tab, AppMessage::WM_APP_PROCESS_FINISHED),
              (std::vector<std::pair<int64_t, int64_t>>{{engine::kJobSegmentOutput, 0}}));
    for (const auto &[total, done] : Words(tab, AppMessage::WM_APP_PROGRESS)) {
        EXPECT_EQ(total, 70);
        EXPECT_LE(done, 70);
    }
}

TEST(SegmentOutputJob, SourceThatCannotBeOpenedEndsTheJobWithZero)
{
    CutProject p;
    int n = p.AddScene(0, 9);
    p.rig.data.input_file = p.dir.file("gone.mp4");
    ASSERT_EQ(p.rig.engine.StartThread(engine::kJobSegmentOutput), 1);
    p.rig.WaitForJob();
    EXPECT_EQ(p.rig.engine.nProcessExitCode, 0);
    EXPECT_TRUE(p.rig.Scene().MessagesOf(AppMessage::WM_APP_STAGE_BEGIN).empty());
    EXPECT_FALSE(fs::exists(p.Scene(n).fileName));
}

TEST(SegmentOutputJob, CancelAtTheThirdSceneDeletesItsFileKeepsTheFirstTwoAndEndsWithMinusTwo)
{
    CutProject p;
    int first = p.AddScene(0, 19);
    int second = p.AddScene(20, 39);
    int third = p.AddScene(40, 99);
    std::string thirdFile = p.Scene(third).fileName;
    fs::create_directories(p.rig.data.output_folder);
    ASSERT_TRUE(testsupport::WriteFile(thirdFile, "partial"));
    std::atomic<bool> reachedThird{false};
    // The stop is asked for while the job waits for this very message, so it reaches the
    // third scene's work and nothing earlier.
    p.rig.Scene().SetOnMessage([&p, &reachedThird](const JobMessage &msg) {
        if (msg.id == AppMessage::WM_APP_STAGE_TEXT && EndsWith(msg.text.value_or(""), "(003)")) {
            p.rig.engine.bCancel = 1;
            reachedThird = true;
        }
    });

    ASSERT_EQ(p.rig.engine.StartThread(engine::kJobSegmentOutput), 1);
    p.rig.host.Loop().RunUntil([&reachedThird] { return reachedThird.load(); });
    p.rig.engine.CancelProcess();

    EXPECT_EQ(p.rig.engine.nProcessExitCode, -2);
    EXPECT_FALSE(fs::exists(thirdFile));
    EXPECT_EQ(p.Scene(third).framNo_second, 99);
    for (int n : {first, second}) {
        SceneEntry scene = p.Scene(n);
        EXPECT_EQ(FramesOf(scene), 20) << n;
        EXPECT_EQ(DecodedFrames(scene.fileName), 20) << n;
    }
    EXPECT_EQ(States(p.rig.Scene()), (std::vector<std::string>{"5:"}));
    EXPECT_EQ(Words(p.rig.Scene(), AppMessage::WM_APP_PROCESS_FINISHED),
              (std::vector<std::pair<int64_t, int64_t>>{{engine::kJobSegmentOutput, -2}}));
}

// ---- Background check ----

// Pumps until the tab has recorded the call.
void PumpUntilCall(CutProject &p, const std::string &call, size_t count = 1)
{
    p.rig.host.Loop().RunUntil([&p, &call, count] {
        size_t seen = 0;
        for (const std::string &c : p.rig.Scene().BusyAndTimerLog()) {
            seen += c == call ? 1 : 0;
        }
        return seen >= count;
    });
}

std::vector<std::pair<int, bool>> QueuedChecks(engine::CTarnwickProcess &engine)
{
    std::lock_guard<std::mutex> lock(engine.queueMutex);
    return {engine.checkQueue.begin(), engine.checkQueue.end()};
}

TEST(BackgroundCheck, RecutsAStaleSceneAndLeavesAFreshOneAlone)
{
    CutProject p;
    int fresh = p.AddScene(0, 29);
    int stale = p.AddScene(30, 59);
    ASSERT_EQ(p.rig.engine.CutSceneQuiet(p.clip, fresh, p.rig.engine.Settings()), 0);
    p.rig.host.Loop().PumpMessages();
    auto freshTime = ModifiedAt(p.Scene(fresh).fileName);
    p.rig.Scene().ClearMessages();

    p.rig.engine.StartQueueThread(0);
    EXPECT_TRUE(p.rig.engine.running);
    // The queue is served in order: once the stale scene is done, the fresh one was checked.
    p.rig.engine.EnqueueSceneCheck(fresh, true);
    p.rig.engine.EnqueueSceneCheck(stale, true);
    PumpUntilCall(p, "ListBusy(0)");

    EXPECT_EQ(ModifiedAt(p.Scene(fresh).fileName), freshTime);
    EXPECT_EQ(DecodedFrames(p.Scene(stale).fileName), 30);
    EXPECT_EQ(p.rig.Scene().BusyAndTimerLog(),
              (std::vector<std::string>{"TimerStart", "ListBusy(1)", "TimerStop", "ListBusy(0)"}));
    EXPECT_EQ(Texts(p.rig.Scene(), AppMessage::WM_APP_STAGE_BEGIN),
              (std::vector<std::string>{"Segment Output (002)"}));
    EXPECT_EQ(Words(p.rig.Scene(), AppMessage::WM_APP_STAGE_BEGIN),
              (std::vector<std::pair<int64_t, int64_t>>{{0, 30}}));
    EXPECT_EQ(States(p.rig.Scene()), (std::vector<std::string>{"4:"}));
    EXPECT_EQ(p.rig.engine.nProcessID, 0);
    EXPECT_FALSE(p.rig.Scene().SceneListBusy());
    EXPECT_FALSE(p.rig.Scene().ElapsedTimerRunning());
}

TEST(BackgroundCheck, RecutWorksWithTheSettingsOfTheRequestNotWithLaterOnes)
{
    CutProject p;
    int stale = p.AddScene(30, 59);
    enginetest::LogCapture log;
    p.rig.data.nEncodePreset = 2;
    p.rig.engine.EnqueueSceneCheck(stale, false);
    // The view changes the project after the request, before the queue thread reads anything.
    p.rig.data.nEncodePreset = 0;
    p.rig.engine.StartQueueThread(0);
    PumpUntilCall(p, "ListBusy(0)");

    EXPECT_EQ(DecodedFrames(p.Scene(stale).fileName), 30);
    std::vector<std::string> cuts;
    for (const std::string &line : log.Lines("CTarnwickProcess::")) {
        if (line.find("-c:v mpeg4") != std::string::npos) {
            cuts.push_back(line);
        }
    }
    ASSERT_EQ(cuts.size(), 1u);
    EXPECT_NE(cuts[0].find("-c:v mpeg4 -qscale:v 7 "), std::string::npos) << cuts[0];
}

TEST(BackgroundCheck, WithoutTheShowFlagTheTimerIsLeftAlone)
{
    CutProject p;
    int stale = p.AddScene(10, 24);
    p.rig.engine.StartQueueThread(0);
    p.rig.engine.EnqueueSceneCheck(stale, false);
    PumpUntilCall(p, "ListBusy(0)");
    EXPECT_EQ(p.rig.Scene().BusyAndTimerLog(),
              (std::vector<std::string>{"ListBusy(1)", "ListBusy(0)"}));
    EXPECT_EQ(DecodedFrames(p.Scene(stale).fileName), 15);
}

TEST(BackgroundCheck, SameSceneTwiceWhileTheThreadIsBusyIsQueuedOnce)
{
    CutProject p;
    int busy = p.AddScene(0, 19);
    int selected = p.AddScene(20, 39);
    p.rig.engine.StartQueueThread(0);
    p.rig.engine.EnqueueSceneCheck(busy, false);
    // The recut of the first scene marks itself as job 1052 and then waits for its stage
    // message, which only this thread's loop can serve: the queue thread is busy until then.
    while (p.rig.engine.nProcessID != engine::kJobSegmentOutput) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    p.rig.engine.EnqueueSceneCheck(selected, true);
    p.rig.engine.EnqueueSceneCheck(selected, true);
    EXPECT_EQ(QueuedChecks(p.rig.engine), (std::vector<std::pair<int, bool>>{{selected, true}}));
    p.rig.engine.EnqueueSceneCheck(selected, false);
    EXPECT_EQ(QueuedChecks(p.rig.engine),
              (std::vector<std::pair<int, bool>>{{selected, true}, {selected, false}}));

    // Both scenes get cut once; the second pair finds the segment fresh.
    PumpUntilCall(p, "ListBusy(0)", 2);
    EXPECT_EQ(States(p.rig.Scene()), (std::vector<std::string>{"4:", "4:"}));
    EXPECT_EQ(DecodedFrames(p.Scene(busy).fileName), 20);
    EXPECT_EQ(DecodedFrames(p.Scene(selected).fileName), 20);
}

TEST(BackgroundCheck, IgnoresNegativeIndexesAndRequestsDuringAStop)
{
    EngineRig rig;
    rig.engine.EnqueueSceneCheck(-1, true);
    rig.engine.bCancel = 1;
    rig.engine.EnqueueSceneCheck(2, true);
    EXPECT_TRUE(QueuedChecks(rig.engine).empty());
    rig.engine.bCancel = 0;
    rig.engine.EnqueueSceneCheck(2, true);
    rig.engine.EnqueueSceneCheck(2, true);
    rig.engine.EnqueueSceneCheck(3, true);
    EXPECT_EQ(QueuedChecks(rig.engine), (std::vector<std::pair<int, bool>>{{2, true}, {3, true}}));
}

TEST(BackgroundCheck, ThreadEndsCleanlyWhenAskedToQuit)
{
    EngineRig rig;
    rig.engine.StartQueueThread(0);
    EXPECT_TRUE(rig.engine.running);
    EXPECT_EQ(rig.engine.bMergeMode, 0);
    {
        std::lock_guard<std::mutex> lock(rig.engine.queueMutex);
        rig.engine.quit = true;
    }
    rig.engine.queueCondition.notify_all();
    rig.engine.queueThread.join();
    EXPECT_FALSE(rig.engine.running);
}

TEST(BackgroundCheck, DestructionEndsTheIdleThread)
{
    auto rig = std::make_unique<EngineRig>();
    rig->engine.StartQueueThread(0);
    rig->engine.StartQueueThread(0); // a second start changes nothing
    EXPECT_TRUE(rig->engine.running);
    rig.reset(); // returns only when the thread has ended
}

} // namespace
