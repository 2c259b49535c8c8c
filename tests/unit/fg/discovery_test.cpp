#include "fg_test.h"

#include "movo_net_fl_common/common.h"

#include <arpa/inet.h>

namespace {
constexpr const char* kUpdate = "UpdateInterfaces";

/** One look at the tables, without links and without the loop. */
class Discovery : public testing::Test {
protected:
    sim::Set set;

    void look(const std::string& names)
    {
        std::string table = "Inter-|\n face |\n";
        for (std::size_t at = 0; at < names.size();) {
            const std::size_t end = std::min(names.find(' ', at), names.size());
            table += "  " + names.substr(at, end - at) + ": 0\n";
            at = end + 1;
        }
        set.write("/proc/net/dev", table);
        UpdateInterfaces();
    }
};

TEST_F(Discovery, ListsNewInterfacesInTheTablesOrder)
{
    look("eth1 lo eth0");
    EXPECT_EQ(listedInterfaces(), (std::vector<std::string>{"eth1", "lo", "eth0"}));
    for (const char* name : {"eth1", "lo", "eth0"}) {
        EXPECT_LOGGED(set, KEST_LEVEL_INFO, kFg, kUpdate, "new interface " + std::string(name) + "\n");
    }
}

TEST_F(Discovery, AppendsLaterOnesAndForgetsNone)
{
    look("lo eth0");
    MovoNetIface_t* eth0 = FindInterface("eth0");
    set.forget();
    look("eth5");
    look("usb0 lo eth0");
    EXPECT_EQ(listedInterfaces(), (std::vector<std::string>{"lo", "eth0", "eth5", "usb0"}));
    EXPECT_EQ(FindInterface("eth0"), eth0);
    EXPECT_EQ(timesLogged(set, "new interface eth0\n"), 0);
    EXPECT_EQ(timesLogged(set, "new interface usb0\n"), 1);
}

TEST_F(Discovery, RecordsAWiredInterfaceAsItIs)
{
    look("eth0");
    const MovoNetIface_t* eth0 = FindInterface("eth0");
    ASSERT_NE(eth0, nullptr);
    EXPECT_EQ(eth0->type, _MOVO_NET_IFACE_ETHER_);
    EXPECT_EQ(eth0->ipMode, _MOVO_NET_IPMODE_DHCP_);
    EXPECT_EQ(eth0->isEnabled, 0);
    EXPECT_EQ(eth0->isAvailable, 0);
    EXPECT_EQ(eth0->isActived, 0);
    EXPECT_EQ(eth0->isConnected, 0);
    EXPECT_EQ(eth0->dhcpcfd, -1);
    EXPECT_EQ(eth0->dhcpDownCount, 0);
    EXPECT_EQ(eth0->dhcpDownHandle, 0);
    EXPECT_EQ(eth0->sipv4, 0U);
    EXPECT_EQ(eth0->priority, 0);
    EXPECT_EQ(eth0->next, nullptr);
}

class LoopbackName : public Discovery, public testing::WithParamInterface<const char*> {};

TEST_P(LoopbackName, GetsTheLoopbackAddress)
{
    look(GetParam());
    const MovoNetIface_t* iface = FindInterface(GetParam());
    ASSERT_NE(iface, nullptr);
    EXPECT_EQ(iface->type, _MOVO_NET_IFACE_LO_);
    EXPECT_EQ(iface->ipMode, _MOVO_NET_IPMODE_STATIC_);
    EXPECT_EQ(iface->sipv4, inet_addr("127.0.0.1"));
    EXPECT_EQ(iface->smaskv4, inet_addr("255.0.0.0"));
    EXPECT_EQ(iface->isEnabled, 0);
}
INSTANTIATE_TEST_SUITE_P(Names, LoopbackName, testing::Values("lo", "sit", "sit0", "sit1", "sitting"));

class WiredName : public Discovery, public testing::WithParamInterface<const char*> {};

TEST_P(WiredName, IsNoLoopback)
{
    look(GetParam());
    const MovoNetIface_t* iface = FindInterface(GetParam());
    ASSERT_NE(iface, nullptr);
    EXPECT_EQ(iface->type, _MOVO_NET_IFACE_ETHER_);
    EXPECT_EQ(iface->sipv4, 0U);
}
INSTANTIATE_TEST_SUITE_P(Names, WiredName,
                         testing::Values("lo0", "l", "LO", "si", "si0t", "bcm", "bcm1", "bcm00", "abcdefgh"));

TEST_F(Discovery, WirelessNamesGetTheWirelessBackEnd)
{
    set.write("/proc/net/wireless", "Inter-|\n face |\n wlan0: 0\n");
    look("wlan0 eth0");
    ASSERT_NE(FindInterface("wlan0"), nullptr);
    EXPECT_EQ(FindInterface("wlan0")->type, _MOVO_NET_IFACE_WIFI_);
    EXPECT_NE(FindInterface("wlan0")->funcs.WifiScanEsss, nullptr);
}

TEST_F(Discovery, AFailedWirelessBackEndIsTriedAgainOnTheNextLook)
{
    set.write("/proc/net/wireless", "Inter-|\n face |\n wlan0: 0\n");
    set.fail({.call = sim::Call::Calloc, .nth = 2});
    look("wlan0 eth0");
    EXPECT_EQ(listedInterfaces(), (std::vector<std::string>{"eth0"}));
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, "movo_net_fl_wifi", "int_Movo_Net_InitWifi", "malloc memory failed\n");
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, kUpdate, "int_Movo_Net_Init failed\n");
    look("wlan0 eth0");
    EXPECT_EQ(listedInterfaces(), (std::vector<std::string>{"eth0", "wlan0"}));
}

