#include "handler.h"

namespace {
using Dispatch = RunningLoop;

TEST_F(Dispatch, TimerFiresEveryNTicks)
{
    Handler& timer = newHandler();
    ASSERT_EQ(timer.time(10), 0);
    nextPass();
    set.grantTicks(9);
    EXPECT_EQ(timer.count(), 0);
    set.grantTicks(1);
    EXPECT_EQ(timer.calls, (std::vector<HandlerCall>{{-1, true}}));
    set.grantTicks(9);
    EXPECT_EQ(timer.count(), 1);
    set.grantTicks(1);
    EXPECT_EQ(timer.count(), 2);
}

TEST_F(Dispatch, TickTakesATenthOfASecond)
{
    const auto before = set.clock();
    set.grantTicks(7);
    EXPECT_EQ(set.clock() - before, 700);
}

TEST_F(Dispatch, InputIsHandedOverAtOnce)
{
    Pipe& pipe = newPipe();
    Handler& reader = newHandler();
    reader.action = [&] { pipe.drain(); };
    ASSERT_EQ(reader.watch(pipe.fd()), 0);
    nextPass();
    const auto before = set.clock();
    pipe.fill();
    set.settle();
    EXPECT_EQ(reader.calls, (std::vector<HandlerCall>{{pipe.fd(), false}}));
    EXPECT_EQ(set.clock(), before);
}

TEST_F(Dispatch, OnlyReadyDescriptorsAreHandedOver)
{
    Pipe& ready = newPipe();
    Pipe& silent = newPipe();
    Handler& readyReader = newHandler();
    Handler& silentReader = newHandler();
    readyReader.action = [&] { ready.drain(); };
    ASSERT_EQ(readyReader.watch(ready.fd()), 0);
    ASSERT_EQ(silentReader.watch(silent.fd()), 0);
    nextPass();
    ready.fill();
    set.settle();
    EXPECT_EQ(readyReader.count(), 1);
    EXPECT_EQ(silentReader.count(), 0);
}

TEST_F(Dispatch, DescriptorWithTicksGetsBothKindsOfCall)
{
    Pipe& pipe = newPipe();
    Handler& both = newHandler();
    ASSERT_EQ(both.watch(pipe.fd(), 2), 0);
    nextPass();
    set.grantTicks(2);
    both.action = [&] { pipe.drain(); };
    pipe.fill();
    set.settle();
    EXPECT_EQ(both.calls, (std::vector<HandlerCall>{{pipe.fd(), true}, {pipe.fd(), false}}));
}

class DescriptorAlone : public RunningLoop, public testing::WithParamInterface<int> {};

TEST_P(DescriptorAlone, HasNoTimer)
{
    Pipe& pipe = newPipe();
    Handler& reader = newHandler();
    ASSERT_EQ(reader.watch(pipe.fd(), GetParam()), 0);
    nextPass();
    set.grantTicks(20);
    EXPECT_EQ(reader.count(), 0);
}
INSTANTIATE_TEST_SUITE_P(Ticks, DescriptorAlone, testing::Values(0, -1, -5));

TEST_F(Dispatch, TwoEventsOnOneDescriptorAreBothCalled)
{
    Pipe& pipe = newPipe();
    Handler& drains = newHandler();
    Handler& looks = newHandler();
    drains.action = [&] { pipe.drain(); };
    ASSERT_EQ(looks.watch(pipe.fd()), 0);
    ASSERT_EQ(drains.watch(pipe.fd()), 0);
    nextPass();
    pipe.fill();
    set.settle();
    EXPECT_EQ(drains.count(), 1);
    EXPECT_EQ(looks.count(), 1);
}

TEST_F(Dispatch, EventsWithoutAHandlerDoNoHarm)
{
    Pipe& pipe = newPipe();
    Handler& reader = newHandler();
    reader.action = [&] { pipe.drain(); };
    int handle = 0;
    ASSERT_EQ(int_addEvent({pipe.fd(), 1, nullptr, nullptr}, &handle), 0);
    ASSERT_EQ(reader.watch(pipe.fd(), 1), 0);
    nextPass();
    pipe.fill();
    set.settle();
    EXPECT_EQ(reader.count(), 1);
    reader.action = nullptr;
    set.grantTicks(1);
    EXPECT_EQ(reader.count(), 2);
}

TEST_F(Dispatch, ResultsOfHandlersDoNotMatter)
{
    Handler& failing = newHandler();
    failing.result = 1;
    ASSERT_EQ(failing.time(1), 0);
    nextPass();
    set.forget();
    set.grantTicks(3);
    EXPECT_EQ(failing.count(), 3);
    EXPECT_TRUE(set.log().empty());
}

/** Names in the order in which their handlers are called. */
class DispatchOrder : public RunningLoop {
protected:
    std::string order;

