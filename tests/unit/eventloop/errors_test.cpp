#include "handler.h"

#include "movo_net_fl_eventloop/eventloop.h"

#include <atomic>

namespace {
constexpr const char* kThread = "int_eventLoopThread";
constexpr int kTickMs = 100;
constexpr int kPauseMs = 500;

/** One timer that fires on each tick, live. */
class LoopErrors : public RunningLoop {
protected:
    Handler& everyTick = newHandler();

    LoopErrors()
    {
        EXPECT_EQ(everyTick.time(1), 0);
        nextPass();
        set.forget();
    }

    int linesLogged(const std::string& text) const
    {
        int count = 0;
        for (const sim::LogLine& line : set.log()) {
            count += line.text == text ? 1 : 0;
        }
        return count;
    }
};

TEST_F(LoopErrors, LostTickWhenTheListCannotBeLockedAfterTheWait)
{
    set.failLock(movonet::eventListLock, 1);
    const auto before = set.clock();
    set.grantTicks(1);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, kThread, "lock mutex failed\n");
    EXPECT_EQ(everyTick.count(), 0);
    EXPECT_EQ(set.clock() - before, kTickMs + kPauseMs);
    set.grantTicks(1);
    EXPECT_EQ(everyTick.count(), 1);
    EXPECT_EQ(linesLogged("lock mutex failed\n"), 1);
}

TEST_F(LoopErrors, InputWaitsWhenTheListCannotBeLockedAfterTheWait)
{
    Pipe& pipe = newPipe();
    Handler& reader = newHandler();
    reader.action = [&] { pipe.drain(); };
    ASSERT_EQ(reader.watch(pipe.fd()), 0);
    nextPass();
    set.failLock(movonet::eventListLock, 1);
    const auto before = set.clock();
    pipe.fill();
    set.settle();
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, kThread, "lock mutex failed\n");
    EXPECT_EQ(reader.count(), 1) << "in the pass after the pause";
    EXPECT_EQ(set.clock() - before, kPauseMs);
}

TEST_F(LoopErrors, PassIsLostWhenTheListCannotBeLockedBeforeTheWait)
{
    set.failLock(movonet::eventListLock, 2);
    const auto before = set.clock();
    set.grantTicks(1);
    EXPECT_EQ(everyTick.count(), 1);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, kThread, "lock mutex failed\n");
    EXPECT_EQ(set.clock() - before, kTickMs + kPauseMs);
    set.grantTicks(1);
    EXPECT_EQ(everyTick.count(), 2);
}

TEST_F(LoopErrors, NewEventsWaitWhenTheListCannotBeLockedForThem)
{
    Handler& young = newHandler();
    ASSERT_EQ(young.time(1), 0);
    set.failLock(movonet::eventListLock, 3);
    const auto before = set.clock();
    set.grantTicks(2);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, "int_updateEvents", "lock mutex failed\n");
    EXPECT_EQ(set.clock() - before, 2 * kTickMs) << "the pass itself goes on";
    EXPECT_EQ(everyTick.count(), 2);
    EXPECT_EQ(young.count(), 0);
    set.grantTicks(1);
    EXPECT_EQ(young.count(), 1);
}

TEST_F(LoopErrors, OldEventsGoAlthoughNewOnesCannotCome)
{
    Handler& young = newHandler();
    ASSERT_EQ(young.time(1), 0);
    ASSERT_EQ(everyTick.remove(), 0);
    set.forget();
    set.failLock(movonet::eventListTodoLock, 1);
    const auto before = set.clock();
    nextPass();
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, "int_updateEvents", "lock mutex failed\n");
    EXPECT_EQ(everyTick.remove(), 5) << "swept";
    nextPass();
    EXPECT_EQ(young.count(), 0);
    set.grantTicks(1);
    EXPECT_EQ(young.count(), 1);
    EXPECT_EQ(set.clock() - before, 3 * kTickMs) << "without a pause";
}

TEST_F(LoopErrors, FailedWaitCostsAPause)
{
    set.fail({.call = sim::Call::Select, .nth = 1, .error = EBADF});
    const auto before = set.clock();
    set.grantTicks(1);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, kThread, "select failed\n");
    EXPECT_EQ(everyTick.count(), 1);
    EXPECT_EQ(set.clock() - before, kTickMs + kPauseMs);
    set.grantTicks(1);
    EXPECT_EQ(everyTick.count(), 2);
    EXPECT_EQ(linesLogged("select failed\n"), 1);
}

TEST_F(LoopErrors, SignalDuringTheWaitCostsNothing)
{
    set.fail({.call = sim::Call::Select, .nth = 1, .error = EINTR});
    const auto before = set.clock();
    set.grantTicks(1);
    EXPECT_EQ(linesLogged("select failed\n"), 0);
    EXPECT_EQ(everyTick.count(), 1) << "the interrupted wait is no tick";
    set.grantTicks(1);
    EXPECT_EQ(everyTick.count(), 2);
    EXPECT_EQ(set.clock() - before, 2 * kTickMs);
}

