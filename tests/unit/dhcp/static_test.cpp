#include "bench.h"

#include "movo_net_fg/fg.h"

#include <csignal>
#include <linux/sockios.h>
#include <optional>

using namespace dhcp;
using sim::IPCHANGED;
using sim::STATICIP_FAILED;
using sim::STATICIP_SUCCESS;

namespace {
using Callbacks = std::vector<sim::Called>;

const Callbacks kApplied{{IPCHANGED, "eth0"}, {IPCHANGED, "eth0"}, {STATICIP_SUCCESS, "eth0"}};
const Callbacks kAddressRefused{{IPCHANGED, "eth0"}, {STATICIP_FAILED, "eth0"}};
const Callbacks kRefusedLater{{IPCHANGED, "eth0"}, {IPCHANGED, "eth0"}, {STATICIP_FAILED, "eth0"}};

TEST(Static, IsAppliedStepByStep)
{
    Bench bench;
    bench.setStatic();
    bench.set.write("/etc/resolv.conf", "nameserver 9.9.9.9\n");
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kNoForce), 0);

    EXPECT_EQ(bench.set.iface("eth0").address(), "192.168.1.20");
    EXPECT_EQ(bench.set.iface("eth0").mask(), "255.255.255.0");
    EXPECT_EQ(bench.set.defaultRoutes(), Lines{"192.168.1.1 dev eth0"});
    EXPECT_EQ(bench.set.read("/etc/resolv.conf"), "nameserver 192.168.1.2\nnameserver 192.168.1.3\n");
    EXPECT_EQ(ran(bench.set), Lines{"route add default gw 192.168.1.1 dev eth0"});
    EXPECT_EQ(bench.iface.ipv4, address("192.168.1.20"));
    EXPECT_EQ(bench.iface.maskv4, address("255.255.255.0"));
    EXPECT_EQ(bench.iface.gwv4, address("192.168.1.1"));
    EXPECT_EQ(bench.iface.dns1v4, address("192.168.1.2"));
    EXPECT_EQ(bench.iface.dns2v4, address("192.168.1.3"));
    EXPECT_EQ(bench.iface.ipStatus, _MOVO_NET_IPSTATUS_STATIC_);
    EXPECT_EQ(bench.iface.isConnected, 1);
    EXPECT_EQ(bench.iface.priority, 2);
    EXPECT_TRUE(bench.set.calledBack(kApplied));
}

TEST(Static, TellsWhatItDoes)
{
    Bench bench;
    bench.setStatic();
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    EXPECT_EQ(
        said(bench.set),
        (Lines{"INFO ConfigIP: if=eth0\n",
               "INFO ConfigIP: if=eth0, ip=1401a8c0, mask=00ffffff, gw=0101a8c0, dns1=0201a8c0, dns2=0301a8c0\n",
               "INFO IsDhcpcdRunning: IsDhcpcdRunning, pIface->dhcpcfd=-1, pIface->dhcpcEventHandle=0x0\n",
               "INFO IsDhcpcdRunning: IsDhcpcdRunning, checking file /tmp/dhcp/dhcpcd-eth0.pid\n",
               "INFO ShutdownDhcpcd: ShutdownDhcpcd, pIface->dhcpcfd=-1, pIface->dhcpcEventHandle=0x0\n",
               "INFO ShutdownDhcpcd: ShutdownDhcpcd, checking file /tmp/dhcp/dhcpcd-eth0.pid\n",
               "INFO ShutdownDhcpcd: ShutdownDhcpcd, Q310 don't support\n", "INFO IsDhcpcdRunning: Dhcp running=0\n",
               "INFO int_Movo_Net_SetIpv4: setting ip to 1401a8c0\n",
               "INFO int_Movo_Net_SetMaskv4: setting ip mask to 00ffffff\n",
               "ERROR GetDNS: cannot open /etc/resolv.conf\n", "ERROR GetDNS: errno=2, No such file or directory\n"}));
}

