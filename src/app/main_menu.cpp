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
    case workspace::kCmdHardwareAcceleration:
    case workspace::kCmdSaveAutomatically:
    case workspace::kCmdReopenLast:
    case workspace::kCmdPreset0:
    case workspace::kCmdPreset1:
    case workspace::kCmdPreset2:
    case workspace::kCmdJapanese:
    case workspace::kCmdEnglish:
        return true;
    default:
        return false;
    }
}

} // namespace

MainMenu::MainMenu(QMenuBar *bar)
    : QObject(bar)
    , m_bar(bar)
{
}

void MainMenu::rebuild(const std::vector<core::MenuItem> &items)
{
    m_bar->clear();
    m_actions.clear();
    m_recent.clear();
    m_fileMenu = nullptr;
    m_recentAnchor = nullptr;
    m_recentPlaceholder = nullptr;
    for (const core::MenuItem &top : items) {
        QMenu *menu = m_bar->addMenu(ToQt(top.text));
        if (m_fileMenu == nullptr) {
            m_fileMenu = menu;
        }
        connect(menu, &QMenu::aboutToShow, this, &MainMenu::aboutToShow);
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
            if (item.id == workspace::kCmdRecentFirst && m_recentPlaceholder == nullptr) {
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

void MainMenu::setRecentFiles(const std::vector<workspace::RecentMenuEntry> &entries)
{
    if (m_fileMenu == nullptr) {
        return;
    }
    for (QAction *action : m_recent) {
        m_fileMenu->removeAction(action);
        action->deleteLater();
    }
    m_recent.clear();
    for (const workspace::RecentMenuEntry &entry : entries) {
        auto *action = new QAction(ToQt(entry.text), m_fileMenu);
        action->setEnabled(entry.bEnabled);
        action->setData(ToQt(entry.path));
        const int nCommand = entry.nCommand;
        connect(action, &QAction::triggered, this, [this, nCommand] { emit command(nCommand); });
        m_fileMenu->insertAction(m_recentAnchor, action);
        m_recent.push_back(action);
    }
    // The table's own item stands, greyed, only while the list is empty.
    if (m_recentPlaceholder != nullptr) {
        m_recentPlaceholder->setVisible(m_recent.empty());
    }
}

void MainMenu::setStates(const workspace::MenuStates &states)
{
    for (const workspace::MenuItemState &item : states.items) {
        if (QAction *found = action(item.nCommand)) {
            found->setEnabled(item.bEnabled);
            found->setChecked(item.bChecked);
        }
    }
    setRecentFiles(states.recent);
}

QAction *MainMenu::recentAction(int nIndex) const
{
    if (nIndex < 0 || nIndex >= static_cast<int>(m_recent.size())) {
        return nullptr;
    }
    return m_recent[static_cast<size_t>(nIndex)];
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
