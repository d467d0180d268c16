// Tests of playback with the real ffplay on a virtual display: positions from the player, the
// end, a stop and the resume at the printed time, the loop, the scene loop of job 1029.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "core/project_names.h"
#include "engine/engine_fixture.h"
#include "support/test_support.h"
#include "support/xvfb.h"

namespace {

using engine::AppMessage;
using enginetest::EngineRig;
using enginetest::LogCapture;
using enginetest::States;
using enginetest::Words;

// 100 frames of 160x120 at 25 fps with a tone.
constexpr const char *kFourSeconds = "testsrc2=size=160x120:rate=25:duration=4";

// A project whose input is a generated clip of the given source.
struct PlayProject
{
    explicit PlayProject(const std::string &source = kFourSeconds)
    {
        clip = dir.file("play me.mp4");
        EXPECT_TRUE(testsupport::MakeClip(clip, source));
        rig.data.input_file = clip;
        rig.data.output_folder = dir.file("out") + "/";
    }

    // Starts job nJob and handles messages until it has ended and its stills are made.
    void Run(int nJob)
    {
        ASSERT_EQ(rig.engine.StartThread(nJob), 1);
        rig.WaitForJob();
        rig.host.Loop().RunUntil([this] { return !rig.engine.bPreviewRunning; });
    }

    // Handles messages until pred holds, or about 20 seconds have passed.
    bool PumpUntil(const std::function<bool()> &pred)
    {
        auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        rig.host.Loop().RunUntil([&] { return pred() || std::chrono::steady_clock::now() > end; });
        return pred();
    }

