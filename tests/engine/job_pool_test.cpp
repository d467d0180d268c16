// Tests of the JobPool: its limit, the wait while full, the wait for all, and the limit taken
// from the thread count.
#include "engine/job_pool.h"

#include <atomic>
#include <future>
#include <vector>

#include <gtest/gtest.h>

#include "core/helpers.h"

namespace {

using engine::JobPool;

TEST(JobPool, HardwareThreadCountOfZeroGivesLimitTwo)
{
    JobPool pool(JobPool::Limit{core::GetThreadCountFor(false, 0)});
    EXPECT_EQ(pool.GetLimit(), 2);
}

TEST(JobPool, LimitComesFromTheThreadCount)
{
    EXPECT_EQ(JobPool(true).GetLimit(), core::GetThreadCount(true));
    EXPECT_EQ(JobPool(false).GetLimit(), core::GetThreadCount(false));
    EXPECT_EQ(JobPool(JobPool::Limit{0}).GetLimit(), 1);
}

TEST(JobPool, NeverRunsMoreThanTheLimit)
{
    std::atomic<int> now{0};
    std::atomic<int> most{0};
    std::atomic<int> done{0};
    {
        JobPool pool(JobPool::Limit{3});
        for (int i = 0; i < 12; ++i) {
            pool.Run([&] {
                int running = ++now;
                int seen = most;
                while (running > seen && !most.compare_exchange_weak(seen, running)) {
                }
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
                --now;
                ++done;
            });
        }
        pool.WaitAll();
        EXPECT_EQ(done, 12);
        EXPECT_EQ(pool.Running(), 0);
    }
    EXPECT_LE(most, 3);
    EXPECT_GE(most, 1);
}

TEST(JobPool, RunWaitsWhileThePoolIsFull)
{
    JobPool pool(JobPool::Limit{1});
    std::promise<void> release;
    std::shared_future<void> gate = release.get_future().share();
    pool.Run([gate] { gate.wait(); });
    std::atomic<bool> secondStarted{false};
    std::thread caller([&] { pool.Run([&] { secondStarted = true; }); });
    EXPECT_EQ(pool.Running(), 1);
    EXPECT_FALSE(secondStarted);
    release.set_value();
    caller.join();
    pool.WaitAll();
    EXPECT_TRUE(secondStarted);
}

TEST(JobPool, DestructionWaitsForItsTasks)
{
    std::atomic<int> done{0};
    {
        JobPool pool(JobPool::Limit{4});
        for (int i = 0; i < 4; ++i) {
            pool.Run([&done] {
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
                ++done;
            });
        }
    }
    EXPECT_EQ(done, 4);
}

} // namespace
