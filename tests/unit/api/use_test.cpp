#include "tools.h"

#include "shutdown_fake.h"

#include <csignal>

using namespace api;
using sim::Call;

// Whether an interface is wanted and up: enabling, disabling, asking.

namespace {
constexpr std::size_t kEnabledAt = 20; // of a record in the configuration file

/** The stored mark of the interface at this place of the list. */
bool storedAsEnabled(const sim::Set& set, std::size_t place)
{
    return set.read(kConfiguration).at(4 + 264 * place + kEnabledAt) != 0;
}

TEST(EnableIface, KeepsEnablingAndSavingWhatIsNotAvailable)
{
    sim::Set set;
    ASSERT_EQ(set.start(), 0); // no cable
    set.forget();
    EXPECT_EQ(Movo_NET_EnableIface(0, "eth0"), 1);
    EXPECT_EQ(said(set, "Movo_NET_EnableIface"), Lines{"INFO ifname not available: eth0\n"});
    EXPECT_EQ(FindInterface("eth0")->isEnabled, 1);
    EXPECT_TRUE(storedAsEnabled(set, 1));
    EXPECT_TRUE(set.commands().empty());
}

TEST(EnableIface, BringsUpWhatWasDisabled)
{
    Television television;
    EXPECT_EQ(Movo_NET_DisableIface(0, "eth0"), 0);
    EXPECT_FALSE(television.set.dhcp("eth0").running());
    television.set.forget();
    EXPECT_EQ(Movo_NET_EnableIface(0, "eth0"), 0);
    EXPECT_EQ(said(television.set, "Movo_NET_EnableIface"), Lines{"INFO ifname=eth0\n"});
    EXPECT_RAN(television.set, "netcfg eth0 up");
    EXPECT_TRUE(television.set.dhcp("eth0").running());
    EXPECT_TRUE(storedAsEnabled(television.set, 1));
    television.set.dhcp("eth0").leases();
    EXPECT_CALLBACKS(television.set, {{sim::IPCHANGED, "eth0"}, {sim::DHCP_SUCCESS, "eth0"}});
}

TEST(EnableIface, LeavesAloneWhatIsUp)
{
    Television television;
    EXPECT_EQ(Movo_NET_EnableIface(0, "eth0"), 0);
    EXPECT_TRUE(television.set.commands().empty());
    EXPECT_EQ(television.eth0().isConnected, 1);
}

TEST(EnableIface, DoesNotMindThatNothingCouldBeSaved)
{
    Television television;
    EXPECT_EQ(Movo_NET_DisableIface(0, "eth0"), 0);
    television.set.fail({.call = Call::Open, .on = kConfiguration, .error = ENOSPC});
    EXPECT_EQ(Movo_NET_EnableIface(0, "eth0"), 0);
    EXPECT_FALSE(television.set.exists(kConfiguration));
    EXPECT_TRUE(television.set.dhcp("eth0").running());
}

TEST(EnableIface, ReturnsWhatTheBackEndReturns)
{
    Layer layer;
    MovoNetIface_t& eth0 = layer.add("eth0");
    eth0.isAvailable = 1;
    eth0.funcs.Active = [](MovoNetIface_t*, kest_bool isActive) -> RETURN_TYPE { return isActive == 1 ? 17 : 0; };
    EXPECT_EQ(Movo_NET_EnableIface(0, "eth0"), 17);
}

TEST(DisableIface, TakesDownAndSavesNothing)
{
    Television television;
    sim::Set& set = television.set;
    EXPECT_EQ(Movo_NET_DisableIface(0, "eth0"), 0);
    EXPECT_EQ(said(set, "Movo_NET_DisableIface"), Lines{"INFO ifname=eth0\n"});
    EXPECT_EQ(television.eth0().isEnabled, 0);
    EXPECT_EQ(television.eth0().isActived, 0);
    EXPECT_EQ(television.eth0().isConnected, 0);
    EXPECT_EQ(set.signals().back().number, 0) << "waited for";
    EXPECT_EQ(set.iface("eth0").address(), "0.0.0.0");
    EXPECT_FALSE(set.exists(kConfiguration));
}

TEST(DisableIface, EndsWhenTheCableIsReturned)
{
    Television television;
    sim::Set& set = television.set;
    EXPECT_EQ(Movo_NET_DisableIface(0, "eth0"), 0);
    set.grantTicks(30);
    EXPECT_EQ(television.eth0().isActived, 0) << "the look at the links leaves it down";
    set.cable("eth0").pull();
    set.grantTicks(10);
    set.cable("eth0").plug();
    set.grantTicks(10);
    EXPECT_EQ(television.eth0().isActived, 1);
    EXPECT_EQ(television.eth0().isEnabled, 1);
}

TEST(DisableIface, OfWhatIsDownDoesNothing)
{
    Television television;
    EXPECT_EQ(Movo_NET_DisableIface(0, "lo"), 0);
    EXPECT_TRUE(television.set.commands().empty());
}

TEST(DisableIface, ReturnsWhatTheBackEndReturns)
{
    Layer layer;
    layer.add("eth0").funcs.Active = [](MovoNetIface_t*, kest_bool isActive) -> RETURN_TYPE {
        return isActive == 0 ? 18 : 0;
    };
    EXPECT_EQ(Movo_NET_DisableIface(0, "eth0"), 18);
}

TEST(DisableAllIfaces, StopsTheClientsAndLeavesTheKernelsAddresses)
{
    Television television;
    sim::Set& set = television.set;
    const int client = set.dhcp("eth0").pid();
    EXPECT_EQ(Movo_NET_DisableAllIfaces(0), 0);
    EXPECT_EQ(set.signals(), (std::vector<sim::Signal>{{client, 0, 0}, {client, SIGUSR1, 0}}));
    const MovoNetIface_t& eth0 = television.eth0();
    EXPECT_EQ(eth0.isEnabled | eth0.isActived | eth0.isConnected, 0);
    EXPECT_EQ(eth0.ipv4 | eth0.maskv4 | eth0.gwv4 | eth0.dns1v4 | eth0.dns2v4, 0U);
    EXPECT_EQ(eth0.macaddr, 0);
    EXPECT_EQ(eth0.priority, 0);
    EXPECT_EQ(eth0.dhcpcfd, -1);
    EXPECT_EQ(set.iface("eth0").address(), "10.0.2.15");
    EXPECT_EQ(set.defaultRoutes(), Lines{"10.0.2.2 dev eth0"});
    EXPECT_FALSE(set.exists(kConfiguration));
    EXPECT_TRUE(set.commands().empty());
    EXPECT_CALLBACKS(set, {});
    EXPECT_EQ(eth0.isAvailable, 1);
    EXPECT_EQ(eth0.sipv4, address("10.0.2.15")) << "the last lease is still remembered";
}

TEST(DisableAllIfaces, LeavesAloneWhatIsNotEnabled)
{
    Layer layer;
    MovoNetIface_t& idle = layer.add("eth0");
    MovoNetIface_t& used = layer.add("eth1");
    idle.isEnabled = 0;
    idle.priority = used.priority = 9;
    EXPECT_EQ(Movo_NET_DisableAllIfaces(0), 0);
    EXPECT_EQ(idle.isActived, 1);
    EXPECT_EQ(idle.priority, 9);
    EXPECT_EQ(used.isActived, 0);
    EXPECT_EQ(used.priority, 0);
}

TEST(DisableAllIfaces, TakesNoLockOfTheList)
{
    Layer layer;
    layer.add("eth0");
    layer.set.fail({.call = Call::MutexLock,
                    .object = &movonet::ifaceListLock,
                    .size = sizeof(movonet::ifaceListLock),
                    .error = EINVAL,
                    .mayMiss = true});
    EXPECT_EQ(Movo_NET_DisableAllIfaces(0), 0);
    EXPECT_EQ(FindInterface("eth0"), nullptr) << "which could not have been taken";
}

TEST(DisableAllIfaces, EndsTheSupplicantOfWirelessInterfacesAlone)
{
    Layer layer;
    layer.add("eth0");
    MovoNetIface_t& wlan0 = layer.add("wlan0", _MOVO_NET_IFACE_WIFI_);
    layer.add("lo", _MOVO_NET_IFACE_LO_);
    shutdownFake = {};
    EXPECT_EQ(Movo_NET_DisableAllIfaces(0), 0);
    EXPECT_EQ(shutdownFake.calls, 1);
    EXPECT_EQ(shutdownFake.iface, &wlan0);
}

TEST(IsEnabledIface, TellsTheMark)
{
    Layer layer;
    MovoNetIface_t& eth0 = layer.add("eth0");
    EXPECT_EQ(Movo_NET_IsEnabledIface(0, "eth0"), 1);
    eth0.isEnabled = 0;
    EXPECT_EQ(Movo_NET_IsEnabledIface(0, "eth0"), 0);
    EXPECT_EQ(said(layer.set), Lines{});
}

TEST(IsActivedIface, NeedsBothMarks)
{
    Layer layer;
    MovoNetIface_t& eth0 = layer.add("eth0");
    EXPECT_EQ(Movo_NET_IsActivedIface(0, "eth0"), 1);
    eth0.isActived = 0;
    EXPECT_EQ(Movo_NET_IsActivedIface(0, "eth0"), 0);
    EXPECT_EQ(said(layer.set), Lines{});
    eth0.isActived = 1;
    eth0.isEnabled = 0;
    EXPECT_EQ(Movo_NET_IsActivedIface(0, "eth0"), 0);
    EXPECT_EQ(said(layer.set), Lines{"ERROR Movo_NET_IsActivedIface: iface not enabled: eth0\n"});
}

TEST(IsPhyConnected, IsWhetherItCanBeActivated)
{
    sim::Set set;
    ASSERT_EQ(set.start(), 0);
    EXPECT_EQ(Movo_NET_IsPhyConnected(0, "eth0"), 0);
    set.cable("eth0").plug();
    EXPECT_EQ(Movo_NET_IsPhyConnected(0, "eth0"), 1) << "at once, before any look at the links";
    set.cable("eth0").pull();
    EXPECT_EQ(Movo_NET_IsPhyConnected(0, "eth0"), 0);
}

TEST(IsPhyConnected, KeepsTakingAPhyThatDoesNotAnswerForConnected)
{
    Layer layer;
    layer.add("eth0");
    layer.set.cable("eth0").withoutMii();
    EXPECT_EQ(Movo_NET_IsPhyConnected(0, "eth0"), 1);
}

TEST(IsPhyConnected, IsOneForAnyOtherNumber)
{
    Layer layer;
    MovoNetIface_t& eth0 = layer.add("eth0");
    eth0.funcs.CanActive = [](MovoNetIface_t*) { return 256; };
    EXPECT_EQ(Movo_NET_IsPhyConnected(0, "eth0"), 1);
    eth0.funcs.CanActive = [](MovoNetIface_t*) { return 0; };
    EXPECT_EQ(Movo_NET_IsPhyConnected(0, "eth0"), 0);
}

TEST(IsPhyConnected, OfABackEndWithoutThatOperation)
{
    Layer layer;
    layer.add("eth0").funcs.CanActive = nullptr;
    EXPECT_EQ(Movo_NET_IsPhyConnected(0, "eth0"), 1);
    EXPECT_EQ(said(layer.set), Lines{"ERROR Movo_NET_IsPhyConnected: ift->funcs.CanActive not set. ifname: eth0\n"});
}
} // namespace
