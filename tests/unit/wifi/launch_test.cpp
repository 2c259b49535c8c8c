#include "bench.h"

#include "sim/calls.h"
#include "support/command.h"

#include <fcntl.h>
#include <future>
#include <gtest/gtest.h>
#include <mutex>
#include <utility>

// The supplicant's client library opens sockets that programs inherit; no program is launched before that is mended.

using namespace wifi;
using namespace movonet;

namespace {
/** A program is launched while a connection is being opened, from the moment on in which programs inherit its socket.
 */
struct LaunchMeanwhile {
    std::promise<void> goesOn; // the launch waits for its turn, or it happens
    std::once_flag once;
    int fd = -1;
    int flags = -1;

    LaunchMeanwhile(Bench& bench, sim::Call call, std::function<void()> launch)
    {
        const auto goOn = [this] { std::call_once(once, [this] { goesOn.set_value(); }); };
        bench.set.fail({.call = call, .on = "tool", .nth = 1, .does = [this, goOn] {
                            flags = fcntl(fd, F_GETFD);
                            goOn();
                        }});
        const auto asks = [goOn] {
            if (pthread_mutex_trylock(&launchLock) == EBUSY) {
                goOn();
            } else {
                (void)pthread_mutex_unlock(&launchLock);
            }
        };
        bench.set.fail({.call = sim::Call::MutexLock,
                        .object = &launchLock,
                        .size = sizeof(launchLock),
                        .thread = sim::ThreadKind::Other,
                        .does = asks});
        bench.supplicant.onOpened = [this, &bench, launch](int opened) {
            if (std::exchange(fd, opened) == -1) {
                bench.set.background(launch);
                goesOn.get_future().wait();
            }
        };
    }
};
} // namespace

TEST(Opening, KeepsCommandsWaitingUntilItsSocketClosesOnExec)
{
    Bench bench;
    LaunchMeanwhile meanwhile(bench, sim::Call::System, [] { (void)runShell("tool"); });
    EXPECT_EQ(Wpactrl_Init(&bench.link(), "mlan0"), 0);
    bench.set.joinBackground();
    EXPECT_EQ(meanwhile.flags, FD_CLOEXEC);
}

TEST(Opening, KeepsToolsThatAreReadWaitingUntilItsSocketClosesOnExec)
{
    Bench bench;
    LaunchMeanwhile meanwhile(bench, sim::Call::Popen, [] { (void)sim_pclose(readShell("tool")); });
    EXPECT_EQ(Wpactrl_Reconnect(&bench.link(), "mlan0"), 0);
    bench.set.joinBackground();
    EXPECT_EQ(meanwhile.flags, FD_CLOEXEC);
}

TEST(Opening, DoesNotWaitForACommandThatRuns)
{
    Bench bench;
    bench.set.onCommand("tool").does([&bench] { EXPECT_EQ(Wpactrl_Reconnect(&bench.link(), "mlan0"), 0); });
    (void)runShell("tool");
    EXPECT_EQ(bench.supplicant.opened.size(), 3U);
}