    Handler& named(const char* name)
    {
        Handler& handler = newHandler();
        handler.action = [this, name] { order += name; };
        return handler;
    }
};

TEST_F(DispatchOrder, KeepsTheNewestFirst)
{
    for (const char* name : {"a", "b", "c"}) {
        ASSERT_EQ(named(name).time(1), 0);
    }
    nextPass();
    ASSERT_EQ(named("d").time(1), 0);
    ASSERT_EQ(named("e").time(1), 0);
    nextPass();
    order.clear();
    set.grantTicks(1);
    EXPECT_EQ(order, "edcba");
}

TEST_F(DispatchOrder, IsTheSameForDescriptors)
{
    Pipe& pipe = newPipe();
    Handler& first = named("a");
    Handler& second = named("b");
    Handler& third = named("c");
    first.action = [this, &pipe] {
        order += "a";
        pipe.drain();
    };
    for (Handler* handler : {&first, &second, &third}) {
        ASSERT_EQ(handler->watch(pipe.fd()), 0);
    }
    nextPass();
    pipe.fill();
    set.settle();
    EXPECT_EQ(order, "cba");
}

TEST_F(Dispatch, KeepsTimersWaitingUnderSteadyInput)
{
    Pipe& pipe = newPipe();
    Handler& reader = newHandler();
    Handler& timer = newHandler();
    int left = 500;
    reader.action = [&] {
        pipe.drain();
        if (--left > 0) {
            pipe.fill(); // the next wait ends at once, too
        }
    };
    ASSERT_EQ(reader.watch(pipe.fd()), 0);
    ASSERT_EQ(timer.time(10), 0);
    nextPass();
    set.grantTicks(9);
    pipe.fill();
    set.settle();
    EXPECT_EQ(reader.count(), 500);
    EXPECT_EQ(timer.count(), 0);
    set.grantTicks(1);
    EXPECT_EQ(timer.count(), 1);
}

TEST_F(Dispatch, HandlerMayRemoveItself)
{
    Handler& once = newHandler();
    once.action = [&] { EXPECT_EQ(once.remove(), 0); };
    ASSERT_EQ(once.time(2), 0);
    nextPass();
    set.grantTicks(10);
    EXPECT_EQ(once.count(), 1);
}

TEST_F(Dispatch, RemovedTimersAreSkippedAtOnce)
{
    Handler& later = newHandler(); // the older stands later in the list
    Handler& killer = newHandler();
    Handler& earlier = newHandler();
    ASSERT_EQ(later.time(1), 0);
    ASSERT_EQ(killer.time(1), 0);
    ASSERT_EQ(earlier.time(1), 0);
    killer.action = [&] {
        (void)later.remove();
        (void)earlier.remove();
    };
    nextPass();
    set.grantTicks(3);
    EXPECT_EQ(later.count(), 0);
    EXPECT_EQ(earlier.count(), 1);
    EXPECT_EQ(killer.count(), 3);
}

TEST_F(Dispatch, RemovedReadersAreSkippedAtOnce)
{
    Pipe& pipe = newPipe();
    Handler& victim = newHandler();
    Handler& killer = newHandler();
    ASSERT_EQ(victim.watch(pipe.fd()), 0);
    ASSERT_EQ(killer.watch(pipe.fd()), 0);
    killer.action = [&] {
        pipe.drain();
        EXPECT_EQ(victim.remove(), 0);
    };
    nextPass();
    pipe.fill();
    set.settle();
    EXPECT_EQ(killer.count(), 1);
    EXPECT_EQ(victim.count(), 0);
}

TEST_F(Dispatch, EventAddedAndRemovedByAHandlerIsNeverCalled)
{
    Handler& shortLived = newHandler();
    Handler& parent = newHandler();
    parent.action = [&] {
        EXPECT_EQ(shortLived.time(1), 0);
        EXPECT_EQ(shortLived.remove(), 0);
    };
    ASSERT_EQ(parent.time(1), 0);
    nextPass();
    set.grantTicks(3);
    EXPECT_EQ(parent.count(), 3);
    EXPECT_EQ(shortLived.count(), 0);
}

TEST_F(Dispatch, HandlerMayReplaceItself)
{
    Handler& first = newHandler();
    Handler& second = newHandler();
    first.action = [&] {
        EXPECT_EQ(first.remove(), 0);
        EXPECT_EQ(second.time(3), 0);
    };
    ASSERT_EQ(first.time(1), 0);
    nextPass();
    set.grantTicks(1);
    set.grantTicks(2);
    EXPECT_EQ(second.count(), 0);
    set.grantTicks(1);
    EXPECT_EQ(first.count(), 1);
    EXPECT_EQ(second.count(), 1);
}
} // namespace
