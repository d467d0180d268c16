// Tests of the runner with small system tools standing in for the media tools: progress and
// position reports, the refusal without a frame count, start failures, exit-code reports,
// collected output and the stop.
#include "engine/tarnwick_process.h"

#include <atomic>
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/language.h"
#include "engine_fixture.h"

namespace {

using engine::AppMessage;
using enginetest::EngineRig;
using enginetest::States;
using enginetest::Words;
using WordList = std::vector<std::pair<int64_t, int64_t>>;

constexpr int kTestJob = 9002;

// Runs fn as a job on the engine's worker thread and waits for its end.
int RunAsJob(EngineRig &rig, const std::function<int()> &fn)
{
    rig.engine.SetJobFunction(kTestJob, 0, [fn](int) { return fn(); });
    EXPECT_EQ(rig.engine.StartThread(kTestJob), 1);
    rig.WaitForJob();
    return rig.engine.nProcessExitCode;
}

// A command that prints text through printf; "\\r" and "\\n" in text become the characters.
std::string PrintCommand(const std::string &text)
{
    return "printf \"" + text + "\"";
}

TEST(Runner, BaseIsAddedToTheToolsFrameNumber)
{
    EngineRig rig;
    std::string command = PrintCommand("frame=   20 fps=0.0 q=-0.0 size=       0kB "
                                       "time=00:00:00.76 bitrate=N/A speed=1.5x\\r");
    int result =
        RunAsJob(rig, [&] { return rig.engine.ExecuteCmdWithProgress(false, command, 1000, 500); });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(Words(rig.Scene(), AppMessage::WM_APP_PROGRESS), (WordList{{1000, 520}}));
    EXPECT_TRUE(States(rig.Scene()).empty()); // success without playback: the caller reports
}

TEST(Runner, PlaybackBeyondTheTotalHoldsTheLastFrame)
{
    EngineRig rig;
    rig.data.viCurrent.fps = 25.0;
    std::string command = PrintCommand("[Parsed_showinfo_1 @ 0x55d0] n: 149 pts:  76672 "
                                       "pts_time:5.99    pos: 1 fmt:yuv420p\\n");
    int result =
        RunAsJob(rig, [&] { return rig.engine.ExecuteCmdWithProgress(true, command, 100, 0); });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(rig.engine.nPreviewFrame, 99);
    EXPECT_EQ(rig.engine.strPreviewTime.get(), "3.960000");
    EXPECT_EQ(Words(rig.Scene(), AppMessage::WM_APP_POSITION), (WordList{{150, 100}}));
    EXPECT_EQ(Words(rig.Scene(), AppMessage::WM_APP_PLAYER_READY), (WordList{{0, 0}}));
    EXPECT_EQ(States(rig.Scene()), (std::vector<std::string>{"5:"})); // a normal end: "Stopped"
    EXPECT_TRUE(rig.Scene().PreviewRepaint());
}

TEST(Runner, PlaybackTakesTheToolsTimeBeforeTheEndInTheFormOfCommandLines)
{
    EngineRig rig;
    rig.data.viCurrent.fps = 25.0;
    rig.data.viCurrent.start_frame = 2;
    std::string command = PrintCommand("[Parsed_showinfo_1 @ 0x55d0] n: 10 pts: 1 pts_time:0.48 "
                                       "pos: 1\\n[Parsed_showinfo_1 @ 0x55d0] n: 11 pts: 1 "
                                       "pts_time:0.52 pos: 1\\n");
    RunAsJob(rig, [&] { return rig.engine.ExecuteCmdWithProgress(true, command, 100, 0); });
    EXPECT_EQ(rig.engine.nPreviewFrame, 11);
    EXPECT_EQ(rig.engine.strPreviewTime.get(), "0.520000");
    EXPECT_EQ(Words(rig.Scene(), AppMessage::WM_APP_POSITION), (WordList{{10, 100}, {11, 100}}));
}

TEST(Runner, PlaybackPostsNoPositionWhileThePositionBarIsDragged)
{
    EngineRig rig;
    rig.data.viCurrent.fps = 25.0;
    rig.Scene().SetPositionDrag(true);
    std::string command = PrintCommand("[Parsed_showinfo_1 @ 0x55d0] n: 10 pts_time:0.40\\n");
    RunAsJob(rig, [&] { return rig.engine.ExecuteCmdWithProgress(true, command, 100, 0); });
    EXPECT_EQ(rig.engine.nPreviewFrame, 10);
    EXPECT_TRUE(Words(rig.Scene(), AppMessage::WM_APP_POSITION).empty());
}

TEST(Runner, RefusesWithoutAFrameCountAndStartsNothing)
{
    enginetest::LogCapture log;
    EngineRig rig;
    int result = RunAsJob(
        rig, [&] { return rig.engine.ExecuteCmdWithProgress(false, "sleep 30.5181", 0, 0); });
    EXPECT_EQ(result, -1);
    EXPECT_EQ(testsupport::CountProcessesWith("sleep 30.5181"), 0);
    EXPECT_EQ(States(rig.Scene()), (std::vector<std::string>{"3:TotalFrame(0)"}));
    EXPECT_EQ(log.LinesWithoutPositions("CTarnwickProcess::ExecuteCmdWithProgress"),
              (std::vector<std::string>{
                  "CTarnwickProcess::ExecuteCmdWithProgress(N) [NG:-1] sleep 30.5181"}));
}

TEST(Runner, MissingToolGivesCreateProcessFailure)
{
    enginetest::LogCapture log;
    EngineRig rig;
    int result = RunAsJob(rig, [&] { return rig.engine.ExecuteCmd("tw-no-such-tool-h5 -y"); });
    EXPECT_EQ(result, -1);
    EXPECT_EQ(States(rig.Scene()),
              (std::vector<std::string>{"3:CreateProcess failed with error 2"}));
    EXPECT_EQ(log.LinesWithoutPositions("CTarnwickProcess::ExecuteCmd"),
              (std::vector<std::string>{
                  "CTarnwickProcess::ExecuteCmd(N) [NG:-1] tw-no-such-tool-h5 -y"}));
}

TEST(Runner, ProgressStepReportsAFailingToolsExitCode)
{
    enginetest::LogCapture log;
    EngineRig rig;
    int result =
        RunAsJob(rig, [&] { return rig.engine.ExecuteCmdWithProgress(false, "false", 10, 0); });
    EXPECT_EQ(result, 1);
    EXPECT_EQ(States(rig.Scene()), (std::vector<std::string>{"3:ExitCode(1)"}));
    EXPECT_EQ(
        log.LinesWithoutPositions("CTarnwickProcess::ExecuteCmdWithProgress"),
        (std::vector<std::string>{"CTarnwickProcess::ExecuteCmdWithProgress(N) [NG:1] false"}));
}

TEST(Runner, ShortCommandReportsNothingButTheResult)
{
    enginetest::LogCapture log;
    EngineRig rig;
    int result = RunAsJob(rig, [&] { return rig.engine.ExecuteCmd("false"); });
    EXPECT_EQ(result, 1);
    EXPECT_TRUE(rig.Scene().MessagesOf(AppMessage::WM_APP_JOB_STATE).empty());
    EXPECT_EQ(log.LinesWithoutPositions("CTarnwickProcess::ExecuteCmd"),
              (std::vector<std::string>{"CTarnwickProcess::ExecuteCmd(N) [NG:1] false"}));
}

TEST(Runner, ExecuteCmdCollectsEverythingTheToolWrote)
{
    EngineRig rig;
    std::string output;
    EXPECT_EQ(rig.engine.ExecuteCmd("seq 1 5000", &output), 0);
    std::string expected;
    for (int i = 1; i <= 5000; ++i) {
        expected += std::to_string(i) + "\n";
    }
    EXPECT_EQ(output, expected);
}

TEST(Runner, ChunkCountsAsTextUpToItsFirstZeroByte)
{
    EngineRig rig;
    std::string output;
    EXPECT_EQ(rig.engine.ExecuteCmd(PrintCommand("ab\\0cd"), &output), 0);
    EXPECT_EQ(output, "ab");
}

TEST(Runner, StopDuringPlaybackGivesStoppedAndMinusTwo)
{
    enginetest::LogCapture log;
    EngineRig rig;
    rig.engine.SetJobFunction(engine::kJobPlayInput, 0, [&rig](int) {
        return rig.engine.ExecuteCmdWithProgress(true, "yes h5-playback-stop", 100, 0);
    });
    ASSERT_EQ(rig.engine.StartThread(engine::kJobPlayInput), 1);
    rig.host.Loop().RunUntil(
        [&] { return !rig.Scene().MessagesOf(AppMessage::WM_APP_PLAYER_READY).empty(); });
    rig.engine.CancelProcess();
    EXPECT_EQ(rig.engine.nProcessExitCode, -2);
    EXPECT_EQ(States(rig.Scene()), (std::vector<std::string>{"5:"}));
    EXPECT_EQ(testsupport::CountProcessesWith("h5-playback-stop"), 0);
    EXPECT_EQ(log.LinesWithoutPositions("CTarnwickProcess::ExecuteCmdWithProgress"),
              (std::vector<std::string>{
                  "CTarnwickProcess::ExecuteCmdWithProgress(N) [CANCEL] yes h5-playback-stop"}));
}

TEST(Runner, ProcessFieldHoldsTheChildOnlyWhileItRuns)
{
    EngineRig rig;
    pid_t during = 0;
    rig.engine.SetJobFunction(kTestJob, 0, [&rig](int) {
        return rig.engine.ExecuteCmdWithProgress(false, "yes frame=1 fps=2", 10, 0);
    });
    rig.Scene().SetOnMessage([&](const engine::JobMessage &msg) {
        if (msg.id == AppMessage::WM_APP_PROGRESS && during == 0) {
            during = rig.engine.hProcess;
            rig.engine.CancelProcess();
        }
    });
    ASSERT_EQ(rig.engine.StartThread(kTestJob), 1);
    rig.WaitForJob();
    EXPECT_GT(during, 0);
    EXPECT_EQ(rig.engine.hProcess, 0);
}

TEST(Runner, StopReachesAToolThatWritesNothing)
{
    EngineRig rig;
    rig.engine.SetJobFunction(
        kTestJob, 0, [&](int) { return rig.engine.ExecuteCmd("sleep 600.4418"); });
    ASSERT_EQ(rig.engine.StartThread(kTestJob), 1);
    rig.host.Loop().RunUntil([] { return testsupport::CountProcessesWith("sleep 600.4418") > 0; });
    // The tool prints nothing, ever: only the runner's own wait can notice the stop.
    rig.engine.CancelProcess();
    EXPECT_EQ(rig.engine.nProcessExitCode, -2);
    EXPECT_EQ(testsupport::CountProcessesWith("sleep 600.4418"), 0);
}

TEST(Runner, CommandThatWouldSplitAPathIsRefusedAndStartsNothing)
{
    enginetest::LogCapture log;
    EngineRig rig;
    const std::string path = "x.mp4\" -report \"-hide_banner 77.5";
    const std::string command = "sleep \"" + path + "\"";
    bool carried = true;
    RunAsJob(rig, [&] {
        carried = rig.engine.CommandCarriesPaths("Test", 1, command, {path});
        return 0;
    });
    EXPECT_FALSE(carried);
    EXPECT_EQ(States(rig.Scene()),
              (std::vector<std::string>{"3:The path cannot be passed to the tool: " + path +
                                        " contains a double quote"}));
    EXPECT_EQ(log.Lines("Test("), (std::vector<std::string>{"Test(1) [NG:-1] " + command}));
}

} // namespace
