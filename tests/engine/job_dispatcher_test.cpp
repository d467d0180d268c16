// Tests of the job dispatcher: starting, the position reset, the job table, the composed job
// 1057, the end of a job, and the stop that pumps messages while it waits.
#include "engine/job_states.h"
#include "engine/tarnwick_process.h"

#include <atomic>
#include <future>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "core/language.h"
#include "engine_fixture.h"

namespace {

using engine::AppMessage;
using enginetest::EngineRig;
using enginetest::States;
using enginetest::Words;

constexpr int kTestJob = 9001;

// Waits until the engine's job has asked whether to stop: then a stop is sure to be seen.
int WaitForCancel(engine::CTarnwickProcess &engine)
{
    while (engine.bCancel == 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return engine::kJobStopped;
}

// Installs kTestJob as a job that holds until the returned promise is set, then ends with 0.
std::promise<void> InstallGatedJob(EngineRig &rig)
{
    std::promise<void> release;
    std::shared_future<void> gate = release.get_future().share();
    rig.engine.SetJobFunction(kTestJob, 0, [gate](int) {
        gate.wait();
        return 0;
    });
    return release;
}

TEST(JobDispatcher, SecondStartThreadDuringAJobReturnsZero)
{
    EngineRig rig;
    std::promise<void> release = InstallGatedJob(rig);
    std::atomic<int> secondRuns{0};
    rig.engine.SetJobFunction(kTestJob + 1, 0, [&secondRuns](int) { return ++secondRuns; });

    EXPECT_EQ(rig.engine.StartThread(kTestJob), 1);
    EXPECT_TRUE(rig.engine.bThreadRunning);
    EXPECT_EQ(rig.engine.StartThread(kTestJob + 1), 0);
    EXPECT_EQ(rig.engine.nProcessID, kTestJob);
    release.set_value();
    rig.WaitForJob();

    EXPECT_EQ(secondRuns, 0);
    EXPECT_EQ(Words(rig.Scene(), AppMessage::WM_APP_PROCESS_FINISHED),
              (std::vector<std::pair<int64_t, int64_t>>{{kTestJob, 0}}));
    EXPECT_EQ(rig.engine.nProcessExitCode, 0);
}

// A stand-in for the player: notes where it starts, plays to frame 42 and stops when asked.
void InstallPlayer(EngineRig &rig, std::vector<int> &starts, std::vector<std::string> &times)
{
    for (int job : {engine::kJobPlayInput, engine::kJobPlayOutput}) {
        rig.engine.SetJobFunction(job, 0, [&rig, &starts, &times](int) {
            starts.push_back(rig.engine.nPreviewFrame);
            times.push_back(rig.engine.strPreviewTime.get());
            rig.engine.nPreviewFrame = 42;
            rig.engine.strPreviewTime = "1.680000";
            return WaitForCancel(rig.engine);
        });
    }
}

void PlayAndStop(EngineRig &rig, int nJob)
{
    ASSERT_EQ(rig.engine.StartThread(nJob), 1);
    rig.engine.CancelProcess();
    EXPECT_FALSE(rig.engine.bThreadRunning);
}

TEST(JobDispatcher, ReplayOfTheInputResumesWhereItStoppedButOutputStartsAtZero)
{
    EngineRig rig;
    std::vector<int> starts; // written by the job thread, read after it ended
    std::vector<std::string> times;
    InstallPlayer(rig, starts, times);

    PlayAndStop(rig, engine::kJobPlayInput);
    EXPECT_EQ(rig.engine.nPlayJob, engine::kJobPlayInput);
    PlayAndStop(rig, engine::kJobPlayInput);  // resumes at 42
    PlayAndStop(rig, engine::kJobPlayOutput); // another playback: from 0
    PlayAndStop(rig, engine::kJobPlayInput);  // after the output: from 0 again

    EXPECT_EQ(starts, (std::vector<int>{0, 42, 0, 0}));
    EXPECT_EQ(times, (std::vector<std::string>{"0", "1.680000", "0", "0"}));
    EXPECT_EQ(rig.engine.nProcessExitCode, engine::kJobStopped);
}

TEST(JobDispatcher, RenderJobStartsAtPositionZeroAfterPlayback)
{
    EngineRig rig;
    std::vector<int> starts;
    std::vector<std::string> times;
    InstallPlayer(rig, starts, times);
    int renderStart = -1;
    std::string renderTime;
    rig.engine.SetJobFunction(engine::kJobSceneExtract, 0, [&](int) {
        renderStart = rig.engine.nPreviewFrame;
        renderTime = rig.engine.strPreviewTime.get();
        return 0;
    });

    PlayAndStop(rig, engine::kJobPlayInput);
    ASSERT_EQ(rig.engine.nPreviewFrame, 42);
    ASSERT_EQ(rig.engine.StartThread(engine::kJobSceneExtract), 1);
    rig.WaitForJob();

    EXPECT_EQ(renderStart, 0);
    EXPECT_EQ(renderTime, "0");
    EXPECT_EQ(rig.engine.nPlayJob, engine::kJobPlayInput); // a render job is no playback
}

TEST(JobDispatcher, StopBetweenTwoToolsTakesEffectAtTheNextToolsFirstRead)
{
    EngineRig rig;
    std::atomic<bool> between{false};
    int first = 99;
    int second = 99;
    rig.engine.SetJobFunction(kTestJob, 0, [&](int) {
        first = rig.engine.ExecuteCmd("true");
        between = true;
        WaitForCancel(rig.engine); // the stop arrives while no tool runs
        second = rig.engine.ExecuteCmd("yes h5-between-tools");
        return second;
    });
    ASSERT_EQ(rig.engine.StartThread(kTestJob), 1);
    rig.host.Loop().RunUntil([&] { return between.load(); });
    rig.engine.CancelProcess();

    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, engine::kJobStopped);
    EXPECT_EQ(rig.engine.nProcessExitCode, engine::kJobStopped);
    EXPECT_EQ(rig.engine.bCancel, 0);
    EXPECT_EQ(testsupport::CountProcessesWith("h5-between-tools"), 0);
}

// Rows standing in for the scan and the final output of job 1057.
struct ComposedJob
{
    int scanResult = 0;
    bool scanLeavesScene = false;
    std::atomic<int> finalRuns{0};
};

void InstallComposedRows(EngineRig &rig, ComposedJob &job, int nMergeMode)
{
    int firstRow = nMergeMode == 0 ? engine::kJobSceneExtract : engine::kJobSegmentOutput;
    rig.engine.SetJobFunction(firstRow, nMergeMode, [&rig, &job](int) {
        if (job.scanLeavesScene) {
            std::lock_guard<std::mutex> lock(rig.data.sceneLock.m);
            rig.data.diff_list.emplace_back(0, 10, "/tmp/x_seg_0_10.mp4");
        }
        return job.scanResult != 0 ? rig.engine.ExecuteCmd("false") : 0;
    });
    rig.engine.SetJobFunction(engine::kJobFinalOutput, nMergeMode, [&job](int) {
        ++job.finalRuns;
        return 7;
    });
}

TEST(JobDispatcher, FailingToolInJob1057EndsTheJobBeforeTheFinalOutput)
{
    EngineRig rig;
    ComposedJob job;
    job.scanResult = 1;
    job.scanLeavesScene = true;
    InstallComposedRows(rig, job, 0);
    ASSERT_EQ(rig.engine.StartThread(engine::kJobExtractAndOutput), 1);
    rig.WaitForJob();
    EXPECT_EQ(job.finalRuns, 0);
    EXPECT_EQ(rig.engine.nProcessExitCode, 1); // the exit code of "false"
}

TEST(JobDispatcher, EmptySceneListAfterASuccessfulScanSkipsTheFinalOutput)
{
    EngineRig rig;
    ComposedJob job;
    InstallComposedRows(rig, job, 0);
    ASSERT_EQ(rig.engine.StartThread(engine::kJobExtractAndOutput), 1);
    rig.WaitForJob();
    EXPECT_EQ(job.finalRuns, 0);
    EXPECT_EQ(rig.engine.nProcessExitCode, 0);
}

TEST(JobDispatcher, Job1057RunsTheFinalOutputAfterAScanWithScenes)
{
    EngineRig rig;
    ComposedJob job;
    job.scanLeavesScene = true;
    InstallComposedRows(rig, job, 0);
    ASSERT_EQ(rig.engine.StartThread(engine::kJobExtractAndOutput), 1);
    rig.WaitForJob();
    EXPECT_EQ(job.finalRuns, 1);
    EXPECT_EQ(rig.engine.nProcessExitCode, 7); // the last result counts
}

TEST(JobDispatcher, Job1057OnTheMergeTabConvertsThenMerges)
{
    EngineRig rig;
    rig.engine.bMergeMode = 1;
    ComposedJob job;
    job.scanLeavesScene = true;
    InstallComposedRows(rig, job, 1);
    ASSERT_EQ(rig.engine.StartThread(engine::kJobExtractAndOutput), 1);
    rig.WaitForJob();
    EXPECT_EQ(job.finalRuns, 1);
    EXPECT_EQ(rig.engine.nProcessExitCode, 7);
}

TEST(JobDispatcher, JobWithoutAFunctionFailsWithCannotStart)
{
    enginetest::LogCapture log;
    EngineRig rig;
    rig.engine.bMergeMode = 1;
    rig.engine.SetJobFunction(engine::kJobFinalOutput, 1, {}); // a row without a function
    ASSERT_EQ(rig.engine.StartThread(engine::kJobFinalOutput), 1);
    rig.WaitForJob();
    EXPECT_EQ(rig.engine.nProcessExitCode, engine::kJobCannotStart);
    EXPECT_EQ(States(rig.Scene()), (std::vector<std::string>{"3:Job(1006) is not available"}));
    EXPECT_EQ(Words(rig.Scene(), AppMessage::WM_APP_PROCESS_FINISHED),
              (std::vector<std::pair<int64_t, int64_t>>{{engine::kJobFinalOutput, -1}}));
    EXPECT_EQ(log.LinesWithoutPositions("CTarnwickProcess::RunJobRow"),
              (std::vector<std::string>{
                  "CTarnwickProcess::RunJobRow(N) no function for nJob(1006), bMergeMode(1)"}));
}

TEST(JobDispatcher, EngineWithoutTheRenderRowsFailsTheFinalOutputAsNotAvailable)
{
    enginetest::LogCapture log;
    core::CTarnwickData data;
    engine::HeadlessHost host; // before the engine: it outlives the engine
    engine::CTarnwickProcess bare;
    bare.pData = &data;
    bare.pHostDlg = &host;
    ASSERT_EQ(bare.StartThread(engine::kJobFinalOutput), 1);
    host.Loop().RunUntil([&bare] { return !bare.bThreadRunning; });
    EXPECT_EQ(bare.nProcessExitCode, engine::kJobCannotStart);
    EXPECT_EQ(States(host.Tab(0)), (std::vector<std::string>{"3:Job(1006) is not available"}));
}

TEST(JobDispatcher, NumberWithoutARowTakesThePlaybackBranch)
{
    EngineRig rig;
    std::atomic<int> played{0};
    rig.engine.SetPlaybackFunction(0, [&played](int nJob) {
        played = nJob;
        return 0;
    });
    ASSERT_EQ(rig.engine.StartThread(4242), 1);
    rig.WaitForJob();
    EXPECT_EQ(played, 4242);
    EXPECT_EQ(rig.engine.nPlayJob, 4242);
}

TEST(JobDispatcher, FinishedMessageArrivesWhileTheThreadStillCounts)
{
    EngineRig rig;
    bool runningInHandler = false;
    int idInHandler = -1;
    rig.Scene().SetOnMessage([&](const engine::JobMessage &msg) {
        if (msg.id == AppMessage::WM_APP_PROCESS_FINISHED) {
            runningInHandler = rig.engine.bThreadRunning;
            idInHandler = rig.engine.nProcessID;
        }
    });
    rig.engine.SetJobFunction(kTestJob, 0, [](int) { return 5; });
    ASSERT_EQ(rig.engine.StartThread(kTestJob), 1);
    rig.WaitForJob();
    EXPECT_TRUE(runningInHandler);
    EXPECT_EQ(idInHandler, 0);
    EXPECT_EQ(rig.engine.nProcessID, 0);
    EXPECT_FALSE(rig.engine.IsRenderJob());
}

TEST(JobDispatcher, CancelWithoutAJobDoesNothing)
{
    EngineRig rig;
    rig.engine.CancelProcess();
    EXPECT_EQ(rig.engine.bCancel, 0);
    EXPECT_FALSE(engine::bCancelling);
}

TEST(JobDispatcher, CancelKeepsBlockingMessagesFlowing)
{
    EngineRig rig;
    rig.engine.SetJobFunction(kTestJob, 0, [&rig](int) {
        WaitForCancel(rig.engine);
        rig.engine.SendJobState(engine::kStateStopped); // blocks until the waiting side pumps
        return engine::kJobStopped;
    });
    ASSERT_EQ(rig.engine.StartThread(kTestJob), 1);
    rig.engine.CancelProcess();
    EXPECT_FALSE(rig.engine.bThreadRunning);
    EXPECT_EQ(States(rig.Scene()), (std::vector<std::string>{"5:"}));
    EXPECT_EQ(engine::StateName(5, false), "Stopped");
    EXPECT_EQ(rig.engine.bCancel, 0);
    EXPECT_FALSE(engine::bCancelling);
}

TEST(JobDispatcher, StopIsRefusedWhileTheSceneIsBeingChosen)
{
    EngineRig rig;
    std::promise<void> release = InstallGatedJob(rig);
    ASSERT_EQ(rig.engine.StartThread(kTestJob), 1);
    rig.engine.bSelectingScene = true;
    rig.engine.CancelProcess(); // returns at once: the stop is dropped
    EXPECT_EQ(rig.engine.bCancel, 0);
    EXPECT_TRUE(rig.engine.bThreadRunning);
    rig.engine.bSelectingScene = false;
    release.set_value();
    rig.WaitForJob();
    EXPECT_EQ(rig.engine.nProcessExitCode, 0);
}

TEST(JobDispatcher, OnlyOneStopRunsInTheProgram)
{
    EngineRig rig;
    std::promise<void> release = InstallGatedJob(rig);
    ASSERT_EQ(rig.engine.StartThread(kTestJob), 1);
    engine::bCancelling = true; // a stop of the other tab's engine is under way
    rig.engine.CancelProcess();
    EXPECT_EQ(rig.engine.bCancel, 0);
    engine::bCancelling = false;
    release.set_value();
    rig.WaitForJob();
}

TEST(JobDispatcher, StopOfPlaybackKeepsThePlayersLastPictureOnce)
{
    EngineRig rig;
    rig.Scene().SetPreviewRepaint(true);
    rig.engine.SetJobFunction(
        engine::kJobPlayInput, 0, [&rig](int) { return WaitForCancel(rig.engine); });
    ASSERT_EQ(rig.engine.StartThread(engine::kJobPlayInput), 1);
    rig.engine.CancelProcess();
    rig.host.Loop().PumpMessages(); // the repaint flag travels as a queued message
    EXPECT_EQ(rig.Scene().CaptureCalls(), 1);
    EXPECT_FALSE(rig.Scene().PreviewRepaint());
}

TEST(JobDispatcher, StopOfARenderJobTakesNoPicture)
{
    EngineRig rig;
    rig.engine.SetJobFunction(
        engine::kJobSceneExtract, 0, [&rig](int) { return WaitForCancel(rig.engine); });
    ASSERT_EQ(rig.engine.StartThread(engine::kJobSceneExtract), 1);
    EXPECT_TRUE(rig.engine.IsRenderJob());
    rig.engine.CancelProcess();
    EXPECT_EQ(rig.Scene().CaptureCalls(), 0);
}

TEST(JobDispatcher, MergeTabRunsItsOwnVariant)
{
    EngineRig rig;
    rig.engine.bMergeMode = 1;
    rig.engine.SetJobFunction(engine::kJobSceneExtract, 0, [](int) { return 10; });
    rig.engine.SetJobFunction(engine::kJobSceneExtract, 1, [](int) { return 11; });
    ASSERT_EQ(rig.engine.StartThread(engine::kJobSceneExtract), 1);
    rig.WaitForJob();
    EXPECT_EQ(rig.engine.nProcessExitCode, 11);
}

TEST(JobDispatcher, ReportsGoToTheTabThatIsCurrentWhenTheJobEnds)
{
    EngineRig rig;
    rig.engine.SetJobFunction(kTestJob, 0, [&rig](int) {
        rig.engine.SendJobState(engine::kStateDone);
        rig.host.SetActiveTab(1); // the user switched tabs while the job ran
        return 0;
    });
    ASSERT_EQ(rig.engine.StartThread(kTestJob), 1);
    rig.WaitForJob();
    EXPECT_EQ(States(rig.host.Tab(0)), (std::vector<std::string>{"4:"}));
    EXPECT_EQ(Words(rig.host.Tab(1), AppMessage::WM_APP_PROCESS_FINISHED).size(), 1u);
}

TEST(JobDispatcher, JobNumbersFallIntoRenderAndPlaybackClasses)
{
    for (int job : {1006, 1052, 1053, 1057, 1101}) {
        EXPECT_TRUE(engine::IsRenderJobNumber(job)) << job;
        EXPECT_FALSE(engine::IsPlaybackJobNumber(job)) << job;
    }
    for (int job : {1027, 1028, 1029}) {
        EXPECT_TRUE(engine::IsPlaybackJobNumber(job)) << job;
        EXPECT_FALSE(engine::IsRenderJobNumber(job)) << job;
    }
    EXPECT_FALSE(engine::IsRenderJobNumber(0));
    EXPECT_FALSE(engine::IsPlaybackJobNumber(0));
}

TEST(LogCommandResult, WritesOneLineByOutcome)
{
    enginetest::LogCapture log;
    engine::CTarnwickProcess::LogCommandResult("F::G", 12, "tool a", 0);
    engine::CTarnwickProcess::LogCommandResult("F::G", 13, "tool b", -2);
    engine::CTarnwickProcess::LogCommandResult("F::G", 14, "tool c", 1);
    engine::CTarnwickProcess::LogCommandResult("F::G", 15, "tool d", -1);
    EXPECT_EQ(log.Lines("F::G"),
              (std::vector<std::string>{"F::G(12) tool a",
                                        "F::G(13) [CANCEL] tool b",
                                        "F::G(14) [NG:1] tool c",
                                        "F::G(15) [NG:-1] tool d"}));
}

} // namespace

