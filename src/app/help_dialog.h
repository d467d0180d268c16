// The manual viewer: the manual of a tab in the current language, on ruled lines, as the host
// model finds it (workspace::HelpContent). Modeless; it deletes itself when closed.
#pragma once

#include <QDialog>

#include "workspace/host_view.h"

class QPushButton;

namespace app {

class RuledTextView;

class HelpDialog : public QDialog
{
    Q_OBJECT
public:
    explicit HelpDialog(const workspace::HelpContent &help, QWidget *parent = nullptr);

    // The title, the manual and the button again (after a change of language).
    void relabel(const workspace::HelpContent &help);
    // The tab whose manual is shown (0 scene, 1 merge).
    int tab() const { return m_nTab; }
    QString text() const;
    RuledTextView *textView() const { return m_text; }

private:
    int m_nTab;
    RuledTextView *m_text;
    QPushButton *m_close;
};

} // namespace app
