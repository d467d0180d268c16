// Tests of what a project keeps when a command is stopped or killed at several moments: the list
// of scenes as it stood (never replaced by the default scene), the settings given, and a next
// render that films those scenes.
#include <csignal>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "core/tarnwick_data.h"
#include "support/cli_signal.h"
#include "support/motion_clips.h"
#include "support/test_support.h"

namespace {

namespace fs = std::filesystem;

using testsupport::RunCli;
using testsupport::RunResult;
using testsupport::TempDir;
using Scene = std::pair<int, int>;

// The three scenes of the clip, and the default scene of three seconds.
const std::set<Scene> kClipScenes = {{51, 100}, {163, 212}, {276, 325}};
const Scene kDefaultScene = {0, 74};
// Frames of a film of the three scenes.
constexpr int kFilmFrames = 150;

// Segment files of the folder that are finished (not written under a partial name).
int FinishedSegments(const std::string &folder)
{
    int count = 0;
    for (const std::string &file : testsupport::FilesMatching(folder, "_seg_")) {
        count += file.find(".partial.") == std::string::npos ? 1 : 0;
    }
    return count;
}

bool AnyPartial(const std::string &folder)
{
    return !testsupport::FilesMatching(folder, ".partial.mp4").empty();
}

// Segment files of the clip's scenes (not of the default scene that an opening may cut), those
// under a partial name or those finished.
int SceneSegments(const std::string &folder, bool bPartial)
{
    int count = 0;
    for (const Scene &scene : kClipScenes) {
        const std::string name =
            "_seg_" + std::to_string(scene.first) + "_" + std::to_string(scene.second) + ".";
        for (const std::string &file : testsupport::FilesMatching(folder, name)) {
            count += (file.find(".partial.") != std::string::npos) == bPartial ? 1 : 0;
        }
    }
    return count;
}

// The scene tab's scan of this clip is running.
bool Scanning(const std::string &clip)
{
    return testsupport::CountProcessesWith("-i " + clip + " -vf scale=40:30") != 0;
}

struct Saved
{
    bool bRead = false;
    std::vector<Scene> scenes;
    int row = -2;
    double threshold = 0;
    double fps = 0;
};

Saved ReadProject(const std::string &project)
{
    Saved saved;
    core::CTarnwickData data;
    saved.bRead = data.LoadProjectFile(project);
    for (const core::SceneEntry &scene : data.diff_list) {
        saved.scenes.emplace_back(scene.framNo_first, scene.framNo_second);
    }
    saved.row = data.list_idx;
    saved.threshold = data.threshold.dValue;
    saved.fps = data.viInput.fps;
    return saved;
}

// A saved project names a row of its list, and project check finds nothing to warn about.
void ExpectSoundProject(const std::string &project, const Saved &saved)
{
    ASSERT_TRUE(saved.bRead);
    ASSERT_FALSE(saved.scenes.empty()) << "a project with no scene holds the default scene";
    EXPECT_GE(saved.row, 0);
    EXPECT_LT(saved.row, static_cast<int>(saved.scenes.size()));
    RunResult check = RunCli({"project", "check", project});
    EXPECT_EQ(check.exitCode, 0) << check.err;
}

// Renders the project and expects a film of the clip's three scenes.
void ExpectFilmOfTheThreeScenes(const std::string &clip)
{
    RunResult render = RunCli({"render", clip + ".twproj"});
    ASSERT_EQ(render.exitCode, 0) << render.err;
    EXPECT_EQ(testsupport::DecodedFrames(clip + "_out/m3_trim.mp4"), kFilmFrames);
}

TEST(CliSegments, KillAtSeveralMomentsKeepsTheListForTheNextRender)
{
    TempDir dir;
    const std::string clip = testsupport::MakeThreeSceneClip(dir);
    const std::string project = clip + ".twproj";
    const std::string folder = clip + "_out";
    ASSERT_EQ(RunCli({"extract", clip}).exitCode, 0);
    const std::vector<std::pair<const char *, std::function<bool()>>> moments = {
        {"first partial segment", [&] { return AnyPartial(folder); }},
        {"one segment cut", [&] { return FinishedSegments(folder) >= 1; }},
        {"two segments cut", [&] { return FinishedSegments(folder) >= 2; }},
    };
    for (const auto &[name, ready] : moments) {
        SCOPED_TRACE(name);
        for (const std::string &segment : testsupport::FilesMatching(folder, "_seg_")) {
            fs::remove(segment);
        }
        testsupport::SignalledRun run =
            testsupport::SignalCliWhenReady({"segments", project}, SIGKILL, ready);
        const Saved saved = ReadProject(project);
        ExpectSoundProject(project, saved);
        EXPECT_EQ(std::set<Scene>(saved.scenes.begin(), saved.scenes.end()), kClipScenes);
        EXPECT_EQ(saved.scenes.size(), 3u);
    }
    ExpectFilmOfTheThreeScenes(clip);
}

TEST(CliRun, KillAfterTheScanAndItsCutsKeepsTheScenesAndTheSettingsGiven)
{
    TempDir dir;
    const std::string clip = testsupport::MakeThreeSceneClip(dir);
    const std::string project = clip + ".twproj";
    testsupport::SignalledRun run =
        testsupport::SignalCliWhenReady({"run", clip, "--threshold", "50"}, SIGKILL, [&] {
            return SceneSegments(clip + "_out", false) >= 3;
        });
    const Saved saved = ReadProject(project);
    ExpectSoundProject(project, saved);
    EXPECT_EQ(std::set<Scene>(saved.scenes.begin(), saved.scenes.end()), kClipScenes);
    EXPECT_DOUBLE_EQ(saved.threshold, 50.0);
    EXPECT_DOUBLE_EQ(saved.fps, 25.0);
    ExpectFilmOfTheThreeScenes(clip);
}

TEST(CliRun, KillsDuringTheScanAndCutsKeepEveryFinishedSceneAndTheSettingsGiven)
{
    TempDir dir;
    const std::string clip = testsupport::MakeThreeSceneClip(dir);
    const std::string project = clip + ".twproj";
    const std::string folder = clip + "_out";
    const std::vector<std::pair<const char *, std::function<bool()>>> moments = {
        {"scan running", [&] { return Scanning(clip); }},
        {"first scene being cut", [&] { return SceneSegments(folder, true) >= 1; }},
        {"one scene cut", [&] { return SceneSegments(folder, false) >= 1; }},
        {"two scenes cut", [&] { return SceneSegments(folder, false) >= 2; }},
    };
    // Killed while opening, the project is what an opening saves; from the scan on it keeps
    // what the command was given.
    for (const auto &[name, ready] : moments) {
        SCOPED_TRACE(name);
        fs::remove_all(folder);
        fs::remove(project);
        testsupport::SignalCliWhenReady({"run", clip, "--threshold", "50"}, SIGKILL, ready);
        const Saved saved = ReadProject(project);
        ASSERT_TRUE(saved.bRead);
        EXPECT_DOUBLE_EQ(saved.threshold, 50.0);
        EXPECT_DOUBLE_EQ(saved.fps, 25.0);
        for (const Scene &scene : saved.scenes) {
            EXPECT_EQ(kClipScenes.count(scene), 1u) << scene.first << "-" << scene.second;
        }
        // A segment on disk was cut for a scene that the project holds.
        for (const std::string &file : testsupport::FilesMatching(folder, "_seg_")) {
            if (file.find(".partial.") != std::string::npos) {
                continue;
            }
            bool named = false;
            for (const Scene &scene : saved.scenes) {
                named |= file.find("_seg_" + std::to_string(scene.first) + "_" +
                                   std::to_string(scene.second) + ".mp4") != std::string::npos;
            }
            EXPECT_TRUE(named) << file << " is on disk but its scene was not saved";
        }
    }
}

// Stops of run and extract at several moments: whatever the moment, the project keeps the
// settings given and at least one scene: the three of the clip once the scan has ended, the
// default scene when none was found.
TEST(CliRunAndExtract, StopsAtSeveralMomentsKeepTheSettingsGivenAndAScene)
{
    TempDir dir;
    const std::string clip = testsupport::MakeThreeSceneClip(dir);
    const std::string project = clip + ".twproj";
    const std::string folder = clip + "_out";
    struct Moment
    {
        const char *command;
        const char *name;
        std::function<bool()> ready;
        bool bScanEnded;
    };
    const std::vector<Moment> moments = {
        {"run", "opening", [&] { return fs::exists(project); }, false},
        {"extract", "opening", [&] { return fs::exists(project); }, false},
        {"run", "scan running", [&] { return Scanning(clip); }, false},
        {"run", "one scene cut", [&] { return SceneSegments(folder, false) >= 1; }, false},
        {"run", "all scenes cut", [&] { return SceneSegments(folder, false) >= 3; }, true},
        {"extract", "one scene cut", [&] { return SceneSegments(folder, false) >= 1; }, false},
    };
    for (const Moment &moment : moments) {
        SCOPED_TRACE(std::string(moment.command) + ", " + moment.name);
        fs::remove_all(folder);
        fs::remove(project);
        testsupport::SignalledRun run = testsupport::SignalCliWhenReady(
            {moment.command, clip, "--threshold", "50"}, SIGINT, moment.ready);
        EXPECT_TRUE(run.exitCode == 130 || run.exitCode == 0) << run.err;
        const Saved saved = ReadProject(project);
        ExpectSoundProject(project, saved);
        EXPECT_DOUBLE_EQ(saved.threshold, 50.0);
        EXPECT_DOUBLE_EQ(saved.fps, 25.0);
        const std::set<Scene> scenes(saved.scenes.begin(), saved.scenes.end());
        if (moment.bScanEnded || run.exitCode == 0) {
            EXPECT_EQ(scenes, kClipScenes);
        } else if (scenes.count(kDefaultScene) != 0) {
            EXPECT_EQ(saved.scenes.size(), 1u);
        } else {
            for (const Scene &scene : saved.scenes) {
                EXPECT_EQ(kClipScenes.count(scene), 1u) << scene.first << "-" << scene.second;
            }
        }
    }
}

} // namespace
