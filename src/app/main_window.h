// The main window: menu bar, the host of the two tabs in a scrolling area, and the status bar.
// It is a view: menu commands, tab buttons and closing go to the models; what the models tell
// their views is shown here.
#pragma once

#include <QMainWindow>
#include <QPointer>

#include <atomic>
#include <memory>

#include "app/help_dialog.h"
#include "app/info_dialog.h"

class QScrollArea;
class QTimer;

namespace workspace {
class CTarnwickTab;
class TabBench;
} // namespace workspace

namespace app {

class HostArea;
class MainMenu;
class QtSettingsStore;
class StatusPanes;

class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    // store must outlive the window.
    explicit MainWindow(QtSettingsStore &store, QWidget *parent = nullptr);
    ~MainWindow() override;

    // Start-up: settings, language, both tabs, then the project named (may be empty).
    void startUp(const QString &project);

    workspace::TabBench &bench() { return *m_bench; }
    HostArea *host() const { return m_host; }
    StatusPanes *panes() const { return m_panes; }
    MainMenu *mainMenu() const { return m_menu; }
    QScrollArea *scrollArea() const { return m_scroll; }
    HelpDialog *helpDialog() const { return m_help; }
    InfoDialog *infoDialog(int nTab) const { return m_info[nTab]; }
    // The largest size of the window: the size its host is designed for.
    QSize designSize() const { return m_designSize; }

    // Runs one menu command, as its item does.
    void runCommand(int nCommand);
    // Every text of the window and its open dialogs again in the current language.
    void relabel();
    // The answer the close question gets without asking (tests): 0 asks the user.
    void setCloseAnswer(int nAnswer) { m_nCloseAnswer = nAnswer; }

signals:
    // The tabs' waiting messages have been served.
    void messagesServed();

protected:
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void buildFrame();
    void connectPages();
    void serveMessages();
    void switchTab(int nTab);
    void showPanes(int nTab);
    void showTitle();
    void updateTabButtons();
    void updateMenu();
    void openHelp();
    void openInfo(int nKind, int nTitleId);
    void openAbout();
    void setLanguage(const std::string &tag);
    void placeWindow();
    void saveSettings();
    workspace::CTarnwickTab &tab(int nTab);

    QtSettingsStore &m_store;
    HostArea *m_host;
    StatusPanes *m_panes;
    MainMenu *m_menu;
    QScrollArea *m_scroll;
    QTimer *m_elapsed;
    std::unique_ptr<workspace::TabBench> m_bench;
    std::atomic<bool> m_bServePending{false};
    QPointer<HelpDialog> m_help;
    QPointer<InfoDialog> m_info[2];
    QSize m_designSize;
    int m_nCloseAnswer = 0;
    bool m_bClosing = false;
};

} // namespace app
