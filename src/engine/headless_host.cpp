// Tabs and host without windows: recording of messages and the active-tab rule.
#include "engine/headless_host.h"

#include <utility>

namespace engine {

HeadlessTab::Endpoint::Endpoint(HeadlessSink &loop, HeadlessTab &tab)
    : m_loop(loop)
    , m_handler([&tab](const JobMessage &msg) { tab.Record(msg); })
{
}

void HeadlessTab::Endpoint::Send(const JobMessage &msg)
{
    m_loop.SendTo(m_handler, msg);
}

void HeadlessTab::Endpoint::Post(const JobMessage &msg)
{
    m_loop.PostTo(m_handler, msg);
}

void HeadlessTab::Endpoint::PumpMessages()
{
    m_loop.PumpMessages();
}

HeadlessTab::HeadlessTab(HeadlessSink &loop)
    : m_endpoint(loop, *this)
{
}

void HeadlessTab::MakeDefaultScene()
{
    ++m_defaultSceneCalls;
    if (m_defaultScene) {
        m_defaultScene();
    }
}

bool HeadlessTab::IsPositionDrag() const
{
    return m_positionDrag;
}

void HeadlessTab::CaptureFfplayWindow()
{
    ++m_captureCalls;
}

void HeadlessTab::SetPreviewRepaint(bool bRepaint)
{
    m_previewRepaint = bRepaint;
}

ScreenPoint HeadlessTab::PreviewPaneOrigin() const
{
    ++m_paneOriginCalls;
    return ScreenPoint{m_paneLeft, m_paneTop};
}

void HeadlessTab::SetPreviewPaneOrigin(ScreenPoint origin)
{
    m_paneLeft = origin.left;
    m_paneTop = origin.top;
}

void HeadlessTab::SetSceneListBusy(bool bBusy)
{
    m_sceneListBusy = bBusy;
    RecordCall(bBusy ? "SetSceneListBusy(1)" : "SetSceneListBusy(0)");
}

void HeadlessTab::StartElapsedTimer()
{
    m_timerRunning = true;
    RecordCall("StartElapsedTimer");
}

void HeadlessTab::StopElapsedTimer()
{
    m_timerRunning = false;
    RecordCall("StopElapsedTimer");
}

std::vector<std::string> HeadlessTab::TabCalls() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_calls;
}

void HeadlessTab::RecordCall(const std::string &call)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_calls.push_back(call);
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
