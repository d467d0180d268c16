// The menu bar of the main window.
#include "app/main_menu.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>

#include "app/app_text.h"

namespace app {

namespace {

// Commands whose items carry a check mark.
bool IsCheckable(int nCommand)
{
    switch (nCommand) {
    case 2010:
    case 2012:
    case 2013:
    case 3110:
    case 3111:
    case 3112:
    case core::kCmdLanguageJapanese:
    case core::kCmdLanguageEnglish:
        return true;
    default:
        return false;
    }
}

// The longest path a recent entry shows.
constexpr int kRecentDisplayLength = 30;

} // namespace

MainMenu::MainMenu(QMenuBar *bar)
    : QObject(bar)
    , m_bar(bar)
{
}

void MainMenu::rebuild()
{
    m_bar->clear();
    m_actions.clear();
    m_recent.clear();
    m_fileMenu = nullptr;
    m_recentAnchor = nullptr;
    m_recentPlaceholder = nullptr;
    for (const core::MenuItem &top : core::LoadMenuById(core::kMainMenuId)) {
        QMenu *menu = m_bar->addMenu(ToQt(top.text));
        if (m_fileMenu == nullptr) {
            m_fileMenu = menu;
            connect(menu, &QMenu::aboutToShow, this, &MainMenu::fileMenuAboutToShow);
        }
        addItems(menu, top.items);
    }
}

void MainMenu::addItems(QMenu *menu, const std::vector<core::MenuItem> &items)
{
    for (const core::MenuItem &item : items) {
        if (item.separator) {
            QAction *separator = menu->addSeparator();
            if (m_recentPlaceholder != nullptr && m_recentAnchor == nullptr) {
                m_recentAnchor = separator;
            }
        } else if (!item.items.empty() || item.id == 0) {
            addItems(menu->addMenu(ToQt(item.text)), item.items);
        } else {
            if (item.id == kFirstRecent && m_recentPlaceholder == nullptr) {
                // Stands for the recent projects; never a command itself.
                m_recentPlaceholder = menu->addAction(ToQt(item.text));
                m_recentPlaceholder->setEnabled(false);
                continue;
            }
            QAction *action = addCommand(menu, item);
            if (m_recentPlaceholder != nullptr && m_recentAnchor == nullptr) {
                m_recentAnchor = action;
            }
        }
    }
}

QAction *MainMenu::addCommand(QMenu *menu, const core::MenuItem &item)
{
    const QString text = ToQt(item.text);
    const int tab = text.indexOf(QLatin1Char('\t'));
    QAction *action = menu->addAction(tab < 0 ? text : text.left(tab));
    if (tab >= 0) {
        action->setShortcut(QKeySequence(text.mid(tab + 1)));
    }
    action->setCheckable(IsCheckable(item.id));
    const int nCommand = item.id;
    connect(action, &QAction::triggered, this, [this, nCommand] { emit command(nCommand); });
    m_actions[nCommand] = action;
    return action;
}

QString MainMenu::RecentLabel(int nIndex, const std::string &path)
{
    QString shown = ToQt(path);
    if (shown.size() > kRecentDisplayLength) {
        const int keep = kRecentDisplayLength - 3;
        shown = shown.left(keep / 2) + QStringLiteral("...") + shown.right(keep - keep / 2);
    }
    shown.replace(QLatin1Char('&'), QStringLiteral("&&"));
    return QStringLiteral("&%1 %2").arg(nIndex + 1).arg(shown);
}

void MainMenu::setRecentFiles(const std::vector<std::string> &entries, bool bEnabled)
{
    if (m_fileMenu == nullptr) {
        return;
    }
    for (QAction *action : m_recent) {
        m_fileMenu->removeAction(action);
        action->deleteLater();
    }
    m_recent.clear();
    int nShown = 0;
    for (size_t i = 0; i < entries.size() && kFirstRecent + nShown <= kLastRecent; ++i) {
        if (entries[i].empty()) {
            continue;
        }
        auto *action = new QAction(RecentLabel(nShown, entries[i]), m_fileMenu);
        action->setEnabled(bEnabled);
        action->setData(ToQt(entries[i]));
        const int nCommand = kFirstRecent + static_cast<int>(i);
        connect(action, &QAction::triggered, this, [this, nCommand] { emit command(nCommand); });
        m_fileMenu->insertAction(m_recentAnchor, action);
        m_recent.push_back(action);
        ++nShown;
    }
    // The table's own item stands, greyed, only while the list is empty.
    if (m_recentPlaceholder != nullptr) {
        m_recentPlaceholder->setVisible(nShown == 0);
    }
}

void MainMenu::setEnabled(int nCommand, bool bEnabled)
{
    if (QAction *found = action(nCommand)) {
        found->setEnabled(bEnabled);
    }
}

void MainMenu::setChecked(int nCommand, bool bChecked)
{
    if (QAction *found = action(nCommand)) {
        found->setChecked(bChecked);
    }
}

QAction *MainMenu::action(int nCommand) const
{
    const auto found = m_actions.find(nCommand);
    return found == m_actions.end() ? nullptr : found->second;
}

QStringList MainMenu::titles() const
{
    QStringList texts;
    for (QAction *action : m_bar->actions()) {
        texts << QString(action->text()).remove(QLatin1Char('&'));
    }
    return texts;
}

} // namespace app
