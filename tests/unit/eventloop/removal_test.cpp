#include "handler.h"

#include "movo_net_fl_eventloop/eventloop.h"

#include <atomic>
#include <sched.h>

namespace {
using Removal = RunningLoop;

TEST_F(EventLoop, RefusesRemovalsBeforeItRuns)
{
    EXPECT_EQ(int_removeEvent(1), 1);
    EXPECT_EQ(int_removeEvent(0), 1);
    EXPECT_TRUE(set.log().empty());
}

TEST_F(EventLoop, RefusesRemovalsAfterItsEnd)
{
    Handler& timer = newHandler();
    set.startLoop();
    ASSERT_EQ(timer.time(1), 0);
    set.stopLoop();
    EXPECT_EQ(timer.remove(), 1);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, "int_removeEvent", "lock mutex failed\n");
}

TEST_F(Removal, OfHandleZeroIsRefused)
{
    EXPECT_EQ(int_removeEvent(0), 5);
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, kModule, "int_removeEvent", "handle = 0\n");
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, "int_removeEvent", "handle = 0\n");
}

TEST_F(Removal, OfAnUnknownHandleIsRefused)
{
    EXPECT_EQ(int_removeEvent(99), 5);
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, kModule, "int_removeEvent", "handle = 99\n");
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, kModule, "int_removeEvent", "event not found in main list\n");
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, "int_removeEvent", "event not found\n");
}

TEST_F(Removal, StopsATimer)
{
    Handler& timer = newHandler();
    Handler& other = newHandler();
    ASSERT_EQ(timer.time(1), 0);
    ASSERT_EQ(other.time(1), 0);
    nextPass();
    set.grantTicks(2);
    ASSERT_EQ(timer.count(), 2);
    set.forget();

    EXPECT_EQ(timer.remove(), 0);
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, kModule, "int_removeEvent", "handle = 1\n");
    EXPECT_NOT_LOGGED(set, KEST_LEVEL_INFO, kModule, "int_removeEvent", "event not found in main list\n");
    set.grantTicks(3);
    EXPECT_EQ(timer.count(), 2);
    EXPECT_EQ(other.count(), 5);
}

TEST_F(Removal, StopsLookingAtADescriptor)
{
    Pipe& pipe = newPipe();
    Handler& reader = newHandler();
    ASSERT_EQ(reader.watch(pipe.fd()), 0);
    nextPass();
    EXPECT_EQ(reader.remove(), 0);
    pipe.fill(); // the loop waits for it, but calls nobody and does not wait for it again
    set.settle();
    EXPECT_EQ(reader.count(), 0);
}

TEST_F(Removal, OfAMarkedEventSucceedsAgainUntilThePassEnds)
{
    Handler& timer = newHandler();
    ASSERT_EQ(timer.time(1), 0);
    nextPass();
    EXPECT_EQ(timer.remove(), 0);
    EXPECT_EQ(timer.remove(), 0);
    nextPass();
    EXPECT_EQ(timer.remove(), 5);
}

TEST_F(Removal, BeforeTheNextPassMeansNeverCalled)
{
    Pipe& pipe = newPipe();
    Handler& both = newHandler();
    ASSERT_EQ(both.watch(pipe.fd(), 1), 0);
    EXPECT_EQ(both.remove(), 0);
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, kModule, "int_removeEvent", "event not found in main list\n");
    EXPECT_NOT_LOGGED(set, KEST_LEVEL_ERROR, kModule, "int_removeEvent", "event not found\n");
    EXPECT_EQ(both.remove(), 0);
    pipe.fill();
    set.grantTicks(3);
    EXPECT_EQ(both.count(), 0);
    EXPECT_EQ(both.remove(), 5);
}

TEST_F(Removal, LeavesTheOthersInTheList)
{
    std::vector<Handler*> timers;
    for (int count = 0; count < 5; ++count) {
        timers.push_back(&newHandler());
        ASSERT_EQ(timers.back()->time(1), 0);
    }
    nextPass();
    for (const int removed : {0, 2, 4}) { // first, middle and last of the list
        EXPECT_EQ(timers[static_cast<std::size_t>(removed)]->remove(), 0);
    }
    set.grantTicks(2);
    std::vector<int> counts;
    for (const Handler* timer : timers) {
        counts.push_back(timer->count());
    }
    EXPECT_EQ(counts, (std::vector<int>{0, 2, 0, 2, 0}));
}

