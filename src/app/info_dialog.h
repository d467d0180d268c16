// The information viewer: ffprobe's JSON about a file (kinds 1 to 5), as the host model reads it
// (HostModel::RunInformation, a job of the tab that waits with the window's loop running),
// shown on ruled lines. Modeless; it deletes itself when closed.
#pragma once

#include <QDialog>

#include <functional>

#include "workspace/host_view.h"

class QPushButton;

namespace workspace {
class HostModel;
}

namespace app {

class RuledTextView;

class InfoDialog : public QDialog
{
    Q_OBJECT
public:
    // The file chooser: its title, the file to start at and the filter in Qt's form; the file
    // chosen, or an empty text for a cancel.
    using Chooser =
        std::function<QString(const QString &title, const QString &start, const QString &filter)>;

    // host runs the probe and must outlive the dialog.
    InfoDialog(workspace::HostModel &host,
               const workspace::InformationRequest &request,
               QWidget *parent = nullptr);

    // Replaces the file chooser (tests).
    void setFileChooser(Chooser chooser);
    // Asks for the file where the request wants it and reads it. False when the choice was
    // cancelled or the reading failed: the dialog then deletes itself unseen. Else it shows.
    bool start();
    // The title and buttons again in the current language.
    void relabel();

    int tab() const { return m_request.nTab; }
    int kind() const { return m_request.nKind; }
    const QString &file() const { return m_file; }
    QString text() const;

private:
    QString chooseFile(const QString &start);
    bool read(const QString &file);
    void chooseAnother();
    void openInPlayer();

    workspace::HostModel &m_host;
    workspace::InformationRequest m_request;
    QString m_file;
    RuledTextView *m_text;
    QPushButton *m_choose;
    QPushButton *m_play;
    QPushButton *m_close;
    Chooser m_chooser;
};

} // namespace app