    testsupport::TempDir dir;
    std::string clip;
    EngineRig rig;
};

// The player commands in the log.
std::vector<std::string> PlayerLines(LogCapture &log)
{
    std::vector<std::string> lines;
    for (const std::string &line :
         log.LinesWithoutPositions("CTarnwickProcess::ExecuteCmdWithProgress")) {
        if (line.find(" ffplay ") != std::string::npos) {
            lines.push_back(line);
        }
    }
    return lines;
}

// The -ss text of a player command.
std::string StartOf(const std::string &line)
{
    size_t at = line.find(" -ss ");
    if (at == std::string::npos) {
        return "<none>";
    }
    at += 5;
    return line.substr(at, line.find(' ', at) - at);
}

std::vector<std::string> Stages(const engine::HeadlessTab &tab)
{
    std::vector<std::string> stages;
    for (const engine::JobMessage &msg : tab.MessagesOf(AppMessage::WM_APP_STAGE_BEGIN)) {
        stages.push_back(msg.text.value_or("<none>"));
    }
    return stages;
}

TEST(PlayVideo, ClipPlayedToTheEndReportsPositionsRisingToTheLastFrame)
{
    testsupport::XvfbDisplay display;
    ASSERT_TRUE(display.Ready());
    PlayProject p;
    p.rig.Scene().SetPreviewPaneOrigin({40, 30});
    LogCapture log;
    p.Run(engine::kJobPlayInput);

    EXPECT_EQ(p.rig.engine.nProcessExitCode, 0);
    EXPECT_EQ(States(p.rig.Scene()), (std::vector<std::string>{"5:"})); // "Stopped" also here
    EXPECT_EQ(Stages(p.rig.Scene()), (std::vector<std::string>{"Input Preview"}));
    EXPECT_EQ(Words(p.rig.Scene(), AppMessage::WM_APP_PLAYER_READY).size(), 1u);
    std::vector<int64_t> frames;
    for (auto [frame, total] : Words(p.rig.Scene(), AppMessage::WM_APP_POSITION)) {
        EXPECT_EQ(total, 100);
        frames.push_back(frame);
    }
    ASSERT_GT(frames.size(), 10u);
    EXPECT_TRUE(std::is_sorted(frames.begin(), frames.end()));
    EXPECT_EQ(frames.back(), 99);
    EXPECT_EQ(p.rig.engine.nPreviewFrame, 99);
    EXPECT_EQ(p.rig.engine.strPreviewTime.get(), "3.960000");
    EXPECT_EQ(p.rig.engine.nPlayJob, engine::kJobPlayInput);
    const std::vector<std::string> players = PlayerLines(log);
    ASSERT_EQ(players.size(), 1u);
    EXPECT_EQ(players[0],
              "CTarnwickProcess::ExecuteCmdWithProgress(N) ffplay -window_title \"TWREVIEW\" "
              "-noborder -autoexit -left 40 -top 30 -ss 0.000000 -i \"" +
                  p.clip + "\" -t 4.000000 -af \"volume=0.050000\" -vf \"" +
                  p.rig.engine.BuildVideoFilter(false, true, false, false, -1) + ",showinfo\"");
    // Where it ended stays on show as a still.
    EXPECT_TRUE(std::filesystem::exists(p.rig.engine.PreviewImagePath()));
}

TEST(PlayVideo, StopAtAboutOneAndAHalfSecondsAndAPlayAgainStartsThereUnchanged)
{
    testsupport::XvfbDisplay display;
    ASSERT_TRUE(display.Ready());
    PlayProject p;
    LogCapture log;
    ASSERT_EQ(p.rig.engine.StartThread(engine::kJobPlayInput), 1);
    ASSERT_TRUE(p.PumpUntil([&p] { return p.rig.engine.nPreviewFrame >= 37; }));
    p.rig.engine.CancelProcess();

    EXPECT_EQ(p.rig.engine.nProcessExitCode, -2);
    EXPECT_EQ(States(p.rig.Scene()), (std::vector<std::string>{"5:"}));
    EXPECT_EQ(p.rig.Scene().CaptureCalls(), 1);
    const std::string printed = p.rig.engine.strPreviewTime.get();
    const double seconds = std::stod(printed);
    EXPECT_GE(seconds, 1.4);
    EXPECT_LT(seconds, 3.0);
    p.rig.Scene().ClearMessages();

    p.Run(engine::kJobPlayInput);
    const std::vector<std::string> players = PlayerLines(log);
    ASSERT_EQ(players.size(), 2u);
    EXPECT_EQ(StartOf(players[0]), "0.000000");
    EXPECT_EQ(StartOf(players[1]), printed);
    EXPECT_EQ(Stages(p.rig.Scene()), (std::vector<std::string>{""})); // no new start
    EXPECT_EQ(p.rig.engine.nProcessExitCode, 0);
    EXPECT_EQ(p.rig.engine.nPreviewFrame, 99);
}

TEST(PlayVideo, RepeatAfterAStopAtTwelveAndAHalfSecondsStartsThereWithoutANewStart)
{
    testsupport::XvfbDisplay display;
    ASSERT_TRUE(display.Ready());
    PlayProject p("testsrc2=size=96x72:rate=25:duration=14");
    ASSERT_EQ(p.rig.engine.OpenVideoFile(p.clip), 0);
    // What a stop of job 1027 at 12.5 seconds leaves behind.
    p.rig.engine.nPlayJob = engine::kJobPlayInput;
    p.rig.engine.nPreviewFrame = 312;
    p.rig.engine.strPreviewTime = "12.500000";
    LogCapture log;
    p.Run(engine::kJobPlayInput);

    EXPECT_EQ(Stages(p.rig.Scene()), (std::vector<std::string>{""}));
    EXPECT_TRUE(p.rig.Scene().MessagesOf(AppMessage::WM_APP_INPUT_INFO).empty()); // not reopened
    const std::vector<std::string> players = PlayerLines(log);
    ASSERT_EQ(players.size(), 1u);
    EXPECT_EQ(StartOf(players[0]), "12.500000");
    EXPECT_NE(players[0].find(" -t 14.000000 "), std::string::npos) << players[0];
    EXPECT_EQ(p.rig.engine.nProcessExitCode, 0);
}

TEST(PlayVideo, LoopStartsAgainAtZeroAfterTheEndAndAStopEndsTheLoop)
{
    testsupport::XvfbDisplay display;
    ASSERT_TRUE(display.Ready());
    PlayProject p("testsrc2=size=96x72:rate=25:duration=1");
    p.rig.data.play_loop = 1;
    // At the end of the first run, before the next one starts.
    std::atomic<int> frameAtFirstEnd{-1};
    std::string timeAtFirstEnd;
    p.rig.Scene().SetOnMessage([&](const engine::JobMessage &msg) {
        if (msg.id == AppMessage::WM_APP_JOB_STATE && frameAtFirstEnd < 0) {
            frameAtFirstEnd = p.rig.engine.nPreviewFrame.load();
            timeAtFirstEnd = p.rig.engine.strPreviewTime.get();
        }
    });
    LogCapture log;
    ASSERT_EQ(p.rig.engine.StartThread(engine::kJobPlayInput), 1);
    ASSERT_TRUE(p.PumpUntil(
        [&p] { return Words(p.rig.Scene(), AppMessage::WM_APP_PLAYER_READY).size() >= 2; }));
    p.rig.engine.CancelProcess();
    p.rig.host.Loop().RunUntil([&p] { return !p.rig.engine.bPreviewRunning; });

    EXPECT_EQ(frameAtFirstEnd, 24);
    EXPECT_EQ(timeAtFirstEnd, "0.960000");
    EXPECT_EQ(p.rig.engine.nProcessExitCode, -2);
    const std::vector<std::string> players = PlayerLines(log);
    ASSERT_EQ(players.size(), 2u); // the stop ended the loop
    EXPECT_EQ(StartOf(players[0]), "0.000000");
    EXPECT_EQ(StartOf(players[1]), "0.000000");
    EXPECT_EQ(States(p.rig.Scene()), (std::vector<std::string>{"5:", "5:"}));
    // A stopped playback leaves the capture to the tab and asks for no still.
    EXPECT_TRUE(p.rig.Scene().MessagesOf(AppMessage::WM_APP_PREVIEW_IMAGE).empty());
}

// A scene project: segments of 1 second each cut from a clip by ffmpeg directly.
struct SceneProject : PlayProject
{
    SceneProject()
        : PlayProject("testsrc2=size=96x72:rate=25:duration=3")
    {
        rig.data.viInput.fps = 25.0;
        std::filesystem::create_directories(rig.data.output_folder);
        for (int i = 0; i < 3; ++i) {
            int first = i * 25;
            rig.data.diff_list.emplace_back(
                first, first + 24, core::SegmentPath(rig.data, first, first + 24));
            EXPECT_TRUE(testsupport::MakeClip(rig.data.diff_list.back().fileName,
                                              "testsrc2=size=96x72:rate=25:duration=1"));
        }
        // The tab makes the row it is told current.
        rig.Scene().SetOnMessage([this](const engine::JobMessage &msg) {
            if (msg.id == AppMessage::WM_APP_CURRENT_SCENE) {
                std::lock_guard<std::mutex> lock(rig.data.sceneLock.m);
                rig.data.list_idx = static_cast<int>(msg.wParam);
            }
        });
    }