TEST_F(LoopErrors, SignalsThatComeFasterThanTicksDoNotStopThem)
{
    set.fail({.call = sim::Call::Select, .nth = 1, .times = 50, .error = EINTR});
    const auto before = set.clock();
    set.grantTicks(3);
    EXPECT_TRUE(set.log().empty());
    EXPECT_EQ(everyTick.count(), 3);
    EXPECT_EQ(set.clock() - before, 3 * kTickMs) << "each wait lasts for what the signals left of it";
}

TEST_F(LoopErrors, DescriptorClosedWhileASignalCameFailsNoWait)
{
    const int fd = fcntl(newPipe().fd(), F_DUPFD_CLOEXEC, 0);
    Handler& reader = newHandler();
    ASSERT_EQ(reader.watch(fd), 0);
    nextPass();
    const int signal = set.fail({.call = sim::Call::Select, .nth = 1, .error = EINTR});
    bool closed = false;
    const auto closeAfterSignal = [&] {
        if (set.hits(signal) == 1 && !closed) {
            closed = true;
            EXPECT_EQ(reader.remove(), 0);
            EXPECT_EQ(close(fd), 0);
        }
    };
    set.fail({.call = sim::Call::MutexLock, .thread = sim::ThreadKind::Loop, .does = closeAfterSignal});
    set.grantTicks(2);
    EXPECT_TRUE(closed);
    EXPECT_EQ(linesLogged("select failed\n"), 0);
    EXPECT_EQ(reader.count(), 0);
}

class HighDescriptor : public LoopErrors, public testing::WithParamInterface<int> {};

TEST_P(HighDescriptor, KeepsTheLoopParkedUntilItsEnd)
{
    Handler& high = newHandler();
    set.holdSleeps(kPauseMs);
    ASSERT_EQ(high.watch(GetParam(), 1), 0);
    set.grantTicks(1);
    const auto before = set.clock();
    for (int round = 1; round <= 4; ++round) {
        EXPECT_EQ(linesLogged("evt->event.fd >= FD_SETSIZE\n"), round);
        ASSERT_TRUE(set.wake());
    }
    EXPECT_EQ(set.clock() - before, 4 * kPauseMs);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, kThread, "evt->event.fd >= FD_SETSIZE\n");
    EXPECT_EQ(high.remove(), 0) << "its lock is free";
    ASSERT_TRUE(set.wake());
    EXPECT_EQ(linesLogged("evt->event.fd >= FD_SETSIZE\n"), 6) << "removal does not help";
    EXPECT_EQ(everyTick.count(), 1);
    EXPECT_EQ(high.count(), 0);

    set.stopLoop();
    EXPECT_EQ(set.liveThreads(), 0);
}
INSTANTIATE_TEST_SUITE_P(Descriptors, HighDescriptor, testing::Values(1024, 1025, 2147483647));

TEST_F(LoopErrors, HighestDescriptorOfTheSetIsFine)
{
    Pipe& pipe = newPipe();
    ASSERT_EQ(dup3(pipe.fd(), 1023, O_CLOEXEC), 1023);
    Handler& reader = newHandler();
    reader.action = [&] { pipe.drain(); };
    ASSERT_EQ(reader.watch(1023), 0);
    nextPass();
    pipe.fill();
    set.settle();
    EXPECT_EQ(reader.calls, (std::vector<HandlerCall>{{1023, false}}));
}

class LoopStart : public EventLoop, public testing::WithParamInterface<sim::Fault> {};

TEST_P(LoopStart, EndsWithoutItsLocks)
{
    set.fail(GetParam());
    kest_bool terminate = 0;
    EXPECT_EQ(int_eventLoopThread(&terminate), reinterpret_cast<void*>(1));
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, kThread, "init mutex failed\n");
    EXPECT_EQ(int_IsEventLoopInitDone(), 0);
}
INSTANTIATE_TEST_SUITE_P(Steps, LoopStart,
                         testing::Values(sim::Fault{.call = sim::Call::MutexAttrInit, .nth = 1},
                                         sim::Fault{.call = sim::Call::MutexAttrSetType, .nth = 1},
                                         sim::Fault{.call = sim::Call::MutexInit, .nth = 1},
                                         sim::Fault{.call = sim::Call::MutexInit, .nth = 2}));

TEST_F(EventLoop, EndsAtOnceWhenItIsToEndAlready)
{
    kest_bool terminate = 1;
    EXPECT_EQ(int_eventLoopThread(&terminate), nullptr);
    EXPECT_EQ(int_IsEventLoopInitDone(), 1);
    int handle = 0;
    EXPECT_EQ(int_addEvent({-1, 1, nullptr, nullptr}, &handle), 1);
}

TEST_F(EventLoop, DropsWhatIsPendingAtItsEnd)
{
    kest_bool terminate = 0;
    void* result = &terminate;
    Pipe& pipe = newPipe();
    Handler& reader = newHandler();
    set.background([&] { result = int_eventLoopThread(&terminate); });
    set.settle();
    ASSERT_EQ(reader.watch(pipe.fd()), 0);
    nextPass();
    __atomic_store_n(&terminate, 1, __ATOMIC_RELEASE);
    pipe.fill();
    set.settle();
    set.joinBackground();
    EXPECT_EQ(reader.count(), 0);
    EXPECT_EQ(result, nullptr);
}
} // namespace
