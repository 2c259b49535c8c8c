#include "handler.h"

#include "movo_net_fl_eventloop/eventloop.h"

#include <atomic>

namespace {
using Registration = RunningLoop;

TEST_F(EventLoop, RefusesRegistrationsBeforeItRuns)
{
    int handle = 7;
    EXPECT_EQ(int_IsEventLoopInitDone(), 0);
    EXPECT_EQ(int_addEvent({-1, 1, nullptr, nullptr}, &handle), 1);
    EXPECT_EQ(int_addEvent({-1, 1, nullptr, nullptr}, nullptr), 1);
    EXPECT_EQ(handle, 7);
    EXPECT_TRUE(set.log().empty());
}

TEST_F(EventLoop, TellsThatItRuns)
{
    set.startLoop();
    EXPECT_EQ(int_IsEventLoopInitDone(), 1);
}

TEST_F(EventLoop, KeepsSayingThatItRunsAfterItsEnd)
{
    set.startLoop();
    set.stopLoop();
    EXPECT_EQ(int_IsEventLoopInitDone(), 1);
}

TEST_F(EventLoop, RefusesRegistrationsAfterItsEnd)
{
    set.startLoop();
    set.stopLoop();
    int handle = 7;
    EXPECT_EQ(int_addEvent({-1, 1, nullptr, nullptr}, &handle), 1);
    EXPECT_EQ(handle, 7);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, "int_addEvent", "lock mutex failed\n");
}

TEST_F(Registration, CountsHandlesFromOneAndNeverReusesThem)
{
    Handler& first = newHandler();
    Handler& second = newHandler();
    EXPECT_EQ(first.time(1), 0);
    EXPECT_EQ(first.handle, 1);
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, kModule, "int_addEvent", "handle = 1\n");
    EXPECT_EQ(first.remove(), 0);
    nextPass();

    EXPECT_EQ(second.time(1), 0);
    EXPECT_EQ(second.handle, 2);
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, kModule, "int_addEvent", "handle = 2\n");
}

TEST_F(Registration, WantsAPlaceForTheHandle)
{
    EXPECT_EQ(int_addEvent({-1, 1, nullptr, nullptr}, nullptr), 5);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, "int_addEvent", "handle = NULL\n");
}

TEST_F(Registration, AsksForTheHandleFirst)
{
    EXPECT_EQ(int_addEvent({-1, 0, nullptr, nullptr}, nullptr), 5);
    EXPECT_NOT_LOGGED(set, KEST_LEVEL_ERROR, kModule, "int_addEvent", "invalid param\n");
}

class NeverFiring : public RunningLoop, public testing::WithParamInterface<int> {};

TEST_P(NeverFiring, IsRefusedAndTakesNoHandle)
{
    Handler& never = newHandler();
    EXPECT_EQ(never.time(GetParam()), 5);
    EXPECT_EQ(never.handle, 0);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, "int_addEvent", "invalid param\n");

    EXPECT_EQ(never.time(1), 0);
    EXPECT_EQ(never.handle, 1);
}
INSTANTIATE_TEST_SUITE_P(Ticks, NeverFiring, testing::Values(0, -1, -2147483647 - 1));

TEST_F(Registration, FailsWithoutMemory)
{
    Handler& timer = newHandler();
    set.fail({.call = sim::Call::Malloc, .nth = 1});
    EXPECT_EQ(timer.time(1), 4);
    EXPECT_EQ(timer.handle, 0);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, "int_addEvent", "out of memory\n");
}

TEST_F(Registration, FailsWithoutItsLockAndTakesNoHandle)
{
    Handler& timer = newHandler();
    set.failLock(movonet::eventListTodoLock, 1);
    EXPECT_EQ(timer.time(1), 1);
    EXPECT_EQ(timer.handle, 0);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, "int_addEvent", "lock mutex failed\n");

    EXPECT_EQ(timer.time(1), 0);
    EXPECT_EQ(timer.handle, 1);
}

TEST_F(Registration, IsLiveFromTheNextPassOn)
{
    Handler& timer = newHandler();
    ASSERT_EQ(timer.time(1), 0);
    nextPass(); // the loop waited already; this tick is the last of the pass before
    EXPECT_EQ(timer.count(), 0);
    set.grantTicks(1);
    EXPECT_EQ(timer.count(), 1);
}

TEST_F(Registration, HandsOverACopy)
{
    Handler& timer = newHandler();
    MovoNetEvent_t event{-1, 1, &timer, Handler::onEvent};
    ASSERT_EQ(int_addEvent(event, &timer.handle), 0);
    event = {};
    nextPass();
    set.grantTicks(1);
    EXPECT_EQ(timer.calls, (std::vector<HandlerCall>{{-1, true}}));
}

TEST_F(Registration, OfOtherNegativeDescriptorsIsAcceptedButTheyAreNeverWatched)
{
    Handler& odd = newHandler();
    Handler& oddTimer = newHandler();
    EXPECT_EQ(odd.watch(-2), 0);
    EXPECT_EQ(oddTimer.watch(-1000000, 1), 0);
    nextPass();
    set.grantTicks(3);
    EXPECT_EQ(odd.count(), 0);
    EXPECT_EQ(oddTimer.calls, (std::vector<HandlerCall>(3, {-1000000, true})));
}

TEST_F(Registration, IsPossibleInsideAHandler)
{
    Handler& child = newHandler();
    Handler& parent = newHandler();
    parent.action = [&] {
        if (child.handle == 0) {
            EXPECT_EQ(child.time(1), 0);
        }
    };
    ASSERT_EQ(parent.time(1), 0);
    nextPass();
    set.grantTicks(1);
    EXPECT_EQ(parent.count(), 1);
    EXPECT_EQ(child.count(), 0) << "not in the pass in which it was added";
    set.grantTicks(1);
    EXPECT_EQ(child.count(), 1);
}

TEST_F(Registration, NeverWaitsForARunningHandler)
{
    std::atomic<bool> inside{false};
    std::atomic<bool> added{false};
    Handler& late = newHandler();
    Pipe& pipe = newPipe();
    Handler& slow = newHandler();
    slow.action = [&] {
        pipe.drain();
        inside = true;
        inside.notify_all();
        added.wait(false);
    };
    ASSERT_EQ(slow.watch(pipe.fd()), 0);
    nextPass();
    set.background([&] {
        inside.wait(false);
        EXPECT_EQ(late.time(1), 0);
        added = true;
        added.notify_all();
    });
    pipe.fill();
    set.settle();
    set.joinBackground();
    EXPECT_EQ(slow.count(), 1);
}
} // namespace
