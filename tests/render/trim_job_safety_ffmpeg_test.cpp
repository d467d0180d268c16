// Tests of what the final render (job 1006) may trust and what it leaves: the previous film
// after a stop or a failure, segments cut short or named after other frames, a scene that ends
// before it begins, and the reason a failure gives.
#include "engine/tarnwick_process.h"

#include <filesystem>
#include <functional>
#include <mutex>
#include <string>

#include <gtest/gtest.h>

#include "core/project_names.h"
#include "render/render_project.h"
#include "support/test_support.h"

namespace {

namespace fs = std::filesystem;

using engine::AppMessage;
using rendertest::kFps;
using rendertest::kOneFrame;
using rendertest::RenderProject;
using testsupport::DecodedFrames;
using testsupport::ReadFile;
using testsupport::StreamSeconds;

// A moment of the render, told by one of its messages.
using Moment = std::function<bool(const engine::JobMessage &)>;

bool StageBegins(const engine::JobMessage &msg, const std::string &stage, bool withTotal)
{
    return msg.id == AppMessage::WM_APP_STAGE_BEGIN && msg.text.value_or("") == stage &&
           (msg.lParam > 0) == withTotal;
}

// Renders p again, stopping it at the first message for which moment is true; the result.
int RenderStoppedAt(RenderProject &p, const Moment &moment)
{
    bool stopped = false;
    p.rig.Scene().SetOnMessage([&](const engine::JobMessage &msg) {
        if (!stopped && moment(msg)) {
            stopped = true;
            p.rig.engine.bCancel = 1;
        }
    });
    const int result = p.Render();
    p.rig.Scene().SetOnMessage({});
    EXPECT_TRUE(stopped);
    return result;
}

TEST(TrimJob, StoppedRenderKeepsThePreviousFilm)
{
    RenderProject p(6);
    p.AddScene(0, 49);
    p.AddScene(100, 149);
    ASSERT_EQ(p.Render(), 0);
    const std::string film = ReadFile(p.Output());
    ASSERT_FALSE(film.empty());
    const std::vector<std::pair<std::string, Moment>> moments = {
        {"precheck", [](const auto &msg) { return StageBegins(msg, "Precheck", true); }},
        {"merge", [](const auto &msg) { return StageBegins(msg, "Final Merge", false); }},
        {"final encode", [](const auto &msg) { return StageBegins(msg, "Final Merge", true); }},
        {"first frames of the final encode",
         [](const auto &msg) {
             return msg.id == AppMessage::WM_APP_PROGRESS && msg.wParam > 50 && msg.lParam > 0;
         }},
    };
    int title = 0;
    for (const auto &[name, moment] : moments) {
        // Another title: a film that the stop let through would differ from the first one.
        p.rig.data.capTitle.caption = "Title " + std::to_string(++title);
        const int result = RenderStoppedAt(p, moment);
        p.rig.engine.bCancel = 0;
        EXPECT_FALSE(fs::exists(core::PartialSegmentPath(p.Output()))) << name;
        if (result == 0) {
            continue; // the tool had ended before the stop came: the new film is whole
        }
        EXPECT_EQ(result, -2) << name;
        EXPECT_TRUE(ReadFile(p.Output()) == film) << "stopped at the " << name;
    }
}

TEST(TrimJob, FailedRenderKeepsThePreviousFilmAndNamesItsReason)
{
    RenderProject p(4);
    p.AddScene(0, 49);
    ASSERT_EQ(p.Render(), 0);
    const std::string film = ReadFile(p.Output());
    // The film's partial name is taken by a folder that no job may delete: the encode fails.
    const std::string partial = core::PartialSegmentPath(p.Output());
    fs::create_directories(partial + "/kept");
    p.rig.data.capTitle.caption = "Another title";
    EXPECT_EQ(p.Render(), 1);
    EXPECT_TRUE(ReadFile(p.Output()) == film);
    EXPECT_EQ(p.rig.engine.FailureReason(),
              "the film clip_trim.mp4 could not be written to " + p.rig.data.output_folder +
                  ": ffmpeg: " + partial + ": Is a directory");
}

TEST(TrimJob, SegmentCutShortIsCutAgainThoughItsHeaderAnnouncesAllFrames)
{
    RenderProject p(6);
    p.AddScene(0, 99);
    ASSERT_EQ(p.Render(), 0);
    const std::string segment = p.rig.data.diff_list[0].fileName;
    const std::string whole = ReadFile(segment);
    // The header (at the front) stays and announces 100 frames; the pictures end early.
    ASSERT_TRUE(testsupport::WriteFile(segment, whole.substr(0, whole.size() * 2 / 3)));
    ASSERT_LT(DecodedFrames(segment), 100);
    ASSERT_EQ(p.Render(), 0);
    EXPECT_EQ(DecodedFrames(segment), 100);
    EXPECT_EQ(DecodedFrames(p.Output()), 100);
    EXPECT_NEAR(StreamSeconds(p.Output(), "v"), 100 / kFps, kOneFrame);
}

TEST(TrimJob, SegmentNamedAfterOtherFramesIsCutAgainUnderItsOwnName)
{
    RenderProject p(8);
    p.AddScene(0, 49);
    p.AddScene(100, 149);
    ASSERT_EQ(p.Render(), 0);
    // A hand-edited project: the second scene names the first one's segment, of equal length.
    const std::string first = p.rig.data.diff_list[0].fileName;
    const std::string firstBytes = ReadFile(first);
    {
        std::lock_guard<std::mutex> lock(p.rig.data.sceneLock.m);
        p.rig.data.diff_list[1].fileName = first;
    }
    fs::remove(core::SegmentPath(p.rig.data, 100, 149));
    ASSERT_EQ(p.Render(), 0);
    EXPECT_EQ(p.rig.data.diff_list[1].fileName, core::SegmentPath(p.rig.data, 100, 149));
    EXPECT_EQ(DecodedFrames(p.rig.data.diff_list[1].fileName), 50);
    EXPECT_TRUE(ReadFile(first) == firstBytes) << "the other scene's segment is left alone";
    EXPECT_EQ(DecodedFrames(p.Output()), 100);
}

TEST(TrimJob, SceneThatEndsBeforeItBeginsIsNamedAndNothingIsRendered)
{
    RenderProject p(4);
    p.AddScene(0, 49);
    p.AddScene(60, 40);
    EXPECT_EQ(p.Render(), -1);
    EXPECT_EQ(p.rig.engine.FailureReason(),
              "scene 2 ends at frame 40, before it begins at frame 60: correct or delete it");
    EXPECT_FALSE(fs::exists(p.Output()));
}

} // namespace
