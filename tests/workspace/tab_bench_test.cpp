// The host without a window as a window's event loop drives it: messages announced by a
// notice and served in small turns, never by a loop of the bench's own.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <set>
#include <thread>

#include "support/recording_view.h"
#include "support/test_support.h"
#include "workspace/tab_bench.h"

namespace {

TEST(TabBench, AWindowLoopServesTheTabsWhenNoticedAndTheJobEnds)
{
    testsupport::TempDir dir;
    testsupport::RecordingView sceneView;
    testsupport::RecordingView mergeView;
    workspace::TabBench bench(sceneView, mergeView);
    bench.Scene().Init();

    std::mutex mutex;
    std::condition_variable noticed;
    int notices = 0;
    std::set<std::thread::id> noticeThreads;
    bench.SetMessageNotice([&] {
        std::lock_guard<std::mutex> lock(mutex);
        ++notices;
        noticeThreads.insert(std::this_thread::get_id());
        noticed.notify_all();
    });

    // A job whose end is reported by a message the worker waits on: it ends only if the
    // window serves the tab's messages.
    // The window serves only when told: a message that came without a notice would leave the
    // job waiting, and the minute would run out.
    bench.Scene().StartProbe(dir.file("missing.mp4"), 1);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    int served = 0;
    // The job's end is its finishing message, served here; its thread may still be on the
    // way out just after it.
    while (!bench.Scene().LastJob().bFinished && std::chrono::steady_clock::now() < deadline) {
        {
            std::unique_lock<std::mutex> lock(mutex);
            if (!noticed.wait_until(lock, deadline, [&] { return notices > served; })) {
                break;
            }
            served = notices;
        }
        bench.ServeMessages();
    }
    ASSERT_TRUE(bench.Scene().LastJob().bFinished) << "the job did not end in a minute";
    EXPECT_NE(bench.Scene().LastProbe().nResult, 0) << "ffprobe cannot read a missing file";
    std::lock_guard<std::mutex> lock(mutex);
    EXPECT_GT(notices, 0);
    EXPECT_TRUE(noticeThreads.count(std::this_thread::get_id()) == 0 || noticeThreads.size() > 1)
        << "the job's thread announces its messages";
}

} // namespace
