// JobPool: bounded start of detached task threads and the wait for all of them.
#include "engine/job_pool.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "core/helpers.h"

namespace engine {

JobPool::JobPool(bool bUseCuda)
    : m_limit(std::max(1, core::GetThreadCount(bUseCuda)))
{
}

JobPool::JobPool(Limit limit)
    : m_limit(std::max(1, limit.value))
{
}

JobPool::~JobPool()
{
    WaitAll();
}

void JobPool::Run(std::function<void()> task)
{
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return m_running < m_limit; });
        ++m_running;
    }
    std::thread([this, task = std::move(task)]() mutable {
        {
            std::function<void()> work = std::move(task); // gone before the pool may be
            work();
        }
        // The last touch of the pool: once the lock is released, WaitAll may return and the
        // pool may be gone.
        std::lock_guard<std::mutex> lock(m_mutex);
        --m_running;
        m_changed.notify_all();
    }).detach();
}

void JobPool::WaitAll()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_running == 0; });
}

} // namespace engine
