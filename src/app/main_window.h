// The main window: menu bar, the host of the two tabs in a scrolling area, and the status bar.
// It is the view of the host model (workspace::HostModel, which owns both tabs): menu commands,
// tab buttons and closing go to the model; what the model tells its view is shown here.
#pragma once

#include <QMainWindow>
#include <QPointer>
#include <QStringList>

#include <atomic>
#include <memory>

#include "app/about_dialog.h"
#include "app/help_dialog.h"
#include "app/info_dialog.h"
#include "workspace/host_model.h"

class QScrollArea;
class QTimer;

namespace app {

class HostArea;
class MainMenu;
class QtSettingsStore;
class StatusPanes;

class MainWindow : public QMainWindow, public workspace::HostView
{
    Q_OBJECT
public:
    // store must outlive the window. options go to the host model (the system's language).
    explicit MainWindow(QtSettingsStore &store,
                        workspace::HostOptions options = {},
                        QWidget *parent = nullptr);
    ~MainWindow() override;

    // Start-up: the window placed and shown, then the host model's start with the program's
    // arguments (without the program's name): settings, language, both tabs, the project or
    // video named.
    void startUp(const QStringList &arguments);
    // The same with one file named, or none.
    void startUp(const QString &file);

    workspace::HostModel &model() { return *m_model; }
    workspace::TabBench &bench() { return m_model->Bench(); }
    HostArea *host() const { return m_host; }
    StatusPanes *panes() const { return m_panes; }
    MainMenu *mainMenu() const { return m_menu; }
    QScrollArea *scrollArea() const { return m_scroll; }
    HelpDialog *helpDialog() const { return m_help; }
    InfoDialog *infoDialog(int nTab) const { return m_info[nTab]; }
    AboutDialog *aboutDialog() const { return m_about; }
    // The largest size of the window: the size its host is designed for.
    QSize designSize() const { return m_designSize; }

    // Runs one menu command, as its item does.
    void runCommand(int nCommand);
    // The chooser the information dialogs ask with instead of the file dialog (tests).
    void setInformationChooser(InfoDialog::Chooser chooser) { m_infoChooser = std::move(chooser); }

    // workspace::HostView
    bool AskYesNo(int nMessageId) override;
    void ShowMessage(const std::string &text) override;
    void Relabel(const workspace::HostTexts &texts) override;
    void SetMenuStates(const workspace::MenuStates &states) override;
    void RecentFilesChanged(const std::vector<workspace::RecentMenuEntry> &entries) override;
    void ShowTab(int nTab) override;
    void ShowInformation(const workspace::InformationRequest &request) override;
    void ShowHelp(const workspace::HelpContent &help) override;
    void ShowAbout(const workspace::AboutContent &about) override;
    void CloseWindow() override;

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
    void refreshMenuStates();
    void showPanes(int nTab);
    void showTitle();
    void placeWindow();
    void keepWindowRect();

    HostArea *m_host;
    StatusPanes *m_panes;
    MainMenu *m_menu;
    QScrollArea *m_scroll;
    QTimer *m_elapsed;
    std::unique_ptr<workspace::HostModel> m_model;
    std::atomic<bool> m_bServePending{false};
    QPointer<HelpDialog> m_help;
    QPointer<InfoDialog> m_info[2];
    QPointer<AboutDialog> m_about;
    InfoDialog::Chooser m_infoChooser;
    QSize m_designSize;
    bool m_bInCloseEvent = false;
    bool m_bClosing = false;
};

} // namespace app
