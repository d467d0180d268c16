// A view of a workspace model that records what it is told and answers questions as the test
// says, with the message loop and host a window would have.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "engine/headless_sink.h"
#include "workspace/tab_base.h"
#include "workspace/tab_link.h"

namespace testsupport {

class RecordingView : public workspace::TabView
{
public:
    void ShowList(const std::vector<workspace::ListRow> &rows, int nSelect) override;
    void ShowRow(int nRow, const workspace::ListRow &row) override;
    void SelectListRow(int nRow) override { selected = nRow; }
    void SetStatusPane(int nPane, const std::string &text) override;
    void SetProgress(int nPercent) override;
    void SetProgressCount(int nDone, int nTotal) override
    {
        progressDone = nDone;
        progressTotal = nTotal;
    }
    void SetPositionBar(int nValue) override { positionBar = nValue; }
    void SetPositionText(const std::string &text) override { positionText = text; }
    void SetFileSummary(const std::string &text) override { fileSummary = text; }
    void SetInputSummary(const std::string &text) override { inputSummary = text; }
    void SetTitle(const std::string &text) override { title = text; }
    void ShowPicture(const std::string &path) override { picture = path; }
    void SetControls(const workspace::ControlStates &states) override;
    void ShowFields(const workspace::FieldTexts &f) override;
    void SetBusyCursor(bool bBusy) override { busyCursor = bBusy; }
    bool AskYesNo(int nMessageId) override;
    void ShowError(const std::string &text) override { errors.push_back(text); }
    std::optional<std::string> ChooseFile(const workspace::FileChoice &choice) override;
    std::optional<std::string> ChooseFolder(int nTitleId, const std::string &initial) override;

    // What the view shows now.
    std::vector<workspace::ListRow> rows;
    int selected = -1;
    std::string panes[4];
    int progress = 0;
    std::vector<int> progressSeen;
    int progressDone = 0;
    int progressTotal = 0;
    int positionBar = 0;
    std::string positionText;
    std::string fileSummary;
    std::string inputSummary;
    std::string title;
    std::string picture;
    workspace::ControlStates controls;
    workspace::FieldTexts fields;
    bool busyCursor = false;
    // What it was asked and told, in order.
    std::vector<int> questions;
    std::vector<std::string> errors;
    int fieldShows = 0;
    int listShows = 0;
    // Answers: to every question, and the paths the choosers give (nothing when empty).
    bool answer = true;
    std::deque<std::string> files;
    std::deque<std::string> folders;
    // The file choosers opened, in order.
    std::vector<workspace::FileChoice> fileChoices;
};

// A host with its message loop, owned by the constructing thread, for one or two tabs.
struct TabRig
{
    engine::HeadlessSink loop;
    workspace::TabHost host;
    RecordingView view;
};

// Serves the loop until the tab's job has ended.
void WaitForJob(engine::HeadlessSink &loop, workspace::CTarnwickTab &tab);

} // namespace testsupport
