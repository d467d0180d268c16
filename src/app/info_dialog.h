// The information viewer: ffprobe's JSON about a file (kinds 1 to 5), read through a tab's job
// engine while the window's loop runs on, shown on ruled lines. Modeless; it deletes itself
// when closed.
#pragma once

#include <QDialog>

#include <functional>

class QPushButton;

namespace workspace {
class CTarnwickTab;
}

namespace app {

class RuledTextView;

class InfoDialog : public QDialog
{
    Q_OBJECT
public:
    // tab runs the probe and must outlive the dialog; file is the file the tab has on show
    // (kind 1 reads it without asking unless it is empty; the other kinds ask, starting there).
    InfoDialog(workspace::CTarnwickTab &tab,
               int nKind,
               int nTitleId,
               const QString &file,
               QWidget *parent = nullptr);

    // Asks for the file where the kind wants it and starts the probe. False when the choice was
    // cancelled or the probe cannot start; the dialog then deletes itself unseen. On success the
    // dialog shows itself when the probe has ended well, or goes unseen when it failed.
    bool start();
    // The tab's messages have been served: takes the probe's end when it has come.
    void checkProbe();
    // The title and buttons again in the current language.
    void relabel();

    bool probing() const { return m_bProbing; }
    const QString &file() const { return m_file; }
    QString text() const;
    // Replaces the chooser of another file (tests): returns the file, or an empty text for a
    // cancel.
    void setFileChooser(std::function<QString(const QString &start)> chooser);

signals:
    // The probe has ended: bShown tells whether the dialog shows its text.
    void probeEnded(bool bShown);

private:
    bool chooseFile();
    bool beginProbe();
    void chooseAnother();
    void openInPlayer();

    workspace::CTarnwickTab &m_tab;
    int m_nKind;
    int m_nTitleId;
    QString m_file;
    bool m_bProbing = false;
    bool m_bShownOnce = false;
    RuledTextView *m_text;
    QPushButton *m_choose;
    QPushButton *m_play;
    QPushButton *m_close;
    std::function<QString(const QString &)> m_chooser;
};

} // namespace app