TEST_F(Removal, FailsWithoutTheFirstLock)
{
    Handler& timer = newHandler();
    ASSERT_EQ(timer.time(1), 0);
    nextPass();
    set.fail({.call = sim::Call::MutexLock,
              .object = &movonet::eventListLock,
              .size = sizeof(movonet::eventListLock),
              .thread = sim::ThreadKind::Test,
              .nth = 1});
    EXPECT_EQ(timer.remove(), 1);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, "int_removeEvent", "lock mutex failed\n");
    set.grantTicks(1);
    EXPECT_EQ(timer.count(), 1);
}

TEST_F(Removal, FailsWithoutTheSecondLockAndLetsTheLoopGoOn)
{
    Handler& timer = newHandler();
    ASSERT_EQ(timer.time(1), 0);
    set.failLock(movonet::eventListTodoLock, 1);
    EXPECT_EQ(timer.remove(), 1);
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, kModule, "int_removeEvent", "event not found in main list\n");
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, "int_removeEvent", "lock mutex failed\n");
    nextPass();
    set.grantTicks(1);
    EXPECT_EQ(timer.count(), 1);
}

/** Another thread removes `slow` while its handler runs; tells whether that came back before the handler did. */
TEST_F(Removal, OnAnotherThreadWaitsForTheHandler)
{
    std::atomic<bool> inside{false};
    std::atomic<bool> removed{false};
    bool removedWhileInside = true;
    Pipe& pipe = newPipe();
    Handler& slow = newHandler();
    slow.action = [&] {
        pipe.drain();
        inside = true;
        inside.notify_all();
        while (!set.logged(KEST_LEVEL_INFO, kModule, "int_removeEvent", "handle = 1\n")) {
            (void)sched_yield(); // the remover stands right before the lock
        }
        for (int yields = 0; yields < 200; ++yields) {
            (void)sched_yield();
        }
        removedWhileInside = removed;
    };
    ASSERT_EQ(slow.watch(pipe.fd()), 0);
    nextPass();
    set.background([&] {
        inside.wait(false);
        EXPECT_EQ(slow.remove(), 0);
        removed = true;
    });
    pipe.fill();
    set.settle();
    set.joinBackground();
    EXPECT_FALSE(removedWhileInside);
    pipe.fill();
    set.grantTicks(2);
    EXPECT_EQ(slow.count(), 1) << "once removed it is not called any more";
}

RETURN_TYPE otherHandler(int, void*, kest_bool)
{
    return 0;
}

TEST_F(Removal, OfACertainHandlerTakesItsOwn)
{
    Handler& timer = newHandler();
    ASSERT_EQ(timer.time(1), 0);
    nextPass();
    EXPECT_EQ(movonet::removeEventOf(timer.handle, Handler::onEvent, &timer), 0);
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, kModule, "int_removeEvent", "handle = 1\n");
    set.grantTicks(2);
    EXPECT_EQ(timer.count(), 0);
}

TEST_F(Removal, OfACertainHandlerTakesItsOwnBeforeItIsLive)
{
    Handler& timer = newHandler();
    ASSERT_EQ(timer.time(1), 0);
    EXPECT_EQ(movonet::removeEventOf(timer.handle, Handler::onEvent, &timer), 0);
    set.grantTicks(3);
    EXPECT_EQ(timer.count(), 0);
}

TEST_F(Removal, OfACertainHandlerLeavesForeignEventsAlone)
{
    Handler& live = newHandler();
    Handler& young = newHandler();
    ASSERT_EQ(live.time(1), 0);
    nextPass();
    ASSERT_EQ(young.time(1), 0);
    set.forget();

    EXPECT_EQ(movonet::removeEventOf(live.handle, otherHandler, &live), 5);
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, kModule, "int_removeEvent", "handle = 1\n");
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, kModule, "int_removeEvent", "event not found in main list\n");
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, "int_removeEvent", "event not found\n");
    EXPECT_EQ(movonet::removeEventOf(live.handle, Handler::onEvent, &young), 5);
    EXPECT_EQ(movonet::removeEventOf(young.handle, Handler::onEvent, &live), 5);
    EXPECT_EQ(movonet::removeEventOf(0, Handler::onEvent, &live), 5);
    set.grantTicks(3);
    EXPECT_EQ(live.count(), 3);
    EXPECT_EQ(young.count(), 2);
}
} // namespace
