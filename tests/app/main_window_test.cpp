// The main window on a virtual display: its frame, menus, status panes, language switch, size
// rule, the close question and what a second start remembers.
#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>

#include <gtest/gtest.h>

#include "app/host_area.h"
#include "app/main_menu.h"
#include "app/main_window.h"
#include "app/qt_settings_store.h"
#include "app/status_panes.h"
#include "app/tab_button.h"
#include "app/tab_page.h"
#include "app_rig.h"
#include "core/language.h"

namespace {

using apptest::TestApp;

// A settings file of the test's own.
struct StoreRig
{
    testsupport::TempDir dir;
    app::QtSettingsStore store{dir.file("TarnwickMP4.conf")};
};

std::string MenuTexts(const app::MainMenu &menu)
{
    return menu.titles().join(QLatin1Char('|')).toStdString();
}

TEST(MainWindow, StartsWithBothTabButtonsStatusPanesAndMenus)
{
    TestApp();
    StoreRig rig;
    core::SetLanguage(core::kLanguageEnglish);
    app::MainWindow window(rig.store);
    window.startUp(QStringList());
    ASSERT_TRUE(apptest::RunEventsUntil([&] { return window.isVisible(); }));
    // Laid out whole: the host shows without scroll bars.
    ASSERT_TRUE(apptest::RunEventsUntil([&] {
        return window.host()->width() >= window.host()->minimumWidth() &&
               window.host()->height() >= window.host()->minimumHeight();
    }));
    EXPECT_EQ(window.windowTitle().toStdString(), "Untitled");
    EXPECT_EQ(window.host()->button(0)->text().toStdString(), "Scene Edit");
    EXPECT_EQ(window.host()->button(1)->text().toStdString(), "File Merge");
    EXPECT_TRUE(window.host()->button(0)->isCurrent());
    EXPECT_FALSE(window.host()->button(1)->isCurrent());
    EXPECT_EQ(MenuTexts(*window.mainMenu()), "File|Information|Settings|Help");
    EXPECT_EQ(window.panes()->paneLabel(0)->width(), 140);
    EXPECT_EQ(window.panes()->paneLabel(1)->width(), 60);
    EXPECT_EQ(window.panes()->paneLabel(2)->width(), 60);
    EXPECT_EQ(window.panes()->paneLabel(3)->width(), 150);
    const QImage shot = window.grab().toImage();
    ASSERT_TRUE(shot.save(apptest::ScreenshotPath("main_window_empty")));
    EXPECT_EQ(shot.size(), window.size());
    EXPECT_GE(apptest::ColourCount(shot), 8);
}

TEST(MainWindow, TheTabButtonsSwitchThePageAndItsStatusPanes)
{
    TestApp();
    StoreRig rig;
    core::SetLanguage(core::kLanguageEnglish);
    app::MainWindow window(rig.store);
    window.startUp(QStringList());
    window.host()->button(1)->click();
    EXPECT_EQ(window.host()->currentTab(), 1);
    EXPECT_TRUE(window.host()->button(1)->isCurrent());
    EXPECT_FALSE(window.host()->button(0)->isCurrent());
    EXPECT_EQ(window.panes()->pane(1), window.host()->page(1)->paneText(1));
    const QImage shot = window.grab().toImage();
    ASSERT_TRUE(shot.save(apptest::ScreenshotPath("main_window_merge_tab")));
    window.host()->button(0)->click();
    EXPECT_EQ(window.host()->currentTab(), 0);
}

TEST(MainWindow, ALanguageSwitchRelabelsMenusButtonsAndPanes)
{
    TestApp();
    StoreRig rig;
    core::SetLanguage(core::kLanguageEnglish);
    app::MainWindow window(rig.store);
    window.startUp(QStringList());
    window.runCommand(core::kCmdLanguageJapanese);
    EXPECT_TRUE(core::IsJapanese());
    EXPECT_EQ(window.host()->button(0)->text().toStdString(), "シーン編集");
    EXPECT_EQ(window.host()->button(1)->text().toStdString(), "ファイル結合");
    EXPECT_NE(MenuTexts(*window.mainMenu()).find("設定"), std::string::npos);
    EXPECT_EQ(window.windowTitle().toStdString(), "無題");
    EXPECT_TRUE(window.mainMenu()->action(core::kCmdLanguageJapanese)->isChecked());
    EXPECT_FALSE(window.mainMenu()->action(core::kCmdLanguageEnglish)->isChecked());
    const QImage shot = window.grab().toImage();
    ASSERT_TRUE(shot.save(apptest::ScreenshotPath("main_window_japanese")));
    window.runCommand(core::kCmdLanguageEnglish);
    EXPECT_EQ(window.host()->button(0)->text().toStdString(), "Scene Edit");
    EXPECT_EQ(window.windowTitle().toStdString(), "Untitled");
    EXPECT_TRUE(window.mainMenu()->action(core::kCmdLanguageEnglish)->isChecked());
}

TEST(MainWindow, ASecondStartComesUpInTheChosenLanguageWhereTheFirstWindowStood)
{
    TestApp();
    StoreRig rig;
    core::SetLanguage(core::kLanguageEnglish);
    {
        app::MainWindow window(rig.store);
        window.startUp(QStringList());
        window.move(97, 61);
        ASSERT_TRUE(apptest::RunEventsUntil([&] { return window.pos() == QPoint(97, 61); }));
        window.resize(500, 400);
        window.runCommand(core::kCmdLanguageJapanese);
        int nAsked = 0;
        const auto answers = apptest::AnswerQuestions(app::MessageDialog::kYes, &nAsked);
        window.close();
        EXPECT_EQ(nAsked, 1);
        EXPECT_FALSE(window.isVisible());
    }
    core::SetLanguage("");
    app::MainWindow again(rig.store);
    again.startUp(QStringList());
    EXPECT_TRUE(core::IsJapanese());
    EXPECT_EQ(again.host()->button(0)->text().toStdString(), "シーン編集");
    ASSERT_TRUE(apptest::RunEventsUntil([&] { return again.pos() == QPoint(97, 61); }, 10));
    EXPECT_EQ(again.size(), again.designSize());
    core::LoadLanguage(core::kLanguageEnglish);
}

TEST(MainWindow, NoToTheCloseQuestionKeepsTheWindow)
{
    TestApp();
    StoreRig rig;
    app::MainWindow window(rig.store);
    window.startUp(QStringList());
    int nAsked = 0;
    {
        const auto answers = apptest::AnswerQuestions(app::MessageDialog::kNo, &nAsked);
        window.runCommand(57665);
    }
    EXPECT_EQ(nAsked, 1);
    EXPECT_TRUE(window.isVisible());
}

TEST(MainWindow, MaximizeGrowsASmallWindowToItsDesignSizeWhereItStands)
{
    TestApp();
    StoreRig rig;
    app::MainWindow window(rig.store);
    window.startUp(QStringList());
    window.resize(600, 300);
    window.move(20, 30);
    ASSERT_TRUE(apptest::RunEventsUntil([&] { return window.size() == QSize(600, 300); }, 10));
    window.showMaximized();
    ASSERT_TRUE(apptest::RunEventsUntil(
        [&] { return window.size() == window.designSize() && !window.isMaximized(); }, 10));
    EXPECT_EQ(window.pos(), QPoint(20, 30));
    window.resize(window.designSize() + QSize(200, 200));
    EXPECT_EQ(window.size(), window.designSize());
}

} // namespace
