// A recording view of a workspace model.
#include "support/recording_view.h"

namespace testsupport {

void RecordingView::ShowList(const std::vector<workspace::ListRow> &newRows, int nSelect)
{
    rows = newRows;
    selected = nSelect;
    ++listShows;
}

void RecordingView::ShowRow(int nRow, const workspace::ListRow &row)
{
    if (nRow >= 0 && nRow < static_cast<int>(rows.size())) {
        rows[nRow] = row;
    }
}

void RecordingView::SetStatusPane(int nPane, const std::string &text)
{
    if (nPane >= 0 && nPane < 4) {
        panes[nPane] = text;
    }
}

void RecordingView::SetProgress(int nPercent)
{
    progress = nPercent;
    progressSeen.push_back(nPercent);
}

void RecordingView::SetControls(const workspace::ControlStates &states)
{
    controls = states;
}

void RecordingView::ShowFields(const workspace::FieldTexts &f)
{
    fields = f;
    ++fieldShows;
}

bool RecordingView::AskYesNo(int nMessageId)
{
    questions.push_back(nMessageId);
    return answer;
}

std::optional<std::string> RecordingView::ChooseFile(const workspace::FileChoice &choice)
{
    fileChoices.push_back(choice);
    if (files.empty()) {
        return std::nullopt;
    }
    std::string path = files.front();
    files.pop_front();
    return path;
}

std::optional<std::string> RecordingView::ChooseFolder(int, const std::string &)
{
    if (folders.empty()) {
        return std::nullopt;
    }
    std::string path = folders.front();
    folders.pop_front();
    return path;
}

void WaitForJob(engine::HeadlessSink &loop, workspace::CTarnwickTab &tab)
{
    loop.RunUntil([&tab] { return !tab.IsJobRunning(); });
    loop.PumpMessages();
}

} // namespace testsupport
