// Job messages: what a job reports to the tab that shows it, and the sink that carries them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

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

} // namespace engine
