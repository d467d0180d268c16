// The status bar of the main window.
#include "app/status_panes.h"

#include <QLabel>

#include "workspace/tab_view.h"

namespace app {

namespace {

// Pane widths in pixels, in pane order: stage, state, elapsed, progress. On screen the panes
// stand as stage, state, elapsed, progress from the left.
constexpr std::array<int, 4> kPaneWidths = {140, 60, 60, 150};

} // namespace

StatusPanes::StatusPanes(QWidget *parent)
    : QStatusBar(parent)
{
    setSizeGripEnabled(false);
    for (int nPane = 0; nPane < 4; ++nPane) {
        auto *label = new QLabel(this);
        label->setFixedWidth(kPaneWidths[nPane]);
        label->setFrameStyle(QFrame::Panel | QFrame::Sunken);
        label->setTextFormat(Qt::PlainText);
        label->setObjectName(QStringLiteral("pane%1").arg(nPane));
        m_panes[nPane] = label;
    }
    addWidget(m_panes[workspace::kPaneStage]);
    addWidget(m_panes[workspace::kPaneState]);
    addWidget(m_panes[workspace::kPaneElapsed]);
    addWidget(m_panes[workspace::kPaneProgress]);
    auto *rest = new QLabel(this);
    rest->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    rest->setMinimumWidth(1);
    addWidget(rest, 1);
}

void StatusPanes::setPane(int nPane, const QString &text)
{
    if (nPane >= 0 && nPane < 4) {
        m_panes[nPane]->setText(text);
    }
}

QString StatusPanes::pane(int nPane) const
{
    return nPane >= 0 && nPane < 4 ? m_panes[nPane]->text() : QString();
}

} // namespace app