namespace {

TEST(JobDispatcher, AJobWorksWithTheSettingsItStartedWith)
{
    EngineRig rig;
    rig.data.threshold.dValue = 100;
    rig.data.brightness.dValue = 0.25;
    rig.data.transition = 1;
    std::promise<void> changed;
    std::shared_future<void> gate = changed.get_future().share();
    engine::JobSettings seen;
    rig.engine.SetJobFunction(kTestJob, 0, [&rig, &seen, gate](int) {
        gate.wait(); // the view has changed the project meanwhile
        seen = rig.engine.Settings();
        return rig.engine.ThresholdArgument();
    });
    ASSERT_EQ(rig.engine.StartThread(kTestJob), 1);
    rig.data.threshold.dValue = 500;
    rig.data.brightness.dValue = -0.5;
    rig.data.transition = 0;
    changed.set_value();
    rig.WaitForJob();
    EXPECT_EQ(seen.threshold, 100.0);
    EXPECT_EQ(seen.picture.brightness, 0.25);
    EXPECT_EQ(seen.transition, 1);
    EXPECT_EQ(rig.engine.nProcessExitCode, 10000) << "the scan's threshold argument of the copy";
    // Outside a job, the project as it stands.
    EXPECT_EQ(rig.engine.Settings().threshold, 500.0);
    EXPECT_EQ(rig.engine.ThresholdArgument(), 50000);
}

} // namespace
