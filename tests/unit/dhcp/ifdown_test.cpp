#include "bench.h"

#include "movo_net_fg/fg.h"
#include "movo_net_fl_eventloop/eventloop.h"
#include "support/atomic.h"

#include <csignal>
#include <sched.h>

using namespace dhcp;

namespace {
/** All that a connection leaves in a record. */
void connect(MovoNetIface_t& iface)
{
    iface.isConnected = 1;
    iface.priority = 2;
    iface.macaddr = 1;
    iface.ipv4 = 2;
    iface.maskv4 = 3;
    iface.gwv4 = 4;
    iface.dns1v4 = 5;
    iface.dns2v4 = 6;
}

TEST(IfDown, ForgetsWhatBelongsToTheConnection)
{
    Bench bench;
    connect(bench.iface);
    EXPECT_EQ(ifdown(&bench.iface), 0);
    EXPECT_EQ(bench.iface.isActived, 0);
    EXPECT_EQ(bench.iface.isConnected, 0);
    EXPECT_EQ(bench.iface.priority, 0);
    EXPECT_EQ(bench.iface.macaddr, 0);
    EXPECT_EQ(bench.iface.ipv4, 0U);
    EXPECT_EQ(bench.iface.maskv4, 0U);
    EXPECT_EQ(bench.iface.gwv4, 0U);
    EXPECT_EQ(bench.iface.dns1v4, 0U);
    EXPECT_EQ(bench.iface.dns2v4, 0U);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, "movo_net_fg", "ResetGwAndDns", "no connected interface\n");
    EXPECT_CALLBACKS(bench.set, {});
}

TEST(IfDown, KeepsWhatOutlivesTheConnection)
{
    Bench bench;
    bench.setStatic();
    bench.iface.ipStatus = _MOVO_NET_IPSTATUS_STATIC_;
    bench.iface.dhcpDownCount = 3;
    bench.iface.dhcpDownHandle = 99;
    bench.iface.thoughput = 7;
    EXPECT_EQ(ifdown(&bench.iface), 0);
    EXPECT_EQ(bench.iface.isEnabled, 1);
    EXPECT_EQ(bench.iface.isAvailable, 1);
    EXPECT_EQ(bench.iface.ipStatus, _MOVO_NET_IPSTATUS_STATIC_);
    EXPECT_EQ(bench.iface.dhcpDownCount, 3);
    EXPECT_EQ(bench.iface.dhcpDownHandle, 99);
    EXPECT_EQ(bench.iface.thoughput, 7U);
    EXPECT_EQ(bench.iface.sipv4, address("192.168.1.20"));
    EXPECT_EQ(bench.iface.smaskv4, address("255.255.255.0"));
    EXPECT_EQ(bench.iface.sgwv4, address("192.168.1.1"));
    EXPECT_EQ(bench.iface.sdns1v4, address("192.168.1.2"));
    EXPECT_EQ(bench.iface.sdns2v4, address("192.168.1.3"));
}

TEST(IfDown, StopsTheClientOfDhcp)
{
    Bench bench;
    bench.launch();
    const int pid = bench.set.dhcp("eth0").pid();
    EXPECT_EQ(ifdown(&bench.iface), 0);
    EXPECT_EQ(sent(bench.set), (std::vector<sim::Signal>{{pid, SIGHUP, 0}}));
    EXPECT_EQ(ran(bench.set), Lines{});
    EXPECT_EQ(openFiles(bench.set), Lines{});
    EXPECT_FALSE(bench.set.exists(kPipe));
}

class IfDownOtherMode : public testing::TestWithParam<int> {};

TEST_P(IfDownOtherMode, ClearsTheAddressAndKeepsTheClient)
{
    Bench bench;
    bench.launch();
    bench.iface.ipMode = static_cast<MovoNetIPMode_e>(GetParam());
    bench.set.onCommand("ifconfig").does([&bench] {
        EXPECT_EQ(bench.iface.isActived, 0);
        EXPECT_EQ(bench.iface.isConnected, 0);
        EXPECT_EQ(bench.iface.ipv4, 2U);
    });
    connect(bench.iface);
    EXPECT_EQ(ifdown(&bench.iface), 0);
    EXPECT_EQ(ran(bench.set), Lines{"ifconfig eth0 0.0.0.0"});
    EXPECT_EQ(bench.iface.ipv4, 0U);
    EXPECT_EQ(bench.set.signals(), (std::vector<sim::Signal>{}));
    EXPECT_TRUE(bench.set.dhcp("eth0").running());
    EXPECT_NE(bench.iface.dhcpcfd, -1);
}

INSTANTIATE_TEST_SUITE_P(Modes, IfDownOtherMode,
                         testing::Values(_MOVO_NET_IPMODE_AUTOIP_, _MOVO_NET_IPMODE_STATIC_, _MOVO_NET_IPMODE_DNSONLY_,
                                         4, -1));

TEST(IfDown, GoesOnWhenTheAddressCannotBeCleared)
{
    Bench bench;
    connect(bench.iface);
    bench.iface.ipMode = _MOVO_NET_IPMODE_STATIC_;
    bench.set.onCommand("ifconfig").fails();
    EXPECT_EQ(ifdown(&bench.iface), 0);
    EXPECT_EQ(bench.iface.ipv4, 0U);
}

TEST(IfDown, GivesTheResultOfTheRouteSelection)
{
    Bench bench;
    bench.set.failLock(movonet::ifaceListLock);
    EXPECT_EQ(ifdown(&bench.iface), 1);
}

