// Tests of still pictures with the real ffmpeg: the request slot, the preview thread, the
// still's command and file, and the stills that cutting asks for.
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "engine/cut_fixture.h"
#include "engine/engine_fixture.h"
#include "support/test_support.h"

namespace {

using cuttest::CutProject;
using engine::AppMessage;
using enginetest::EngineRig;
using enginetest::LogCapture;

// Handles the messages of the preview thread until it has ended.
void WaitForStills(EngineRig &rig)
{
    rig.host.Loop().RunUntil([&rig] { return !rig.engine.bPreviewRunning; });
}

// The paths that WM_APP_PREVIEW_IMAGE brought to a tab.
std::vector<std::string> StillMessages(const engine::HeadlessTab &tab)
{
    std::vector<std::string> paths;
    for (const engine::JobMessage &msg : tab.MessagesOf(AppMessage::WM_APP_PREVIEW_IMAGE)) {
        paths.push_back(msg.text.value_or("<none>"));
    }
    return paths;
}

std::string StillCommand(const std::string &time,
                         const std::string &file,
                         const std::string &chain,
                         const std::string &still)
{
    return "CTarnwickProcess::ExecuteCmd(N) ffmpeg -y -ss " + time + " -i \"" + file +
           "\" -frames:v 1 -vf \"" + chain + "\" \"" + still + "\"";
}

// "width,height" of a picture file as ffprobe reads it.
std::string PictureSize(const std::string &path)
{
    testsupport::RunResult r = testsupport::RunProgram(
        {"ffprobe", "-v", "error", "-show_entries", "stream=width,height", "-of", "csv=p=0", path});
    return r.out.substr(0, r.out.find('\n'));
}

TEST(SetPreviewImage, EmptyTimeTakesTheStillAtZero)
{
    CutProject p;
    LogCapture log;
    p.rig.engine.SetPreviewImage(p.clip, "", false, -1);
    WaitForStills(p.rig);

    const std::string still = p.rig.engine.PreviewImagePath();
    EXPECT_EQ(still, p.dir.file("seg out") + "/my clip_preview.jpg");
    const std::string chain = p.rig.engine.BuildVideoFilter(false, true, true, false, -1);
    EXPECT_EQ(log.LinesWithoutPositions("CTarnwickProcess::ExecuteCmd"),
              (std::vector<std::string>{StillCommand("0.000000", p.clip, chain, still)}));
    EXPECT_EQ(StillMessages(p.rig.Scene()), (std::vector<std::string>{still}));
    EXPECT_EQ(PictureSize(still), "480,480"); // the preview square
    EXPECT_FALSE(p.rig.engine.bPreviewRunning);
}

TEST(SetPreviewImage, ThreeRequestsWhileOneIsMadeGiveExactlyOneMoreRun)
{
    CutProject p;
    LogCapture log;
    p.rig.engine.SetPreviewImage(p.clip, "0.500000", false, -1);
    // The preview thread takes the request; its message then waits for this thread.
    for (int i = 0; i < 5000; ++i) {
        {
            std::lock_guard<std::mutex> lock(p.rig.engine.previewMutex);
            if (!p.rig.engine.previewRequest) {
                break;
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    p.rig.engine.SetPreviewImage(p.clip, "1.000000", false, -1);
    p.rig.engine.SetPreviewImage(p.clip, "2.000000", false, -1);
    p.rig.engine.SetPreviewImage(p.clip, "3.000000", false, -1);
    WaitForStills(p.rig);

    const std::string still = p.rig.engine.PreviewImagePath();
    const std::string chain = p.rig.engine.BuildVideoFilter(false, true, true, false, -1);
    EXPECT_EQ(log.LinesWithoutPositions("CTarnwickProcess::ExecuteCmd"),
              (std::vector<std::string>{StillCommand("0.500000", p.clip, chain, still),
                                        StillCommand("3.000000", p.clip, chain, still)}));
    EXPECT_EQ(StillMessages(p.rig.Scene()), (std::vector<std::string>{still, still}));
}

TEST(SetPreviewImage, FailedStillIsLoggedAndTheMessageIsSentAnyway)
{
    CutProject p;
    LogCapture log;
    const std::string missing = p.dir.file("gone.mp4");
    p.rig.engine.SetPreviewImage(missing, "1.000000", false, -1);
    WaitForStills(p.rig);

    const std::vector<std::string> lines =
        log.LinesWithoutPositions("CTarnwickProcess::SetPreviewImage");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].rfind("CTarnwickProcess::SetPreviewImage(N) [NG:", 0), 0u) << lines[0];
    const std::string still = p.rig.engine.PreviewImagePath();
    EXPECT_EQ(StillMessages(p.rig.Scene()), (std::vector<std::string>{still}));
    EXPECT_EQ(p.rig.Scene().Messages().size(), 1u); // no other report
    EXPECT_FALSE(std::filesystem::exists(still));
}

TEST(SetPreviewImage, PictureGoesToTheTabThatAsked)
{
    CutProject p;
    p.rig.engine.SetPreviewImage(p.clip, "1.000000", false, -1);
    p.rig.host.SetActiveTab(1);
    WaitForStills(p.rig);
    EXPECT_EQ(StillMessages(p.rig.Scene()).size(), 1u);
    EXPECT_TRUE(StillMessages(p.rig.host.Tab(1)).empty());
}

TEST(ShowFile, AnotherFileOpensAtItsFirstFrameAsASceneAndShowsAStill)
{
    CutProject p;
    const std::string other = p.dir.file("other.mp4");
    ASSERT_TRUE(testsupport::MakeClip(other, "testsrc2=size=160x120:rate=25:duration=2"));
    p.rig.engine.nPreviewFrame = 40;
    p.rig.engine.strPreviewTime = "1.600000";
    LogCapture log;
    EXPECT_EQ(p.rig.engine.ShowFile(other, true), 0);
    WaitForStills(p.rig);

    EXPECT_EQ(p.rig.engine.strPreviewFile.get(), other);
    EXPECT_EQ(p.rig.engine.nPlayJob, engine::kJobPlayScenes);
    EXPECT_EQ(p.rig.engine.nPreviewFrame, 0);
    EXPECT_EQ(p.rig.engine.strPreviewTime.get(), "0");
    EXPECT_TRUE(p.rig.Scene().MessagesOf(AppMessage::WM_APP_INPUT_INFO).empty()); // quiet
    EXPECT_EQ(StillMessages(p.rig.Scene()).size(), 1u);
    const std::vector<std::string> lines =
        log.LinesWithoutPositions("CTarnwickProcess::ExecuteCmd");
    ASSERT_FALSE(lines.empty());
    EXPECT_NE(lines.back().find("-ss 0 -i \"" + other + "\""), std::string::npos) << lines.back();
}

TEST(ShowFile, SameFileAgainKeepsThePosition)
{
    CutProject p;
    p.rig.engine.nPreviewFrame = 40;
    p.rig.engine.strPreviewTime = "1.600000";
    EXPECT_EQ(p.rig.engine.ShowFile(p.clip, false), 0);
    WaitForStills(p.rig);
    EXPECT_EQ(p.rig.engine.nPreviewFrame, 40);
    EXPECT_EQ(p.rig.engine.strPreviewTime.get(), "1.600000");
    EXPECT_EQ(PictureSize(p.rig.engine.PreviewImagePath()), "480,480");
}

TEST(SetPreviewImage, QuietCutShowsTheFinishedSegmentWithItsSceneChain)
{
    CutProject p;
    int nScene = p.AddScene(25, 49);
    LogCapture log;
    ASSERT_EQ(p.rig.engine.CutSceneQuiet(p.clip, nScene, p.rig.engine.Settings()), 0);
    WaitForStills(p.rig);

    const std::string segment = p.Scene(nScene).fileName;
    const std::string still = p.rig.engine.PreviewImagePath();
    const std::string chain = p.rig.engine.BuildVideoFilter(true, true, true, false, nScene);
    const std::vector<std::string> lines =
        log.LinesWithoutPositions("CTarnwickProcess::ExecuteCmd");
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), StillCommand("0", segment, chain, still));
    EXPECT_EQ(StillMessages(p.rig.Scene()), (std::vector<std::string>{still}));
}

} // namespace
