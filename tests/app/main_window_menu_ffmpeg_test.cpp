// Menu commands of the main window with real files: the recent project list and the
// information dialog.
#include <QAction>
#include <QMessageBox>

#include <filesystem>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "app/info_dialog.h"
#include "app/main_menu.h"
#include "app/main_window.h"
#include "app/qt_settings_store.h"
#include "app_rig.h"
#include "core/language.h"
#include "support/motion_clips.h"
#include "workspace/menu_states.h"

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

// The recent entries of the file menu, as paths, after the menu was opened.
std::vector<std::string> RecentPaths(app::MainWindow &window)
{
    emit window.mainMenu()->aboutToShow();
    std::vector<std::string> paths;
    for (int i = 0; QAction *action = window.mainMenu()->recentAction(i); ++i) {
        paths.push_back(action->data().toString().toStdString());
    }
    return paths;
}

// Counts every message box that shows from now on and closes it, until deleted.
std::unique_ptr<QTimer> CountMessageBoxes(int *pShown)
{
    auto timer = std::make_unique<QTimer>();
    QObject::connect(timer.get(), &QTimer::timeout, [pShown] {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if ((qobject_cast<QMessageBox *>(widget) != nullptr ||
                 qobject_cast<app::MessageDialog *>(widget) != nullptr) &&
                widget->isVisible()) {
                ++*pShown;
                widget->close();
            }
        }
    });
    timer->start(20);
    return timer;
}

TEST(MainWindowMenu, ARecentEntryOpensItsProjectAndAGoneOneLeavesWithoutAMessage)
{
    TestApp();
    StoreRig rig;
    testsupport::TempDir dir;
    const std::string project = MakeProject(dir);
    ASSERT_FALSE(project.empty());
    // A project of an earlier session that has been deleted since.
    const std::string gone = dir.file("gone.twproj");
    rig.store.WriteText("Recent Files", "File1", gone);
    core::SetLanguage(core::kLanguageEnglish);
    app::MainWindow window(rig.store);
    window.startUp(QStringList());
    EXPECT_EQ(RecentPaths(window), std::vector<std::string>{gone});
    // A successful open puts the project first.
    ASSERT_EQ(window.model().OpenProjectFile(project), workspace::HostResult::Done);
    ASSERT_EQ(RecentPaths(window), (std::vector<std::string>{project, gone}));
    const QString shownText = window.mainMenu()->recentAction(0)->text();
    EXPECT_TRUE(shownText.startsWith(QStringLiteral("&1 "))) << shownText.toStdString();
    // A new project, then the entry opens the project again.
    window.runCommand(workspace::kCmdNewProject);
    ASSERT_TRUE(window.bench().Scene().Data().project_file.empty());
    EXPECT_EQ(window.windowTitle().toStdString(), "Untitled");
    int nMessages = 0;
    {
        const auto boxes = CountMessageBoxes(&nMessages);
        window.mainMenu()->recentAction(0)->trigger();
        EXPECT_EQ(window.bench().Scene().Data().project_file, project);
        EXPECT_NE(window.windowTitle().toStdString().find("motion"), std::string::npos)
            << window.windowTitle().toStdString();
        // The entry of the deleted project goes when chosen, without a word.
        QAction *goneEntry = window.mainMenu()->recentAction(1);
        ASSERT_NE(goneEntry, nullptr);
        EXPECT_EQ(goneEntry->data().toString().toStdString(), gone);
        goneEntry->trigger();
        QApplication::processEvents();
    }
    EXPECT_EQ(nMessages, 0);
    EXPECT_EQ(RecentPaths(window), std::vector<std::string>{project});
    EXPECT_EQ(window.bench().Scene().Data().project_file, project);
    const QImage opened = window.grab().toImage();
    ASSERT_TRUE(opened.save(apptest::ScreenshotPath("main_window_recent_opened")));
    EXPECT_EQ(opened.size(), window.size());
    EXPECT_GE(apptest::ColourCount(opened), 8);
    // The list is kept in the store.
    EXPECT_EQ(rig.store.ReadText("Recent Files", "File1").value_or(""), project);
    EXPECT_FALSE(rig.store.ReadText("Recent Files", "File2").has_value());
}

TEST(MainWindowMenu, StreamInformationShowsFfprobesTextOfTheChosenFile)
{
    TestApp();
    StoreRig rig;
    testsupport::TempDir dir;
    const std::string clip = testsupport::MakeMotionClip(dir);
    core::SetLanguage(core::kLanguageEnglish);
    app::MainWindow window(rig.store);
    window.startUp(QStringList());
    QString askedTitle;
    window.setInformationChooser([&](const QString &title, const QString &, const QString &) {
        askedTitle = title;
        return QString::fromStdString(clip);
    });
    QAction *item = window.mainMenu()->action(workspace::kCmdStreamInfo);
    ASSERT_NE(item, nullptr);
    EXPECT_TRUE(item->isEnabled());
    item->trigger();
    app::InfoDialog *info = window.infoDialog(0);
    ASSERT_NE(info, nullptr);
    ASSERT_TRUE(apptest::RunEventsUntil([&] { return info->isVisible(); }, 60));
    EXPECT_EQ(askedTitle.toStdString(), "Choose a file for \"" + core::LoadStringById(3093) + "\"");
    EXPECT_EQ(info->windowTitle().toStdString(), core::LoadStringById(3093));
    EXPECT_EQ(info->file().toStdString(), clip);
    // ffprobe's JSON of the streams: the clip's video stream with its size.
    const nlohmann::json parsed = nlohmann::json::parse(info->text().toStdString());
    ASSERT_TRUE(parsed.contains("streams")) << info->text().left(300).toStdString();
    ASSERT_FALSE(parsed["streams"].empty());
    EXPECT_EQ(parsed["streams"][0].value("codec_type", std::string()), "video");
    EXPECT_GT(parsed["streams"][0].value("width", 0), 0);
    const QImage shot = info->grab().toImage();
    ASSERT_TRUE(shot.save(apptest::ScreenshotPath("info_dialog_streams")));
    EXPECT_EQ(shot.size(), QSize(640, 520));
    EXPECT_GE(apptest::ColourCount(shot), 8);
    // A cancelled choice opens nothing.
    info->close();
    ASSERT_TRUE(apptest::RunEventsUntil([&] { return window.infoDialog(0) == nullptr; }, 10));
    window.setInformationChooser(
        [](const QString &, const QString &, const QString &) { return QString(); });
    item->trigger();
    EXPECT_TRUE(window.infoDialog(0) == nullptr || !window.infoDialog(0)->isVisible());
    // Outside a running event loop (as here) a deferred deletion waits for a call like this.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(window.infoDialog(0), nullptr);
}

} // namespace
