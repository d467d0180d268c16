// The menu bar of the main window, built from menu 128 of the string table: every command item
// becomes an action that reports its command id; the recent projects stand where the table
// puts the first recent-file item.
#pragma once

#include <QObject>
#include <QString>

#include <map>
#include <string>
#include <vector>

#include "core/language.h"

class QAction;
class QMenu;
class QMenuBar;

namespace app {

class MainMenu : public QObject
{
    Q_OBJECT
public:
    // The first and last command of the recent projects.
    static constexpr int kFirstRecent = 57616;
    static constexpr int kLastRecent = 57631;

    explicit MainMenu(QMenuBar *bar);

    // Empties the bar and fills it anew from the current string table.
    void rebuild();
    // The recent projects as the file menu shows them (entry 0 first); greyed when bEnabled is
    // false. Empty entries are left out.
    void setRecentFiles(const std::vector<std::string> &entries, bool bEnabled);
    void setEnabled(int nCommand, bool bEnabled);
    void setChecked(int nCommand, bool bChecked);
    // The action of a command; null when the menu has none.
    QAction *action(int nCommand) const;
    // The texts of the top-level menus, in order, without their mnemonics.
    QStringList titles() const;
    QMenuBar *bar() const { return m_bar; }
    // The menu that holds the recent projects.
    QMenu *fileMenu() const { return m_fileMenu; }

    // The text a recent entry shows: its number and the path, shortened in the middle.
    static QString RecentLabel(int nIndex, const std::string &path);

signals:
    void command(int nCommand);
    // The file menu is about to open: the window gives the recent list now.
    void fileMenuAboutToShow();

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
