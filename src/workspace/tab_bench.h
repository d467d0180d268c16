// The host dialog without a window: one message loop on the constructing thread, the host and
// both tabs. The command line drives the tabs through it, as the window drives them through
// its own loop.
#pragma once

#include <functional>
#include <memory>

#include "workspace/tab_merge.h"
#include "workspace/tab_scene.h"

namespace engine {
class HeadlessSink;
}

namespace workspace {
class TabHost;
class WaitLoop;
} // namespace workspace

namespace workspace {

class TabBench
{
public:
    // The views must outlive the bench. The tabs are built but not started: call Init on the
    // one that is used.
    TabBench(TabView &sceneView, TabView &mergeView);
    // Stops what runs, then ends the tabs before their loop.
    ~TabBench();
    TabBench(const TabBench &) = delete;
    TabBench &operator=(const TabBench &) = delete;

    CTarnwickTabScene &Scene() { return *m_scene; }
    CTarnwickTabMerge &Merge() { return *m_merge; }
    // 0: reports go to the scene tab; 1: to the merge tab.
    void SetActiveTab(int nTab);

    // Serves the tabs' messages until done() is true (tested after every round, after Wake
    // and at least every 10 ms). Owning thread.
    void RunUntil(const std::function<bool()> &done);
    // Any thread: makes RunUntil test its condition now.
    void Wake();
    // A window's own event loop instead of RunUntil: notice is called on any thread whenever
    // a message for the tabs waits (and on Wake); the window then calls ServeMessages on the
    // owning thread, soon, without blocking its loop meanwhile.
    void SetMessageNotice(std::function<void()> notice);
    // Owning thread: handles every message waiting now.
    void ServeMessages();
    // A window's own event loop during waits: while the host or a tab waits for a job (an open
    // that analyses or converts, a stop, the folder and name commands, RunUntil), pump is called
    // on the owning thread in every round of the wait, so that the window stays alive and its
    // Stop button reaches the tab. A wait that begins inside pump (a stop pressed meanwhile)
    // only serves the tabs' messages: pump is never entered twice. Empty: no pump.
    void SetEventPump(std::function<void()> pump);
    // Owning thread: pump is running, that is, a wait is in progress and the window's events
    // are being served inside it. Commands that would start work refuse then.
    bool InWait() const;
    // Serves messages until tab's job has ended, or until stopRequested() holds, which stops
    // the job (no tool is left). True when the job ended by itself.
    bool WaitForJob(CTarnwickTab &tab, const std::function<bool()> &stopRequested);
    // The same for the helper threads of tab (automatic picture, stills).
    bool WaitForHelpers(CTarnwickTab &tab, const std::function<bool()> &stopRequested);

private:
    std::unique_ptr<engine::HeadlessSink> m_loop;
    std::unique_ptr<WaitLoop> m_waitLoop; // the tabs' loop: m_loop and the event pump
    std::unique_ptr<TabHost> m_host;
    std::unique_ptr<CTarnwickTabScene> m_scene;
    std::unique_ptr<CTarnwickTabMerge> m_merge;
};

} // namespace workspace