TEST(IfDown, HandsTheRouteToTheOtherInterface)
{
    Bench bench;
    MovoNetIface_t& other = bench.add("eth1", _MOVO_NET_IFACE_ETHER_);
    bench.set.iface("eth1").setAddress("10.1.0.5");
    other.ipMode = _MOVO_NET_IPMODE_STATIC_;
    other.gwv4 = address("10.1.0.1");
    other.dns1v4 = address("10.1.0.2");
    connect(other);
    other.gwv4 = address("10.1.0.1");
    connect(bench.iface);
    EXPECT_EQ(ifdown(&bench.iface), 0);
    EXPECT_EQ(bench.set.defaultRoutes(), Lines{"10.1.0.1 dev eth1"});
}

/** What an activation begins meanwhile must not be what is then cleared. */
TEST(IfDown, MakesAnActivationWaitForItsEnd)
{
    Bench bench;
    bench.launch();
    std::atomic<bool> underWay{false};
    bench.set.onCommand("netcfg eth0 up").does([&] { underWay = true; });
    bench.set.fail({.call = sim::Call::Sleep, .nth = 1, .does = [&] { // the client ends
                        bench.set.background([&bench] { EXPECT_EQ(ifup(&bench.iface), 0); });
                        goesAsFarAsItCan(underWay);
                        EXPECT_EQ(movonet::load(bench.iface.isActived), 0);
                    }});
    EXPECT_EQ(ifdown(&bench.iface), 0);
    bench.set.joinBackground();
    EXPECT_EQ(bench.iface.isActived, 1);
    EXPECT_NE(bench.iface.macaddr, 0);
    EXPECT_TRUE(bench.set.dhcp("eth0").running());
    EXPECT_EQ(bench.set.dhcp("eth0").launches(), 2);
    EXPECT_TRUE(bench.set.exists(kPipe));
}

class IfDownDuringALease : public testing::TestWithParam<MovoNetIPMode_e> {
protected:
    IfDownDuringALease()
    {
        bench.launch();
        bench.iface.ipMode = GetParam();
        bench.set.holdSleeps(500);
        bench.set.iface("eth0").setAddress("10.0.2.15");
        bench.set.addDefaultRoute("eth0", "10.0.2.2");
        bench.hear("new"); // and the loop waits for the route
        bench.set.forget();
    }

    Bench bench;
};

/** The loop's thread is at a lease when another one takes the interface down; the lease must not be the last word. */
TEST_P(IfDownDuringALease, LeavesNoneOfIt)
{
    bench.set.background([this] { EXPECT_EQ(ifdown(&bench.iface), 0); });
    while (movonet::load(bench.iface.isActived) != 0) {
        (void)sched_yield();
    }
    for (int yields = 0; yields < 1000 && bench.set.liveThreads() > 1; ++yields) {
        (void)sched_yield(); // it goes as far as it can
    }
    bench.set.holdSleeps(0); // and the lease to its end
    bench.set.joinBackground();
    bench.set.settle();
    EXPECT_EQ(bench.iface.isActived, 0);
    EXPECT_EQ(bench.iface.isConnected, 0);
    EXPECT_EQ(bench.iface.ipv4, 0U);
    EXPECT_EQ(bench.iface.priority, 0);
    EXPECT_EQ(bench.set.iface("eth0").address(), "0.0.0.0");
    EXPECT_EQ(bench.set.defaultRoutes(), Lines{});
    EXPECT_TRUE(bench.set.calledBack({}));
    EXPECT_EQ(bench.iface.dhcpcfd == -1, GetParam() == _MOVO_NET_IPMODE_DHCP_);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, "movo_net_fg", "ResetGwAndDns", "no connected interface\n");
}

/** The handler has looked at the interface for the last time, and goes on to connect it. */
TEST_P(IfDownDuringALease, ComesAfterItsLastStep)
{
    bench.set.holdSleeps(0);
    bench.set.settle();
    {
        const movonet::LoopGate handler;
        bench.set.background([this] { EXPECT_EQ(ifdown(&bench.iface), 0); });
        while (movonet::load(bench.iface.isActived) != 0) {
            (void)sched_yield();
        }
        for (int yields = 0; yields < 1000; ++yields) {
            (void)sched_yield(); // it goes as far as it can
        }
        movonet::store(bench.iface.isConnected, movonet::kTrue);
        movonet::store(bench.iface.ipv4, 1U);
    }
    bench.set.joinBackground();
    EXPECT_EQ(bench.iface.isConnected, 0);
    EXPECT_EQ(bench.iface.ipv4, 0U);
}

INSTANTIATE_TEST_SUITE_P(Modes, IfDownDuringALease,
                         testing::Values(_MOVO_NET_IPMODE_DHCP_, _MOVO_NET_IPMODE_AUTOIP_, _MOVO_NET_IPMODE_STATIC_));

TEST(TimeMark, IsAnEmptyFile)
{
    sim::Set set;
    set.write("/tmp/.keep", "");
    NotifyNtpclient();
    EXPECT_EQ(set.read(kMarker), "");
    EXPECT_EQ(set.openDescriptors(), Lines{});
    EXPECT_EQ(told(set), Lines{});
}

TEST(TimeMark, IsMadeOnceAndLeftAsItIs)
{
    sim::Set set;
    set.write(kMarker, "seen");
    NotifyNtpclient();
    NotifyNtpclient();
    EXPECT_EQ(set.read(kMarker), "seen");
}

TEST(TimeMark, ThatCannotBeMadeIsNoMatter)
{
    sim::Set set;
    set.fail({.call = sim::Call::Open, .on = kMarker, .error = EROFS});
    NotifyNtpclient();
    EXPECT_FALSE(set.exists(kMarker));
    EXPECT_EQ(told(set), Lines{});
}
} // namespace
