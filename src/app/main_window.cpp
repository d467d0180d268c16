// The main window.
#include "app/main_window.h"

#include <QCloseEvent>
#include <QFileInfo>
#include <QMenuBar>
#include <QScrollArea>
#include <QTimer>

#include "app/about_dialog.h"
#include "app/app_text.h"
#include "app/help_dialog.h"
#include "app/host_area.h"
#include "app/info_dialog.h"
#include "app/main_menu.h"
#include "app/message_dialog.h"
#include "app/qt_settings_store.h"
#include "app/status_panes.h"
#include "app/tab_page.h"
#include "core/app_settings.h"
#include "core/language.h"
#include "core/version.h"
#include "workspace/tab_bench.h"

namespace app {

namespace {

// String id of the close question.
constexpr int kIdsExitQuestion = 3126;
// The information commands, with the kind each reads and its title.
struct InfoCommand
{
    int nCommand;
    int nKind;
    int nTitleId;
};
constexpr InfoCommand kInfoCommands[] = {
    {3096, 2, 3093}, {3103, 3, 3106}, {3104, 4, 3107}, {3105, 5, 3108}};
constexpr int kCmdHelp = 1095;
constexpr int kCmdAbout = 57664;
constexpr int kCmdExit = 57665;
// How often the elapsed-time panes are brought up to date.
constexpr int kElapsedTickMs = 250;

} // namespace

MainWindow::MainWindow(QtSettingsStore &store, QWidget *parent)
    : QMainWindow(parent)
    , m_store(store)
    , m_host(new HostArea)
    , m_panes(new StatusPanes(this))
    , m_menu(new MainMenu(menuBar()))
    , m_scroll(new QScrollArea(this))
    , m_elapsed(new QTimer(this))
{
    setObjectName(QStringLiteral("mainWindow"));
    buildFrame();
    m_bench = std::make_unique<workspace::TabBench>(*m_host->page(0), *m_host->page(1));
    // Messages of the tabs wait on worker threads; one queued call into this thread serves all
    // that wait by then.
    m_bench->SetMessageNotice([this] {
        if (!m_bServePending.exchange(true)) {
            QMetaObject::invokeMethod(this, &MainWindow::serveMessages, Qt::QueuedConnection);
        }
    });
    connectPages();
}

MainWindow::~MainWindow()
{
    m_elapsed->stop();
    m_bench->SetMessageNotice({});
    m_bench.reset();
}

void MainWindow::buildFrame()
{
    setStatusBar(m_panes);
    m_scroll->setWidget(m_host);
    m_scroll->setWidgetResizable(true);
    m_host->setMinimumSize(m_host->sizeHint());
    setCentralWidget(m_scroll);
    connect(m_menu, &MainMenu::command, this, &MainWindow::runCommand);
    connect(m_menu, &MainMenu::fileMenuAboutToShow, this, &MainWindow::updateMenu);
    connect(m_host, &HostArea::tabClicked, this, &MainWindow::switchTab);
    connect(m_elapsed, &QTimer::timeout, this, [this] {
        for (int nTab = 0; nTab < 2; ++nTab) {
            if (tab(nTab).TimerRunning()) {
                tab(nTab).OnTimerTick();
            }
        }
    });
    m_elapsed->start(kElapsedTickMs);
    m_menu->rebuild();
    // The window is as big as its host needs, and never bigger.
    const int frame = 2 * m_scroll->frameWidth();
    m_designSize = QSize(m_host->sizeHint().width() + frame,
                         m_host->sizeHint().height() + frame + menuBar()->sizeHint().height() +
                             m_panes->sizeHint().height());
    setMaximumSize(m_designSize);
    resize(m_designSize);
}

void MainWindow::connectPages()
{
    for (int nTab = 0; nTab < 2; ++nTab) {
        TabPage *page = m_host->page(nTab);
        connect(
            page, &TabPage::paneChanged, this, [this](int nFrom, int nPane, const QString &text) {
                if (nFrom == m_host->currentTab()) {
                    m_panes->setPane(nPane, text);
                }
            });
        connect(page, &TabPage::titleChanged, this, &MainWindow::showTitle);
        connect(page, &TabPage::controlsChanged, this, &MainWindow::updateTabButtons);
    }
}

workspace::CTarnwickTab &MainWindow::tab(int nTab)
{
    if (nTab == 0) {
        return m_bench->Scene();
    }
    return m_bench->Merge();
}

void MainWindow::serveMessages()
{
    m_bServePending = false;
    m_bench->ServeMessages();
    emit messagesServed();
    for (const QPointer<InfoDialog> &info : m_info) {
        if (info) {
            info->checkProbe();
        }
    }
}

void MainWindow::startUp(const QString &project)
{
    const std::vector<uint8_t> stored = m_store.ReadRecord();
    if (!stored.empty()) {
        const core::AppSettingsRecord record = core::DeserializeSettings(stored);
        m_bench->Scene().Data().ApplySettings(record);
        m_bench->Merge().Data().ApplySettings(record);
    }
    std::string error;
    if (!core::LoadLanguage(core::ChooseStartLanguage(core::GetLanguage()), &error)) {
        MessageDialog::ask(this, ToQt(error));
    }
    m_bench->Scene().Init();
    m_bench->Merge().Init();
    relabel();
    placeWindow();
    show();
    std::string path = FromQt(project);
    if (path.empty()) {
        path = m_bench->Scene().Data().project_file;
    }
    if (!path.empty() && QFileInfo::exists(ToQt(path))) {
        m_bench->Scene().Data().project_file.clear();
        if (m_bench->Scene().OpenProject(path, false) == 0) {
            std::vector<std::string> recent = m_store.ReadRecentFiles();
            core::MemoryRecentFileList list(recent);
            list.Add(path);
            m_store.WriteRecentFiles(list.Entries());
            saveSettings();
        }
    }
}

void MainWindow::placeWindow()
{
    const core::WindowRect &rc = m_bench->Scene().Data().rcMainWindow;
    const bool bStored = rc.right > rc.left && rc.bottom > rc.top;
    if (bStored) {
        move(rc.left, rc.top);
    }
}

void MainWindow::saveSettings()
{
    core::AppSettingsRecord record;
    std::vector<std::string> recent = m_store.ReadRecentFiles();
    core::MemoryRecentFileList list(recent);
    m_bench->Scene().Data().CaptureSettings(record, list);
    if (list.WriteCount() > 0) {
        m_store.WriteRecentFiles(list.Entries());
    }
    m_store.WriteRecord(core::SerializeSettings(record));
}

void MainWindow::runCommand(int nCommand)
{
    for (const InfoCommand &info : kInfoCommands) {
        if (info.nCommand == nCommand) {
            openInfo(info.nKind, info.nTitleId);
            return;
        }
    }
    switch (nCommand) {
    case kCmdHelp:
        openHelp();
        return;
    case kCmdAbout:
        openAbout();
        return;
    case kCmdExit:
        close();
        return;
    case core::kCmdLanguageJapanese:
        setLanguage(core::kLanguageJapanese);
        return;
    case core::kCmdLanguageEnglish:
        setLanguage(core::kLanguageEnglish);
        return;
    default:
        return;
    }
}

void MainWindow::setLanguage(const std::string &tag)
{
    std::string error;
    if (!core::LoadLanguage(tag, &error)) {
        MessageDialog::ask(this, ToQt(error));
    }
    // The title of an unsaved project is a text of the table.
    m_host->page(0)->SetTitle(m_bench->Scene().Data().BuildTitle());
    relabel();
    saveSettings();
}

void MainWindow::relabel()
{
    m_menu->rebuild();
    const bool bJapanese = core::IsJapanese();
    m_menu->setChecked(core::kCmdLanguageJapanese, bJapanese);
    m_menu->setChecked(core::kCmdLanguageEnglish, !bJapanese);
    m_host->relabel();
    showPanes(m_host->currentTab());
    showTitle();
    if (m_help) {
        m_help->relabel();
    }
    for (const QPointer<InfoDialog> &info : m_info) {
        if (info) {
            info->relabel();
        }
    }
}

void MainWindow::updateMenu()
{
    m_menu->setRecentFiles(m_store.ReadRecentFiles(), true);
}

void MainWindow::switchTab(int nTab)
{
    if (nTab == m_host->currentTab()) {
        return;
    }
    m_bench->SetActiveTab(nTab);
    m_host->showTab(nTab);
    showPanes(nTab);
    showTitle();
}

void MainWindow::showPanes(int nTab)
{
    for (int nPane = 0; nPane < 4; ++nPane) {
        m_panes->setPane(nPane, m_host->page(nTab)->paneText(nPane));
    }
}

void MainWindow::showTitle()
{
    QString title = m_host->page(0)->title();
    if (title.isEmpty()) {
        title = QString::fromLatin1(core::kProductName);
    }
    setWindowTitle(title);
}

void MainWindow::updateTabButtons()
{
    const bool bFree =
        m_host->page(0)->controls().bTabSwitch && m_host->page(1)->controls().bTabSwitch;
    m_host->setButtonsEnabled(bFree);
}

void MainWindow::openHelp()
{
    if (m_help) {
        return;
    }
    m_help = new HelpDialog(m_host->currentTab(), this);
    const QRect owner = geometry();
    m_help->move(owner.center() - m_help->rect().center());
    m_help->show();
}

void MainWindow::openInfo(int nKind, int nTitleId)
{
    const int nTab = m_host->currentTab();
    if (m_info[nTab]) {
        m_info[nTab]->close();
    }
    const QString file = ToQt(tab(nTab).Data().PlayableInput());
    m_info[nTab] = new InfoDialog(tab(nTab), nKind, nTitleId, file, this);
    m_info[nTab]->start();
}

void MainWindow::openAbout()
{
    AboutDialog about(this);
    about.exec();
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (!m_bClosing) {
        const int answer =
            m_nCloseAnswer != 0 ? m_nCloseAnswer : MessageDialog::ask(this, Text(kIdsExitQuestion));
        if (answer != MessageDialog::kYes) {
            event->ignore();
            return;
        }
        m_bClosing = true;
    }
    const QRect frame = frameGeometry();
    m_bench->Scene().Data().rcMainWindow = {
        frame.left(), frame.top(), frame.left() + width(), frame.top() + height()};
    m_bench->Scene().StopProcess();
    m_bench->Merge().StopProcess();
    saveSettings();
    if (m_help) {
        m_help->close();
    }
    event->accept();
}

void MainWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::WindowStateChange || !(windowState() & Qt::WindowMaximized)) {
        return;
    }
    // Maximize does not cover the screen: the window takes its design size where it stands.
    QTimer::singleShot(0, this, [this] {
        const QPoint at = pos();
        setWindowState(windowState() & ~Qt::WindowMaximized);
        resize(m_designSize);
        move(at);
    });
}

} // namespace app
