#include "bench.h"

#include "movo_net_fg/fg.h"

#include <atomic>
#include <sched.h>

using namespace hostap;

// Starts, stops, devices and questions at once.

namespace {

class SoftApRace : public testing::TestWithParam<unsigned> {
protected:
    Bench bench{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Seeds, SoftApRace, testing::Range(0U, 9U));

TEST_P(SoftApRace, HasOneWatchAfterTwoStartsAtOnce)
{
    bench.set.addIface("bcm0");
    bench.set.holdSleeps(1000);
    bench.set.onCommand(kGetName).prints("\n").times(2); // both wait for a name
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Start(0), 0);
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Start(0), 0);
    bench.set.settle();
    EXPECT_EQ(bench.set.liveThreads(), 3);
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Status(0), 0);
    EXPECT_TRUE(bench.set.wake());
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Status(0), 1);
    EXPECT_EQ(bench.said("SoftAP_Create_Thread").size(), 3U); // two starts, one watch
    EXPECT_EQ(bench.said("s_SoftAP_Check_Connection"), Lines{});
    EXPECT_EQ(bench.set.watch(kLeases).watchers(), 1);
    bench.set.grantTicks(1);
    bench.set.forget();
    bench.writeLeases(kPhoneLease);
    EXPECT_CALLBACKS(bench.set, {{sim::SOFTAPCONNECTED, "bcm0"}});
}

TEST(SoftApRaces, KeepsOneOfTwoStartsThatBothMakeTheInterface)
{
    Bench bench;
    bench.set.onCommand(kCreate).does([&bench] { bench.set.addIface("bcm0"); }).times(1); // the other one was faster
    EXPECT_EQ(s_SoftAP_Start(nullptr), nullptr);
    EXPECT_EQ(hotspot.mState, HOTSPOT_STOPPED);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kModule, "SoftAP_isInterfaceAvailable",
                  "HOSTAP :create bcm0  failed \n");
    bench.startHere();
    EXPECT_EQ(hotspot.mState, HOTSPOT_STARTED);
}

TEST_P(SoftApRace, KeepsAStartGoingThatIsStoppedWhileItLooksForAName)
{
    bench.set.holdSleeps(1000);
    bench.set.onCommand(kGetName).prints("\n").times(3);
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Start(0), 0);
    for (int second = 0; second < 3; ++second) {
        bench.set.settle();
        EXPECT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 0); // it is stopped already
        EXPECT_EQ(hotspot.mState, HOTSPOT_STOPPED);
        EXPECT_NOT_RAN(bench.set, kDelete);
        EXPECT_TRUE(bench.set.wake());
    }
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Status(0), 1);
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 0);
    EXPECT_EQ(hotspot.mState, HOTSPOT_STOPPED);
    EXPECT_RAN(bench.set, kDelete);
}

TEST_P(SoftApRace, OfStartsStopsAndQuestionsEndsAndCanBeStopped)
{
    constexpr int kRounds = 4;
    for (int thread = 0; thread < 3; ++thread) {
        bench.set.background([thread] {
            for (int round = 0; round < kRounds; ++round) {
                (void)(thread == 0 ? Movo_Net_WiFi_HostAP_Stop(0) : Movo_Net_WiFi_HostAP_Start(0));
                MovoHotspotconfig_t config{};
                EXPECT_EQ(Movo_Net_WiFi_HostAP_Config(0, &config), 0);
                const std::string name = config.Ssid;
                EXPECT_TRUE(name == "MyTV\n" || name == "Lumenpoint") << name;
                (void)Movo_Net_WiFi_HostAP_Status(0);
            }
        });
    }
    bench.set.joinBackground();
    bench.set.settle();
    bench.startHere();
    for (int tries = 0; tries < 2 && Movo_Net_WiFi_HostAP_Stop(0) != 0; ++tries) {
        bench.startHere();
    }
    EXPECT_EQ(hotspot.mState, HOTSPOT_STOPPED);
}

/** A failed start and a stop may use the shared socket at once: it is opened once, and nobody closes it twice. */
TEST_P(SoftApRace, SharesOneSocket)
{
    bench.set.addIface("bcm0").setUp(true).setAddress("192.168.255.249");
    for (int thread = 0; thread < 3; ++thread) {
        bench.set.background([] {
            for (int round = 0; round < 20; ++round) {
                (void)ifc_clear_ipv4_addresses("bcm0");
                (void)ifc_init();
                (void)ifc_down("bcm0");
            }
        });
    }
    bench.set.joinBackground();
    EXPECT_LE(bench.set.openDescriptors().size(), 1U);
    ifc_close();
    EXPECT_EQ(bench.set.openDescriptors(), Lines{});
    EXPECT_EQ(bench.set.iface("bcm0").address(), "0.0.0.0");
}

