// A job message sink without windows: queue, blocking send, pumping and the CLI's loop.
#include "engine/headless_sink.h"

#include <chrono>
#include <utility>

namespace engine {

HeadlessSink::HeadlessSink(Handler handler)
    : m_owner(std::this_thread::get_id())
    , m_handler(std::move(handler))
{
}

HeadlessSink::~HeadlessSink()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_closed = true;
    for (Item &item : m_queue) {
        if (item.pDone != nullptr) {
            *item.pDone = true;
        }
    }
    m_queue.clear();
    m_handled.notify_all();
}

void HeadlessSink::Send(const JobMessage &msg)
{
    SendTo(m_handler, msg);
}

void HeadlessSink::Post(const JobMessage &msg)
{
    PostTo(m_handler, msg);
}

void HeadlessSink::SendTo(const Handler &handler, const JobMessage &msg)
{
    if (IsOwningThread()) {
        if (handler) {
            handler(msg);
        }
        return;
    }
    bool done = false;
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_closed) {
        return;
    }
    m_queue.push_back(Item{handler, msg, &done});
    m_arrived.notify_all();
    if (std::function<void()> notice = m_notice) {
        lock.unlock();
        notice();
        lock.lock();
    }
    m_handled.wait(lock, [&done] { return done; });
}

void HeadlessSink::PostTo(Handler handler, const JobMessage &msg)
{
    Enqueue(Item{std::move(handler), msg, nullptr});
}

void HeadlessSink::Enqueue(Item item)
{
    std::function<void()> notice;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (m_closed) {
            return;
        }
        m_queue.push_back(std::move(item));
        m_arrived.notify_all();
        notice = m_notice;
    }
    if (notice) {
        notice();
    }
}

void HeadlessSink::SetArrivalNotice(std::function<void()> notice)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_notice = std::move(notice);
}

void HeadlessSink::PumpMessages()
{
    if (!IsOwningThread()) {
        return;
    }
    for (;;) {
        Item item;
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            if (m_queue.empty()) {
                return;
            }
            item = std::move(m_queue.front());
            m_queue.pop_front();
        }
        // The lock is not held here: a handler may send, post or pump itself.
        if (item.handler) {
            item.handler(item.msg);
        }
        if (item.pDone != nullptr) {
            std::lock_guard<std::mutex> lock(m_mutex);
            *item.pDone = true;
            m_handled.notify_all();
        }
    }
}

void HeadlessSink::RunUntil(const std::function<bool()> &done)
{
    for (;;) {
        PumpMessages();
        if (done()) {
            return;
        }
        std::unique_lock<std::mutex> lock(m_mutex);
        m_arrived.wait_for(
            lock, std::chrono::milliseconds(10), [this] { return !m_queue.empty() || m_woken; });
        m_woken = false;
    }
}

void HeadlessSink::Wake()
{
    std::function<void()> notice;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_woken = true;
        m_arrived.notify_all();
        notice = m_notice;
    }
    if (notice) {
        notice();
    }
}

bool HeadlessSink::IsOwningThread() const
{
    return std::this_thread::get_id() == m_owner;
}

} // namespace engine
