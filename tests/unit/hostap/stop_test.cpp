#include "bench.h"

#include <linux/sockios.h>

using namespace hostap;
using sim::Call;

// The stop of the soft access point, step by step.

namespace {
const Lines kStopCommands = {"setprop dnsmasq.enable 0", "setprop hostapd.enable 0", kDelete};

TEST(SoftApStop, TakesEverythingBack)
{
    Bench bench;
    bench.startAndForget();
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 0);
    EXPECT_EQ(bench.ran(), kStopCommands);
    EXPECT_EQ(bench.said(),
              (Lines{"INFO Movo_Net_WiFi_HostAP_Stop: HOSTAP: hotspot stop\n",
                     "INFO SoftAP_dnsmasq_setprop: HOSTAP :run dnsmasq \n",
                     "INFO SoftAP_dnsmasq_setprop: HOSTAP:Command: setprop dnsmasq.enable 0\n",
                     "INFO ifc_init: ifc_init_returning 0", "INFO ifc_set_addr: ifc_set_addr(bcm0, xx) = 0",
                     "INFO SoftAP_hostapd_setprop: HOSTAP :run dnsmasq \n",
                     "INFO SoftAP_hostapd_setprop: HOSTAP:Command: setprop hostapd.enable 0\n",
                     "INFO ifc_init: ifc_init_returning 0", "INFO ifc_down: ifc_down(bcm0) = 0"}));
    EXPECT_EQ(hotspot.mState, HOTSPOT_STOPPED);
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Status(0), 0);
}

TEST(SoftApStop, TakesAddressAndInterfaceDownBeforeItDeletesIt)
{
    Bench bench;
    bench.startAndForget();
    bench.set.onCommand(kDelete).does([&bench] {
        EXPECT_FALSE(bench.set.iface("bcm0").up());
        EXPECT_EQ(bench.set.iface("bcm0").address(), "0.0.0.0");
        EXPECT_EQ(hotspot.mState, HOTSPOT_STOPPING);
        EXPECT_EQ(bench.set.clock(), 100);
    });
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 0);
    EXPECT_RAN(bench.set, kDelete);
}

TEST(SoftApStop, RunsNothingWhenItIsStopped)
{
    Bench bench;
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 0);
    EXPECT_EQ(bench.ran(), Lines{});
    EXPECT_EQ(bench.said(), Lines{});
}

TEST(SoftApStop, KeepsTheSharedSocketOpen)
{
    Bench bench;
    bench.startAndForget();
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 0);
    EXPECT_EQ(bench.set.openDescriptors(), Lines{"socket(\"inet\")"});
}

class SoftApStopFrom : public testing::TestWithParam<MovoHotspotState_e> {};

TEST_P(SoftApStopFrom, BeginsAnewInEveryOtherState)
{
    Bench bench;
    bench.startAndForget();
    hotspot.mState = GetParam();
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 0);
    EXPECT_EQ(bench.ran(), kStopCommands);
    EXPECT_EQ(hotspot.mState, HOTSPOT_STOPPED);
}
INSTANTIATE_TEST_SUITE_P(States, SoftApStopFrom, testing::Values(HOTSPOT_STOPPING, HOTSPOT_STARTING, HOTSPOT_STARTED));

TEST(SoftApStop, CanBeFollowedByAStartAgainAndAgain)
{
    Bench bench;
    for (int round = 0; round < 10; ++round) {
        bench.startHere();
        EXPECT_EQ(hotspot.mState, HOTSPOT_STARTED);
        EXPECT_EQ(bench.set.iface("bcm0").address(), "192.168.255.249");
        EXPECT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 0);
        EXPECT_EQ(hotspot.mState, HOTSPOT_STOPPED);
    }
    EXPECT_EQ(bench.set.openDescriptors(), Lines{"socket(\"inet\")"});
}

// --- Steps that fail ---

struct StopFailure {
    const char* name;
    sim::Fault fault;
    Lines lastSaid;
    std::size_t commands;
};
void PrintTo(const StopFailure& failure, std::ostream* out)
{
    *out << failure.name;
}