TEST(Static, DnsOnlyModeIsTheSame)
{
    Bench bench;
    bench.setStatic();
    bench.iface.ipMode = _MOVO_NET_IPMODE_DNSONLY_;
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    EXPECT_EQ(bench.set.iface("eth0").address(), "192.168.1.20");
    EXPECT_TRUE(bench.set.calledBack(kApplied));
}

TEST(Static, StopsTheClient)
{
    Bench bench;
    bench.launch();
    const int pid = bench.set.dhcp("eth0").pid();
    bench.setStatic();
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kNoForce), 0);
    EXPECT_EQ(sent(bench.set), (std::vector<sim::Signal>{{pid, SIGHUP, 0}}));
    EXPECT_EQ(bench.iface.dhcpcfd, -1);
    EXPECT_EQ(openFiles(bench.set), Lines{});
    EXPECT_EQ(bench.set.iface("eth0").address(), "192.168.1.20");
    EXPECT_TRUE(bench.set.calledBack(kApplied));
}

TEST(Static, AnnouncesInOrderWithTheTimeMarkBetween)
{
    Bench bench;
    bench.setStatic();
    g_isWifiConnectByUI = 1;
    Lines seen;
    bench.set.onCallback([&](MovoNetCBReason_e reason, void* param) {
        EXPECT_EQ(param, &bench.iface);
        seen.push_back(std::to_string(reason) + (bench.set.exists(kMarker) ? " marked" : "") +
                       (g_isWifiConnectByUI != 0 ? " by UI" : "") +
                       (bench.set.defaultRoutes().empty() ? "" : " routed"));
    });
    bench.set.write("/tmp/.keep", "");
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    EXPECT_EQ(seen, (Lines{"6 by UI", "6 routed", "14 marked routed"}));
}

class StaticPriority : public testing::TestWithParam<std::pair<MovoNetIfaceType_e, int>> {};

