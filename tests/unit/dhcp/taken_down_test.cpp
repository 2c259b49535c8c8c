#include "bench.h"

#include "movo_net_fg/fg.h"

#include <linux/sockios.h>
#include <thread>

using namespace dhcp;
using namespace movonet;
using sim::IPCHANGED;

// An interface that is taken down while it gets an address, by another thread or by a callback, stays down.

namespace {
using Callbacks = std::vector<sim::Called>;

class TakenDown : public testing::Test {
protected:
    /** By another thread, which is through with it when this returns. */
    void takeDown()
    {
        std::thread([this] { EXPECT_EQ(int_Movo_Net_Active(&bench.iface, kFalse), 0); }).join();
    }

    /** By the callback of that number. */
    void takeDownInCallback(int number)
    {
        bench.set.onCallback([this, number](MovoNetCBReason_e, void*) {
            if (++callbacks == number) {
                EXPECT_EQ(int_Movo_Net_Active(&bench.iface, kFalse), 0);
            }
        });
    }

    void expectDown(const Callbacks& expected)
    {
        EXPECT_EQ(bench.iface.isActived, 0);
        EXPECT_EQ(bench.iface.isConnected, 0);
        EXPECT_EQ(bench.iface.priority, 0);
        EXPECT_EQ(bench.iface.ipv4, 0U);
        EXPECT_EQ(bench.iface.dhcpcfd, -1);
        EXPECT_FALSE(bench.set.exists(kPipe));
        EXPECT_FALSE(bench.set.dhcp("eth0").running());
        EXPECT_EQ(openFiles(bench.set), Lines{});
        EXPECT_EQ(bench.set.iface("eth0").address(), "0.0.0.0");
        EXPECT_EQ(bench.set.defaultRoutes(), Lines{});
        EXPECT_TRUE(bench.set.calledBack(expected));
    }

