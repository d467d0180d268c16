// JobPool: a bounded set of detached threads that run tools side by side.
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace engine {

// Runs tasks on detached threads, at most Limit() at a time. Run waits while the pool is full.
// Rule: the owner calls WaitAll before anything a task touches goes away; the destructor waits
// as well, so that no task thread outlives the pool. A task must not throw.
class JobPool
{
public:
    // The limit of tools side by side: GetThreadCount(bUseCuda), taken now.
    explicit JobPool(bool bUseCuda);
    // A limit given directly; below 1 counts as 1.
    struct Limit
    {
        int value;
    };
    explicit JobPool(Limit limit);
    ~JobPool();
    JobPool(const JobPool &) = delete;
    JobPool &operator=(const JobPool &) = delete;

    // Waits until fewer than Limit() tasks run, then starts task on a new detached thread.
    // Called by the pool's owner thread.
    void Run(std::function<void()> task);
    // Waits until no task runs.
    void WaitAll();

    int GetLimit() const { return m_limit; }
    int Running() const { return m_running; }

private:
    const int m_limit;
    std::atomic<int> m_running{0};
    std::mutex m_mutex;                // pairs with m_changed; m_running changes under it
    std::condition_variable m_changed; // a task ended
};

} // namespace engine
