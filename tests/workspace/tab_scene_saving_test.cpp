// Tests of what the scene workspace keeps of its list while jobs run and end, and of its list
// edits made all or none: the project file holds the list as it stands at every moment.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "core/tarnwick_data.h"
#include "engine/tarnwick_process.h"
#include "support/recording_view.h"
#include "support/test_support.h"
#include "workspace/scene_edit.h"
#include "workspace/tab_scene.h"

using engine::AppMessage;
using testsupport::TabRig;
using workspace::CTarnwickTabScene;

namespace {

// A tab on its rig, as the host makes it.
struct SceneRig : TabRig
{
    SceneRig()
        : tab(view, loop, host)
    {
        host.SetTabs(&tab, nullptr);
    }
    CTarnwickTabScene tab;
};

// A project of 300 frames at 30 fps with the given scenes (first, last).
void FillScenes(core::CTarnwickData &data, const std::vector<std::pair<int, int>> &scenes)
{
    data.input_file = "/nowhere/clip.mp4";
    data.output_folder = "/nowhere/clip.mp4_out/";
    data.output_name = "clip_trim.mp4";
    data.viInput.fps = 30;
    data.viInput.frame_num = 300;
    data.viCurrent = data.viInput;
    for (auto [first, last] : scenes) {
        data.diff_list.emplace_back(first, last, data.output_folder + "seg.mp4");
    }
    data.list_idx = 0;
}

} // namespace

