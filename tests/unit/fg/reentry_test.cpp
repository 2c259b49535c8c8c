#include "every_call.h"
#include "fg_test.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <atomic>
#include <movo_net.h>
#include <sched.h>
#include <thread>

// A callback may call every public function, on whatever thread it runs and whatever the loop is about to do. What goes
// wrong here is a deadlock: the simulated set's watchdog ends the test with the place of every thread.

namespace {
TEST(EveryCall, IsEveryFunctionOfThePublicHeaders)
{
    std::vector<std::string> known = kNotInsideACallback;
    for (const PublicCall& each : everyCall()) {
        known.emplace_back(each.name);
    }
    std::vector<std::string> declared = declaredCalls();
    std::ranges::sort(known);
    std::ranges::sort(declared);
    EXPECT_EQ(known, declared) << "every_call.cpp lists what the headers declare";
}

/** Where a callback ran. */
enum class Where { Start, Loop, Configuration, Application };
constexpr std::size_t kPlaces = 4;

/** A callback that calls everything, but not from inside itself and not for ever. */
class Reentry : public testing::TestWithParam<unsigned> {
protected:
    sim::Set set{GetParam()};

    void callEverythingInCallbacks(int callbacksPerPlace)
    {
        m_budget = callbacksPerPlace;
        set.onCallback([this](MovoNetCBReason_e, void*) { onCallback(); });
    }
    int callsFrom(Where where) const { return m_calls[static_cast<std::size_t>(where)]; }

    /** What an application does on a thread of its own. */
    void runApplication(int rounds)
    {
        t_where = Where::Application;
        for (int round = 0; round < rounds; ++round) {
            if (MovoNetIface_t* eth0 = FindInterface("eth0"); eth0 != nullptr) {
                (void)NotifyApp(sim::IPCHANGED, eth0);
                (void)CreateConfigIPThread(eth0);
            }
            callEverything(set, "eth0");
        }
    }

    static thread_local Where t_where;

private:
    static thread_local bool t_inside;
    std::array<std::atomic<int>, kPlaces> m_calls{};
    int m_budget = 0;

    void onCallback()
    {
        const Where where = here();
        auto& calls = m_calls[static_cast<std::size_t>(where)];
        if (t_inside || calls >= m_budget) {
            return;
        }
        ++calls;
        t_inside = true;
        callEverything(set, "eth0");
        t_inside = false;
    }

    Where here() const
    {
        switch (set.callbacks().back().thread) { // of this thread: callbacks do not overlap
        case sim::ThreadKind::Loop:
            return Where::Loop;
        case sim::ThreadKind::Product:
            return Where::Configuration;
        case sim::ThreadKind::Test:
        case sim::ThreadKind::Other:
        case sim::ThreadKind::Any:
            return t_where;
        }
        return t_where;
    }
};
thread_local Where Reentry::t_where = Where::Start;
thread_local bool Reentry::t_inside = false;

TEST_P(Reentry, WorksOnEveryThreadWhileLinkPassesRun)
{
    constexpr int kRounds = 12;
    set.cable("eth0").plug();
    callEverythingInCallbacks(6);
    ASSERT_EQ(set.start(), 0);
    EXPECT_GT(callsFrom(Where::Start), 0);

    std::atomic<int> running{2};
    std::vector<std::thread> applications;
    for (int count = running; count > 0; --count) {
        applications.emplace_back([&] {
            runApplication(kRounds);
            --running;
        });
    }
    for (int round = 0; round < kRounds || running > 0; ++round) {
        round % 2 == 0 ? set.cable("eth0").pull() : set.cable("eth0").plug();
        set.grantTicks(kPassTicks);
    }
    for (std::thread& application : applications) {
        application.join();
    }
    EXPECT_GT(callsFrom(Where::Loop), 0);
    EXPECT_GT(callsFrom(Where::Configuration), 0);
    EXPECT_GT(callsFrom(Where::Application), 0);
    EXPECT_EQ(set.stop(), 0);
}
INSTANTIATE_TEST_SUITE_P(Seeds, Reentry, testing::Range(1U, 9U));

/** How an interface's callback comes to run off the loop's thread. */
struct OffTheLoop {
    const char* name;
    std::function<void(sim::Set&, MovoNetIface_t*)> cause;
};
void PrintTo(const OffTheLoop& way, std::ostream* out)
{
    *out << way.name;
}

void notifyOnAnApplicationsThread(sim::Set& set, MovoNetIface_t* iface)
{
    set.background([iface] { EXPECT_EQ(NotifyApp(sim::IPCHANGED, iface), 0); });
}

void setAnAddressOnAnApplicationsThread(sim::Set& set, MovoNetIface_t* iface)
{
    movonet::store(iface->ipMode, _MOVO_NET_IPMODE_STATIC_);
    movonet::store(iface->isActived, kest_bool{1});
    set.background([iface] { EXPECT_EQ(iface->funcs.SetIpv4(iface, inet_addr("10.0.2.7")), 0); });
}

void configureOnAThreadOfItsOwn(sim::Set&, MovoNetIface_t* iface)
{
    movonet::store(iface->ipMode, _MOVO_NET_IPMODE_STATIC_);
    movonet::store(iface->isActived, kest_bool{1});
    EXPECT_EQ(CreateConfigIPThread(iface), 0);
}

/** The loop has a link pass to do that calls back, too, while a callback runs on another thread. */
class CallbackOffTheLoop : public testing::TestWithParam<OffTheLoop> {
protected:
    sim::Set set;

