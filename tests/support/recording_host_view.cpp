// A recording view of the host model.
#include "support/recording_host_view.h"

namespace testsupport {

bool RecordingHostView::AskYesNo(int nMessageId)
{
    questions.push_back(nMessageId);
    if (duringQuestion) {
        duringQuestion();
    }
    return answer;
}

void RecordingHostView::Relabel(const workspace::HostTexts &texts)
{
    relabels.push_back(texts);
}

void RecordingHostView::SetMenuStates(const workspace::MenuStates &states)
{
    menu = states;
    ++menuUpdates;
}

void RecordingHostView::RecentFilesChanged(const std::vector<workspace::RecentMenuEntry> &entries)
{
    recent = entries;
    ++recentUpdates;
}

void RecordingHostView::ShowInformation(const workspace::InformationRequest &request)
{
    informations.push_back(request);
}

} // namespace testsupport
