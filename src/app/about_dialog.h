// The about box: the program's name with its version, and the copyright, as the host model
// gives them.
#pragma once

#include <QDialog>

#include "workspace/host_view.h"

class QLabel;
class QPushButton;

namespace app {

class AboutDialog : public QDialog
{
    Q_OBJECT
public:
    explicit AboutDialog(const workspace::AboutContent &about, QWidget *parent = nullptr);

    void relabel(const workspace::AboutContent &about);
    QString versionText() const;
    QString copyrightText() const;

private:
    QLabel *m_version;
    QLabel *m_copyright;
    QPushButton *m_close;
};

} // namespace app
