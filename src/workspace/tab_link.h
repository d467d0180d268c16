// The tabs as the engine sees them: the sink of a tab's job messages and the facts a job asks
// of it, and the host that names the tab in front. Inside the workspace library only (and its
// tests): the views reach a tab through its commands.
#pragma once

#include <atomic>

#include "engine/engine_host.h"
#include "engine/job_messages.h"
#include "engine/tarnwick_process.h"
#include "workspace/tab_base.h"

namespace workspace {

class TabLink : public engine::EngineTab
{
public:
    // loop must outlive the link; messages are handed to tab.OnJobMessage on the loop's thread.
    TabLink(CTarnwickTab &tab, engine::MessageLoop &loop);

    engine::JobMessageSink &Sink() override { return endpoint; }
    void MakeDefaultScene() override { m_tab.MakeDefaultScene(); }
    void OnInputAnalysed(bool bKeepSelection) override { m_tab.OnInputAnalysed(bKeepSelection); }
    bool IsPositionDrag() const override { return m_tab.IsPositionDrag(); }
    void CaptureFfplayWindow() override {}
    engine::ScreenPoint PreviewPaneOrigin() const override;

    engine::LoopEndpoint endpoint;

private:
    CTarnwickTab &m_tab;
};

// The host dialog's rule as the engine sees it: reports go to the tab in front.
class TabHost : public engine::EngineHost
{
public:
    engine::EngineTab *CurrentTab() override;
    // Any thread.
    void SetTabs(CTarnwickTab *pScene, CTarnwickTab *pMerge);
    // 0 the scene tab, any other value the merge tab.
    void SetActiveTab(int nTab) { m_activeTab = nTab; }

private:
    std::atomic<engine::EngineTab *> m_scene{nullptr};
    std::atomic<engine::EngineTab *> m_merge{nullptr};
    std::atomic<int> m_activeTab{0};
};

} // namespace workspace