    CallbackOffTheLoop()
    {
        set.addIface("eth1");
        EXPECT_EQ(set.start(), 0);
        letPassBeDue(set);
        set.cable("eth1").plug();
        set.forget();
    }

    /** Runs `inside` in the callback, once the link pass had every chance to begin. */
    void run(const std::function<void()>& inside)
    {
        std::thread time;
        bool first = true;
        set.onCallback([&](MovoNetCBReason_e, void*) {
            if (!first) {
                return;
            }
            first = false;
            time = std::thread([this] { set.grantTicks(1); });
            for (int yields = 0; yields < 2000; ++yields) {
                (void)sched_yield();
            }
            inside();
        });
        GetParam().cause(set, FindInterface("eth0"));
        set.settle();
        set.joinBackground();
        time.join();
        set.settle();
    }
};

TEST_P(CallbackOffTheLoop, MayCallEverythingAlthoughALinkPassIsDue)
{
    run([this] { callEverything(set, "eth0"); });
    EXPECT_EQ(timesLogged(set, "link:interface available, start to active iface eth1\n"), 1);
}

TEST_P(CallbackOffTheLoop, HoldsTheLinkPassOffUntilItsEnd)
{
    bool passed = true;
    run([&] { passed = passesSeen(set) > 0; });
    EXPECT_FALSE(passed);
    EXPECT_EQ(passesSeen(set), 1);
    EXPECT_EQ(set.callbacks().back(), (sim::Called{sim::IFFOUND, "eth1"}));
}
INSTANTIATE_TEST_SUITE_P(Ways, CallbackOffTheLoop,
                         testing::Values(OffTheLoop{"application", notifyOnAnApplicationsThread},
                                         OffTheLoop{"address", setAnAddressOnAnApplicationsThread},
                                         OffTheLoop{"configuration", configureOnAThreadOfItsOwn}));

/** eth0 gets its address while the start is still busy with eth1. */
TEST(CallbackOfTheStart, MayCallEverythingAlthoughTheLoopHasWork)
{
    sim::Set set(1); // with a seed the loop runs as soon as it can
    set.cable("eth0").plug();
    set.addIface("eth1");
    set.cable("eth1").plug();
    std::thread server;
    set.onCommand("netcfg eth1 up").does([&] {
        server = std::thread([&] { set.dhcp("eth0").leases(); });
        for (int yields = 0; yields < 2000; ++yields) {
            (void)sched_yield();
        }
    });
    int calls = 0;
    set.onCallback([&](MovoNetCBReason_e reason, void* param) {
        if (reason == sim::IFFOUND && param == FindInterface("eth1") && calls == 0) {
            ++calls;
            callEverything(set, "eth0");
        }
    });
    ASSERT_EQ(set.start(), 0);
    server.join();
    set.settle();
    EXPECT_EQ(calls, 1);
}
} // namespace
