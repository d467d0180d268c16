// The manual viewer: the manual of a tab in the current language, on ruled lines. Modeless; it
// deletes itself when closed.
#pragma once

#include <QDialog>

class QPushButton;

namespace app {

class RuledTextView;

class HelpDialog : public QDialog
{
    Q_OBJECT
public:
    // nTab: the tab whose manual is shown (0 scene, 1 merge).
    HelpDialog(int nTab, QWidget *parent = nullptr);

    // The text of a tab's manual in the current language, its lines joined with "\n"; empty
    // when no manual file can be read. Searched in "doc/" beside the executable, then in the
    // installed data folder.
    static QString LoadManual(int nTab);
    // The folders searched for the manuals, in order.
    static QStringList ManualFolders();

    // The texts again in the current language, the manual included.
    void relabel();
    QString text() const;
    RuledTextView *textView() const { return m_text; }

private:
    int m_nTab;
    RuledTextView *m_text;
    QPushButton *m_close;
};

} // namespace app