TEST_F(Discovery, WithoutAWirelessTableAllAreWired)
{
    set.remove("/proc/net/wireless");
    look("wlan0");
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, "GetInterfacesFromFile", "cannot open /proc/net/wireless for read\n");
    ASSERT_NE(FindInterface("wlan0"), nullptr);
    EXPECT_EQ(FindInterface("wlan0")->type, _MOVO_NET_IFACE_ETHER_);
}

TEST_F(Discovery, KeepsTheLastTableWhenItCannotBeRead)
{
    look("eth0");
    set.remove("/proc/net/dev");
    set.forget();
    UpdateInterfaces();
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, "GetInterfacesFromFile", "cannot open /proc/net/dev for read\n");
    EXPECT_EQ(IsInterfacePresent("eth0"), 1);
}

TEST_F(Discovery, ReadsTheWirelessTableFirst)
{
    set.remove("/proc/net/wireless");
    set.remove("/proc/net/dev");
    UpdateInterfaces();
    EXPECT_EQ(textsOf(set, "GetInterfacesFromFile"),
              (std::vector<std::string>{"cannot open /proc/net/wireless for read\n",
                                        "cannot open /proc/net/dev for read\n"}));
}

TEST_F(Discovery, KeepsNamesAfterTheSoftApInterfaceHidden)
{
    look("lo bcm0 wlan0 eth0");
    EXPECT_EQ(listedInterfaces(), (std::vector<std::string>{"lo"}));
    look("lo bcm0 wlan0 eth0");
    EXPECT_EQ(listedInterfaces(), (std::vector<std::string>{"lo"}));
    look("lo wlan0 eth0");
    EXPECT_EQ(listedInterfaces(), (std::vector<std::string>{"lo", "wlan0", "eth0"}));
    EXPECT_EQ(IsInterfacePresent("eth0"), 1);
}

TEST_F(Discovery, KnowsNamesAfterTheSoftApInterfaceThatItListedBefore)
{
    look("lo eth0");
    look("bcm0 lo eth0");
    EXPECT_EQ(listedInterfaces(), (std::vector<std::string>{"lo", "eth0"}));
    EXPECT_EQ(IsInterfacePresent("eth0"), 1);
}

TEST_F(Discovery, StopsAtTenInterfaces)
{
    look("i0 i1 i2 i3 i4 i5 i6 i7 i8 i9 i10 i11");
    EXPECT_EQ(listedInterfaces().size(), 10U);
    EXPECT_EQ(timesLogged(set, "ifname count > 10\n"), 1);
    look("i0 i1 i2 i3 i4 i5 i6 i7 i8 i9 i10 i11");
    EXPECT_EQ(timesLogged(set, "ifname count > 10\n"), 2);
}

TEST_F(Discovery, EndsWithoutMemory)
{
    set.fail({.call = sim::Call::Calloc, .nth = 2});
    look("lo eth0 eth1");
    EXPECT_EQ(listedInterfaces(), (std::vector<std::string>{"lo"}));
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, kUpdate, "out of memory\n");
    look("lo eth0 eth1");
    EXPECT_EQ(listedInterfaces(), (std::vector<std::string>{"lo", "eth0", "eth1"}));
}

TEST_F(Discovery, GoesOnAfterAnInterfaceThatCannotBeInitialised)
{
    set.fail({.call = sim::Call::MutexInit, .nth = 2}); // ifaceListLock, then that of the wired back end
    look("lo eth0 eth1");
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, kUpdate, "int_Movo_Net_Init failed\n");
    EXPECT_EQ(listedInterfaces(), (std::vector<std::string>{"eth0", "eth1"}));
    look("lo eth0 eth1");
    EXPECT_EQ(listedInterfaces(), (std::vector<std::string>{"eth0", "eth1", "lo"})) << "it is tried again";
}

TEST_F(Discovery, EndsWhenTheListCannotBeLocked)
{
    set.fail(lockFault(movonet::ifaceListLock, sim::ThreadKind::Any, 2)); // after the search for the first name
    look("eth1 eth0");
    EXPECT_TRUE(listedInterfaces().empty());
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, kUpdate, "lock mutex failed\n");
    EXPECT_EQ(timesLogged(set, "lock mutex failed\n"), 1);
    look("eth1 eth0");
    EXPECT_EQ(listedInterfaces(), (std::vector<std::string>{"eth1", "eth0"}));
}

TEST_F(Discovery, ChangesNothingOfAListedInterface)
{
    look("eth0");
    MovoNetIface_t* eth0 = FindInterface("eth0");
    eth0->isActived = 1;
    eth0->priority = 7;
    set.write("/proc/net/wireless", " eth0: 0\n");
    look("eth0");
    EXPECT_EQ(eth0->isActived, 1);
    EXPECT_EQ(eth0->priority, 7);
    EXPECT_EQ(eth0->type, _MOVO_NET_IFACE_ETHER_) << "the type of the first look stays";
}
} // namespace
