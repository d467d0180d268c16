// The command line as a view of a tab.
#include "cli/cli_view.h"

namespace cli {

void CliView::SetStatusPane(int nPane, const std::string &text)
{
    if (m_progress != nullptr && nPane == workspace::kPaneStage && !text.empty()) {
        m_progress->OnStage(text);
    }
}

void CliView::SetPositionText(const std::string &text)
{
    if (m_position && !text.empty()) {
        m_position(text);
    }
}

void CliView::SetProgressCount(int nDone, int nTotal)
{
    if (m_progress != nullptr) {
        m_progress->OnCount(nDone, nTotal);
    }
}

} // namespace cli
