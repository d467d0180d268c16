// A read-only text area with ruled lines behind the text.
#include "app/ruled_text_view.h"

#include <QEvent>
#include <QPainter>
#include <QScrollBar>

namespace app {

namespace {

const QColor kRuleColour(0xE6, 0xE6, 0xE6);

} // namespace

RuledTextView::RuledTextView(QWidget *parent)
    : QTextEdit(parent)
{
    setReadOnly(true);
    setAcceptRichText(false);
    setLineWrapMode(QTextEdit::WidgetWidth);
    setObjectName(QStringLiteral("text"));
    QPalette colours = palette();
    colours.setColor(QPalette::Base, Qt::white);
    colours.setColor(QPalette::Text, Qt::black);
    setPalette(colours);
    applyTabStop();
}

void RuledTextView::setContents(const QString &text)
{
    setPlainText(text);
    verticalScrollBar()->setValue(0);
    viewport()->update();
}

int RuledTextView::linePitch() const
{
    return std::max(1, QFontMetrics(font()).lineSpacing());
}

void RuledTextView::paintEvent(QPaintEvent *event)
{
    {
        // Drawn first, so that the text stands over the lines. The lines follow the text's
        // line grid: from the document's top margin, moved by the scroll position.
        QPainter painter(viewport());
        painter.setPen(QPen(kRuleColour, 1));
        const int pitch = linePitch();
        const int top = static_cast<int>(document()->documentMargin());
        const QRect area = viewport()->rect();
        for (int y = top + pitch - verticalScrollBar()->value(); y < area.bottom(); y += pitch) {
            if (y > 0) {
                painter.drawLine(area.left() + 1, y, area.right() - 1, y);
            }
        }
    }
    QTextEdit::paintEvent(event);
}

void RuledTextView::changeEvent(QEvent *event)
{
    QTextEdit::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        applyTabStop();
    }
}

void RuledTextView::applyTabStop()
{
    setTabStopDistance(QFontMetrics(font()).averageCharWidth());
}

} // namespace app
