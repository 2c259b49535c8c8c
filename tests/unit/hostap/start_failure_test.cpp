#include "bench.h"

#include <functional>
#include <linux/sockios.h>

using namespace hostap;
using sim::Call;

// Steps of the start that fail.

namespace {
/** One failing step: how, what is said of it, what has been run, and whether the interface is up in the end. */
struct StartFailure {
    const char* name;
    std::function<void(sim::Set&)> fault;
    Lines lastSaid;
    Lines commands;
    MovoHotspotState_e state;
    bool up;
};
void PrintTo(const StartFailure& failure, std::ostream* out)
{
    *out << failure.name;
}

std::function<void(sim::Set&)> failing(sim::Fault fault)
{
    return [fault](sim::Set& set) { (void)set.fail(fault); };
}

/** The first so many commands of a start, and those that follow a failure. */
Lines commands(std::size_t count, const Lines& more = {})
{
    Lines all(kStartCommands.begin(), kStartCommands.begin() + static_cast<std::ptrdiff_t>(count));
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

const StartFailure kStartFailures[] = {
    {"NoListOfInterfaces",
     failing({.call = Call::GetIfAddrs, .nth = 1, .error = ENOMEM}),
     {"ERROR SoftAP_isInterfaceAvailable: fatal error getifaddrs() Cannot allocate memory",
      "ERROR SoftAP_initializeInterface: initialize interface: interface is unavailable",
      "ERROR s_SoftAP_Start: HOSTAP :initializeInterface failed \n ",
      "ERROR s_SoftAP_Start: HOSTAP :Movo_Net_WiFi_HostAP_Init Failed!\n "},
     commands(1),
     HOTSPOT_STOPPED,
     false},
    {"NoInterface",
     [](sim::Set& set) { set.onCommand(kCreate).fails(); },
     {"ERROR SoftAP_isInterfaceAvailable: HOSTAP :create bcm0  failed \n",
      "ERROR SoftAP_initializeInterface: initialize interface: interface is unavailable",
      "ERROR s_SoftAP_Start: HOSTAP :initializeInterface failed \n ",
      "ERROR s_SoftAP_Start: HOSTAP :Movo_Net_WiFi_HostAP_Init Failed!\n "},
     commands(2),
     HOTSPOT_STOPPED,
     false},
    {"NoSocketForTheAddress",
     failing({.call = Call::Socket, .nth = 1, .error = EMFILE}),
     {"INFO SoftAP_initializeInterface: HOSTAP :enter SoftAP_initializeInterface1\n ",
      "ERROR SoftAP_initializeInterface: HOSTAP :Can not get MAC address!\n ",
      "ERROR s_SoftAP_Start: HOSTAP :initializeInterface failed \n ",
      "ERROR s_SoftAP_Start: HOSTAP :Movo_Net_WiFi_HostAP_Init Failed!\n "},
     commands(2),
     HOTSPOT_STOPPED,
     false},
    {"NoAddress",
     failing({.call = Call::Ioctl, .code = SIOCGIFHWADDR}),
     {"INFO SoftAP_initializeInterface: HOSTAP :enter SoftAP_initializeInterface1\n ",
      "ERROR SoftAP_initializeInterface: HOSTAP :Can not get MAC address!\n ",
      "ERROR s_SoftAP_Start: HOSTAP :initializeInterface failed \n ",
      "ERROR s_SoftAP_Start: HOSTAP :Movo_Net_WiFi_HostAP_Init Failed!\n "},
     commands(2),
     HOTSPOT_STOPPED,
     false},
    {"NoListOfInterfacesAtTheSecondLook",
     failing({.call = Call::GetIfAddrs, .nth = 2, .error = ENOMEM}),
     {"ERROR SoftAP_isInterfaceAvailable: fatal error getifaddrs() Cannot allocate memory",
      "ERROR s_SoftAP_Start: HOSTAP :start called, but interface unavailable yet \n"},
     commands(2),
     HOTSPOT_STARTING,
     false},
    {"TheInterfaceDoesNotGetUp",
     failing({.call = Call::System, .on = "netcfg bcm0 up", .error = ENOMEM}),
     {"INFO SoftAP_enableInterface: HOSTAP :Command: netcfg bcm0 up\n",
      "ERROR s_SoftAP_Start: HOSTAP :ifconfig up error: Cannot allocate memory"},
     commands(3),
     HOTSPOT_STARTING,
     false},
    {"NoSocketToSetTheAddress",
     failing({.call = Call::Socket, .nth = 2, .error = EMFILE}),
     {"INFO SoftAP_setIPAddress: HOSTAP:enter SoftAP_setIPAddress success!\n",
      "ERROR s_SoftAP_Start: HOSTAP: failed to set IP address Too many open files"},
     commands(3),
     HOTSPOT_STARTING,
     true},
    {"TheAddressIsRefused",
     failing({.call = Call::Ioctl, .code = SIOCSIFADDR, .error = EPERM}),
     {"INFO SoftAP_setIPAddress: HOSTAP:enter SoftAP_setIPAddress success!\n",
      "ERROR s_SoftAP_Start: HOSTAP: failed to set IP address Operation not permitted"},
     commands(3),
     HOTSPOT_STARTING,
     true},
    {"NoConfigurationFile",
     failing({.call = Call::Open, .on = kConfiguration, .error = EROFS}),
     {"ERROR SoftAP_startHostapd: HOSTAP:error open /data/wifi/hostapd.conf: Read-only file system \n",
      "ERROR s_SoftAP_Start: HOSTAP :start hostapd error: Read-only file system", "INFO ifc_init: ifc_init_returning 0",
      "INFO ifc_down: ifc_down(bcm0) = 0"},
     commands(3),
     HOTSPOT_STARTING,
     false},
    {"AConfigurationFileThatTakesNothing",
     failing({.call = Call::Write, .on = kConfiguration, .error = ENOSPC}),
     {"ERROR SoftAP_startHostapd: HOSTAP:error write to /data/wifi/hostapd.conf: No space left on device\n",
      "ERROR s_SoftAP_Start: HOSTAP :start hostapd error: No space left on device",
      "INFO ifc_init: ifc_init_returning 0", "INFO ifc_down: ifc_down(bcm0) = 0"},
     commands(3),
     HOTSPOT_STARTING,
     false},
    {"AConfigurationFileOfAnother",
     failing({.call = Call::Chmod, .on = kConfiguration, .error = EPERM}),
     {"ERROR SoftAP_startHostapd: HOSTAP:error fchmod /data/wifi/hostapd.conf: Operation not permitted",
      "ERROR s_SoftAP_Start: HOSTAP :start hostapd error: Operation not permitted",
      "INFO ifc_init: ifc_init_returning 0", "INFO ifc_down: ifc_down(bcm0) = 0"},
     commands(3),
     HOTSPOT_STARTING,
     false},
    {"NoSwitchForHostapd",
     failing({.call = Call::System, .on = "setprop hostapd", .error = ENOMEM}),
     {"INFO SoftAP_hostapd_setprop: HOSTAP:Command: setprop hostapd.enable 1\n",
      "ERROR SoftAP_startHostapd: HOSTAP: failed to setup  hostapdCannot allocate memory",
      "ERROR s_SoftAP_Start: HOSTAP :start hostapd error: Cannot allocate memory",
      "INFO ifc_init: ifc_init_returning 0", "INFO ifc_down: ifc_down(bcm0) = 0"},
     commands(4),
     HOTSPOT_STARTING,
     false},
    {"NoSwitchForDnsmasq",
     failing({.call = Call::System, .on = "setprop dnsmasq", .error = ENOMEM}),
     {"INFO SoftAP_dnsmasq_setprop: HOSTAP:Command: setprop dnsmasq.enable 1\n",
      "ERROR s_SoftAP_Start: HOSTAP: failed to setup  dnsmasqCannot allocate memory",
      "INFO SoftAP_hostapd_setprop: HOSTAP :run dnsmasq \n",
      "INFO SoftAP_hostapd_setprop: HOSTAP:Command: setprop hostapd.enable 0\n", "INFO ifc_init: ifc_init_returning 0",
      "INFO ifc_down: ifc_down(bcm0) = 0"},
     commands(5, {"setprop hostapd.enable 0"}),
     HOTSPOT_STARTING,
     false},
    {"NoSwitchForDnsmasqNorBackForHostapd",
     [](sim::Set& set) {
         (void)set.fail({.call = Call::System, .on = "setprop dnsmasq", .error = ENOMEM});
         (void)set.fail({.call = Call::System, .on = "setprop hostapd.enable 0", .error = EAGAIN});
     },
     {"INFO SoftAP_hostapd_setprop: HOSTAP:Command: setprop hostapd.enable 0\n",
      "ERROR SoftAP_stopHostapd: HOSTAP: failed to stop  hostapdResource temporarily unavailable",
      "INFO ifc_init: ifc_init_returning 0", "INFO ifc_down: ifc_down(bcm0) = 0"},
     commands(5, {"setprop hostapd.enable 0"}),
     HOTSPOT_STARTING,
     false},
};

class SoftApStartFailure : public testing::TestWithParam<StartFailure> {};

TEST_P(SoftApStartFailure, IsToldAndEndsTheStart)
{
    const StartFailure& failure = GetParam();
    Bench bench;
    failure.fault(bench.set);
    EXPECT_EQ(s_SoftAP_Start(nullptr), nullptr);

    const Lines said = bench.said();
    ASSERT_GE(said.size(), failure.lastSaid.size());
    EXPECT_EQ(Lines(said.end() - static_cast<std::ptrdiff_t>(failure.lastSaid.size()), said.end()), failure.lastSaid);
    EXPECT_EQ(bench.ran(), failure.commands);
    EXPECT_EQ(hotspot.mState, failure.state);
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Status(0), 0);
    bench.set.clearFaults();
    if (failure.commands.size() > 1 && std::string(failure.name) != "NoInterface") {
        EXPECT_EQ(bench.set.iface("bcm0").up(), failure.up);
    }
}

TEST_P(SoftApStartFailure, DoesNotHinderTheNextStart)
{
    Bench bench;
    GetParam().fault(bench.set);
    EXPECT_EQ(s_SoftAP_Start(nullptr), nullptr);
    bench.set.clearFaults();
    bench.set.onCommand(kCreate).does([] {});
    bench.startHere();
    EXPECT_EQ(hotspot.mState, HOTSPOT_STARTED);
}
INSTANTIATE_TEST_SUITE_P(Steps, SoftApStartFailure, testing::ValuesIn(kStartFailures),
                         [](const auto& each) { return each.param.name; });

TEST(SoftApStart, FailsOnACommandThatFailsAsOnOneThatCannotBeRun)
{
    for (const char* command : {"netcfg bcm0 up", "setprop hostapd", "setprop dnsmasq"}) {
        EXPECT_EQ(sim::forkedRun([command] {
                      Bench bench;
                      bench.set.onCommand(command).fails();
                      EXPECT_EQ(s_SoftAP_Start(nullptr), nullptr);
                      EXPECT_EQ(hotspot.mState, HOTSPOT_STARTING);
                  }),
                  0)
            << command;
    }
}

TEST(SoftApStart, KeepsTheSharedSocketOpenAfterAFailedDaemon)
{
    Bench bench;
    bench.set.onCommand("setprop hostapd").fails();
    EXPECT_EQ(s_SoftAP_Start(nullptr), nullptr);
    EXPECT_EQ(bench.set.openDescriptors(), Lines{"socket(\"inet\")"});
    EXPECT_GE(ifc_ctl_sock, 0);
}
} // namespace
