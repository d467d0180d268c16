// The menu bar of the main window, built from the menu the host model gives (menu 128 of the
// string table): every command item becomes an action that reports its command id; the recent
// projects stand where the table puts the first recent-file item. Availability, check marks and
// the recent entries' texts are the model's (workspace::MenuStates).
#pragma once

#include <QObject>
#include <QString>

#include <map>
#include <string>
#include <vector>

#include "core/language.h"
#include "workspace/menu_states.h"

class QAction;
class QMenu;
class QMenuBar;

namespace app {

class MainMenu : public QObject
{
    Q_OBJECT
public:
    explicit MainMenu(QMenuBar *bar);

    // Empties the bar and fills it anew from items (the host's menu in the current language).
    void rebuild(const std::vector<core::MenuItem> &items);
    // The recent projects as the file menu shows them, in the model's order and texts.
    void setRecentFiles(const std::vector<workspace::RecentMenuEntry> &entries);
    // Availability and check marks of every command, and the recent entries.
    void setStates(const workspace::MenuStates &states);
    // The action of a command; null when the menu has none.
    QAction *action(int nCommand) const;
    // The texts of the top-level menus, in order, without their mnemonics.
    QStringList titles() const;
    QMenuBar *bar() const { return m_bar; }
    // The menu that holds the recent projects.
    QMenu *fileMenu() const { return m_fileMenu; }
    // The action of recent entry nIndex (from 0); null when there is none.
    QAction *recentAction(int nIndex) const;

signals:
    void command(int nCommand);
    // A menu is about to open: the window brings the states up to date now (jobs start and
    // end without the menu's knowledge).
    void aboutToShow();

private:
    void addItems(QMenu *menu, const std::vector<core::MenuItem> &items);
    QAction *addCommand(QMenu *menu, const core::MenuItem &item);

    QMenuBar *m_bar;
    QMenu *m_fileMenu = nullptr;
    QAction *m_recentAnchor = nullptr; // the item that follows the recent projects
    QAction *m_recentPlaceholder = nullptr;
    std::vector<QAction *> m_recent;
    std::map<int, QAction *> m_actions;
};

} // namespace app