TEST_P(StaticPriority, IsSetBeforeTheSteps)
{
    Bench bench;
    bench.setStatic();
    bench.iface.sipv4 = 0; // refused at the first step
    bench.iface.type = GetParam().first;
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    EXPECT_EQ(bench.iface.priority, GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(Types, StaticPriority,
                         testing::Values(std::pair{_MOVO_NET_IFACE_ETHER_, 2}, std::pair{_MOVO_NET_IFACE_WIFI_, 1},
                                         std::pair{_MOVO_NET_IFACE_LO_, 1}));

/** A configuration that differs from an acceptable one in one step, and how far the steps get. */
struct Refused {
    const char* name;
    const char* address = "192.168.1.20";
    const char* gateway = "192.168.1.1";
    const char* dns1 = "192.168.1.2";
    const char* dns2 = "192.168.1.3";
    std::optional<sim::Fault> fault = {};
    const char* message = nullptr;
    const char* kernelAddress = "192.168.1.20";
    const char* kernelMask = "255.255.255.0";
    const char* currentGateway = "192.168.1.1";
    const char* currentDns2 = "192.168.1.3";
};

void PrintTo(const Refused& row, std::ostream* out)
{
    *out << row.name;
}

class StaticRefused : public testing::TestWithParam<Refused> {};

TEST_P(StaticRefused, KeepsTheInterfaceConnectedAndReturnsSuccess)
{
    const Refused& row = GetParam();
    Bench bench;
    bench.setStatic();
    bench.iface.sipv4 = address(row.address);
    bench.iface.sgwv4 = address(row.gateway);
    bench.iface.sdns1v4 = address(row.dns1);
    bench.iface.sdns2v4 = address(row.dns2);
    if (row.fault) {
        bench.set.fail(*row.fault);
    }
    g_isWifiConnectByUI = 1;
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);

    EXPECT_EQ(bench.iface.isConnected, 1);
    EXPECT_EQ(g_isWifiConnectByUI, 0);
    EXPECT_TRUE(bench.set.exists(kMarker));
    const bool addressPassed = std::string(row.kernelAddress) != "0.0.0.0";
    EXPECT_TRUE(bench.set.calledBack(addressPassed ? kRefusedLater : kAddressRefused));
    EXPECT_EQ(bench.iface.ipv4, address(row.kernelAddress));
    EXPECT_EQ(bench.set.iface("eth0").address(), row.kernelAddress);
    EXPECT_EQ(bench.iface.maskv4, address(row.kernelMask));
    EXPECT_EQ(bench.iface.gwv4, address(row.currentGateway));
    EXPECT_EQ(bench.iface.dns2v4, address(row.currentDns2));
    EXPECT_EQ(bench.set.defaultRoutes(), Lines{});
    EXPECT_EQ(only(told(bench.set), {"ERROR movo_net_fl_common int", "ERROR movo_net_fg"}),
              row.message != nullptr ? Lines{row.message} : Lines{});
}

Refused addressStep(const char* name, const char* address, std::optional<sim::Fault> fault = {},
                    const char* message = nullptr)
{
    return {.name = name,
            .address = address,
            .fault = std::move(fault),
            .message = message,
            .kernelAddress = "0.0.0.0",
            .kernelMask = "0.0.0.0",
            .currentGateway = "0.0.0.0",
            .currentDns2 = "0.0.0.0"};
}

Refused maskStep(const char* name, sim::Fault fault, const char* message)
{
    return {.name = name,
            .fault = std::move(fault),
            .message = message,
            .kernelMask = "0.0.0.0",
            .currentGateway = "0.0.0.0",
            .currentDns2 = "0.0.0.0"};
}

Refused gatewayStep(const char* name, const char* gateway)
{
    return {.name = name, .gateway = gateway, .currentGateway = "0.0.0.0", .currentDns2 = "0.0.0.0"};
}

Refused dnsStep(const char* name, const char* dns1, const char* dns2)
{
    return {.name = name, .dns1 = dns1, .dns2 = dns2, .currentDns2 = "0.0.0.0"};
}

const sim::Fault kNoSocket{.call = sim::Call::Socket, .on = "inet", .nth = 1, .error = EMFILE};
const sim::Fault kNoSecondSocket{.call = sim::Call::Socket, .on = "inet", .nth = 2, .error = EMFILE};
const sim::Fault kNoAddress{.call = sim::Call::Ioctl, .on = "eth0", .code = SIOCSIFADDR, .error = EPERM};
const sim::Fault kNoMask{.call = sim::Call::Ioctl, .on = "eth0", .code = SIOCSIFNETMASK, .error = EPERM};
const sim::Fault kNoRoute{.call = sim::Call::System, .on = "route add", .nth = 1};

INSTANTIATE_TEST_SUITE_P(
    Steps, StaticRefused,
    testing::Values(
        addressStep("AddressZero", "0.0.0.0"), addressStep("AddressOfThisNetwork", "0.1.2.3"),
        addressStep("AddressFrom255", "255.0.0.1"), addressStep("AddressAllOnes", "255.255.255.255"),
        addressStep("AddressSocket", "192.168.1.20", kNoSocket,
                    "ERROR movo_net_fl_common int_Movo_Net_SetIpv4: Cannot get control socket\n"),
        addressStep("AddressIoctl", "192.168.1.20", kNoAddress,
                    "ERROR movo_net_fl_common int_Movo_Net_SetIpv4: Set IP Address ERROR\n"),
        maskStep("MaskSocket", kNoSecondSocket,
                 "ERROR movo_net_fl_common int_Movo_Net_SetMaskv4: Cannot get control socket\n"),
        maskStep("MaskIoctl", kNoMask, "ERROR movo_net_fl_common int_Movo_Net_SetMaskv4: Set IP MASK ERROR\n"),
        gatewayStep("GatewayZero", "0.0.0.0"), gatewayStep("GatewayOfThisNetwork", "0.0.0.1"),
        gatewayStep("GatewayFrom255", "255.0.0.0"), dnsStep("NoDns", "0.0.0.0", "0.0.0.0"),
        dnsStep("DnsFrom255", "255.1.1.1", "0.8.8.8"), dnsStep("DnsAllOnes", "0.0.0.0", "255.255.255.255"),
        Refused{.name = "Route", .fault = kNoRoute, .message = "ERROR movo_net_fg ResetGwAndDns: SetGateway failed\n"}),
    [](const auto& test) { return test.param.name; });

class StaticAccepted : public testing::TestWithParam<std::pair<const char*, const char*>> {};

TEST_P(StaticAccepted, NeedsOneServerOnly)
{
    Bench bench;
    bench.setStatic();
    bench.iface.sdns1v4 = address(GetParam().first);
    bench.iface.sdns2v4 = address(GetParam().second);
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    EXPECT_TRUE(bench.set.calledBack(kApplied));
    EXPECT_EQ(bench.iface.dns1v4, address(GetParam().first));
    EXPECT_EQ(bench.set.read("/etc/resolv.conf"),
              std::string("nameserver ") + GetParam().first + "\nnameserver " + GetParam().second + "\n");
}

INSTANTIATE_TEST_SUITE_P(Servers, StaticAccepted,
                         testing::Values(std::pair{"8.8.8.8", "0.0.0.0"}, std::pair{"0.0.0.0", "8.8.8.8"},
                                         std::pair{"255.1.1.1", "1.1.1.1"}, std::pair{"254.0.0.0", "255.0.0.0"}));

TEST(Static, AcceptsTheOutermostFirstOctets)
{
    Bench bench;
    bench.setStatic();
    bench.iface.sipv4 = address("1.0.0.0");
    bench.iface.smaskv4 = address("0.0.0.0"); // any mask will do
    bench.iface.sgwv4 = address("254.255.255.255");
    bench.set.onCommand("route add").fails(0);
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    EXPECT_TRUE(bench.set.calledBack(kApplied));
    EXPECT_RAN(bench.set, "route add default gw 254.255.255.255 dev eth0");
}

TEST(Static, TakesWhatTheCallbackOfTheAddressChanged)
{
    Bench bench;
    bench.setStatic();
    bench.set.onCallback([&bench](MovoNetCBReason_e, void*) {
        EXPECT_EQ(int_Movo_Net_SetGwv4(&bench.iface, address("192.168.1.254")), 0);
        EXPECT_EQ(int_Movo_Net_Setdnsv4(&bench.iface, address("192.168.1.8"), address("192.168.1.9")), 0);
    });
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    EXPECT_EQ(bench.iface.sgwv4, address("192.168.1.254"));
    EXPECT_EQ(bench.set.defaultRoutes(), Lines{"192.168.1.254 dev eth0"});
    EXPECT_EQ(bench.set.read("/etc/resolv.conf"), "nameserver 192.168.1.8\nnameserver 192.168.1.9\n");
}

TEST(Static, OfAnInactiveInterfaceIsStoredAndReportedApplied)
{
    Bench bench;
    bench.setStatic();
    bench.iface.isActived = 0;
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    EXPECT_CALLBACKS(bench.set, {{IPCHANGED, "eth0"}, {STATICIP_SUCCESS, "eth0"}});
    EXPECT_EQ(bench.set.iface("eth0").address(), "0.0.0.0");
    EXPECT_EQ(bench.iface.ipv4, 0U);
    EXPECT_EQ(bench.iface.isConnected, 1);
    EXPECT_EQ(bench.iface.priority, 2);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, "movo_net_fg", "ResetGwAndDns", "no connected interface\n");
}

TEST(Static, ReportsEvenWhenTheListCannotBeLocked)
{
    Bench bench;
    bench.setStatic();
    bench.set.failLock(movonet::ifaceListLock);
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    EXPECT_TRUE(bench.set.calledBack(kRefusedLater));
}
} // namespace
