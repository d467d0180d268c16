// The host dialog without a window.
#include "workspace/tab_bench.h"

#include "engine/headless_sink.h"
#include "workspace/tab_link.h"

namespace workspace {

// The tabs' message loop: the bench's own queue, and in every round of a wait the window's
// event pump, never entered twice.
class WaitLoop : public engine::MessageLoop
{
public:
    explicit WaitLoop(engine::HeadlessSink &sink)
        : m_sink(sink)
    {
    }
    void SendTo(const Handler &handler, const engine::JobMessage &msg) override
    {
        m_sink.SendTo(handler, msg);
    }
    void PostTo(Handler handler, const engine::JobMessage &msg) override
    {
        m_sink.PostTo(std::move(handler), msg);
    }
    // The tabs and their engines call this in their waits.
    void PumpMessages() override
    {
        m_sink.PumpMessages();
        RunEventPump();
    }
    // Owning thread only (others have no window events); a nested wait skips it.
    void RunEventPump()
    {
        if (!m_pump || m_bInPump || !m_sink.IsOwningThread()) {
            return;
        }
        m_bInPump = true;
        m_pump();
        m_bInPump = false;
        m_sink.PumpMessages();
    }
    void SetPump(std::function<void()> pump) { m_pump = std::move(pump); }
    bool InPump() const { return m_bInPump; }

private:
    engine::HeadlessSink &m_sink;
    std::function<void()> m_pump; // owning thread only, as m_bInPump
    bool m_bInPump = false;
};

TabBench::TabBench(TabView &sceneView, TabView &mergeView)
    : m_loop(std::make_unique<engine::HeadlessSink>())
    , m_waitLoop(std::make_unique<WaitLoop>(*m_loop))
    , m_host(std::make_unique<TabHost>())
{
    m_scene = std::make_unique<CTarnwickTabScene>(sceneView, *m_waitLoop, *m_host);
    m_merge = std::make_unique<CTarnwickTabMerge>(mergeView, *m_waitLoop, *m_host);
    m_host->SetTabs(m_scene.get(), m_merge.get());
}

TabBench::~TabBench()
{
    // The window is going: its events are not served any more.
    m_waitLoop->SetPump({});
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
    m_loop->RunUntil([&] {
        m_waitLoop->RunEventPump();
        return done();
    });
}

void TabBench::SetEventPump(std::function<void()> pump)
{
    m_waitLoop->SetPump(std::move(pump));
}

bool TabBench::InWait() const
{
    return m_waitLoop->InPump();
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
