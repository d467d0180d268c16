// A tab after a change of language: what it shows in the old language is shown anew.
#include "engine/job_states.h"
#include "workspace/tab_base.h"

namespace workspace {

void CTarnwickTab::ApplyLanguage()
{
    SetPane(kPaneStage, engine::TranslateStagePane(m_panes[kPaneStage]));
    SetPane(kPaneState, engine::TranslateStatePane(m_panes[kPaneState]));
    // The merge rows' word for a file not analysed yet is the language's.
    Renumber();
    m_view.SetControls(m_controls);
}

} // namespace workspace
