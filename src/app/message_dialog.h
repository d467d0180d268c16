// The yes/no question of the program: a message and the buttons Yes and No, shown modally.
#pragma once

#include <QDialog>

class QLabel;
class QPushButton;

namespace app {

class MessageDialog : public QDialog
{
    Q_OBJECT
public:
    static constexpr int kYes = 6;
    static constexpr int kNo = 7;

    MessageDialog(const QString &message, QWidget *parent = nullptr);
    // Shows the question modally (its own event loop runs meanwhile): kYes or kNo; closing the
    // window counts as No.
    static int ask(QWidget *parent, const QString &message);

    QString message() const;
    QPushButton *yesButton() const { return m_yes; }
    QPushButton *noButton() const { return m_no; }

private:
    QLabel *m_message;
    QPushButton *m_yes;
    QPushButton *m_no;
};

} // namespace app
