#include "bench.h"

#include <cerrno>
#include <linux/sockios.h>

using namespace dhcp;
using sim::DHCP_SUCCESS;
using sim::IPCHANGED;

namespace {
class Obtained : public testing::TestWithParam<const char*> {};

TEST_P(Obtained, TakesTheLease)
{
    Bench bench;
    bench.launch();
    bench.set.iface("eth0").setAddress("10.0.2.15", "255.255.0.0");
    bench.set.addDefaultRoute("eth0", "10.0.2.2");
    bench.set.write("/etc/resolv.conf", "nameserver 10.0.2.3\nnameserver 10.0.2.4\n");
    bench.iface.dhcpDownCount = 5;
    const std::int64_t before = bench.set.clock();
    bench.hear(GetParam());

    EXPECT_EQ(bench.set.clock() - before, 500);
    EXPECT_EQ(
        only(said(bench.set), {"INFO OnDhcpEventRev", "ERROR"}),
        (Lines{"INFO OnDhcpEventRev: message: new\n",
               "INFO OnDhcpEventRev: eth0 got IP. \n\tIP: 10.0.2.15\n\tMASK: 255.255.0.0\n\tGW: 10.0.2.2\n\tDNS1: "
               "10.0.2.3\n\tDNS2: 10.0.2.4\n"}));
    EXPECT_EQ(bench.iface.ipv4, address("10.0.2.15"));
    EXPECT_EQ(bench.iface.maskv4, address("255.255.0.0"));
    EXPECT_EQ(bench.iface.gwv4, address("10.0.2.2"));
    EXPECT_EQ(bench.iface.dns1v4, address("10.0.2.3"));
    EXPECT_EQ(bench.iface.dns2v4, address("10.0.2.4"));
    EXPECT_EQ(bench.iface.sipv4, bench.iface.ipv4);
    EXPECT_EQ(bench.iface.smaskv4, bench.iface.maskv4);
    EXPECT_EQ(bench.iface.sgwv4, bench.iface.gwv4);
    EXPECT_EQ(bench.iface.sdns1v4, bench.iface.dns1v4);
    EXPECT_EQ(bench.iface.sdns2v4, bench.iface.dns2v4);
    EXPECT_EQ(bench.iface.dhcpDownCount, 0);
    EXPECT_EQ(bench.iface.ipStatus, _MOVO_NET_IPSTATUS_DHCP_GOT_);
    EXPECT_EQ(bench.iface.isConnected, 1);
    EXPECT_EQ(bench.iface.priority, 2);
    EXPECT_CALLBACKS(bench.set, {{IPCHANGED, "eth0"}, {DHCP_SUCCESS, "eth0"}});
}

INSTANTIATE_TEST_SUITE_P(Messages, Obtained,
                         testing::Values("new", "up", "new\n", "newlease", "update", "up down", "newdown"));

TEST(Obtained, AnnouncesInOrder)
{
    Bench bench;
    bench.launch();
    g_isWifiConnectByUI = 1;
    Lines seen;
    bench.set.onCallback([&](MovoNetCBReason_e reason, void* param) {
        EXPECT_EQ(param, &bench.iface);
        EXPECT_EQ(bench.set.ranInOrder({"route add default gw 10.0.2.2 dev eth0"}), testing::AssertionSuccess());
        seen.push_back(std::to_string(reason) + (bench.set.exists(kMarker) ? " marked" : "") +
                       (g_isWifiConnectByUI != 0 ? " by UI" : ""));
    });
    bench.set.dhcp("eth0").leases();
    EXPECT_EQ(seen, (Lines{"6", "16 marked"}));
}

TEST(Obtained, ReadsTheRouteHalfASecondAfterTheAddress)
{
    Bench bench;
    bench.launch();
    bench.set.holdSleeps(500);
    bench.set.iface("eth0").setAddress("10.0.2.15");
    bench.hear("new");
    bench.set.iface("eth0").setAddress("10.0.2.99"); // too late
    bench.set.addDefaultRoute("eth0", "10.0.2.2");   // in time
    EXPECT_TRUE(bench.set.wake());
    EXPECT_EQ(bench.iface.ipv4, address("10.0.2.15"));
    EXPECT_EQ(bench.iface.gwv4, address("10.0.2.2"));
}

TEST(Obtained, IsReadFromItsOwnInterface)
{
    Bench bench;
    bench.launch();
    bench.set.addIface("eth1").setUp(true).setAddress("10.9.0.5");
    bench.set.addDefaultRoute("eth1", "10.9.0.1");
    bench.set.iface("eth0").setAddress("10.0.2.15");
    bench.hear("new");
    EXPECT_EQ(bench.iface.gwv4, 0U);
}

TEST(Obtained, GoesOnWithoutRouteAndServers)
{
    Bench bench;
    bench.launch();
    bench.iface.gwv4 = 1;
    bench.iface.dns1v4 = 2;
    bench.iface.dns2v4 = 3;
    bench.set.iface("eth0").setAddress("10.0.2.15");
    bench.hear("new");
    EXPECT_EQ(bench.iface.gwv4, 0U);
    EXPECT_EQ(bench.iface.dns1v4, 2U);
    EXPECT_EQ(bench.iface.dns2v4, 3U);
    EXPECT_EQ(bench.iface.sdns2v4, 3U);
    EXPECT_CALLBACKS(bench.set, {{IPCHANGED, "eth0"}, {DHCP_SUCCESS, "eth0"}});
}

/** A request that fails: which one, what is said, and whether address and mask are still taken. */
struct Unread {
    const char* name;
    sim::Fault fault;
    const char* message;
    const char* address;
    const char* mask;
};

void PrintTo(const Unread& row, std::ostream* out)
{
    *out << row.name;
}

class ObtainedUnread : public testing::TestWithParam<Unread> {};

TEST_P(ObtainedUnread, LeavesTheFieldAndGoesOn)
{
    Bench bench;
    bench.launch();
    bench.iface.ipv4 = address("10.0.0.1");
    bench.iface.maskv4 = address("255.0.0.0");
    bench.set.iface("eth0").setAddress("10.0.2.15", "255.255.0.0");
    bench.set.fail(GetParam().fault);
    bench.hear("new");
    EXPECT_EQ(only(said(bench.set), {"ERROR GetReal"}), Lines{GetParam().message});
    EXPECT_EQ(bench.iface.ipv4, address(GetParam().address));
    EXPECT_EQ(bench.iface.maskv4, address(GetParam().mask));
    EXPECT_EQ(bench.iface.ipStatus, _MOVO_NET_IPSTATUS_DHCP_GOT_);
    EXPECT_CALLBACKS(bench.set, {{IPCHANGED, "eth0"}, {DHCP_SUCCESS, "eth0"}});
}

INSTANTIATE_TEST_SUITE_P(
    Requests, ObtainedUnread,
    testing::Values(Unread{"AddressSocket",
                           {.call = sim::Call::Socket, .on = "inet", .nth = 1, .error = EMFILE},
                           "ERROR GetRealIPAddress: cannot get control socket\n",
                           "10.0.0.1",
                           "255.255.0.0"},
                    Unread{"AddressIoctl",
                           {.call = sim::Call::Ioctl, .on = "eth0", .code = SIOCGIFADDR, .error = EADDRNOTAVAIL},
                           "ERROR GetRealIPAddress: ioctl failed\n",
                           "10.0.0.1",
                           "255.255.0.0"},
                    Unread{"MaskSocket",
                           {.call = sim::Call::Socket, .on = "inet", .nth = 2, .error = EMFILE},
                           "ERROR GetRealNetMask: cannot get control socket\n",
                           "10.0.2.15",
                           "255.0.0.0"},
                    Unread{"MaskIoctl",
                           {.call = sim::Call::Ioctl, .on = "eth0", .code = SIOCGIFNETMASK, .error = EADDRNOTAVAIL},
                           "ERROR GetRealNetMask: ioctl failed\n",
                           "10.0.2.15",
                           "255.0.0.0"}),
    [](const auto& test) { return test.param.name; });

class ObtainedStatus : public testing::TestWithParam<std::pair<const char*, MovoNetIPStatus_e>> {};

TEST_P(ObtainedStatus, DependsOnTheAddress)
{
    Bench bench;
    bench.launch();
    bench.set.iface("eth0").setAddress(GetParam().first, "255.255.0.0");
    bench.hear("new");
    EXPECT_EQ(bench.iface.ipStatus, GetParam().second);
    EXPECT_EQ(bench.iface.isConnected, 1);
    EXPECT_EQ(static_cast<bool>(
                  bench.set.logged(KEST_LEVEL_INFO, "movo_net_fg", "ResetGwAndDns", "no connected interface\n")),
              GetParam().second == _MOVO_NET_IPSTATUS_DHCP_AUTOIP_);
    EXPECT_CALLBACKS(bench.set, {{IPCHANGED, "eth0"}, {DHCP_SUCCESS, "eth0"}});
}

INSTANTIATE_TEST_SUITE_P(Addresses, ObtainedStatus,
                         testing::Values(std::pair{"169.254.3.4", _MOVO_NET_IPSTATUS_DHCP_AUTOIP_},
                                         std::pair{"169.254.255.255", _MOVO_NET_IPSTATUS_DHCP_AUTOIP_},
                                         std::pair{"169.253.3.4", _MOVO_NET_IPSTATUS_DHCP_GOT_},
                                         std::pair{"168.254.3.4", _MOVO_NET_IPSTATUS_DHCP_GOT_},
                                         std::pair{"254.169.3.4", _MOVO_NET_IPSTATUS_DHCP_GOT_}));

TEST(Obtained, GivesAWirelessInterfaceTheLowerPriority)
{
    wifiFake.associated = 1;
    Bench bench(_MOVO_NET_IFACE_WIFI_);
    bench.lease();
    EXPECT_EQ(bench.iface.priority, 1);
}

class UnknownMessage : public testing::TestWithParam<std::pair<std::string, std::string>> {};

TEST_P(UnknownMessage, IsToldAndIgnored)
{
    Bench bench;
    bench.lease();
    bench.hear(GetParam().first);
    EXPECT_EQ(said(bench.set), Lines{"INFO OnDhcpEventRev: unknown message: " + GetParam().second + "\n"});
    EXPECT_EQ(bench.iface.isConnected, 1);
    EXPECT_EQ(bench.iface.ipv4, address("10.0.2.15"));
    EXPECT_CALLBACKS(bench.set, {});
}

INSTANTIATE_TEST_SUITE_P(Messages, UnknownMessage,
                         testing::Values(std::pair{"x", "x"}, std::pair{"ne", "ne"}, std::pair{"u", "u"},
                                         std::pair{"dow", "dow"}, std::pair{" new", " new"}, std::pair{"New", "New"},
                                         std::pair{"UP", "UP"}, std::pair{"renew", "renew"},
                                         std::pair{"123456789012345", "123456789012345"},
                                         std::pair{std::string("\0new", 4), std::string()},
                                         std::pair{std::string("\xff\x01%s", 4), std::string("\xff\x01%s")}));

/** The messages that arrive, one read each. */
Lines heard(const std::string& bytes)
{
    Bench bench;
    bench.launch();
    bench.set.iface("eth0").setAddress("10.0.2.15");
    bench.hear(bytes);
    return only(said(bench.set), {"INFO OnDhcpEventRev: message", "INFO OnDhcpEventRev: unknown"});
}

TEST(Splitting, TakesFifteenBytesAtATime)
{
    EXPECT_EQ(heard("abcdefghijklmnopqrst"), (Lines{"INFO OnDhcpEventRev: unknown message: abcdefghijklmno\n",
                                                    "INFO OnDhcpEventRev: unknown message: pqrst\n"}));
}

TEST(Splitting, ReadsEachPieceForItself)
{
    EXPECT_EQ(heard("abcdefghijklmnodown!"), (Lines{"INFO OnDhcpEventRev: unknown message: abcdefghijklmno\n",
                                                    "INFO OnDhcpEventRev: message: down\n"}));
}

TEST(Splitting, KeepsTwoMessagesInOneReadAsTheFirst)
{
    EXPECT_EQ(heard("downnew"), Lines{"INFO OnDhcpEventRev: message: down\n"});
}

TEST(Splitting, KeepsAMessageCutByTheReadAsUnknown)
{
    EXPECT_EQ(heard("abcdefghijklmdown"), (Lines{"INFO OnDhcpEventRev: unknown message: abcdefghijklmdo\n",
                                                 "INFO OnDhcpEventRev: unknown message: wn\n"}));
}
} // namespace
