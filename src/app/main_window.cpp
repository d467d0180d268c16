// The main window.
#include "app/main_window.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QMenuBar>
#include <QMessageBox>
#include <QScrollArea>
#include <QTimer>

#include "app/about_dialog.h"
#include "app/app_text.h"
#include "app/host_area.h"
#include "app/main_menu.h"
#include "app/message_dialog.h"
#include "app/qt_settings_store.h"
#include "app/status_panes.h"
#include "app/tab_page.h"
#include "core/version.h"

namespace app {

namespace {

// How often the elapsed-time panes are brought up to date.
constexpr int kElapsedTickMs = 250;

} // namespace

MainWindow::MainWindow(QtSettingsStore &store, workspace::HostOptions options, QWidget *parent)
    : QMainWindow(parent)
    , m_host(new HostArea)
    , m_panes(new StatusPanes(this))
    , m_menu(new MainMenu(menuBar()))
    , m_scroll(new QScrollArea(this))
    , m_elapsed(new QTimer(this))
{
    setObjectName(QStringLiteral("mainWindow"));
    buildFrame();
    m_model = std::make_unique<workspace::HostModel>(
        *this, *m_host->page(0), *m_host->page(1), store, std::move(options));
    // Messages of the tabs wait on worker threads; one queued call into this thread serves all
    // that wait by then.
    bench().SetMessageNotice([this] {
        if (!m_bServePending.exchange(true)) {
            QMetaObject::invokeMethod(this, &MainWindow::serveMessages, Qt::QueuedConnection);
        }
    });
    // While the model waits for a job (an open that converts, a stop), the window's events
    // are served, so that it repaints and its commands reach the model.
    m_model->SetEventPump([] { QCoreApplication::processEvents(QEventLoop::AllEvents); });
    connectPages();
}

MainWindow::~MainWindow()
{
    m_elapsed->stop();
    // The dialogs go before the model they report to.
    delete m_help.data();
    for (QPointer<InfoDialog> &info : m_info) {
        delete info.data();
    }
    m_model->SetEventPump({});
    bench().SetMessageNotice({});
    m_model.reset();
}

void MainWindow::buildFrame()
{
    setStatusBar(m_panes);
    m_scroll->setWidget(m_host);
    m_scroll->setWidgetResizable(true);
    m_host->setMinimumSize(m_host->sizeHint());
    setCentralWidget(m_scroll);
    connect(m_menu, &MainMenu::command, this, &MainWindow::runCommand);
    connect(m_menu, &MainMenu::aboutToShow, this, &MainWindow::refreshMenuStates);
    connect(m_host, &HostArea::tabClicked, this, [this](int nTab) { m_model->SwitchTab(nTab); });
    connect(m_elapsed, &QTimer::timeout, this, [this] {
        for (int nTab = 0; nTab < 2; ++nTab) {
            if (m_model->Tab(nTab).TimerRunning()) {
                m_model->Tab(nTab).OnTimerTick();
            }
        }
    });
    m_elapsed->start(kElapsedTickMs);
    // The window is as big as its host needs, and never bigger; the bar's height is that of
    // any one line of menu titles.
    menuBar()->addMenu(QStringLiteral("M"));
    const int frame = 2 * m_scroll->frameWidth();
    m_designSize = QSize(m_host->sizeHint().width() + frame,
                         m_host->sizeHint().height() + frame + menuBar()->sizeHint().height() +
                             m_panes->sizeHint().height());
    menuBar()->clear();
    setMaximumSize(m_designSize);
    resize(m_designSize);
}

void MainWindow::connectPages()
{
    for (int nTab = 0; nTab < 2; ++nTab) {
        TabPage *page = m_host->page(nTab);
        connect(
            page, &TabPage::paneChanged, this, [this](int nFrom, int nPane, const QString &text) {
                if (nFrom == m_model->CurrentTab()) {
                    m_panes->setPane(nPane, text);
                }
            });
        connect(page, &TabPage::titleChanged, this, &MainWindow::showTitle);
        // A job that starts or ends changes what the menu and the tab buttons allow.
        connect(page, &TabPage::controlsChanged, this, &MainWindow::refreshMenuStates);
    }
}

void MainWindow::serveMessages()
{
    m_bServePending = false;
    bench().ServeMessages();
    emit messagesServed();
}

void MainWindow::startUp(const QStringList &arguments)
{
    std::vector<std::string> args;
    for (const QString &argument : arguments) {
        args.push_back(FromQt(argument));
    }
    // The window shows itself at the first Relabel, before a project is opened.
    m_model->Start(workspace::ParseCommandLine(args));
    if (!isVisible() && !m_bClosing) {
        placeWindow();
        show();
    }
}

void MainWindow::startUp(const QString &file)
{
    startUp(file.isEmpty() ? QStringList() : QStringList{file});
}

void MainWindow::placeWindow()
{
    const core::WindowRect rc =
        m_model->InitialWindowRect({x(), y(), x() + width(), y() + height()});
    move(rc.left, rc.top);
}

void MainWindow::keepWindowRect()
{
    const QRect frame = frameGeometry();
    m_model->SetMainWindowRect(
        {frame.left(), frame.top(), frame.left() + width(), frame.top() + height()});
}

void MainWindow::runCommand(int nCommand)
{
    m_model->Command(nCommand);
}

void MainWindow::refreshMenuStates()
{
    if (m_model && !m_model->IsShutDown()) {
        SetMenuStates(m_model->Menu());
    }
}

bool MainWindow::AskYesNo(int nMessageId)
{
    return MessageDialog::ask(this, Text(nMessageId)) == MessageDialog::kYes;
}

void MainWindow::ShowMessage(const std::string &text)
{
    QMessageBox::warning(this, Text(kIdsErrorTitle), ToQt(text));
}

void MainWindow::Relabel(const workspace::HostTexts &texts)
{
    m_menu->rebuild(texts.menu);
    refreshMenuStates();
    m_host->relabel(ToQt(texts.sceneTabButton), ToQt(texts.mergeTabButton));
    showPanes(m_model->CurrentTab());
    showTitle();
    if (m_help) {
        m_help->relabel(m_model->HelpFor(m_help->tab()));
    }
    for (const QPointer<InfoDialog> &info : m_info) {
        if (info) {
            info->relabel();
        }
    }
    // The first texts: the window shows itself where it stood last, before a project opens.
    if (!isVisible() && !m_bClosing) {
        placeWindow();
        show();
    }
}

void MainWindow::SetMenuStates(const workspace::MenuStates &states)
{
    m_menu->setStates(states);
    m_host->setButtonsEnabled(states.bTabButtons);
}

void MainWindow::RecentFilesChanged(const std::vector<workspace::RecentMenuEntry> &entries)
{
    m_menu->setRecentFiles(entries);
}

void MainWindow::ShowTab(int nTab)
{
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

void MainWindow::ShowInformation(const workspace::InformationRequest &request)
{
    const int nTab = request.nTab == 1 ? 1 : 0;
    // One information dialog per tab: a new one replaces the one open.
    if (m_info[nTab]) {
        m_info[nTab]->close();
    }
    auto *info = new InfoDialog(*m_model, request, this);
    if (m_infoChooser) {
        info->setFileChooser(m_infoChooser);
    }
    m_info[nTab] = info;
    info->start();
}

void MainWindow::ShowHelp(const workspace::HelpContent &help)
{
    m_help = new HelpDialog(help, this);
    connect(m_help, &QObject::destroyed, this, [this] { m_model->HelpClosed(); });
    const QRect owner = geometry();
    m_help->move(owner.center() - m_help->rect().center());
    m_help->show();
}

void MainWindow::ShowAbout(const workspace::AboutContent &about)
{
    AboutDialog dialog(about, this);
    m_about = &dialog;
    dialog.exec();
}

void MainWindow::CloseWindow()
{
    m_bClosing = true;
    if (m_help) {
        m_help->close();
    }
    for (const QPointer<InfoDialog> &info : m_info) {
        if (info) {
            info->close();
        }
    }
    // Inside the close event the event itself is accepted; inside a wait the window closes
    // once its loop runs again.
    if (m_bInCloseEvent) {
        return;
    }
    if (m_model->InWait()) {
        QMetaObject::invokeMethod(this, &QWidget::close, Qt::QueuedConnection);
    } else {
        close();
    }
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (!m_bClosing) {
        keepWindowRect();
        m_bInCloseEvent = true;
        m_model->RequestExit();
        m_bInCloseEvent = false;
    }
    if (m_bClosing) {
        event->accept();
    } else {
        event->ignore();
    }
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