    std::string File(int i) { return rig.data.diff_list[static_cast<size_t>(i)].fileName; }
};

std::vector<std::string> PlayedFiles(LogCapture &log)
{
    std::vector<std::string> files;
    for (const std::string &line : PlayerLines(log)) {
        size_t at = line.find(" -i \"") + 5;
        files.push_back(line.substr(at, line.find('"', at) - at));
    }
    return files;
}

TEST(PlayScenes, WithoutTheSceneLoopOneScenePlays)
{
    testsupport::XvfbDisplay display;
    ASSERT_TRUE(display.Ready());
    SceneProject p;
    p.rig.data.list_idx = 1;
    LogCapture log;
    p.Run(engine::kJobPlayScenes);

    EXPECT_EQ(p.rig.engine.nProcessExitCode, 0);
    EXPECT_EQ(Words(p.rig.Scene(), AppMessage::WM_APP_CURRENT_SCENE),
              (std::vector<std::pair<int64_t, int64_t>>{{1, 0}}));
    EXPECT_EQ(PlayedFiles(log), (std::vector<std::string>{p.File(1)}));
    EXPECT_EQ(Stages(p.rig.Scene()), (std::vector<std::string>{"Scene Preview"}));
    EXPECT_EQ(p.rig.engine.nPlayJob, engine::kJobPlayScenes);
}

TEST(PlayScenes, WithTheSceneLoopItRunsOnToTheLastRowAndStopsThere)
{
    testsupport::XvfbDisplay display;
    ASSERT_TRUE(display.Ready());
    SceneProject p;
    p.rig.data.list_idx = 0;
    p.rig.data.play_scene_loop = 1;
    LogCapture log;
    p.Run(engine::kJobPlayScenes);

    EXPECT_EQ(p.rig.engine.nProcessExitCode, 0);
    EXPECT_EQ(Words(p.rig.Scene(), AppMessage::WM_APP_CURRENT_SCENE),
              (std::vector<std::pair<int64_t, int64_t>>{{0, 0}, {1, 0}, {2, 0}}));
    EXPECT_EQ(PlayedFiles(log), (std::vector<std::string>{p.File(0), p.File(1), p.File(2)}));
    // The positions of a scene count over its own frames.
    for (const auto &word : Words(p.rig.Scene(), AppMessage::WM_APP_POSITION)) {
        EXPECT_EQ(word.second, 25);
    }
    EXPECT_EQ(p.rig.engine.nPreviewFrame, 24);
}

TEST(PlayScenes, DeletedSceneFileStartsNoPlayerAndEndsWithZero)
{
    SceneProject p; // no display: no player may start
    ASSERT_EQ(p.rig.engine.OpenVideoFile(p.File(0)), 0);
    std::filesystem::remove(p.File(1));
    p.rig.data.list_idx = 1;
    p.rig.engine.strPreviewTime = "0.400000"; // a position alone would not start over
    p.rig.engine.nPreviewFrame = 10;
    LogCapture log;
    p.Run(engine::kJobPlayScenes);

    EXPECT_EQ(p.rig.engine.nProcessExitCode, 0);
    EXPECT_TRUE(PlayerLines(log).empty());
    EXPECT_TRUE(Words(p.rig.Scene(), AppMessage::WM_APP_PLAYER_READY).empty());
    EXPECT_TRUE(States(p.rig.Scene()).empty());
}

TEST(PlayScenes, ListIndexBeyondTheRowsPlaysNothingAndAsksForAStillOfNoFile)
{
    SceneProject p;
    p.rig.data.list_idx = 3;
    LogCapture log;
    p.Run(engine::kJobPlayScenes);

    EXPECT_EQ(p.rig.engine.nProcessExitCode, 0);
    EXPECT_TRUE(Words(p.rig.Scene(), AppMessage::WM_APP_CURRENT_SCENE).empty());
    EXPECT_TRUE(PlayerLines(log).empty());
    EXPECT_EQ(p.rig.Scene().MessagesOf(AppMessage::WM_APP_PREVIEW_IMAGE).size(), 1u);
    EXPECT_EQ(
        log.LinesWithoutPositions("CTarnwickProcess::SetPreviewImage"),
        (std::vector<std::string>{"CTarnwickProcess::SetPreviewImage(N) no still of \"\" in \"" +
                                  p.rig.data.output_folder + "\""}));
}

} // namespace
