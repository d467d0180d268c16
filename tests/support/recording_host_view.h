// A view of the host model that records what it is told and answers as the test says.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "workspace/host_view.h"

namespace testsupport {

class RecordingHostView : public workspace::HostView
{
public:
    bool AskYesNo(int nMessageId) override;
    void ShowMessage(const std::string &text) override { messages.push_back(text); }
    void Relabel(const workspace::HostTexts &texts) override;
    void SetMenuStates(const workspace::MenuStates &states) override;
    void RecentFilesChanged(const std::vector<workspace::RecentMenuEntry> &entries) override;
    void ShowTab(int nTab) override { shownTab = nTab; }
    void ShowInformation(const workspace::InformationRequest &request) override;
    void ShowHelp(const workspace::HelpContent &help) override { helps.push_back(help); }
    void ShowAbout(const workspace::AboutContent &about) override { abouts.push_back(about); }
    void CloseWindow() override { ++closes; }

    // Answer to every question, and what is called while a question is open (a job's
    // messages may arrive while a dialog waits for the user).
    bool answer = true;
    std::function<void()> duringQuestion;

    std::vector<int> questions;
    std::vector<std::string> messages;
    std::vector<workspace::HostTexts> relabels;
    workspace::MenuStates menu;
    int menuUpdates = 0;
    std::vector<workspace::RecentMenuEntry> recent;
    int recentUpdates = 0;
    int shownTab = -1;
    std::vector<workspace::InformationRequest> informations;
    std::vector<workspace::HelpContent> helps;
    std::vector<workspace::AboutContent> abouts;
    int closes = 0;
};

} // namespace testsupport
