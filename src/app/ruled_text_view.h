// A read-only text area on white with ruled lines behind the text, one per line of text, that
// scroll with it.
#pragma once

#include <QTextEdit>

namespace app {

class RuledTextView : public QTextEdit
{
    Q_OBJECT
public:
    explicit RuledTextView(QWidget *parent = nullptr);

    // Shows text as plain text, from its top.
    void setContents(const QString &text);
    // Distance between two ruled lines in pixels: the height of a line of text.
    int linePitch() const;

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void applyTabStop();
};

} // namespace app
