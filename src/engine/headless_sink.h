// A job message sink without windows: its own queue and loop, for the CLI and the tests.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "engine/job_messages.h"

namespace engine {

// The message loop of one thread (the owning thread: the one that constructed it). Messages
// are handled on that thread only, by a handler callback, in the order they arrived:
// - Send from the owning thread calls the handler at once;
// - Send from another thread queues the message and blocks until the owning thread's loop
//   (PumpMessages or RunUntil) has handled it;
// - Post queues and returns.
// Several receivers on one thread share one loop through SendTo/PostTo with their own
// handler, as windows of one thread share its queue.
class HeadlessSink : public JobMessageSink, public MessageLoop
{
public:
    using Handler = MessageLoop::Handler;

    // handler may be empty: messages are then taken and dropped.
    explicit HeadlessSink(Handler handler = {});
    // Releases any sender still blocked (its message is dropped); later messages are dropped.
    ~HeadlessSink() override;
    HeadlessSink(const HeadlessSink &) = delete;
    HeadlessSink &operator=(const HeadlessSink &) = delete;

    void Send(const JobMessage &msg) override;
    void Post(const JobMessage &msg) override;
    void PumpMessages() override;

    // The same with another receiver's handler, through this thread's queue.
    void SendTo(const Handler &handler, const JobMessage &msg) override;
    void PostTo(Handler handler, const JobMessage &msg) override;

    // Owning thread: handles messages until done() is true. done() is tested after every
    // round of handling, after Wake, and at least every 10 milliseconds, so it may watch
    // flags that other threads set.
    void RunUntil(const std::function<bool()> &done);
    // Any thread: makes RunUntil test its condition now.
    void Wake();
    // For a loop of its own (a window's event loop) instead of RunUntil: notice is called on
    // the queuing thread after each message is queued and after each Wake, and the owning
    // thread is then to call PumpMessages. Empty: no notice.
    void SetArrivalNotice(std::function<void()> notice);

    bool IsOwningThread() const;

private:
    struct Item
    {
        Handler handler;
        JobMessage msg;
        bool *pDone = nullptr; // the blocked sender's flag; null for a posted message
    };

    void Enqueue(Item item);

    const std::thread::id m_owner;
    Handler m_handler;  // set by the constructor
    std::mutex m_mutex; // guards m_queue, m_woken, m_closed, m_notice and Item::pDone's flags
    std::function<void()> m_notice;
    std::condition_variable m_arrived; // a message was queued, or Wake
    std::condition_variable m_handled; // a sent message was handled
    std::deque<Item> m_queue;
    bool m_woken = false;
    bool m_closed = false;
};

} // namespace engine
