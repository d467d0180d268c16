// The host of the two tabs.
#include "app/host_area.h"

#include <QHBoxLayout>
#include <QStackedWidget>
#include <QVBoxLayout>

#include "app/tab_button.h"
#include "app/tab_page.h"

namespace app {

namespace {

// The size the host is designed for.
constexpr QSize kDesignSize(1000, 680);

} // namespace

HostArea::HostArea(QWidget *parent)
    : QWidget(parent)
    , m_stack(new QStackedWidget(this))
{
    setObjectName(QStringLiteral("hostArea"));
    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(2);
    for (int nTab = 0; nTab < 2; ++nTab) {
        m_buttons[nTab] = new TabButton(this);
        m_buttons[nTab]->setObjectName(nTab == 0 ? QStringLiteral("sceneButton")
                                                 : QStringLiteral("mergeButton"));
        buttons->addWidget(m_buttons[nTab]);
        connect(
            m_buttons[nTab], &TabButton::clicked, this, [this, nTab] { emit tabClicked(nTab); });
        m_pages[nTab] = new TabPage(nTab, m_stack);
        m_stack->addWidget(m_pages[nTab]);
    }
    buttons->addStretch(1);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addLayout(buttons);
    layout->addWidget(m_stack, 1);
    showTab(0);
}

void HostArea::showTab(int nTab)
{
    m_nCurrent = nTab;
    m_stack->setCurrentIndex(nTab);
    m_buttons[0]->setCurrent(nTab == 0);
    m_buttons[1]->setCurrent(nTab == 1);
}

void HostArea::setButtonsEnabled(bool bEnabled)
{
    m_buttons[0]->setEnabled(bEnabled);
    m_buttons[1]->setEnabled(bEnabled);
}

void HostArea::relabel(const QString &sceneText, const QString &mergeText)
{
    m_buttons[0]->setText(sceneText);
    m_buttons[1]->setText(mergeText);
    m_buttons[0]->updateGeometry();
    m_buttons[1]->updateGeometry();
}

QSize HostArea::sizeHint() const
{
    return kDesignSize;
}

} // namespace app
