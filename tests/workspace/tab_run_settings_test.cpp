// Tests of the commands that set what a tab's jobs take at their start (volume, encoder preset,
// hardware path, saving as it goes) and what the scene tab's next open and render take (planned
// names, title, watermark), through the recording view.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "core/tarnwick_data.h"
#include "engine/tarnwick_process.h"
#include "support/recording_view.h"
#include "support/test_support.h"
#include "workspace/tab_merge.h"
#include "workspace/tab_scene.h"

using testsupport::TabRig;
using workspace::CTarnwickTabMerge;
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

struct MergeRig : TabRig
{
    MergeRig()
        : tab(view, loop, host)
    {
        host.SetTabs(nullptr, &tab);
    }
    CTarnwickTabMerge tab;
};

// A project of 300 frames at 30 fps with one scene, saved to project as it changes.
void FillProject(core::CTarnwickData &data, const std::string &project)
{
    data.input_file = "/nowhere/clip.mp4";
    data.output_folder = "/nowhere/clip.mp4_out/";
    data.output_name = "clip_trim.mp4";
    data.viInput.fps = 30;
    data.viInput.frame_num = 300;
    data.viCurrent = data.viInput;
    data.diff_list.emplace_back(0, 299, data.output_folder + "seg.mp4");
    data.list_idx = 0;
    data.project_file = project;
}

core::CTarnwickData Saved(const std::string &path)
{
    core::CTarnwickData saved;
    std::string error;
    EXPECT_TRUE(saved.LoadProjectFile(path, &error)) << error;
    return saved;
}

} // namespace

TEST(SceneTabSettings, TitleTextIsKeptAsGivenShownInItsBoxAndSaved)
{
    testsupport::TempDir dir;
    SceneRig rig;
    FillProject(rig.tab.Data(), dir.file("clip.twproj"));
    rig.tab.SetAutoSave(true);
    rig.tab.NextCaptionTarget(); // the boxes edit the title
    rig.tab.SetTitleText("  Garden {at} dusk\n");
    EXPECT_EQ(rig.tab.Data().capTitle.caption, "  Garden {at} dusk\n");
    EXPECT_EQ(rig.view.fields.captionText, "  Garden {at} dusk\n");
    EXPECT_EQ(Saved(dir.file("clip.twproj")).capTitle.caption, "  Garden {at} dusk\n");
    rig.tab.SetTitleText("");
    EXPECT_EQ(rig.tab.Data().capTitle.caption, "");
    EXPECT_EQ(Saved(dir.file("clip.twproj")).capTitle.caption, "");
}

TEST(SceneTabSettings, RemovedWatermarkLeavesItsTimesAndIsSaved)
{
    testsupport::TempDir dir;
    SceneRig rig;
    FillProject(rig.tab.Data(), dir.file("clip.twproj"));
    rig.tab.SetAutoSave(true);
    const core::CapParam before = rig.tab.Data().capWatermark;
    ASSERT_FALSE(before.caption.empty()); // a new project has the default watermark
    rig.tab.NextCaptionTarget();
    rig.tab.NextCaptionTarget(); // the boxes edit the watermark
    rig.tab.RemoveWatermark();
    EXPECT_EQ(rig.tab.Data().capWatermark.caption, "");
    EXPECT_EQ(rig.tab.Data().capWatermark.capTime_second, before.capTime_second);
    EXPECT_EQ(rig.view.fields.captionText, "");
    EXPECT_EQ(Saved(dir.file("clip.twproj")).capWatermark.caption, "");
}

TEST(SceneTabSettings, AutoSaveDecidesWhetherAChangeIsWritten)
{
    testsupport::TempDir dir;
    SceneRig rig;
    FillProject(rig.tab.Data(), dir.file("clip.twproj"));
    rig.tab.SetAutoSave(false);
    rig.tab.SetTransition(true);
    EXPECT_FALSE(std::filesystem::exists(dir.file("clip.twproj")));
    rig.tab.SetAutoSave(true);
    rig.tab.SetTransition(false);
    EXPECT_EQ(Saved(dir.file("clip.twproj")).transition, 0);
}

TEST(SceneTabSettings, SaveProjectSaysWhenTheFileCannotBeWritten)
{
    testsupport::TempDir dir;
    SceneRig rig;
    FillProject(rig.tab.Data(), dir.file("gone/clip.twproj"));
    EXPECT_FALSE(rig.tab.SaveProject(true));
    EXPECT_NE(rig.tab.LastSaveError(), "");
    EXPECT_TRUE(rig.view.errors.empty()); // the caller tells the user
    rig.tab.Data().project_file = dir.file("clip.twproj");
    EXPECT_TRUE(rig.tab.SaveProject(true));
    EXPECT_EQ(rig.tab.LastSaveError(), "");
    EXPECT_TRUE(std::filesystem::exists(dir.file("clip.twproj")));
    // Nothing to write without saving automatically: no failure either.
    rig.tab.Data().project_file = dir.file("gone/clip.twproj");
    EXPECT_TRUE(rig.tab.SaveProject(false));
}

