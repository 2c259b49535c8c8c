#include "movo_net_internal.h"
#include "sim/calls.h"
#include "sim/sim.h"

#include <atomic>
#include <fcntl.h>
#include <unistd.h>

using namespace sim;

namespace {
constexpr long kTick = 100000;

/** One wait as the event loop does it: for a descriptor, or for none, and 100 ms at most. */
int waitFor(int fd)
{
    fd_set reading;
    FD_ZERO(&reading);
    if (fd >= 0) {
        FD_SET(fd, &reading);
    }
    timeval timeout{0, kTick};
    return sim_select(fd + 1, &reading, nullptr, nullptr, &timeout);
}
} // namespace

TEST(Time, PassesOnlyAsGranted)
{
    Set set;
    std::atomic<int> waits{0};
    set.background([&] {
        while (waits < 5) {
            EXPECT_EQ(waitFor(-1), 0);
            ++waits;
        }
    });
    set.settle();
    EXPECT_EQ(waits, 0);
    EXPECT_EQ(set.clock(), 0);

    set.grantTicks(3);
    EXPECT_EQ(waits, 3);
    EXPECT_EQ(set.clock(), 300);

    set.grantTicks(2);
    EXPECT_EQ(set.clock(), 500);
    EXPECT_EQ(set.liveThreads(), 0);
}

TEST(Time, SixThousandTicksAreSoonOver)
{
    Set set;
    set.background([] {
        for (int count = 0; count < 6000; ++count) {
            EXPECT_EQ(waitFor(-1), 0);
        }
    });
    set.grantTicks(6000);
    EXPECT_EQ(set.clock(), 600000);
}

TEST(Time, InputComesBeforeTheTick)
{
    Set set;
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    std::atomic<int> inputs{0};
    std::atomic<int> ticks{0};
    set.background([&] {
        for (int count = 0; count < 3; ++count) {
            if (waitFor(ends[0]) == 1) {
                char byte = 0;
                EXPECT_EQ(sim_read(ends[0], &byte, 1), 1);
                ++inputs;
            } else {
                ++ticks;
            }
        }
    });
    set.settle();
    ASSERT_EQ(write(ends[1], "a", 1), 1);
    set.settle();
    EXPECT_EQ(inputs, 1);
    EXPECT_EQ(set.clock(), 0);

    ASSERT_EQ(write(ends[1], "b", 1), 1);
    set.grantTicks();
    EXPECT_EQ(inputs, 2);
    EXPECT_EQ(ticks, 1);
    EXPECT_EQ(set.clock(), 100);
    (void)close(ends[0]);
    (void)close(ends[1]);
}

TEST(Time, ATickWaitsForThreadsThatAreBusy)
{
    Set set;
    std::atomic<bool> done{false};
    std::atomic<bool> doneBeforeTheTick{false};
    set.background([&] {
        (void)waitFor(-1);
        doneBeforeTheTick = done.load();
    });
    set.settle();
    set.background([&] {
        for (int count = 0; count < 100; ++count) {
            (void)sim_usleep(1000);
        }
        done = true;
    });
    set.grantTicks();
    EXPECT_TRUE(doneBeforeTheTick);
    EXPECT_EQ(set.clock(), 200);
}

TEST(Time, SleepingAddsToTheClockAtOnce)
{
    Set set;
    EXPECT_EQ(sim_usleep(2500), 0);
    const timespec halfSecond{0, 500'000'000};
    EXPECT_EQ(sim_nanosleep(&halfSecond, nullptr), 0);
    EXPECT_EQ(set.clock(), 502);
}

TEST(Time, ASleeperCanBeHeld)
{
    Set set;
    set.holdSleeps(500);
    std::atomic<int> slept{0};
    set.background([&] {
        (void)sim_usleep(1000);
        slept = 1;
        (void)sim_usleep(500000);
        slept = 2;
    });
    set.settle();
    EXPECT_EQ(slept, 1);
    EXPECT_TRUE(set.wake());
    EXPECT_EQ(slept, 2);
    EXPECT_FALSE(set.wake());
}

TEST(Time, ABadDescriptorEndsTheWait)
{
    Set set;
    const int closed = dup(STDIN_FILENO);
    (void)close(closed);
    EXPECT_EQ(waitFor(closed), -1);
    EXPECT_EQ(errno, EBADF);
}

TEST(Time, TheLoopAloneTakesInputAndTicks)
{
    static int s_ticks;
    Set set;
    set.startLoop();
    int handle = 0;
    const auto count = [](int, void*, kest_bool isTimeout) -> RETURN_TYPE {
        s_ticks += isTimeout;
        return 0;
    };
    ASSERT_EQ(int_addEvent({-1, 10, nullptr, count}, &handle), 0);
    set.grantTicks(); // until then the loop does not know it
    set.grantTicks(29);
    EXPECT_EQ(s_ticks, 2);
    set.grantTicks();
    EXPECT_EQ(s_ticks, 3);
    set.stopLoop();
    EXPECT_EQ(set.liveThreads(), 0);
}
