#include "bench.h"

#include <csignal>

using namespace dhcp;
using sim::IFDISCONNECTED;
using sim::WIFITIMEOUT;

namespace {
int s_disconnected;

/** Leaves the network, as the wireless back end does it: it tells first. */
RETURN_TYPE leaveNetwork(MovoNetIface_t* pIface)
{
    ++s_disconnected;
    EXPECT_EQ(g_isWifiConnectByUI, 0);
    return NotifyApp(IFDISCONNECTED, pIface);
}

TEST(Lost, ForgetsTheAddress)
{
    Bench bench;
    bench.lease({.dns = "10.0.2.3,10.0.2.4"});
    bench.hear("down");
    EXPECT_EQ(bench.iface.isConnected, 0);
    EXPECT_EQ(bench.iface.ipv4, 0U);
    EXPECT_EQ(bench.iface.maskv4, 0U);
    EXPECT_EQ(bench.iface.gwv4, 0U);
    EXPECT_EQ(bench.iface.dns1v4, 0U);
    EXPECT_EQ(bench.iface.dns2v4, 0U);
    EXPECT_EQ(bench.iface.priority, 0);
    EXPECT_EQ(bench.iface.ipStatus, _MOVO_NET_IPSTATUS_DHCP_RELEASED_);
    EXPECT_EQ(bench.iface.isActived, 1);
    EXPECT_EQ(bench.iface.sipv4, address("10.0.2.15")); // the last lease stays the remembered configuration
    EXPECT_EQ(bench.iface.sdns2v4, address("10.0.2.4"));
}

class LostMessage : public testing::TestWithParam<const char*> {};

TEST_P(LostMessage, BeginsWithDown)
{
    Bench bench;
    bench.lease();
    bench.hear(GetParam());
    EXPECT_EQ(bench.iface.isConnected, 0);
    EXPECT_CALLBACKS(bench.set, {{IFDISCONNECTED, "eth0"}});
}

INSTANTIATE_TEST_SUITE_P(Messages, LostMessage, testing::Values("down", "downtime", "down\n", "downup"));

TEST(Lost, LeavesAClientAloneThatRuns)
{
    Bench bench;
    bench.lease();
    bench.hear("down");
    EXPECT_TRUE(bench.set.dhcp("eth0").running());
    EXPECT_EQ(sent(bench.set), (std::vector<sim::Signal>{}));
    EXPECT_NE(bench.iface.dhcpcfd, -1);
    EXPECT_EQ(only(said(bench.set), {"INFO OnDhcpEventRev", "INFO ShutdownDhcpcd", "INFO IsDhcpcdRunning: Dhcp"}),
              (Lines{"INFO OnDhcpEventRev: message: down\n", "INFO IsDhcpcdRunning: Dhcp running=1\n"}));
}

TEST(Lost, ClosesThePipeOfADeadClient)
{
    Bench bench;
    bench.lease();
    bench.set.dhcp("eth0").process().dies();
    bench.hear("down");
    EXPECT_EQ(bench.iface.dhcpcfd, -1);
    EXPECT_EQ(openFiles(bench.set), Lines{});
    EXPECT_FALSE(bench.set.exists(kPidFile));
}

TEST(Lost, StopsAClientWithAnEmptyPidFile)
{
    Bench bench;
    bench.lease();
    bench.set.write(kPidFile, "");
    bench.hear("down");
    EXPECT_EQ(bench.iface.dhcpcfd, -1);
    EXPECT_FALSE(bench.set.exists(kPidFile));
}

TEST(Lost, HandsTheRouteOverBeforeItIsAnnounced)
{
    Bench bench;
    MovoNetIface_t& other = bench.add("eth1", _MOVO_NET_IFACE_ETHER_);
    bench.set.iface("eth1").setAddress("10.1.0.5");
    other.ipMode = _MOVO_NET_IPMODE_STATIC_;
    other.isConnected = 1;
    other.gwv4 = address("10.1.0.1");
    other.dns1v4 = address("10.1.0.2");
    bench.lease();
    ASSERT_EQ(bench.set.defaultRoutes(), Lines{"10.0.2.2 dev eth0"});
    bench.set.onCallback([&](MovoNetCBReason_e, void*) {
        EXPECT_RAN(bench.set, "route add default gw 10.1.0.1 dev eth1");
        EXPECT_EQ(bench.iface.dhcpDownHandle, 0); // the retry comes after the announcement
    });
    bench.hear("down");
    EXPECT_EQ(bench.set.defaultRoutes(), Lines{"10.1.0.1 dev eth1"});
    EXPECT_NE(bench.iface.dhcpDownHandle, 0);
    EXPECT_CALLBACKS(bench.set, {{IFDISCONNECTED, "eth0"}});
}

TEST(Lost, SchedulesARetryOnAWiredInterface)
{
    Bench bench;
    bench.lease();
    bench.hear("down");
    EXPECT_EQ(only(said(bench.set), {"INFO AddDhcpDownEvent"}),
              Lines{"INFO AddDhcpDownEvent: add dhcp down event, count is 0\n"});
    EXPECT_EQ(bench.iface.dhcpDownCount, 1);
    EXPECT_NE(bench.iface.dhcpDownHandle, 0);
}

TEST(Lost, IsAnnouncedThoughNoRetryIsLeft)
{
    Bench bench;
    bench.lease();
    bench.iface.dhcpDownCount = 6;
    bench.hear("down");
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, "movo_net_fl_common", "AddDhcpDownEvent",
                  "dhcp down too many times, stop trying\n");
    EXPECT_CALLBACKS(bench.set, {{IFDISCONNECTED, "eth0"}});
    EXPECT_EQ(bench.iface.dhcpDownHandle, 0);
}

