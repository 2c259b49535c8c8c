#include "bench.h"

#include "sim/calls.h"
#include "support/command.h"

#include <fcntl.h>
#include <future>
#include <gtest/gtest.h>
#include <mutex>
#include <utility>

// The supplicant's client library opens sockets that programs inherit: no command is launched before that is mended,
// and none that is being launched is overtaken.

using namespace wifi;
using namespace movonet;

namespace {
/** Something that happens once and is waited for. */
class Moment {
public:
    void comes()
    {
        std::call_once(m_once, [this] { m_promise.set_value(); });
    }
    void await() { m_future.wait(); }

private:
    std::promise<void> m_promise;
    std::future<void> m_future = m_promise.get_future();
    std::once_flag m_once;
};

/** A thread that launches "late", which comes to a stop at the lock of launches, or runs. */
struct LateLaunch {
    Moment stopsOrRuns;
    bool runs = false;

    LateLaunch(sim::Set& set, sim::Call call, std::function<void()> launch) : m_set(set), m_launch(std::move(launch))
    {
        const auto asks = [this] {
            if (pthread_mutex_trylock(&launchLock.native()) == EBUSY) {
                stopsOrRuns.comes();
            } else {
                (void)pthread_mutex_unlock(&launchLock.native());
            }
        };
        const auto begins = [this] {
            runs = true;
            stopsOrRuns.comes();
        };
        set.fail({.call = sim::Call::MutexLock,
                  .object = &launchLock,
                  .size = sizeof(launchLock),
                  .thread = sim::ThreadKind::Other,
                  .does = asks});
        set.fail({.call = call, .on = "late", .nth = 1, .does = begins});
    }
    /** Returns when it has come so far: does it run? */
    bool begins()
    {
        m_set.background(m_launch);
        stopsOrRuns.await();
        return runs;
    }

private:
    sim::Set& m_set;
    std::function<void()> m_launch;
};

/** A command that runs on a thread of its own until it is released. */
struct EarlyLaunch {
    explicit EarlyLaunch(sim::Set& set) : m_set(set)
    {
        set.onCommand("early").does([this] {
            m_began.comes();
            m_released.await();
        });
        set.background([this] {
            (void)runShell("early");
            m_ended.comes();
        });
        m_began.await();
    }
    ~EarlyLaunch()
    {
        ends();
        m_set.joinBackground();
    }
    EarlyLaunch(const EarlyLaunch&) = delete;
    EarlyLaunch& operator=(const EarlyLaunch&) = delete;

    void ends()
    {
        m_released.comes();
        m_ended.await();
    }

private:
    sim::Set& m_set;
    Moment m_began;
    Moment m_released;
    Moment m_ended;
};

/** Opens the connection while `late` is launched between the making of its socket and its mark; false: it waited. */
bool beginsMeanwhile(Bench& bench, LateLaunch& late)
{
    bool began = false;
    int socket = -1;
    int mark = -1;
    bench.supplicant.onOpened = [&](int fd) {
        socket = fd;
        mark = fcntl(fd, F_GETFD);
        began = late.begins();
    };
    EXPECT_EQ(Wpactrl_Reconnect(&bench.link(), "mlan0"), 0);
    EXPECT_EQ(mark, 0) << "the library marks nothing";
    EXPECT_EQ(fcntl(socket, F_GETFD), FD_CLOEXEC);
    bench.set.joinBackground();
    EXPECT_TRUE(late.runs);
    return began;
}
} // namespace

TEST(Opening, KeepsCommandsWaitingUntilItsSocketClosesOnExec)
{
    Bench bench;
    LateLaunch late(bench.set, sim::Call::System, [] { (void)runShell("late"); });
    EXPECT_FALSE(beginsMeanwhile(bench, late));
}

TEST(Opening, KeepsToolsThatAreReadWaitingUntilItsSocketClosesOnExec)
{
    Bench bench;
    LateLaunch late(bench.set, sim::Call::Popen, [] { (void)sim_pclose(readShell("late")); });
    EXPECT_FALSE(beginsMeanwhile(bench, late));
}

TEST(Opening, WaitsForACommandThatMayNotHaveForkedYet)
{
    Bench bench;
    const std::size_t before = bench.supplicant.opened.size();
    EarlyLaunch early(bench.set);
    std::size_t meanwhile = 0;
    const auto ends = [&] {
        meanwhile = bench.supplicant.opened.size();
        early.ends();
    };
    bench.set.fail({.call = sim::Call::Sleep, .thread = sim::ThreadKind::Test, .nth = 1, .does = ends});
    bench.supplicant.onOpen = [&] { early.ends(); };
    EXPECT_EQ(Wpactrl_Reconnect(&bench.link(), "mlan0"), 0);
    EXPECT_EQ(meanwhile, before) << "it had not opened, and it had waited";
    EXPECT_EQ(bench.supplicant.opened.size(), before + 1);
}

TEST(Opening, KeepsCommandsWaitingWhileItWaitsItself)
{
    Bench bench;
    EarlyLaunch early(bench.set);
    LateLaunch late(bench.set, sim::Call::System, [] { (void)runShell("late"); });
    bool began = true;
    bench.set.fail({.call = sim::Call::Sleep, .thread = sim::ThreadKind::Test, .nth = 1, .does = [&] {
                        began = late.begins();
                        early.ends();
                    }});
    bench.supplicant.onOpen = [&] { early.ends(); };
    EXPECT_EQ(Wpactrl_Reconnect(&bench.link(), "mlan0"), 0);
    EXPECT_FALSE(began);
    bench.set.joinBackground();
    EXPECT_TRUE(late.runs);
}

TEST(Opening, WaitsASecondForACommandThatDoesNotEnd)
{
    Bench bench;
    const std::int64_t before = bench.set.waited(sim::ThreadKind::Test);
    const std::size_t opened = bench.supplicant.opened.size();
    // As a command that waits for the thread that opens.
    bench.set.onCommand("tool").does([&bench] { EXPECT_EQ(Wpactrl_Reconnect(&bench.link(), "mlan0"), 0); });
    (void)runShell("tool");
    EXPECT_EQ(bench.set.waited(sim::ThreadKind::Test) - before, 1000);
    EXPECT_EQ(bench.supplicant.opened.size(), opened + 1);
}
