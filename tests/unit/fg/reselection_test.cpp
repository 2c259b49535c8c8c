#include "movo_net_fg/fg.h"
#include "movo_net_fl_eventloop/eventloop.h"
#include "unit/ip/tools.h"

using ip::address;
using ip::Lines;
using ip::listed;
using ip::record;
using ip::told;

// Which interface holds the default route and the resolver, and how they get there.

namespace {
constexpr const char* kResolver = "/etc/resolv.conf";

/** eth0 and wlan0 with addresses and connected records of a static mode; eth0 has the higher priority. */
class Reselection : public testing::Test {
protected:
    Reselection()
        : eth0(connected("eth0", _MOVO_NET_IFACE_ETHER_, 2)), wlan0(connected("wlan0", _MOVO_NET_IFACE_WIFI_, 1))
    {
        set.write(kResolver, "nameserver 1.1.1.1\n");
    }
    ~Reselection() override { EXPECT_EQ(set.openDescriptors(), Lines{}); }

    /** Every interface in its own network: number N has 10.0.N.15, the gateway 10.0.N.2 and the server 10.0.N.3. */
    MovoNetIface_t& connected(const std::string& name, MovoNetIfaceType_e type, int priority)
    {
        const std::string network = "10.0." + std::to_string(++m_networks) + ".";
        if (name != "eth0" && name != "lo") {
            set.addIface(name);
        }
        set.iface(name).setUp(true).setAddress(network + "15");
        MovoNetIface_t iface = record(name, _MOVO_NET_IPMODE_STATIC_, type);
        iface.gwv4 = address(network + "2");
        iface.dns1v4 = address(network + "3");
        iface.dns2v4 = address(network + "4");
        return listed(iface, priority);
    }

    void expectChosen(const std::string& name)
    {
        set.forget();
        EXPECT_EQ(ResetGwAndDns(), 0);
        ASSERT_FALSE(told(set).empty());
        EXPECT_EQ(told(set)[0], "INFO movo_net_fg ResetGwAndDns: ifname=" + name + "\n");
    }

