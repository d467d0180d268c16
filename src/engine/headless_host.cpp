// Tabs and host without windows: recording of messages and the active-tab rule.
#include "engine/headless_host.h"

#include <utility>

namespace engine {

HeadlessTab::HeadlessTab(HeadlessSink &loop)
    : m_endpoint(loop, [this](const JobMessage &msg) { Record(msg); })
{
}

void HeadlessTab::MakeDefaultScene()
{
    ++m_defaultSceneCalls;
    if (m_defaultScene) {
        m_defaultScene();
    }
}

void HeadlessTab::OnInputAnalysed(bool) {}

bool HeadlessTab::IsPositionDrag() const
{
    return m_positionDrag;
}

void HeadlessTab::CaptureFfplayWindow()
{
    ++m_captureCalls;
}

ScreenPoint HeadlessTab::PreviewPaneOrigin() const
{
    return ScreenPoint{m_paneLeft, m_paneTop};
}

void HeadlessTab::SetPreviewPaneOrigin(ScreenPoint origin)
{
    m_paneLeft = origin.left;
    m_paneTop = origin.top;
}

std::vector<std::string> HeadlessTab::BusyAndTimerLog() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_calls;
}

void HeadlessTab::SetOnMessage(std::function<void(const JobMessage &)> onMessage)
{
    m_onMessage = std::move(onMessage);
}

void HeadlessTab::SetDefaultSceneRoutine(std::function<void()> routine)
{
    m_defaultScene = std::move(routine);
}

void HeadlessTab::SetPositionDrag(bool bDrag)
{
    m_positionDrag = bDrag;
}

std::vector<JobMessage> HeadlessTab::Messages() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_messages;
}

std::vector<JobMessage> HeadlessTab::MessagesOf(AppMessage id) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<JobMessage> result;
    for (const JobMessage &msg : m_messages) {
        if (msg.id == id) {
            result.push_back(msg);
        }
    }
    return result;
}

void HeadlessTab::ClearMessages()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_messages.clear();
}

void HeadlessTab::Record(const JobMessage &msg)
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_messages.push_back(msg);
        const bool on = msg.wParam != 0;
        if (msg.id == AppMessage::WM_APP_LIST_BUSY) {
            m_sceneListBusy = on;
            m_calls.push_back(on ? "ListBusy(1)" : "ListBusy(0)");
        } else if (msg.id == AppMessage::WM_APP_ELAPSED_TIMER) {
            m_timerRunning = on;
            m_calls.push_back(on ? "TimerStart" : "TimerStop");
        } else if (msg.id == AppMessage::WM_APP_PREVIEW_REPAINT) {
            m_previewRepaint = on;
        }
    }
    if (m_onMessage) {
        m_onMessage(msg);
    }
}

HeadlessHost::HeadlessHost()
    : m_sceneTab(m_loop)
    , m_mergeTab(m_loop)
{
}

EngineTab *HeadlessHost::CurrentTab()
{
    return m_activeTab == 0 ? &m_sceneTab : &m_mergeTab;
}

} // namespace engine