TEST(SceneTabSettings, PlannedNamesFollowTheVideoAndKeepThePresetOnes)
{
    SceneRig rig;
    rig.tab.Init();
    rig.tab.PlanProjectNames("/videos/clip.mkv", false);
    const core::CTarnwickData &data = rig.tab.Data();
    EXPECT_EQ(data.project_file, "/videos/clip.mkv.twproj");
    EXPECT_EQ(data.output_folder, "/videos/clip.mkv_out/");
    EXPECT_EQ(data.output_name, "clip_trim.mp4");
    EXPECT_EQ(data.input_file, ""); // the open sets it
    EXPECT_EQ(rig.view.fields.outputFolder, "/videos/clip.mkv_out/");

    SceneRig preset;
    preset.tab.Init();
    preset.tab.PresetOutputNames("/films/", "garden.mp4");
    preset.tab.PlanProjectNames("/videos/clip.mkv", true);
    EXPECT_EQ(preset.tab.Data().output_folder, "/films/");
    EXPECT_EQ(preset.tab.Data().output_name, "garden.mp4");
    EXPECT_EQ(preset.tab.Data().pts_file, "/films/clip_pts.csv");
    EXPECT_EQ(preset.tab.Data().input_file, "/videos/clip.mkv");
}

TEST(SceneTabSettings, PresetOutputNamesMoveNothingAndOpenNothing)
{
    testsupport::TempDir dir;
    SceneRig rig;
    rig.tab.Init();
    rig.tab.PresetOutputNames(dir.file("out/"), "film.mp4");
    EXPECT_EQ(rig.tab.Data().output_folder, dir.file("out/"));
    EXPECT_EQ(rig.tab.Data().output_name, "film.mp4");
    EXPECT_EQ(rig.view.fields.outputFolder, dir.file("out/"));
    EXPECT_EQ(rig.view.fields.outputName, "film.mp4");
    EXPECT_FALSE(std::filesystem::exists(dir.file("out")));
    EXPECT_TRUE(rig.view.errors.empty());
    EXPECT_FALSE(rig.tab.IsJobRunning());
}

TEST(TabSettings, EncoderPresetAndHardwarePathOutliveANewProjectOnBothTabs)
{
    SceneRig scene;
    scene.tab.Init();
    scene.tab.SetEncodePreset(2);
    scene.tab.SetUseCuda(true);
    scene.tab.ClearProject(true);
    EXPECT_EQ(scene.tab.Data().nEncodePreset, 2);
    EXPECT_EQ(scene.tab.Data().bUseCuda, 1);
    scene.tab.SetEncodePreset(7);
    EXPECT_EQ(scene.tab.Data().nEncodePreset, 2); // three presets
    scene.tab.SetEncodePreset(0);
    scene.tab.SetUseCuda(false);
    EXPECT_EQ(scene.tab.Data().nEncodePreset, 0);
    EXPECT_EQ(scene.tab.Data().bUseCuda, 0);

    MergeRig merge;
    merge.tab.Init();
    merge.tab.SetEncodePreset(1);
    merge.tab.SetUseCuda(true);
    merge.tab.NewProject();
    EXPECT_EQ(merge.tab.Data().nEncodePreset, 1);
    EXPECT_EQ(merge.tab.Data().bUseCuda, 1);
}

TEST(TabSettings, VolumeIsKeptWithinTheBarAndShown)
{
    SceneRig rig;
    rig.tab.Init();
    rig.tab.SetVolume(20);
    EXPECT_EQ(rig.tab.Data().play_vol, 20);
    rig.tab.ShowFields();
    EXPECT_EQ(rig.view.fields.nVolume, 20);
    rig.tab.SetVolume(250);
    EXPECT_EQ(rig.tab.Data().play_vol, 100);
    rig.tab.SetVolume(-3);
    EXPECT_EQ(rig.tab.Data().play_vol, 0);
    EXPECT_FALSE(rig.tab.IsJobRunning()); // no playback ran, none was started
}

TEST(TabSettings, VolumeChangedDuringPlaybackStartsThePlayerAgainWithIt)
{
    SceneRig rig;
    rig.tab.Init();
    engine::CTarnwickProcess &engine = rig.tab.Process();
    std::mutex mutex;
    std::vector<int> volumes; // the volume each start of the player took
    std::atomic<int> starts{0};
    engine.SetJobFunction(engine::kJobPlayInput, 0, [&](int) {
        {
            std::lock_guard<std::mutex> dataLock(rig.tab.Data().sceneLock.m);
            std::lock_guard<std::mutex> lock(mutex);
            volumes.push_back(rig.tab.Data().play_vol);
        }
        ++starts;
        while (engine.bCancel == 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return engine::kJobStopped;
    });
    rig.tab.StartProcess(engine::kJobPlayInput);
    while (starts < 1) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    rig.tab.SetVolume(30);
    rig.tab.JoinHelpers();
    while (starts < 2) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    EXPECT_TRUE(rig.tab.IsJobRunning());
    rig.tab.StopProcess();
    std::lock_guard<std::mutex> lock(mutex);
    EXPECT_EQ(volumes, (std::vector<int>{5, 30}));
}
