// A tab-switch button of the host, drawn by the program: the current tab's button in the
// highlight colours, the other in the button colours, with a one-pixel frame.
#pragma once

#include <QAbstractButton>

namespace app {

class TabButton : public QAbstractButton
{
    Q_OBJECT
public:
    explicit TabButton(QWidget *parent = nullptr);

    void setCurrent(bool bCurrent);
    bool isCurrent() const { return m_bCurrent; }
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool m_bCurrent = false;
};

} // namespace app