    sim::Set set;
    int m_networks = 0;
    MovoNetIface_t& eth0;
    MovoNetIface_t& wlan0;
};

TEST_F(Reselection, MovesRouteAndServersToTheHighestPriority)
{
    set.addDefaultRoute("wlan0", "10.0.2.2");
    EXPECT_EQ(ResetGwAndDns(), 0);
    EXPECT_EQ(set.defaultRoutes(), Lines{"10.0.1.2 dev eth0"});
    EXPECT_EQ(set.read(kResolver), "nameserver 10.0.1.3\nnameserver 10.0.1.4\n");
    EXPECT_EQ(told(set), (Lines{"INFO movo_net_fg ResetGwAndDns: ifname=eth0\n",
                                "INFO movo_net_fg ResetGwAndDns: set gateway to 10.0.1.2\n",
                                "INFO movo_net_fg ResetGwAndDns: set DNS to 10.0.1.3, 10.0.1.4\n"}));
}

TEST_F(Reselection, PrefersAHigherPriorityWhereverItStands)
{
    wlan0.priority = 3;
    expectChosen("wlan0");
    wlan0.priority = 1;
    expectChosen("eth0");
    eth0.priority = -5;
    wlan0.priority = -6;
    expectChosen("eth0");
}

TEST_F(Reselection, PrefersTheEarlierOfEqualPriority)
{
    wlan0.priority = 2;
    expectChosen("eth0");
}

TEST_F(Reselection, PassesOverWhatIsNotConnected)
{
    eth0.isConnected = 0;
    expectChosen("wlan0");
}

TEST_F(Reselection, PassesOverAnAddressThatNobodyGave)
{
    eth0.ipStatus = _MOVO_NET_IPSTATUS_DHCP_AUTOIP_;
    expectChosen("wlan0");
    for (const int status : {0, 1, 2, 3, 4}) {
        eth0.ipStatus = static_cast<MovoNetIPStatus_e>(status);
        expectChosen("eth0");
    }
}

TEST_F(Reselection, PassesOverLoopback)
{
    (void)connected("lo", _MOVO_NET_IFACE_LO_, 9);
    expectChosen("eth0");
}

TEST_F(Reselection, PutsEveryOldDefaultRouteAway)
{
    set.addDefaultRoute("wlan0", "10.0.2.2");
    set.addDefaultRoute("wlan0", "10.0.2.9");
    set.addDefaultRoute("eth0", "10.0.1.2");
    EXPECT_EQ(ResetGwAndDns(), 0);
    EXPECT_EQ(set.defaultRoutes(), Lines{"10.0.1.2 dev eth0"});
}

TEST_F(Reselection, KeepsTheOldRouteWhenNothingIsConnected)
{
    set.addDefaultRoute("wlan0", "10.0.2.2");
    eth0.isConnected = 0;
    wlan0.isConnected = 0;
    EXPECT_EQ(ResetGwAndDns(), 0);
    EXPECT_EQ(set.defaultRoutes(), Lines{"10.0.2.2 dev wlan0"});
    EXPECT_EQ(set.read(kResolver), "nameserver 1.1.1.1\n");
    EXPECT_EQ(told(set), Lines{"INFO movo_net_fg ResetGwAndDns: no connected interface\n"});
}

TEST_F(Reselection, KeepsAddingTheRouteWhenTheOldOnesCannotBeRead)
{
    set.addDefaultRoute("wlan0", "10.0.2.2");
    set.fail({.call = sim::Call::Socket, .on = "netlink", .error = EMFILE});
    EXPECT_EQ(ResetGwAndDns(), 0);
    EXPECT_EQ(set.defaultRoutes(), (Lines{"10.0.1.2 dev eth0", "10.0.2.2 dev wlan0"}));
}

TEST_F(Reselection, FailsWhenTheRouteDoesAndLeavesTheResolver)
{
    set.onCommand("route add").fails();
    EXPECT_EQ(ResetGwAndDns(), 1);
    EXPECT_EQ(told(set), (Lines{"INFO movo_net_fg ResetGwAndDns: ifname=eth0\n",
                                "INFO movo_net_fg ResetGwAndDns: set gateway to 10.0.1.2\n",
                                "ERROR movo_net_fl_common SetDefaultGateway: set gateway failed\n",
                                "ERROR movo_net_fg ResetGwAndDns: SetGateway failed\n"}));
    EXPECT_EQ(set.read(kResolver), "nameserver 1.1.1.1\n");
}

TEST_F(Reselection, FailsWithoutTheLock)
{
    set.failLock(movonet::ifaceListLock);
    EXPECT_EQ(ResetGwAndDns(), 1);
    EXPECT_EQ(told(set), Lines{"ERROR movo_net_fg ResetGwAndDns: lock mutex failed\n"});
    EXPECT_EQ(ip::ran(set), Lines{});
}

TEST_F(Reselection, HoldsTheListForTheChoiceOnly)
{
    bool free = false;
    set.onCommand("route add").does([&] {
        set.background([&free] {
            free = movonet::ifaceListLock.tryLock();
            if (free) {
                movonet::ifaceListLock.unlock();
            }
        });
        set.joinBackground();
    });
    EXPECT_EQ(ResetGwAndDns(), 0);
    EXPECT_TRUE(free);
}

TEST_F(Reselection, IsOneAtATimeToItsEnd)
{
    ASSERT_TRUE(movonet::eventListLock.create());
    int held = 0;
    set.onCommand("route add").does([&] { held = set.heldLocks(); });
    EXPECT_EQ(ResetGwAndDns(), 0);
    EXPECT_EQ(held, 1);
    EXPECT_EQ(set.heldLocks(), 0);
}

// --- The resolver ---

TEST_F(Reselection, LeavesAResolverThatIsRight)
{
    const std::string file = "search lan\nnameserver 10.0.1.3\nnameserver 10.0.1.4\nnameserver 9.9.9.9\n";
    set.write(kResolver, file);
    EXPECT_EQ(ResetGwAndDns(), 0);
    EXPECT_EQ(set.read(kResolver), file);
    EXPECT_NOT_LOGGED(set, KEST_LEVEL_INFO, "movo_net_fg", "ResetGwAndDns", "set DNS to 10.0.1.3, 10.0.1.4\n");
}

TEST_F(Reselection, WritesAResolverWhoseSecondServerDiffers)
{
    set.write(kResolver, "nameserver 10.0.1.3\nnameserver 10.0.1.5\n");
    EXPECT_EQ(ResetGwAndDns(), 0);
    EXPECT_EQ(set.read(kResolver), "nameserver 10.0.1.3\nnameserver 10.0.1.4\n");
}

TEST_F(Reselection, TakesAMissingSecondServerForZero)
{
    set.write(kResolver, "nameserver 10.0.1.3\n");
    EXPECT_EQ(ResetGwAndDns(), 0);
    EXPECT_EQ(set.read(kResolver), "nameserver 10.0.1.3\nnameserver 10.0.1.4\n");

    set.write(kResolver, "nameserver 10.0.1.3\n");
    eth0.dns2v4 = 0;
    EXPECT_EQ(ResetGwAndDns(), 0);
    EXPECT_EQ(set.read(kResolver), "nameserver 10.0.1.3\n");
}

TEST_F(Reselection, WritesAResolverThatCouldNotBeReadEvenForNoServers)
{
    set.write(kResolver, "search lan\n");
    eth0.dns1v4 = 0;
    eth0.dns2v4 = 0;
    EXPECT_EQ(ResetGwAndDns(), 0);
    EXPECT_EQ(set.read(kResolver), "nameserver 0.0.0.0\nnameserver 0.0.0.0\n");
}

TEST_F(Reselection, FailsWhenTheResolverCannotBeWritten)
{
    set.fail({.call = sim::Call::Fopen, .on = kResolver, .nth = 2, .error = EROFS});
    EXPECT_EQ(ResetGwAndDns(), 1);
    EXPECT_EQ(told(set).back(), "ERROR movo_net_fl_common SetDNS: cannot open /etc/resolv.conf\n");
}

TEST_F(Reselection, WritesTheServersOfADnsOnlyInterfaceItself)
{
    eth0.ipMode = _MOVO_NET_IPMODE_DNSONLY_;
    EXPECT_EQ(ResetGwAndDns(), 0);
    EXPECT_EQ(set.read(kResolver), "nameserver 10.0.1.3\nnameserver 10.0.1.4\n");
}

TEST_F(Reselection, WritesTheServersOfALeaseFromItsFile)
{
    for (const auto mode : {_MOVO_NET_IPMODE_DHCP_, _MOVO_NET_IPMODE_AUTOIP_}) {
        eth0.ipMode = mode;
        set.write(kResolver, "nameserver 1.1.1.1\n");
        set.write("/etc/dhcpc/dhcpcd-eth0.info", "DOMAIN='lan'\nDNS=9.9.9.9\n");
        EXPECT_EQ(ResetGwAndDns(), 0);
        EXPECT_EQ(set.read(kResolver), "nameserver 9.9.9.9\nsearch lan\n");
    }
}

TEST_F(Reselection, FailsWhenTheLeasesFileIsMissing)
{
    eth0.ipMode = _MOVO_NET_IPMODE_DHCP_;
    EXPECT_EQ(ResetGwAndDns(), 1);
    EXPECT_EQ(told(set).back(), "ERROR movo_net_fl_common SetDNSDhcp: cannot open /etc/dhcpc/dhcpcd-eth0.info\n");
    EXPECT_EQ(set.read(kResolver), "nameserver 1.1.1.1\n");
}

TEST_F(Reselection, RefusesTheLeaseOfAnUnknownMode)
{
    eth0.ipMode = static_cast<MovoNetIPMode_e>(4);
    EXPECT_EQ(ResetGwAndDns(), 1);
    EXPECT_EQ(told(set).back(), "ERROR movo_net_fl_common SetDNSDhcp: not configured by dhcpcd\n");
}
} // namespace
