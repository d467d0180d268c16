// The host dialog without a window.
#include "workspace/tab_bench.h"

#include "engine/headless_sink.h"
#include "workspace/tab_link.h"

namespace workspace {

TabBench::TabBench(TabView &sceneView, TabView &mergeView)
    : m_loop(std::make_unique<engine::HeadlessSink>())
    , m_host(std::make_unique<TabHost>())
{
    m_scene = std::make_unique<CTarnwickTabScene>(sceneView, *m_loop, *m_host);
    m_merge = std::make_unique<CTarnwickTabMerge>(mergeView, *m_loop, *m_host);
    m_host->SetTabs(m_scene.get(), m_merge.get());
}

TabBench::~TabBench()
{
    m_scene->StopProcess();
    m_merge->StopProcess();
    // Reports go to the tab that is left while the other ends.
    m_host->SetTabs(m_scene.get(), nullptr);
    m_merge.reset();
    m_scene.reset();
    m_host->SetTabs(nullptr, nullptr);
}

void TabBench::SetActiveTab(int nTab)
{
    m_host->SetActiveTab(nTab);
}

void TabBench::RunUntil(const std::function<bool()> &done)
{
    m_loop->RunUntil(done);
}

void TabBench::Wake()
{
    m_loop->Wake();
}

void TabBench::SetMessageNotice(std::function<void()> notice)
{
    m_loop->SetArrivalNotice(std::move(notice));
}

void TabBench::ServeMessages()
{
    m_loop->PumpMessages();
}

bool TabBench::WaitForJob(CTarnwickTab &tab, const std::function<bool()> &stopRequested)
{
    RunUntil([&] { return !tab.IsJobRunning() || stopRequested(); });
    if (tab.IsJobRunning()) {
        tab.RequestStop();
        tab.StopProcess();
    }
    m_loop->PumpMessages();
    return !stopRequested();
}

bool TabBench::WaitForHelpers(CTarnwickTab &tab, const std::function<bool()> &stopRequested)
{
    RunUntil([&] { return !tab.HelpersRunning() || stopRequested(); });
    if (tab.HelpersRunning()) {
        tab.RequestStop();
    }
    tab.JoinHelpers();
    m_loop->PumpMessages();
    return !stopRequested();
}

} // namespace workspace