TEST(Lost, IsNotAnnouncedOnAnInterfaceOfAnotherType)
{
    for (const auto type : {_MOVO_NET_IFACE_LO_, static_cast<MovoNetIfaceType_e>(3)}) {
        EXPECT_EQ(sim::forkedRun([type] {
                      Bench bench;
                      bench.lease();
                      bench.iface.type = type;
                      bench.hear("down");
                      EXPECT_EQ(bench.iface.isConnected, 0);
                      EXPECT_EQ(bench.iface.dhcpDownHandle, 0);
                      EXPECT_CALLBACKS(bench.set, {});
                  }),
                  0);
    }
}

/** What the supplicant says when a wireless interface loses its address, and what follows. */
struct WirelessLoss {
    const char* name;
    kest_bool byUi;
    RETURN_TYPE askResult;
    kest_bool associated;
    kest_bool idle;
    std::vector<sim::Called> callbacks;
    bool retried;
    kest_bool byUiAfter;
};

void PrintTo(const WirelessLoss& row, std::ostream* out)
{
    *out << row.name;
}

class LostWireless : public testing::TestWithParam<WirelessLoss> {};

TEST_P(LostWireless, DependsOnTheSupplicant)
{
    const WirelessLoss& row = GetParam();
    wifiFake.associated = 1;
    Bench bench(_MOVO_NET_IFACE_WIFI_);
    bench.lease();
    bench.iface.funcs.WifiDisConnect = leaveNetwork;
    wifiFake = {.askResult = row.askResult, .associated = row.associated, .idle = row.idle};
    g_isWifiConnectByUI = row.byUi;
    bench.hear("down");
    EXPECT_EQ(wifiFake.asked, &bench.iface);
    EXPECT_TRUE(bench.set.calledBack(row.callbacks));
    EXPECT_EQ(bench.iface.dhcpDownHandle != 0, row.retried);
    EXPECT_EQ(bench.iface.dhcpDownCount, row.retried ? 1 : 0);
    EXPECT_EQ(g_isWifiConnectByUI, row.byUiAfter);
    EXPECT_EQ(s_disconnected, row.callbacks.size() == 2 ? 1 : 0);
}

const std::vector<sim::Called> kNothing;
const std::vector<sim::Called> kLeft{{IFDISCONNECTED, "wlan0"}};
const std::vector<sim::Called> kTimedOut{{IFDISCONNECTED, "wlan0"}, {WIFITIMEOUT, "wlan0"}};

INSTANTIATE_TEST_SUITE_P(Rows, LostWireless,
                         testing::Values(WirelessLoss{"Associated", 0, 0, 1, 0, kLeft, true, 0},
                                         WirelessLoss{"NotAssociated", 0, 0, 0, 0, kNothing, false, 0},
                                         WirelessLoss{"NoAnswer", 0, 5, 1, 0, kNothing, false, 0},
                                         WirelessLoss{"ByUserBusy", 1, 0, 1, 0, kTimedOut, false, 0},
                                         WirelessLoss{"ByUserNotAssociatedYet", 1, 0, 0, 0, kTimedOut, false, 0},
                                         WirelessLoss{"ByUserIdle", 1, 0, 0, 1, kNothing, false, 1}),
                         [](const auto& test) { return test.param.name; });

TEST(LostWireless, TimesOutWithoutAnOperationToDisconnect)
{
    wifiFake.associated = 1;
    Bench bench(_MOVO_NET_IFACE_WIFI_);
    bench.lease();
    g_isWifiConnectByUI = 1;
    bench.iface.funcs.WifiDisConnect = nullptr;
    bench.hear("down");
    EXPECT_CALLBACKS(bench.set, {{WIFITIMEOUT, "wlan0"}});
}
} // namespace