/** What a callback reads of the device is one device, however often the list changes meanwhile. */
TEST_P(SoftApRace, ShowsACallbackOneWholeDevice)
{
    std::atomic<int> seen{0};
    bench.set.onCallback([&seen](MovoNetCBReason_e, void*) {
        const Softap_Connection_info_t device = softap_connectinfo;
        const std::string end = device.packetmac;
        EXPECT_EQ(device.timestamp, end);
        EXPECT_EQ(device.devicename, end);
        ++seen;
    });
    for (int count = 0; count < 3; ++count) {
        bench.start();
        EXPECT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 0);
    }
    for (const char* word : {"first", "second", "third", "fourth"}) {
        bench.set.write(kLeases, std::string(word) + " " + word + " " + word + " " + word + " " + word + "\n");
        bench.set.background([] { EXPECT_EQ(NotifyApp(sim::SOFTAPSCAN, &movonet::softApRecord), 0); });
        bench.set.watch(kLeases).modified();
    }
    bench.set.joinBackground();
    bench.set.settle();
    EXPECT_EQ(seen, 4 * (3 + 1));
}

TEST(SoftApRaces, LeaveTheDeviceAloneWhileACallbackRuns)
{
    Bench bench;
    bench.start();
    bench.writeLeases(kPhoneLease);
    bool looked = false;
    bench.set.onCallback([&](MovoNetCBReason_e, void*) {
        if (looked) {
            return;
        }
        looked = true;
        bench.set.write(kLeases, "1 2 3 other 5\n");
        bench.set.watch(kLeases).modified();
        for (int yields = 0; yields < 20000; ++yields) { // the watch had every chance to come
            (void)sched_yield();
        }
        EXPECT_STREQ(softap_connectinfo.devicename, "phone1");
    });
    bench.set.background([] { EXPECT_EQ(NotifyApp(sim::SOFTAPSCAN, &movonet::softApRecord), 0); });
    bench.set.joinBackground();
    bench.set.settle();
    EXPECT_TRUE(looked);
    EXPECT_STREQ(softap_connectinfo.devicename, "other");
}

TEST_P(SoftApRace, LetsACallbackStopAndStartTheAccessPoint)
{
    std::atomic<int> calls{0};
    bench.set.onCallback([&calls](MovoNetCBReason_e, void*) {
        if (++calls == 1) {
            EXPECT_EQ(Movo_Net_WiFi_HostAP_Status(0), 1);
            EXPECT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 0);
            EXPECT_EQ(Movo_Net_WiFi_HostAP_Start(0), 0);
        }
    });
    bench.start();
    bench.say("up"); // on the loop's thread
    bench.set.settle();
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Status(0), 1);
    bench.set.grantTicks(1);
    calls = 0;
    bench.writeLeases(kPhoneLease); // on threads of its own
    EXPECT_GE(calls, 1);
    bench.set.settle();
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Status(0), 1);
}

/** The watch outlives the glue, whose callbacks are over then. */
TEST(SoftApAfterTheGlue, HearsOfDevicesWithoutHarm)
{
    sim::Set set;
    set.onCommand(kGetName).prints("MyTV\n");
    set.write(kLeases, "");
    ASSERT_EQ(set.start(), 0);
    ASSERT_EQ(Movo_Net_WiFi_HostAP_Start(0), 0);
    set.settle();
    ASSERT_EQ(Movo_Net_WiFi_HostAP_Status(0), 1);
    ASSERT_EQ(set.stop(), 0);
    set.forget();
    set.write(kLeases, kPhoneLease);
    set.watch(kLeases).modified();
    EXPECT_CALLBACKS(set, {});
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, "movo_net_fg", "NotifyApp", "lock mutex failed\n");
    EXPECT_STREQ(softap_connectinfo.devicename, "phone1");
}

TEST(SoftApBeforeTheGlue, StartsWithoutAPipe)
{
    sim::Set set;
    set.onCommand(kGetName).prints("MyTV\n");
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Start(0), 0);
    set.settle();
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Status(0), 1);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, "SoftAP_Gethostap_Pipe", "HOSTAP:can not addevent\n");
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, "s_SoftAP_Check_Connection", "HOSTAP:can not add event!\n");
}

TEST(SoftApAndTheGlue, KeepsItsInterfaceAndThoseBehindItOutOfTheList)
{
    sim::Set set;
    set.onCommand(kGetName).prints("MyTV\n");
    set.write(kLeases, "");
    ASSERT_EQ(set.start(), 0);
    ASSERT_EQ(Movo_Net_WiFi_HostAP_Start(0), 0);
    set.settle();
    set.addIface("eth1");
    set.grantTicks(10);
    EXPECT_EQ(FindInterface("bcm0"), nullptr);
    EXPECT_EQ(FindInterface("eth1"), nullptr);
    EXPECT_NE(FindInterface("eth0"), nullptr);
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 0);
    set.grantTicks(10);
    EXPECT_EQ(FindInterface("bcm0"), nullptr);
    EXPECT_NE(FindInterface("eth1"), nullptr);
}
} // namespace