const StopFailure kStopFailures[] = {
    {"NoSwitchForDnsmasq",
     {.call = Call::System, .on = "setprop dnsmasq", .error = ENOMEM},
     {"INFO SoftAP_dnsmasq_setprop: HOSTAP:Command: setprop dnsmasq.enable 0\n",
      "ERROR Movo_Net_WiFi_HostAP_Stop: HOSTAP: clear dnsmasq.enable: Cannot allocate memory\n"},
     1},
    {"NoSwitchForHostapd",
     {.call = Call::System, .on = "setprop hostapd", .error = ENOMEM},
     {"INFO SoftAP_hostapd_setprop: HOSTAP:Command: setprop hostapd.enable 0\n",
      "ERROR SoftAP_stopHostapd: HOSTAP: failed to stop  hostapdCannot allocate memory",
      "ERROR Movo_Net_WiFi_HostAP_Stop: HOSTAP:stop hostapd error: Cannot allocate memory\n"},
     2},
    {"NoSocketForTheFlags",
     {.call = Call::Socket, .nth = 2, .error = EMFILE},
     {"ERROR ifc_init: socket() failed: Too many open files\n", "INFO ifc_init: ifc_init_returning -1",
      "INFO ifc_down: ifc_down(bcm0) = -1",
      "ERROR Movo_Net_WiFi_HostAP_Stop: HOSTAP:ifconfig down error: Bad file descriptor\n"},
     2},
    {"NoFlags",
     {.call = Call::Ioctl, .code = SIOCGIFFLAGS, .error = EACCES},
     {"INFO ifc_init: ifc_init_returning 0", "INFO ifc_down: ifc_down(bcm0) = -1",
      "ERROR Movo_Net_WiFi_HostAP_Stop: HOSTAP:ifconfig down error: Permission denied\n"},
     2},
    {"NoWayToSetTheFlags",
     {.call = Call::Ioctl, .code = SIOCSIFFLAGS, .error = EPERM},
     {"INFO ifc_init: ifc_init_returning 0", "INFO ifc_down: ifc_down(bcm0) = -1",
      "ERROR Movo_Net_WiFi_HostAP_Stop: HOSTAP:ifconfig down error: Operation not permitted\n"},
     2},
    {"TheInterfaceStays",
     {.call = Call::System, .on = "/bin/wpa_cli interface_del", .error = ENOMEM},
     {"INFO ifc_down: ifc_down(bcm0) = 0", "ERROR Movo_Net_WiFi_HostAP_Stop: HOSTAP :deleate bcm0 failed \n"},
     3},
};

class SoftApStopFailure : public testing::TestWithParam<StopFailure> {};

TEST_P(SoftApStopFailure, IsToldAndLeavesItStopping)
{
    Bench bench;
    bench.startAndForget();
    (void)bench.set.fail(GetParam().fault);
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 1);
    const Lines said = bench.said();
    ASSERT_GE(said.size(), GetParam().lastSaid.size());
    EXPECT_EQ(Lines(said.end() - static_cast<std::ptrdiff_t>(GetParam().lastSaid.size()), said.end()),
              GetParam().lastSaid);
    EXPECT_EQ(bench.ran(),
              Lines(kStopCommands.begin(), kStopCommands.begin() + static_cast<std::ptrdiff_t>(GetParam().commands)));
    EXPECT_EQ(hotspot.mState, HOTSPOT_STOPPING);
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Status(0), 0);
}

TEST_P(SoftApStopFailure, DoesNotHinderTheNextStop)
{
    Bench bench;
    bench.startAndForget();
    (void)bench.set.fail(GetParam().fault);
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 1);
    bench.set.clearFaults();
    bench.set.forget();
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 0);
    EXPECT_EQ(bench.ran(), kStopCommands);
    EXPECT_EQ(hotspot.mState, HOTSPOT_STOPPED);
}

TEST_P(SoftApStopFailure, DoesNotHinderTheNextStart)
{
    Bench bench;
    bench.startAndForget();
    (void)bench.set.fail(GetParam().fault);
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 1);
    bench.set.clearFaults();
    bench.startHere();
    EXPECT_EQ(hotspot.mState, HOTSPOT_STARTED);
}
INSTANTIATE_TEST_SUITE_P(Steps, SoftApStopFailure, testing::ValuesIn(kStopFailures),
                         [](const auto& each) { return each.param.name; });

TEST(SoftApStop, GoesOnWhenTheAddressCannotBeTakenAway)
{
    Bench bench;
    bench.startAndForget();
    (void)bench.set.fail({.call = Call::Ioctl, .code = SIOCSIFADDR, .error = EPERM});
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 0);
    EXPECT_EQ(bench.said("ifc_set_addr").size(), 255U);
}
} // namespace
