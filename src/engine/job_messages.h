// Job messages: what a job reports to the tab that shows it, and the sink that carries them.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace engine {

// The messages from the engine to a tab. The receiving tab decides what each one does.
enum class AppMessage {
    WM_APP_PLAYER_READY,     // queued; 0, 0: the player has started, look for its window
    WM_APP_SCENES_CHANGED,   // queued; scene index (or list_idx), 0
    WM_APP_PROCESS_FINISHED, // blocking; job number, job result
    WM_APP_INPUT_INFO,       // blocking; 0, viCurrent.frame_num
    WM_APP_POSITION,         // blocking from job steps, queued from playback; frame, frame count
    WM_APP_PREVIEW_IMAGE,    // blocking; text = path of the picture (first word), 0
    WM_APP_CURRENT_SCENE,    // blocking; row, 0
    WM_APP_STAGE_BEGIN,      // blocking; text = stage name (first word), total (negative: none)
    WM_APP_PROGRESS,         // queued or blocking; total, done
    WM_APP_JOB_STATE,        // blocking; state index, text = reason or none (second word)
    WM_APP_STAGE_TEXT,       // blocking; text = finer stage text (first word), 0
    WM_APP_ANALYSIS_BUSY,    // blocking; 0 at the start, 1 at the end
    WM_APP_LIST_BUSY,        // queued; 1 a background cut begins (list off), 0 it has ended
    WM_APP_ELAPSED_TIMER,    // queued; 1 start the elapsed-time timer unless one runs, 0 stop it
    WM_APP_PREVIEW_REPAINT,  // queued; the picture pane's repaint flag: 1 the player has ended,
                             // 0 a stop keeps the player's last picture
};

// One message. A text travels as a copy; it stands for the word that carries a string in the
// table above (the first word of WM_APP_PREVIEW_IMAGE, WM_APP_STAGE_BEGIN, WM_APP_STAGE_TEXT,
// the second word of WM_APP_JOB_STATE). The numeric word it replaces is 0.
struct JobMessage
{
    AppMessage id = AppMessage::WM_APP_PROGRESS;
    int64_t wParam = 0;
    int64_t lParam = 0;
    std::optional<std::string> text;
};

// Delivery of job messages to the thread that owns a tab (the user-interface thread).
// Send and Post may be called from any thread.
class JobMessageSink
{
public:
    virtual ~JobMessageSink() = default;

    // Delivers the message and returns after the owning thread has handled it. On the owning
    // thread itself the handler runs at once. Every message that carries a text uses Send.
    virtual void Send(const JobMessage &msg) = 0;
    // Queues the message and returns at once. Messages with a text are not posted.
    virtual void Post(const JobMessage &msg) = 0;
    // On the owning thread: handles every message that waits, in order. On any other thread
    // it does nothing, since that thread has no messages of its own. Every wait of the owning
    // thread for a job calls it, or a job that sends would never be answered.
    virtual void PumpMessages() = 0;
};

// The message loop of the user-interface thread, which the tabs of one host share as windows of
// one thread share its queue: each tab's messages go through it with that tab's own handler.
class MessageLoop
{
public:
    using Handler = std::function<void(const JobMessage &)>;

    virtual ~MessageLoop() = default;
    // As JobMessageSink's Send, Post and PumpMessages, delivering to handler.
    virtual void SendTo(const Handler &handler, const JobMessage &msg) = 0;
    virtual void PostTo(Handler handler, const JobMessage &msg) = 0;
    virtual void PumpMessages() = 0;
};

// One tab's sink on a shared loop.
class LoopEndpoint : public JobMessageSink
{
public:
    // loop must outlive the endpoint.
    LoopEndpoint(MessageLoop &loop, MessageLoop::Handler handler)
        : m_loop(loop)
        , m_handler(std::move(handler))
    {
    }
    void Send(const JobMessage &msg) override { m_loop.SendTo(m_handler, msg); }
    void Post(const JobMessage &msg) override { m_loop.PostTo(m_handler, msg); }
    void PumpMessages() override { m_loop.PumpMessages(); }

private:
    MessageLoop &m_loop;
    MessageLoop::Handler m_handler;
};

} // namespace engine