namespace {

// The scenes a project file holds, as (first, last), and its current row.
std::vector<std::pair<int, int>> SavedScenes(const std::string &path, int *pRow = nullptr)
{
    core::CTarnwickData saved;
    std::vector<std::pair<int, int>> scenes;
    if (!saved.LoadProjectFile(path)) {
        return scenes;
    }
    for (const core::SceneEntry &scene : saved.diff_list) {
        scenes.emplace_back(scene.framNo_first, scene.framNo_second);
    }
    if (pRow != nullptr) {
        *pRow = saved.list_idx;
    }
    return scenes;
}

// A job function that waits for the stop.
int WaitForStop(engine::CTarnwickProcess &engine)
{
    while (engine.bCancel == 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return engine::kJobStopped;
}

using Scenes = std::vector<std::pair<int, int>>;

} // namespace

TEST(SceneTab, OpenedProjectThatNamesNoRowKeepsEveryScene)
{
    for (int row : {-1, 3, 99}) {
        SCOPED_TRACE(row);
        SceneRig rig;
        FillScenes(rig.tab.Data(), {{0, 99}, {120, 199}, {220, 259}});
        rig.tab.Data().list_idx = row;
        rig.tab.OnInputAnalysed(true);
        const core::CTarnwickData &data = rig.tab.Data();
        ASSERT_EQ(data.diff_list.size(), 3u);
        EXPECT_EQ(data.diff_list[1].framNo_first, 120);
        EXPECT_EQ(data.list_idx, row < 0 ? 0 : 2);
    }
}

TEST(SceneTab, OpenedProjectWithoutScenesGetsTheDefaultScene)
{
    SceneRig rig;
    FillScenes(rig.tab.Data(), {});
    rig.tab.OnInputAnalysed(true);
    ASSERT_EQ(rig.tab.Data().diff_list.size(), 1u);
    EXPECT_EQ(rig.tab.Data().diff_list[0].framNo_second, 89);
    EXPECT_EQ(rig.tab.Data().list_idx, 0);
}

TEST(SceneTab, ProjectSavedWhileTheSegmentOutputRunsHoldsTheListAsItStands)
{
    testsupport::TempDir dir;
    SceneRig rig;
    FillScenes(rig.tab.Data(), {{0, 99}, {120, 199}, {220, 259}});
    rig.tab.Data().bAutoSave = 1;
    rig.tab.Data().project_file = dir.file("clip.twproj");
    engine::CTarnwickProcess &engine = rig.tab.Process();
    engine.SetJobFunction(engine::kJobSegmentOutput, 0, [&](int) { return WaitForStop(engine); });
    rig.tab.SegmentOutput();
    ASSERT_TRUE(rig.tab.IsJobRunning());
    EXPECT_EQ(rig.tab.Data().SelectedRow(), -1); // no row is current meanwhile
    // What a kill now leaves, and what the next opening makes of it.
    int row = -2;
    EXPECT_EQ(SavedScenes(dir.file("clip.twproj"), &row),
              (Scenes{{0, 99}, {120, 199}, {220, 259}}));
    EXPECT_EQ(row, 0);
    rig.tab.StopProcess();
    EXPECT_EQ(SavedScenes(dir.file("clip.twproj")), (Scenes{{0, 99}, {120, 199}, {220, 259}}));
}

TEST(SceneTab, ScenesFoundWhileAnExtractionRunsAreSavedAsTheyArrive)
{
    testsupport::TempDir dir;
    SceneRig rig;
    FillScenes(rig.tab.Data(), {{0, 99}});
    rig.tab.Data().bAutoSave = 1;
    const std::string file = dir.file("clip.twproj");
    rig.tab.Data().project_file = file;
    engine::CTarnwickProcess &engine = rig.tab.Process();
    std::vector<Scenes> seen; // what the file held after each scene, as a kill would find it
    engine.SetJobFunction(engine::kJobSceneExtract, 0, [&](int) {
        for (int first : {30, 150}) {
            {
                std::lock_guard<std::mutex> lock(engine.pData->sceneLock.m);
                engine.pData->diff_list.emplace_back(first, first + 59, "seg.mp4");
            }
            engine.PostToTab(AppMessage::WM_APP_SCENES_CHANGED, 0, 0);
            // Served in order: when this blocking message returns, the list's notice has been.
            engine.SendToTab(AppMessage::WM_APP_LIST_BUSY, 0, 0);
            seen.push_back(SavedScenes(file));
        }
        return engine::kJobOk;
    });
    rig.tab.ExtractScenes();
    testsupport::WaitForJob(rig.loop, rig.tab);
    EXPECT_EQ(seen, (std::vector<Scenes>{{{30, 89}}, {{30, 89}, {150, 209}}}));
    EXPECT_EQ(SavedScenes(file), (Scenes{{30, 89}, {150, 209}}));
    EXPECT_FALSE(rig.tab.LastJob().bDefaultScene);
}

TEST(SceneTab, ExtractionStoppedBeforeItsScanLeavesTheDefaultSceneSaved)
{
    for (int nJob : {engine::kJobSceneExtract, engine::kJobExtractAndOutput}) {
        SCOPED_TRACE(nJob);
        testsupport::TempDir dir;
        SceneRig rig;
        FillScenes(rig.tab.Data(), {{0, 99}, {120, 199}});
        rig.tab.Data().bAutoSave = 1;
        rig.tab.Data().project_file = dir.file("clip.twproj");
        engine::CTarnwickProcess &engine = rig.tab.Process();
        engine.SetJobFunction(nJob, 0, [&](int) { return WaitForStop(engine); });
        if (nJob == engine::kJobSceneExtract) {
            rig.tab.ExtractScenes();
        } else {
            rig.tab.ExtractAndOutput();
        }
        EXPECT_EQ(SavedScenes(dir.file("clip.twproj")), Scenes{}); // emptied for the scan
        rig.tab.StopProcess();
        EXPECT_EQ(SavedScenes(dir.file("clip.twproj")), (Scenes{{0, 89}}));
        EXPECT_TRUE(rig.tab.LastJob().bDefaultScene);
        ASSERT_EQ(rig.view.rows.size(), 1u);
        EXPECT_EQ(rig.view.rows[0].columns[2], "89");
    }
}

TEST(SceneTab, RefusedEditsChangeNeitherTheRowsNorTheFile)
{
    testsupport::TempDir dir;
    SceneRig rig;
    FillScenes(rig.tab.Data(), {{0, 99}, {120, 199}});
    const std::string segment = dir.file("clip_seg_0_99.mp4");
    ASSERT_TRUE(testsupport::WriteFile(segment, "segment"));
    rig.tab.Data().diff_list[0].fileName = segment;
    workspace::SceneEdit split;
    split.kind = workspace::SceneEdit::Kind::Split;
    split.nScene = 1;
    split.nValue = 50;
    workspace::SceneEdit missing;
    missing.kind = workspace::SceneEdit::Kind::Delete;
    missing.nScene = 9;
    EXPECT_EQ(rig.tab.ApplyEdits({split, missing}),
              "scene 9 does not exist: the project has 3 scenes");
    EXPECT_EQ(rig.tab.Data().diff_list.size(), 2u);
    EXPECT_TRUE(std::filesystem::exists(segment));
    EXPECT_EQ(rig.tab.ApplyEdits({split}), "");
    EXPECT_FALSE(std::filesystem::exists(segment));
    ASSERT_EQ(rig.view.rows.size(), 3u);
    EXPECT_EQ(rig.view.rows[1].columns[1], "50");
}
