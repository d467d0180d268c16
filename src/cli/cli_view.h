// The command line as a view of a tab: it shows the progress of a job on standard error,
// keeps the messages a tab gives for the command to report, answers every question with yes
// (the command was the user's answer) and chooses no files.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/progress_line.h"
#include "workspace/tab_view.h"

namespace cli {

class CliView : public workspace::TabView
{
public:
    void ShowList(const std::vector<workspace::ListRow> &, int) override {}
    void ShowRow(int, const workspace::ListRow &) override {}
    void SelectListRow(int) override {}
    void SetStatusPane(int nPane, const std::string &text) override;
    void SetProgress(int) override {}
    void SetProgressCount(int nDone, int nTotal) override;
    void SetPositionBar(int) override {}
    void SetPositionText(const std::string &text) override;
    void SetFileSummary(const std::string &) override {}
    void SetInputSummary(const std::string &) override {}
    void SetTitle(const std::string &) override {}
    void ShowPicture(const std::string &path) override
    {
        m_picture = path;
        ++m_pictures;
    }
    void SetControls(const workspace::ControlStates &) override {}
    void ShowFields(const workspace::FieldTexts &) override {}
    void SetBusyCursor(bool) override {}
    bool AskYesNo(int) override { return true; }
    // The commands say what went wrong in their own words, from the tab's typed reports.
    void ShowError(const std::string &) override {}
    std::optional<std::string> ChooseFile(const workspace::FileChoice &) override { return {}; }
    std::optional<std::string> ChooseFolder(int, const std::string &) override { return {}; }

    // Called with every position readout of a playback; empty for none.
    void FollowPosition(std::function<void(const std::string &)> show)
    {
        m_position = std::move(show);
    }
    // The progress line that follows the stages and counts; null for none.
    void Follow(ProgressLine *line) { m_progress = line; }
    // The last picture the tab showed; empty before the first.
    const std::string &Picture() const { return m_picture; }
    // How many pictures the tab has shown.
    int PictureCount() const { return m_pictures; }

private:
    ProgressLine *m_progress = nullptr;
    std::function<void(const std::string &)> m_position;
    std::string m_picture;
    int m_pictures = 0;
};

} // namespace cli
