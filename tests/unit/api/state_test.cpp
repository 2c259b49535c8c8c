#include "tools.h"

#include <array>

using namespace api;
using sim::Call;

// Addresses and the state of the network.

namespace {
using Words = std::array<unsigned int, 5>;

int getIp(Words& out)
{
    return Movo_NET_GetIP(0, "eth0", &out[0], &out[1], &out[2], &out[3], &out[4]);
}

TEST(GetIP, ReadsTheLease)
{
    Television television;
    Words words{1, 1, 1, 1, 1};
    EXPECT_EQ(getIp(words), 0);
    EXPECT_EQ(words,
              (Words{address("10.0.2.15"), address("255.255.255.0"), address("10.0.2.2"), address("10.0.2.3"), 0}));
    EXPECT_EQ(said(television.set), Lines{});
}

TEST(GetIP, IsZeroWithoutAConnection)
{
    Layer layer;
    MovoNetIface_t& eth0 = layer.add("eth0");
    eth0.ipv4 = eth0.maskv4 = eth0.gwv4 = eth0.dns1v4 = eth0.dns2v4 = 7;
    Words words{1, 1, 1, 1, 1};
    EXPECT_EQ(getIp(words), 0);
    EXPECT_EQ(words, Words{});
    EXPECT_EQ(said(layer.set), Lines{"INFO Movo_NET_GetIP: interface not connected\n"});
}

TEST(GetIP, IsZeroOnceTheCableIsPulled)
{
    Television television;
    television.set.cable("eth0").pull();
    television.set.grantTicks(10);
    Words words{1, 1, 1, 1, 1};
    EXPECT_EQ(getIp(words), 0);
    EXPECT_EQ(words, Words{});
}

TEST(GetIPStatic, WritesWhereverThereIsAPlace)
{
    Layer layer;
    MovoNetIface_t& eth0 = layer.add("eth0");
    eth0.sipv4 = 1;
    eth0.smaskv4 = 2;
    eth0.sgwv4 = 3;
    eth0.sdns1v4 = 4;
    eth0.sdns2v4 = 5;
    const Words stored{1, 2, 3, 4, 5};
    for (unsigned wanted = 0; wanted < 32; ++wanted) {
        Words words{9, 9, 9, 9, 9};
        const auto out = [&](unsigned number) { return (wanted >> number & 1) != 0 ? &words[number] : nullptr; };
        EXPECT_EQ(Movo_NET_GetIPStatic(0, "eth0", out(0), out(1), out(2), out(3), out(4)), 0);
        for (unsigned number = 0; number < 5; ++number) {
            EXPECT_EQ(words[number], out(number) != nullptr ? stored[number] : 9) << wanted;
        }
    }
}

TEST(GetIPStatic, RemembersTheLastLease)
{
    Television television;
    unsigned int ip = 0;
    EXPECT_EQ(Movo_NET_GetIPStatic(0, "eth0", &ip, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(ip, address("10.0.2.15"));
}

TEST(GetIPMode, TellsTheMode)
{
    Layer layer;
    MovoNetIface_t& eth0 = layer.add("eth0");
    for (const auto mode :
         {_MOVO_NET_IPMODE_DHCP_, _MOVO_NET_IPMODE_AUTOIP_, _MOVO_NET_IPMODE_STATIC_, _MOVO_NET_IPMODE_DNSONLY_}) {
        eth0.ipMode = mode;
        auto told = static_cast<MovoNetIPMode_e>(99);
        EXPECT_EQ(Movo_NET_GetIPMode(0, "eth0", &told), 0);
        EXPECT_EQ(told, mode);
    }
}

TEST(GetIPStatus, FollowsTheClient)
{
    sim::Set set;
    ASSERT_EQ(set.start(), 0);
    const auto status = [] {
        auto told = static_cast<MovoNetIPStatus_e>(99);
        EXPECT_EQ(Movo_NET_GetIPStatus(0, "eth0", &told), 0);
        return told;
    };
    EXPECT_EQ(status(), _MOVO_NET_IPSTATUS_NONE_);
    set.cable("eth0").plug();
    set.grantTicks(10);
    EXPECT_EQ(status(), _MOVO_NET_IPSTATUS_DHCP_ACQUIRING_);
    set.dhcp("eth0").leases();
    EXPECT_EQ(status(), _MOVO_NET_IPSTATUS_DHCP_GOT_);
    set.dhcp("eth0").loses();
    EXPECT_EQ(status(), _MOVO_NET_IPSTATUS_DHCP_RELEASED_);
}

TEST(IsConnected, IsWhatTheBackEndSays)
{
    Layer layer;
    MovoNetIface_t& eth0 = layer.add("eth0");
    kest_bool connected = 9;
    EXPECT_EQ(Movo_NET_IsConnected(0, "eth0", &connected), 0);
    EXPECT_EQ(connected, 0);
    eth0.isConnected = 1;
    EXPECT_EQ(Movo_NET_IsConnected(0, "eth0", &connected), 0);
    EXPECT_EQ(connected, 1);
    eth0.funcs.IsConnected = [](MovoNetIface_t*, kest_bool*) -> RETURN_TYPE { return 6; };
    EXPECT_EQ(Movo_NET_IsConnected(0, "eth0", &connected), 6);
}

struct Resolver {
    const char* contents; ///< NULL: no file
    int ok;
};

void PrintTo(const Resolver& resolver, std::ostream* out)
{
    *out << (resolver.contents != nullptr ? resolver.contents : "no file");
}

class ResolverFile : public testing::TestWithParam<Resolver> {
protected:
    void put(sim::Set& set)
    {
        if (GetParam().contents != nullptr) {
            set.write("/etc/resolv.conf", GetParam().contents);
        } else {
            set.remove("/etc/resolv.conf");
        }
    }
};

TEST_P(ResolverFile, DecidesWhetherDnsIsOk)
{
    Layer layer;
    put(layer.set);
    EXPECT_EQ(Movo_NET_IsDNSOK(0, "eth0"), GetParam().ok);
    EXPECT_EQ(Movo_NET_IsDNSOK(0, "unknown"), GetParam().ok) << "the name is ignored";
    EXPECT_EQ(Movo_NET_IsDNSOK(0, nullptr), GetParam().ok);
}

TEST_P(ResolverFile, DecidesWithAConnectionWhetherTheNetworkIsOk)
{
    Layer layer;
    layer.add("eth0").isConnected = 1;
    put(layer.set);
    EXPECT_EQ(Movo_NET_IsNetworkOK(0), GetParam().ok);
}

INSTANTIATE_TEST_SUITE_P(Contents, ResolverFile,
                         testing::Values(Resolver{"nameserver 1.2.3.4\nnameserver 5.6.7.8\n", 1},
                                         Resolver{"nameserver 1.2.3.4\n", 1}, Resolver{"search lan\n", 0},
                                         Resolver{"nameserver fe80::1\n", 0}, Resolver{"", 0}, Resolver{nullptr, 0}));

struct Network {
    const char* what;
    MovoNetIfaceType_e type;
    int actived;
    int connected;
    int ok;
};

class NetworkWithServer : public testing::TestWithParam<Network> {};

TEST_P(NetworkWithServer, IsOk)
{
    Layer layer;
    layer.set.write("/etc/resolv.conf", "nameserver 1.2.3.4\n");
    MovoNetIface_t& down = layer.add("eth9");
    down.isActived = 0;
    MovoNetIface_t& iface = layer.add("if0", GetParam().type);
    iface.isActived = GetParam().actived != 0;
    iface.isConnected = GetParam().connected != 0;
    EXPECT_EQ(Movo_NET_IsNetworkOK(0), GetParam().ok);
    EXPECT_EQ(said(layer.set), Lines{});
}

INSTANTIATE_TEST_SUITE_P(Interfaces, NetworkWithServer,
                         testing::Values(Network{"WiredUp", _MOVO_NET_IFACE_ETHER_, 1, 1, 1},
                                         Network{"WirelessUp", _MOVO_NET_IFACE_WIFI_, 1, 1, 1},
                                         Network{"LoopbackUp", _MOVO_NET_IFACE_LO_, 1, 1, 0},
                                         Network{"NotConnected", _MOVO_NET_IFACE_ETHER_, 1, 0, 0},
                                         Network{"NotActive", _MOVO_NET_IFACE_ETHER_, 0, 1, 0}),
                         [](const auto& row) { return row.param.what; });

TEST(ClearIP, OfWhatIsNotConnectedDoesNothing)
{
    Layer layer;
    layer.add("eth0");
    EXPECT_EQ(Movo_NET_ClearIP(0, "eth0"), 0);
    EXPECT_EQ(said(layer.set), Lines{"INFO Movo_NET_ClearIP: Interface: eth0 not connected\n"});
    EXPECT_TRUE(layer.set.commands().empty());
}

TEST(ClearIP, TakesAWiredInterfaceDown)
{
    Television television;
    sim::Set& set = television.set;
    EXPECT_EQ(Movo_NET_ClearIP(0, "eth0"), 0);
    EXPECT_EQ(said(set, "Movo_NET_ClearIP"), Lines{"INFO Clear IP/GW/DNS of eth0\n"});
    EXPECT_EQ(television.eth0().isConnected, 0);
    EXPECT_EQ(television.eth0().isActived, 0);
    EXPECT_EQ(television.eth0().isEnabled, 1);
    EXPECT_EQ(set.iface("eth0").address(), "0.0.0.0");
    EXPECT_FALSE(set.dhcp("eth0").running());
}

TEST(ClearIP, ReturnsWhatTheReselectionReturns)
{
    Layer layer;
    layer.add("eth0").isConnected = 1;
    layer.add("eth1").isConnected = 1;
    layer.set.onCommand("route add default gw 0.0.0.0 dev eth1").fails();
    EXPECT_EQ(Movo_NET_ClearIP(0, "eth0"), 1);
}

RETURN_TYPE disconnected(MovoNetIface_t* iface)
{
    iface->isConnected = 0;
    return 17;
}

TEST(ClearIP, DisconnectsAWirelessInterface)
{
    Layer layer;
    MovoNetIface_t& wlan0 = layer.add("wlan0", _MOVO_NET_IFACE_WIFI_);
    wlan0.isConnected = 1;
    wlan0.funcs.WifiDisConnect = disconnected;
    EXPECT_EQ(Movo_NET_ClearIP(0, "wlan0"), 17);
    EXPECT_EQ(wlan0.isConnected, 0);
    EXPECT_EQ(said(layer.set), Lines{"INFO Movo_NET_ClearIP: Clear IP/GW/DNS of wlan0\n"});
    EXPECT_TRUE(layer.set.commands().empty());
}

TEST(ClearIP, LeavesOtherTypesAlone)
{
    Layer layer;
    MovoNetIface_t& lo = layer.add("lo", _MOVO_NET_IFACE_LO_);
    MovoNetIface_t& odd = layer.add("odd", static_cast<MovoNetIfaceType_e>(77));
    lo.isConnected = odd.isConnected = 1;
    EXPECT_EQ(Movo_NET_ClearIP(0, "lo"), 0);
    EXPECT_EQ(Movo_NET_ClearIP(0, "odd"), 0);
    EXPECT_EQ(lo.isConnected, 1);
    EXPECT_EQ(odd.isConnected, 1);
    EXPECT_TRUE(layer.set.commands().empty());
}
} // namespace