    Bench bench;
    int callbacks = 0;
};

class TakenDownAtACommand : public TakenDown, public testing::WithParamInterface<const char*> {
protected:
    TakenDownAtACommand()
    {
        bench.set.onCommand(GetParam()).does([this] { takeDown(); }).times(1);
    }
};

TEST_P(TakenDownAtACommand, LeavesNothingOfDhcp)
{
    EXPECT_EQ(ConfigIP(&bench.iface, kForce), 0);
    expectDown({});
}

TEST_P(TakenDownAtACommand, LeavesNothingOfAConfigurationThread)
{
    EXPECT_EQ(ConfigIPThread(&bench.iface), nullptr);
    expectDown({});
}

TEST_P(TakenDownAtACommand, LeavesNothingOfAnActivation)
{
    bench.iface.isActived = 0;
    EXPECT_EQ(int_Movo_Net_Active(&bench.iface, kTrue), 0);
    expectDown({});
}

TEST_P(TakenDownAtACommand, LeavesNoClientWhenTheModeChangesToo)
{
    bench.set.onCommand(GetParam())
        .does([this] {
            bench.setStatic();
            takeDown();
        })
        .times(1);
    EXPECT_EQ(ConfigIP(&bench.iface, kForce), 0);
    expectDown({});
}

INSTANTIATE_TEST_SUITE_P(Commands, TakenDownAtACommand, testing::Values("ifconfig eth0", "chmod", "export"));

/** Nobody would stop it: taking an auto-IP interface down leaves its client alone. */
TEST_F(TakenDown, InAutoIpBeforeTheLaunchStartsNoClient)
{
    bench.iface.ipMode = _MOVO_NET_IPMODE_AUTOIP_;
    bench.set.onCommand("chmod").does([this] { takeDown(); }).times(1);
    EXPECT_EQ(ConfigIP(&bench.iface, kForce), 0);
    EXPECT_EQ(bench.set.dhcp("eth0").launches(), 0);
    EXPECT_EQ(bench.iface.isActived, 0);
    EXPECT_EQ(bench.iface.ipStatus, _MOVO_NET_IPSTATUS_NONE_);
}

TEST_F(TakenDown, WhileAnOldClientEndsStartsNoNewOne)
{
    bench.launch();
    bench.set.fail({.call = sim::Call::Sleep, .nth = 1, .does = [this] { takeDown(); }});
    EXPECT_EQ(ConfigIP(&bench.iface, kForce), 0);
    EXPECT_EQ(bench.set.dhcp("eth0").launches(), 1);
    expectDown({});
}

TEST_F(TakenDown, ByTheCallbackOfAClientThatRunsStopsIt)
{
    bench.launch();
    takeDownInCallback(1);
    EXPECT_EQ(ConfigIP(&bench.iface, kNoForce), 0);
    expectDown({{IPCHANGED, "eth0"}});
}

TEST_F(TakenDown, WhileAnOldClientEndsGetsNoStaticAddress)
{
    bench.launch();
    bench.setStatic();
    bench.set.fail({.call = sim::Call::Sleep, .nth = 1, .does = [this] { takeDown(); }});
    EXPECT_EQ(ConfigIP(&bench.iface, kNoForce), 0);
    EXPECT_NOT_LOGGED(bench.set, KEST_LEVEL_INFO, "movo_net_fl_common", "int_Movo_Net_SetIpv4",
                      "setting ip to 1401a8c0\n");
    expectDown({});
}

class TakenDownByStaticAddress : public TakenDown, public testing::WithParamInterface<int> {};

TEST_P(TakenDownByStaticAddress, StaysDown)
{
    bench.setStatic();
    takeDownInCallback(GetParam());
    EXPECT_EQ(ConfigIP(&bench.iface, kNoForce), 0);
    Callbacks expected{{IPCHANGED, "eth0"}, {IPCHANGED, "eth0"}, {sim::STATICIP_SUCCESS, "eth0"}};
    expected.resize(static_cast<std::size_t>(GetParam()));
    expectDown(expected);
}

INSTANTIATE_TEST_SUITE_P(Callbacks, TakenDownByStaticAddress, testing::Values(1, 2, 3));

TEST_F(TakenDown, WhileTheStaticAddressIsSetIsNotConnected)
{
    bench.setStatic();
    bench.set.fail({.call = sim::Call::Ioctl, .code = SIOCSIFADDR, .nth = 1, .does = [this] { takeDown(); }});
    EXPECT_EQ(ConfigIP(&bench.iface, kNoForce), 0);
    expectDown({});
}

TEST_F(TakenDown, WhileTheRouteIsSetIsNotConnected)
{
    MovoNetIface_t& wifi = bench.add("wlan0", _MOVO_NET_IFACE_WIFI_);
    bench.set.iface("wlan0").setAddress("192.168.21.50");
    wifi.isConnected = 1;
    wifi.priority = 1;
    wifi.gwv4 = address("192.168.21.1");
    bench.setStatic();
    bench.set.onCommand("route").does([this] { bench.iface.isActived = 0; }).times(1);
    EXPECT_EQ(ConfigIP(&bench.iface, kNoForce), 0);
    EXPECT_EQ(bench.iface.isConnected, 0);
    EXPECT_EQ(bench.set.defaultRoutes(), Lines{"192.168.21.1 dev wlan0"});
}

/** Another thread brings it up while what is left of the configuration is taken back, and waits for that. */
TEST_F(TakenDown, AndBroughtUpAgainIsUp)
{
    bench.setStatic();
    takeDownInCallback(3);
    std::atomic<bool> begun{false};
    std::atomic<bool> underWay{false};
    bench.set.onCommand("netcfg eth0 up").does([&] { underWay = true; });
    bench.set.onLog([&](const sim::LogLine& line) {
        if (!line.text.starts_with("ShutdownDhcpcd, pIface") || load(bench.iface.isActived) || begun.exchange(true)) {
            return;
        }
        bench.set.background([this] { EXPECT_EQ(int_Movo_Net_Active(&bench.iface, kTrue), 0); });
        goesAsFarAsItCan(underWay);
    });
    EXPECT_EQ(ConfigIP(&bench.iface, kNoForce), 0);
    bench.set.joinBackground();
    EXPECT_TRUE(begun);
    EXPECT_EQ(bench.iface.isActived, 1);
    EXPECT_EQ(bench.iface.isConnected, 1);
    EXPECT_EQ(bench.set.iface("eth0").address(), "192.168.1.20");
    EXPECT_EQ(bench.set.defaultRoutes(), Lines{"192.168.1.1 dev eth0"});
}

TEST_F(TakenDown, ByTheCallbackOfALeaseReportsNoSuccess)
{
    bench.launch();
    takeDownInCallback(1);
    bench.set.dhcp("eth0").leases();
    EXPECT_FALSE(bench.set.exists(kMarker));
    expectDown({{IPCHANGED, "eth0"}});
}

/** Its mode was changed, and the thread that would have stopped its client came too late. */
TEST_F(TakenDown, ByTheCallbackOfALostLeaseIsNotTriedAgain)
{
    bench.launch();
    takeDownInCallback(1);
    bench.set.dhcp("eth0").loses();
    EXPECT_EQ(bench.iface.dhcpDownHandle, 0);
    EXPECT_EQ(bench.set.dhcp("eth0").launches(), 1);
    expectDown({{sim::IFDISCONNECTED, "eth0"}});
}

TEST_F(TakenDown, InAnotherModeLosesItsClientWithTheNextConfiguration)
{
    for (const auto mode : {_MOVO_NET_IPMODE_DHCP_, _MOVO_NET_IPMODE_STATIC_}) {
        bench.iface.isActived = 1;
        bench.iface.ipMode = _MOVO_NET_IPMODE_DHCP_;
        bench.launch();
        bench.setStatic();
        takeDown();
        ASSERT_TRUE(bench.set.dhcp("eth0").running());
        bench.iface.ipMode = mode;
        EXPECT_EQ(ConfigIPThread(&bench.iface), nullptr);
        expectDown({});
    }
}

TEST_F(TakenDown, KeepsTheClientOfAutoIp)
{
    bench.launch();
    bench.iface.ipMode = _MOVO_NET_IPMODE_AUTOIP_;
    takeDown();
    EXPECT_EQ(ConfigIPThread(&bench.iface), nullptr);
    EXPECT_TRUE(bench.set.dhcp("eth0").running());
    EXPECT_NE(bench.iface.dhcpcfd, -1);
}

TEST_F(TakenDown, KeepsTheClientThatARetryRevived)
{
    bench.iface.isActived = 0;
    bench.launch();
    bench.set.dhcp("eth0").leases();
    EXPECT_EQ(ConfigIPThread(&bench.iface), nullptr);
    EXPECT_TRUE(bench.set.dhcp("eth0").running());
    EXPECT_NE(bench.iface.dhcpcfd, -1);
    EXPECT_EQ(bench.iface.isConnected, 1);
}

/** What an inactive interface is given on purpose it gets: the retry of a lost lease revives it. */
TEST_F(TakenDown, KeepsBeingConfiguredByWhoeverFindsItDown)
{
    bench.iface.isActived = 0;
    bench.launch();
    bench.set.dhcp("eth0").leases();
    EXPECT_EQ(bench.iface.isConnected, 1);
    EXPECT_TRUE(bench.set.calledBack({{IPCHANGED, "eth0"}, {sim::DHCP_SUCCESS, "eth0"}}));
}
} // namespace
