// The main window with real jobs: a project opened at start, a stop that a blocking job
// message meets, and closing the window during an extraction.
#include <QAction>
#include <QMenu>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "app/host_area.h"
#include "app/main_menu.h"
#include "app/main_window.h"
#include "app/qt_settings_store.h"
#include "app/status_panes.h"
#include "app/tab_button.h"
#include "app/tab_page.h"
#include "app_rig.h"
#include "core/language.h"
#include "support/motion_clips.h"
#include "workspace/tab_bench.h"

namespace {

using apptest::TestApp;

struct StoreRig
{
    testsupport::TempDir dir;
    app::QtSettingsStore store{dir.file("TarnwickMP4.conf")};
};

// A project made by the command line from the motion clip: its path.
std::string MakeProject(const testsupport::TempDir &dir)
{
    const std::string clip = testsupport::MakeMotionClip(dir);
    const testsupport::RunResult run = testsupport::RunCli({"extract", clip, "--json"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    return nlohmann::json::parse(run.out).value("project", std::string());
}

// The scenes of a saved project as the command line lists them.
nlohmann::json SavedScenes(const std::string &project)
{
    const testsupport::RunResult run = testsupport::RunCli({"scenes", project, "--json"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    return nlohmann::json::parse(run.out)["scenes"];
}

// Starts extraction of a long clip on the scene tab and serves the window's loop until the
// scan has cut its first scene.
void StartLongExtraction(app::MainWindow &window, const std::string &clip)
{
    workspace::CTarnwickTabScene &scene = window.bench().Scene();
    scene.Data().bAutoSave = 1;
    ASSERT_EQ(scene.OpenVideo(clip), 0);
    scene.ExtractScenes();
    ASSERT_TRUE(scene.IsJobRunning());
    // The scan's second scene (frames 250 on; the first may be the default scene's background
    // cut) written under its final name.
    const std::string folder = scene.Data().output_folder;
    ASSERT_TRUE(apptest::RunEventsUntil([&] {
        for (const std::string &file : testsupport::FilesMatching(folder, "_seg_250_")) {
            if (file.find(".partial.") == std::string::npos) {
                return true;
            }
        }
        return false;
    }));
    ASSERT_TRUE(scene.IsJobRunning());
}

TEST(MainWindowJobs, StartsWithTheProjectNamedAndShowsIt)
{
    TestApp();
    StoreRig rig;
    testsupport::TempDir dir;
    const std::string project = MakeProject(dir);
    ASSERT_FALSE(project.empty());
    core::SetLanguage(core::kLanguageEnglish);
    app::MainWindow window(rig.store);
    window.startUp(QString::fromStdString(project));
    ASSERT_TRUE(apptest::RunEventsUntil([&] {
        return window.isVisible() && window.host()->width() >= window.host()->minimumWidth() &&
               window.host()->height() >= window.host()->minimumHeight();
    }));
    EXPECT_NE(window.windowTitle().toStdString().find("motion"), std::string::npos)
        << window.windowTitle().toStdString();
    EXPECT_EQ(window.bench().Scene().Data().project_file, project);
    EXPECT_EQ(window.host()->button(0)->text().toStdString(), "Scene Edit");
    EXPECT_EQ(window.host()->button(1)->text().toStdString(), "File Merge");
    EXPECT_EQ(window.mainMenu()->titles().join(QLatin1Char('|')).toStdString(),
              "File|Information|Settings|Help");
    EXPECT_FALSE(window.panes()->pane(workspace::kPaneStage).isEmpty());
    EXPECT_FALSE(window.panes()->pane(workspace::kPaneState).isEmpty());
    // The project opened is first on the recent list of the file menu.
    emit window.mainMenu()->aboutToShow();
    QStringList recent;
    for (QAction *action : window.mainMenu()->fileMenu()->actions()) {
        if (!action->data().toString().isEmpty()) {
            recent << action->data().toString();
        }
    }
    ASSERT_EQ(recent.size(), 1);
    EXPECT_EQ(recent.front().toStdString(), project);
    const QImage shot = window.grab().toImage();
    ASSERT_TRUE(shot.save(apptest::ScreenshotPath("main_window_project")));
    EXPECT_EQ(shot.size(), window.size());
    EXPECT_GE(apptest::ColourCount(shot), 8);
    // The status bar shows the state in words, not an empty strip.
    const QImage bar = window.panes()->grab().toImage();
    EXPECT_GE(apptest::ColourCount(bar), 4);
}

TEST(MainWindowJobs, AStopWhileTheJobSendsABlockingMessageDoesNotDeadlock)
{
    TestApp();
    StoreRig rig;
    testsupport::TempDir dir;
    const std::string clip = testsupport::MakeLongClip(dir);
    app::MainWindow window(rig.store);
    window.startUp(QStringList());
    StartLongExtraction(window, clip);
    workspace::CTarnwickTabScene &scene = window.bench().Scene();
    // The stop is pressed from the window's own loop, while the scan keeps sending the stage
    // and state texts, each of which waits for this thread.
    bool bStopped = false;
    QTimer::singleShot(0, &window, [&] {
        scene.StopProcess();
        bStopped = true;
    });
    ASSERT_TRUE(apptest::RunEventsUntil([&] { return bStopped; }, 60));
    EXPECT_FALSE(scene.IsJobRunning());
    EXPECT_EQ(scene.LastJob().nResult, -2);
    EXPECT_EQ(testsupport::CountProcessesWith(clip), 0);
}

TEST(MainWindowJobs, ClosingDuringAnExtractionAsksStopsAndKeepsTheFinishedScenes)
{
    TestApp();
    StoreRig rig;
    testsupport::TempDir dir;
    const std::string clip = testsupport::MakeLongClip(dir);
    app::MainWindow window(rig.store);
    window.startUp(QStringList());
    StartLongExtraction(window, clip);
    workspace::CTarnwickTabScene &scene = window.bench().Scene();
    int nAsked = 0;
    {
        const auto answers = apptest::AnswerQuestions(app::MessageDialog::kNo, &nAsked);
        window.close();
    }
    EXPECT_EQ(nAsked, 1);
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(scene.IsJobRunning());
    {
        const auto answers = apptest::AnswerQuestions(app::MessageDialog::kYes, &nAsked);
        window.close();
    }
    EXPECT_EQ(nAsked, 2);
    EXPECT_FALSE(window.isVisible());
    EXPECT_FALSE(scene.IsJobRunning());
    // The still of the last scene found may still be drawn on the preview thread for a moment
    // after the stop; then no tool is left.
    apptest::RunEventsUntil([&] { return testsupport::CountProcessesWith(clip) == 0; }, 10);
    EXPECT_EQ(testsupport::CountProcessesWith(clip), 0);
    // The scenes found before the stop are in the saved project, and every segment left is a
    // whole one of those scenes (a cut or check the stop interrupted leaves none).
    const nlohmann::json scenes = SavedScenes(scene.Data().project_file);
    EXPECT_GE(scenes.size(), 2u);
    std::set<std::string> listed;
    for (const nlohmann::json &saved : scenes) {
        listed.insert(saved.value("segment", std::string()));
    }
    for (const std::string &file :
         testsupport::FilesMatching(scene.Data().output_folder, "_seg_")) {
        EXPECT_EQ(file.find(".partial."), std::string::npos) << file;
        EXPECT_EQ(listed.count(file), 1u) << file;
    }
}

} // namespace
