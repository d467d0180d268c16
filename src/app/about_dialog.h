// The about box: the program's name with its version, and the copyright.
#pragma once

#include <QDialog>

class QLabel;
class QPushButton;

namespace app {

class AboutDialog : public QDialog
{
    Q_OBJECT
public:
    explicit AboutDialog(QWidget *parent = nullptr);

    void relabel();
    QString versionText() const;
    QString copyrightText() const;

private:
    QLabel *m_version;
    QLabel *m_copyright;
    QPushButton *m_close;
};

} // namespace app
