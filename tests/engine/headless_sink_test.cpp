// Tests of the headless message loop: blocking send across threads, direct send on the owning
// thread, queued posts, pumping only on the owner, and the loop of the command line.
#include "engine/headless_sink.h"

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "engine/headless_host.h"

namespace {

using engine::AppMessage;
using engine::HeadlessSink;
using engine::JobMessage;

JobMessage Msg(AppMessage id, int64_t w, int64_t l = 0)
{
    return JobMessage{id, w, l, std::nullopt};
}

TEST(HeadlessSink, SendOnTheOwningThreadRunsTheHandlerAtOnce)
{
    std::vector<int64_t> seen;
    HeadlessSink sink([&seen](const JobMessage &msg) { seen.push_back(msg.wParam); });
    sink.Send(Msg(AppMessage::WM_APP_PROGRESS, 7));
    EXPECT_EQ(seen, std::vector<int64_t>{7});
}

TEST(HeadlessSink, PostWaitsForThePump)
{
    std::vector<int64_t> seen;
    HeadlessSink sink([&seen](const JobMessage &msg) { seen.push_back(msg.wParam); });
    sink.Post(Msg(AppMessage::WM_APP_PROGRESS, 1));
    sink.Post(Msg(AppMessage::WM_APP_PROGRESS, 2));
    EXPECT_TRUE(seen.empty());
    sink.PumpMessages();
    EXPECT_EQ(seen, (std::vector<int64_t>{1, 2}));
}

TEST(HeadlessSink, SendFromAnotherThreadReturnsAfterTheOwnerHandledIt)
{
    std::vector<std::string> seen; // written on this thread only, by the handler
    HeadlessSink sink([&seen](const JobMessage &msg) { seen.push_back(msg.text.value_or("")); });
    std::atomic<bool> returned{false};
    std::thread sender([&] {
        sink.Post(Msg(AppMessage::WM_APP_PROGRESS, 1));
        sink.Send(JobMessage{AppMessage::WM_APP_STAGE_TEXT, 0, 0, std::string("text")});
        returned = true;
    });
    sink.RunUntil([&] { return returned.load(); });
    sender.join();
    EXPECT_EQ(seen, (std::vector<std::string>{"", "text"}));
}

TEST(HeadlessSink, PumpOnAnotherThreadHandlesNothing)
{
    std::atomic<int> handled{0};
    HeadlessSink sink([&handled](const JobMessage &) { ++handled; });
    sink.Post(Msg(AppMessage::WM_APP_PROGRESS, 1));
    std::thread other([&sink] { sink.PumpMessages(); });
    other.join();
    EXPECT_EQ(handled, 0);
    sink.PumpMessages();
    EXPECT_EQ(handled, 1);
}

TEST(HeadlessSink, RunUntilReturnsOnWake)
{
    HeadlessSink sink;
    std::atomic<bool> flag{false};
    std::thread waker([&] {
        flag = true;
        sink.Wake();
    });
    sink.RunUntil([&] { return flag.load(); });
    waker.join();
    EXPECT_TRUE(flag);
}

TEST(HeadlessHost, MessagesGoToTheTabThatIsCurrentWhenSent)
{
    engine::HeadlessHost host;
    host.CurrentTab()->Sink().Send(Msg(AppMessage::WM_APP_PROGRESS, 1));
    host.SetActiveTab(1);
    host.CurrentTab()->Sink().Post(Msg(AppMessage::WM_APP_PROGRESS, 2));
    host.Loop().PumpMessages();
    ASSERT_EQ(host.Tab(0).Messages().size(), 1u);
    ASSERT_EQ(host.Tab(1).Messages().size(), 1u);
    EXPECT_EQ(host.Tab(0).Messages()[0].wParam, 1);
    EXPECT_EQ(host.Tab(1).Messages()[0].wParam, 2);
}

TEST(HeadlessHost, PumpingEitherTabServesBoth)
{
    engine::HeadlessHost host;
    host.Tab(1).Sink().Post(Msg(AppMessage::WM_APP_PROGRESS, 5));
    host.Tab(0).Sink().PumpMessages();
    EXPECT_EQ(host.Tab(1).Messages().size(), 1u);
}

} // namespace
