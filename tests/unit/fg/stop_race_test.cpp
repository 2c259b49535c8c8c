#include "fg_test.h"

#include "movo_net_fl_common/common.h"

#include <atomic>
#include <sched.h>
#include <thread>

// What else runs while the glue is stopped. Each test holds a thread of the product inside a command that it runs until
// the stop has come as far as it can.

namespace {
void waitUntil(const std::function<bool()>& condition)
{
    while (!condition()) {
        (void)sched_yield();
    }
}

bool emptied()
{
    return movonet::firstInterface() == nullptr;
}

class StopRace : public testing::Test {
protected:
    sim::Set set;
    std::atomic<bool> inside{false};

    StopRace() { set.cable("eth0").plug(); }

    /** The next command that begins so is entered and waits for `condition`. */
    void holdCommand(const char* beginning, const std::function<bool()>& condition)
    {
        set.onCommand(beginning).does([this, condition] {
            inside = true;
            waitUntil(condition);
        });
    }
    void waitForInside()
    {
        waitUntil([this] { return inside.load(); });
    }
    bool toldOfStop() const { return timesLogged(set, "deinit\n") > 0; }
};

TEST_F(StopRace, HandlerUsesItsRecordAfterTheListIsGone)
{
    ASSERT_EQ(set.start(), 0);
    const MovoNetIface_t* eth0 = FindInterface("eth0");
    holdCommand("route add default gw", emptied);
    std::thread server([this] { set.dhcp("eth0").leases(); });
    waitForInside();
    EXPECT_EQ(set.stop(), 0);
    server.join();
    EXPECT_EQ(eth0->isConnected, 1);
    EXPECT_EQ(set.liveThreads(), 0);
}

TEST_F(StopRace, ConfigurationThreadUsesItsRecordAfterTheStop)
{
    std::atomic<bool> stopped{false};
    ASSERT_EQ(set.start(), 0);
    MovoNetIface_t* eth0 = FindInterface("eth0");
    holdCommand("ifconfig eth0 0.0.0.0", [&] { return stopped.load(); });
    ASSERT_EQ(CreateConfigIPThread(eth0), 0);
    waitForInside();
    EXPECT_EQ(set.stop(), 0);
    stopped = true;
    set.settle();
    EXPECT_EQ(set.liveThreads(), 0);
    EXPECT_STREQ(eth0->name, "eth0");
}

TEST_F(StopRace, LatePassLeavesNothingListed)
{
    set.iface("eth0").unplugDevice();
    ASSERT_EQ(set.start(), 0);
    letPassBeDue(set);
    set.addIface("eth0");
    set.cable("eth0").plug();
    holdCommand("bdconf -p", emptied);
    std::thread time([this] { set.grantTicks(1); });
    waitForInside();
    EXPECT_EQ(set.stop(), 0);
    time.join();
    EXPECT_NOT_RAN(set, "netcfg eth0 up");
    EXPECT_EQ(timesLogged(set, "new interface eth0\n"), 0);
    EXPECT_EQ(set.dhcp("eth0").launches(), 0);
    EXPECT_TRUE(listedInterfaces().empty());
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
    EXPECT_EQ(set.liveThreads(), 0);
}

/** The stop waits for the list, which the pass holds while it looks at the links. */
TEST_F(StopRace, LatePassActivatesNothing)
{
    set.addIface("eth1");
    ASSERT_EQ(set.start(), 0);
    letPassBeDue(set);
    set.forget();
    set.cable("eth0").pull();
    set.cable("eth1").plug();
    set.onCallback([this](MovoNetCBReason_e, void*) { // eth0 is gone, and eth1 comes next
        inside = true;
        waitUntil([] { return movonet::load(movonet::s_bThreadTerminating) != 0; });
    });
    std::thread time([this] { set.grantTicks(1); });
    waitForInside();
    EXPECT_EQ(set.stop(), 0);
    time.join();
    EXPECT_CALLBACKS(set, {{sim::IFREMOVED, "eth0"}});
    EXPECT_NOT_RAN(set, "netcfg eth1 up");
    EXPECT_EQ(set.dhcp("eth1").launches(), 0);
    EXPECT_EQ(set.liveThreads(), 0);
}

TEST_F(StopRace, RunningCallbackIsWaitedFor)
{
    std::atomic<bool> stopped{false};
    bool stoppedWhileInside = true;
    ASSERT_EQ(set.start(), 0);
    set.onCallback([&](MovoNetCBReason_e, void*) {
        inside = true;
        waitUntil([this] { return toldOfStop(); });
        for (int yields = 0; yields < 200; ++yields) {
            (void)sched_yield();
        }
        stoppedWhileInside = stopped || emptied();
    });
    set.background([] { EXPECT_EQ(NotifyApp(sim::IPCHANGED, nullptr), 0); });
    waitForInside();
    EXPECT_EQ(set.stop(), 0);
    stopped = true;
    set.joinBackground();
    EXPECT_FALSE(stoppedWhileInside);
}

TEST_F(StopRace, TwoLastExitsAtOnceJoinOnce)
{
    ASSERT_EQ(set.start(), 0);
    for (int thread = 0; thread < 4; ++thread) {
        set.background([] { (void)Movo_NET_Glue_Exit(); });
        set.background([] { WaitForChild2Exit(); });
    }
    set.joinBackground();
    EXPECT_EQ(set.liveThreads(), 0);
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
    EXPECT_TRUE(listedInterfaces().empty());
}

TEST_F(StopRace, ExitDuringAStartEndsBoth)
{
    holdCommand("netcfg eth0 up", [this] { return toldOfStop(); });
    set.background([this] {
        waitForInside();
        EXPECT_EQ(Movo_NET_Glue_Exit(), 0);
    });
    (void)Movo_NET_Glue_Init();
    set.joinBackground();
    WaitForChild2Exit();
    EXPECT_EQ(set.liveThreads(), 0);
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
}

TEST_F(StopRace, ExitInACallbackOfTheLoopDoesNotWaitForItself)
{
    set.addIface("eth1");
    set.cable("eth0").pull();
    ASSERT_EQ(set.start(), 0);
    letPassBeDue(set);
    set.cable("eth0").plug();
    set.cable("eth1").plug();
    RETURN_TYPE result = -1;
    set.onCallback([&](MovoNetCBReason_e, void*) {
        if (result < 0) {
            result = Movo_NET_Glue_Exit();
            WaitForChild2Exit();
            set.recordCallbacks(); // the loop still runs, and so its locks still work
        }
    });
    set.grantTicks(1);
    WaitForChild2Exit();
    EXPECT_EQ(result, 0);
    EXPECT_EQ(set.liveThreads(), 0);
    EXPECT_TRUE(listedInterfaces().empty());
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
    const auto called = set.callbacks();
    EXPECT_EQ(std::ranges::count(called, sim::Called{sim::IFFOUND, "eth0"}), 1) << "the pass does not begin again";
}

TEST_F(StopRace, ApplicationsCallOn)
{
    ASSERT_EQ(set.start(), 0);
    std::atomic<bool> stopped{false};
    for (int thread = 0; thread < 3; ++thread) {
        set.background([&] {
            while (!stopped) {
                (void)FindInterface("eth0");
                (void)ResetGwAndDns();
                (void)NotifyApp(sim::IPCHANGED, nullptr);
            }
        });
    }
    EXPECT_EQ(set.stop(), 0);
    stopped = true;
    set.joinBackground();
    EXPECT_EQ(set.liveThreads(), 0);
}
} // namespace
