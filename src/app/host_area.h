// The host of the two tabs: the two tab-switch buttons above one page per tab, one page visible
// at a time.
#pragma once

#include <QWidget>

class QStackedWidget;

namespace app {

class TabButton;
class TabPage;

class HostArea : public QWidget
{
    Q_OBJECT
public:
    explicit HostArea(QWidget *parent = nullptr);

    TabPage *page(int nTab) const { return m_pages[nTab]; }
    TabButton *button(int nTab) const { return m_buttons[nTab]; }
    int currentTab() const { return m_nCurrent; }
    // Shows the page of nTab and marks its button.
    void showTab(int nTab);
    void setButtonsEnabled(bool bEnabled);
    // The button texts (the host's texts in the current language).
    void relabel(const QString &sceneText, const QString &mergeText);
    // The size the host is laid out for; the window is never made bigger than it needs.
    QSize sizeHint() const override;

signals:
    // A tab button was pressed (also the current tab's).
    void tabClicked(int nTab);

private:
    TabButton *m_buttons[2];
    TabPage *m_pages[2];
    QStackedWidget *m_stack;
    int m_nCurrent = 0;
};

} // namespace app
