// One tab's page in the host: the view of a workspace model. Its controls come with the tab's
// own issue; the page keeps what the model tells it and passes the status bar, the title and
// the tab-switch state on to the window.
#pragma once

#include <QFrame>

#include <array>

#include "workspace/tab_view.h"

namespace app {

class TabPage : public QFrame, public workspace::TabView
{
    Q_OBJECT
public:
    // nTab: 0 the scene tab, 1 the merge tab.
    TabPage(int nTab, QWidget *parent = nullptr);

    int tabIndex() const { return m_nTab; }
    QString paneText(int nPane) const { return m_panes[nPane]; }
    const QString &title() const { return m_title; }
    int progress() const { return m_nProgress; }
    const workspace::ControlStates &controls() const { return m_controls; }
    // Rows the list holds now.
    int rowCount() const { return m_nRows; }

    // workspace::TabView
    void ShowList(const std::vector<workspace::ListRow> &rows, int nSelect) override;
    void ShowRow(int nRow, const workspace::ListRow &row) override;
    void SelectListRow(int nRow) override;
    void SetStatusPane(int nPane, const std::string &text) override;
    void SetProgress(int nPercent) override;
    void SetProgressCount(int nDone, int nTotal) override;
    void SetPositionBar(int nValue) override;
    void SetPositionText(const std::string &text) override;
    void SetFileSummary(const std::string &text) override;
    void SetInputSummary(const std::string &text) override;
    void SetTitle(const std::string &title) override;
    void ShowPicture(const std::string &path) override;
    void SetControls(const workspace::ControlStates &states) override;
    void ShowFields(const workspace::FieldTexts &fields) override;
    void SetBusyCursor(bool bBusy) override;
    bool AskYesNo(int nMessageId) override;
    void ShowError(const std::string &text) override;
    std::optional<std::string> ChooseFile(const workspace::FileChoice &choice) override;
    std::optional<std::string> ChooseFolder(int nTitleId, const std::string &initial) override;

signals:
    void paneChanged(int nTab, int nPane, const QString &text);
    void titleChanged(int nTab, const QString &title);
    void controlsChanged(int nTab);

private:
    int m_nTab;
    std::array<QString, 4> m_panes;
    QString m_title;
    int m_nProgress = 0;
    int m_nRows = 0;
    bool m_bBusy = false;
    workspace::ControlStates m_controls;
};

} // namespace app
