// A tab-switch button of the host, drawn by the program.
#include "app/tab_button.h"

#include <QPainter>

namespace app {

TabButton::TabButton(QWidget *parent)
    : QAbstractButton(parent)
{
    setFocusPolicy(Qt::TabFocus);
}

void TabButton::setCurrent(bool bCurrent)
{
    if (m_bCurrent != bCurrent) {
        m_bCurrent = bCurrent;
        update();
    }
}

QSize TabButton::sizeHint() const
{
    const QFontMetrics metrics(font());
    return {std::max(120, metrics.horizontalAdvance(text()) + 24), metrics.height() + 12};
}

void TabButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QPalette &colours = palette();
    const QRect area = rect();
    QColor textColour;
    if (m_bCurrent) {
        painter.fillRect(area, colours.color(QPalette::Active, QPalette::Highlight));
        textColour = colours.color(QPalette::Active, QPalette::HighlightedText);
    } else {
        painter.fillRect(area, colours.color(QPalette::Active, QPalette::Button));
        textColour = isEnabled() ? colours.color(QPalette::Active, QPalette::ButtonText)
                                 : colours.color(QPalette::Disabled, QPalette::ButtonText);
    }
    painter.setPen(textColour);
    painter.drawText(area, Qt::AlignCenter | Qt::TextSingleLine, text());
    painter.setPen(colours.color(QPalette::Active, QPalette::WindowText));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(area.adjusted(0, 0, -1, -1));
}

} // namespace app
