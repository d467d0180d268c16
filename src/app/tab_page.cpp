// One tab's page in the host.
#include "app/tab_page.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>

#include "app/app_text.h"
#include "app/message_dialog.h"

namespace app {

TabPage::TabPage(int nTab, QWidget *parent)
    : QFrame(parent)
    , m_nTab(nTab)
{
    setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    setObjectName(nTab == 0 ? QStringLiteral("scenePage") : QStringLiteral("mergePage"));
}

void TabPage::ShowList(const std::vector<workspace::ListRow> &rows, int)
{
    m_nRows = static_cast<int>(rows.size());
}

void TabPage::ShowRow(int nRow, const workspace::ListRow &)
{
    m_nRows = std::max(m_nRows, nRow + 1);
}

void TabPage::SelectListRow(int) {}

void TabPage::SetStatusPane(int nPane, const std::string &text)
{
    if (nPane < 0 || nPane >= 4) {
        return;
    }
    m_panes[nPane] = ToQt(text);
    emit paneChanged(m_nTab, nPane, m_panes[nPane]);
}

void TabPage::SetProgress(int nPercent)
{
    m_nProgress = nPercent;
}

void TabPage::SetProgressCount(int, int) {}

void TabPage::SetPositionBar(int) {}

void TabPage::SetPositionText(const std::string &) {}

void TabPage::SetFileSummary(const std::string &) {}

void TabPage::SetInputSummary(const std::string &) {}

void TabPage::SetTitle(const std::string &title)
{
    m_title = ToQt(title);
    emit titleChanged(m_nTab, m_title);
}

void TabPage::ShowPicture(const std::string &) {}

void TabPage::SetControls(const workspace::ControlStates &states)
{
    m_controls = states;
    emit controlsChanged(m_nTab);
}

void TabPage::ShowFields(const workspace::FieldTexts &) {}

void TabPage::SetBusyCursor(bool bBusy)
{
    if (bBusy == m_bBusy) {
        return;
    }
    m_bBusy = bBusy;
    if (bBusy) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
    } else {
        QApplication::restoreOverrideCursor();
    }
}

bool TabPage::AskYesNo(int nMessageId)
{
    return MessageDialog::ask(window(), Text(nMessageId)) == MessageDialog::kYes;
}

void TabPage::ShowError(const std::string &text)
{
    QMessageBox::warning(window(), Text(kIdsErrorTitle), ToQt(text));
}

std::optional<std::string> TabPage::ChooseFile(const workspace::FileChoice &choice)
{
    using Kind = workspace::FileChoice::Kind;
    QFileDialog dialog(window(), Text(choice.nTitleId));
    dialog.setNameFilter(QtFileFilter(choice.filter));
    dialog.setDefaultSuffix(ToQt(choice.defaultExt));
    const bool bSave = choice.kind == Kind::SaveProject || choice.kind == Kind::SaveOutput;
    dialog.setAcceptMode(bSave ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(choice.bMustExist ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
    if (!choice.bAskOverwrite) {
        dialog.setOption(QFileDialog::DontConfirmOverwrite);
    }
    if (!choice.initialPath.empty()) {
        dialog.selectFile(ToQt(choice.initialPath));
    }
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return std::nullopt;
    }
    return FromQt(dialog.selectedFiles().front());
}

std::optional<std::string> TabPage::ChooseFolder(int nTitleId, const std::string &initial)
{
    const QString folder =
        QFileDialog::getExistingDirectory(window(), Text(nTitleId), ToQt(initial));
    if (folder.isEmpty()) {
        return std::nullopt;
    }
    return FromQt(folder);
}

} // namespace app
