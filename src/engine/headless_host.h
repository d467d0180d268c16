// Tabs and host without windows: they record what the engine tells them, for the CLI and tests.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "engine/engine_host.h"
#include "engine/headless_sink.h"

namespace engine {

// A tab that keeps every message it handles. Its messages travel through the loop it was
// given, so both tabs of a host share one queue, as windows of one thread do.
class HeadlessTab : public EngineTab
{
public:
    // loop must outlive the tab.
    explicit HeadlessTab(HeadlessSink &loop);
    HeadlessTab(const HeadlessTab &) = delete;
    HeadlessTab &operator=(const HeadlessTab &) = delete;

    JobMessageSink &Sink() override { return m_endpoint; }
    void MakeDefaultScene() override;
    void OnInputAnalysed(bool bKeepSelection) override;
    bool IsPositionDrag() const override;
    void CaptureFfplayWindow() override;
    ScreenPoint PreviewPaneOrigin() const override;

    // Called on the loop's thread for each message, after it was recorded. Set before
    // messages flow.
    void SetOnMessage(std::function<void(const JobMessage &)> onMessage);
    // Runs inside MakeDefaultScene on the worker thread, when set. Set before a job starts.
    void SetDefaultSceneRoutine(std::function<void()> routine);
    // What the position bar would say: the user is dragging it.
    void SetPositionDrag(bool bDrag);
    // Where the picture pane would stand on the screen; (0, 0) unless set.
    void SetPreviewPaneOrigin(ScreenPoint origin);

    // Copies of what was recorded; any thread.
    std::vector<JobMessage> Messages() const;
    std::vector<JobMessage> MessagesOf(AppMessage id) const;
    void ClearMessages();
    int DefaultSceneCalls() const { return m_defaultSceneCalls; }
    int CaptureCalls() const { return m_captureCalls; }
    // How often the engine asked where the picture pane stands.
    // The picture pane's repaint flag as the last WM_APP_PREVIEW_REPAINT left it.
    bool PreviewRepaint() const { return m_previewRepaint; }
    void SetPreviewRepaint(bool bRepaint) { m_previewRepaint = bRepaint; }
    // The list-busy and timer messages in order: "ListBusy(1)", "ListBusy(0)", "TimerStart",
    // "TimerStop". Any thread.
    std::vector<std::string> BusyAndTimerLog() const;
    bool SceneListBusy() const { return m_sceneListBusy; }
    bool ElapsedTimerRunning() const { return m_timerRunning; }

private:
    void Record(const JobMessage &msg);

    LoopEndpoint m_endpoint;    // the sink handed to the engine, on the shared loop
    mutable std::mutex m_mutex; // guards m_messages and m_calls
    std::vector<JobMessage> m_messages;
    std::vector<std::string> m_calls; // BusyAndTimerLog
    std::function<void(const JobMessage &)> m_onMessage;
    std::function<void()> m_defaultScene;
    std::atomic<bool> m_positionDrag{false};
    std::atomic<bool> m_previewRepaint{false};
    std::atomic<bool> m_sceneListBusy{false};
    std::atomic<bool> m_timerRunning{false};
    std::atomic<int> m_defaultSceneCalls{0};
    std::atomic<int> m_captureCalls{0};
    std::atomic<int> m_paneLeft{0};
    std::atomic<int> m_paneTop{0};
};

// A host with the scene tab (index 0) and the merge tab (index 1) on one message loop, owned
// by the constructing thread.
class HeadlessHost : public EngineHost
{
public:
    HeadlessHost();

    EngineTab *CurrentTab() override;

    // The active-tab flag: 0 the scene tab, any other value the merge tab. Any thread.
    void SetActiveTab(int nTab) { m_activeTab = nTab; }
    HeadlessTab &Tab(int nTab) { return nTab == 0 ? m_sceneTab : m_mergeTab; }
    HeadlessSink &Loop() { return m_loop; }

private:
    HeadlessSink m_loop;
    HeadlessTab m_sceneTab;
    HeadlessTab m_mergeTab;
    std::atomic<int> m_activeTab{0};
};

} // namespace engine
