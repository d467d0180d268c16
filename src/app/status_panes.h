// The status bar of the main window: stage, state, elapsed time and progress, then a stretching
// empty pane.
#pragma once

#include <QStatusBar>

#include <array>

class QLabel;

namespace app {

class StatusPanes : public QStatusBar
{
    Q_OBJECT
public:
    explicit StatusPanes(QWidget *parent = nullptr);

    // nPane is one of workspace::kPaneStage .. kPaneProgress.
    void setPane(int nPane, const QString &text);
    QString pane(int nPane) const;
    // The widget of a pane, for tests and screenshots.
    QLabel *paneLabel(int nPane) const { return m_panes[nPane]; }

private:
    std::array<QLabel *, 4> m_panes{};
};

} // namespace app
