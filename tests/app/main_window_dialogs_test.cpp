// The small dialogs opened from the main window's menu: the help viewer and the about box.
#include <QAction>
#include <QFile>
#include <QTextStream>

#include <gtest/gtest.h>

#include "app/about_dialog.h"
#include "app/help_dialog.h"
#include "app/main_menu.h"
#include "app/main_window.h"
#include "app/qt_settings_store.h"
#include "app_rig.h"
#include "core/language.h"
#include "core/version.h"
#include "workspace/menu_states.h"

namespace {

using apptest::TestApp;

struct StoreRig
{
    testsupport::TempDir dir;
    app::QtSettingsStore store{dir.file("TarnwickMP4.conf")};
};

// The first line of a manual as the build placed it beside the programs.
QString ManualFirstLine(const char *name)
{
    QFile file(QStringLiteral(TW_BINARY_DIR "/bin/doc/") + QLatin1String(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text)) << name;
    QTextStream in(&file);
    return in.readLine();
}

int OpenHelpDialogs()
{
    int nOpen = 0;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (qobject_cast<app::HelpDialog *>(widget) != nullptr && widget->isVisible()) {
            ++nOpen;
        }
    }
    return nOpen;
}

TEST(MainWindowDialogs, TheHelpMenuOpensTheManualOfTheTabOnce)
{
    TestApp();
    StoreRig rig;
    core::SetLanguage(core::kLanguageEnglish);
    app::MainWindow window(rig.store);
    window.startUp(QStringList());
    QAction *help = window.mainMenu()->action(workspace::kCmdHelp);
    ASSERT_NE(help, nullptr);
    EXPECT_TRUE(help->isEnabled());
    help->trigger();
    ASSERT_NE(window.helpDialog(), nullptr);
    app::HelpDialog *dialog = window.helpDialog();
    ASSERT_TRUE(apptest::RunEventsUntil([&] { return dialog->isVisible(); }, 10));
    EXPECT_EQ(dialog->windowTitle().toStdString(), "TarnwickMP4 Help");
    const QString firstLine = ManualFirstLine("manual_en.txt");
    ASSERT_FALSE(firstLine.isEmpty());
    EXPECT_TRUE(dialog->text().startsWith(firstLine)) << dialog->text().left(200).toStdString();
    // A second choice of the item opens no second viewer.
    help->trigger();
    EXPECT_EQ(window.helpDialog(), dialog);
    EXPECT_EQ(OpenHelpDialogs(), 1);
    const QImage shot = dialog->grab().toImage();
    ASSERT_TRUE(shot.save(apptest::ScreenshotPath("help_dialog")));
    EXPECT_EQ(shot.size(), dialog->size());
    EXPECT_EQ(shot.size(), QSize(640, 520));
    EXPECT_GE(apptest::ColourCount(shot), 8);
    // A change of language shows the Japanese manual in the open viewer.
    window.runCommand(workspace::kCmdJapanese);
    EXPECT_TRUE(dialog->text().startsWith(ManualFirstLine("manual_ja.txt")));
    window.runCommand(workspace::kCmdEnglish);
    // Once closed, the item opens it again.
    dialog->close();
    ASSERT_TRUE(apptest::RunEventsUntil([&] { return window.helpDialog() == nullptr; }, 10));
    help->trigger();
    EXPECT_NE(window.helpDialog(), nullptr);
    EXPECT_EQ(OpenHelpDialogs(), 1);
}

TEST(MainWindowDialogs, TheAboutBoxShowsTheVersion)
{
    TestApp();
    StoreRig rig;
    core::SetLanguage(core::kLanguageEnglish);
    app::MainWindow window(rig.store);
    window.startUp(QStringList());
    QString version;
    QString title;
    QImage shot;
    bool bSeen = false;
    // The box is modal: it is looked at and closed from the loop it runs.
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, [&] {
        app::AboutDialog *about = window.aboutDialog();
        if (about == nullptr || !about->isVisible() || bSeen) {
            return;
        }
        bSeen = true;
        version = about->versionText();
        title = about->windowTitle();
        shot = about->grab().toImage();
        about->accept();
    });
    look.start(20);
    window.mainMenu()->action(workspace::kCmdAbout)->trigger();
    look.stop();
    ASSERT_TRUE(bSeen);
    EXPECT_EQ(version.toStdString(), std::string("TarnwickMP4 Version ") + core::kProductVersion);
    EXPECT_EQ(title.toStdString(), "About TarnwickMP4");
    ASSERT_TRUE(shot.save(apptest::ScreenshotPath("about_dialog")));
    EXPECT_GE(shot.width(), 340);
    EXPECT_GE(shot.height(), 60);
    EXPECT_LE(shot.height(), 400);
    EXPECT_GE(apptest::ColourCount(shot), 8);
    EXPECT_EQ(window.aboutDialog(), nullptr);
}

} // namespace
