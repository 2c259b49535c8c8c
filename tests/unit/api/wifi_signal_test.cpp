#include "tools.h"

#include "movo_net_fl_wpactrl/connect.h"

#include <cstring>

using namespace api;

// The two Wi-Fi calls that are not handed on, and the choice of the connected interface.

namespace {
const char* s_name;    // what the joined network is called; NULL: the operation fails
std::string s_askedOf; // the interface whose network was asked for
int s_signal;          // its level; 0: the operation fails

RETURN_TYPE connectedEss(MovoNetIface_t* iface, char* essid, std::int32_t len)
{
    s_askedOf = iface->name;
    EXPECT_EQ(len, 32);
    if (s_name == nullptr) {
        return 9;
    }
    std::strcpy(essid, s_name);
    return 0;
}

RETURN_TYPE signalEss(MovoNetIface_t* /*iface*/, const char* essid, std::int32_t* signal)
{
    EXPECT_STREQ(essid, s_name);
    if (s_signal == 0) {
        return 9;
    }
    *signal = s_signal;
    return 0;
}

/** A layer with wireless interfaces that are connected to "Net". */
struct Connected : Layer {
    Connected()
    {
        s_name = "Net";
        s_signal = -61;
        s_askedOf.clear();
    }
    MovoNetIface_t& connect(const std::string& name, int priority = 0)
    {
        MovoNetIface_t& iface = add(name, _MOVO_NET_IFACE_WIFI_);
        iface.isConnected = 1;
        iface.priority = priority;
        iface.funcs.WifiGetConnectedEss = connectedEss;
        iface.funcs.WifiGetSignalEss = signalEss;
        return iface;
    }
    int ask() { return Movo_NET_WifiGetConnectedSignal(0, ifname, essid, &level); }

    char ifname[9] = "--------";
    char essid[32] = "-";
    int level = 1;
};
constexpr const char* kCall = "Movo_NET_WifiGetConnectedSignal";

TEST(WifiGetConnectedSignal, TellsOfTheConnectedInterface)
{
    Connected layer;
    (void)layer.connect("wlan0");
    EXPECT_EQ(layer.ask(), 0);
    EXPECT_STREQ(layer.ifname, "wlan0");
    EXPECT_STREQ(layer.essid, "Net");
    EXPECT_EQ(layer.level, -61);
    EXPECT_EQ(said(layer.set, kCall), Lines{"INFO iface name=wlan0, connected essid=Net, signal=-61\n"});
}

TEST(WifiGetConnectedSignal, NeedsAllItsOutputsEvenBeforeTheStart)
{
    sim::Set set;
    char text[33] = "-";
    int level = 1;
    EXPECT_EQ(Movo_NET_WifiGetConnectedSignal(0, nullptr, text, &level), 5);
    EXPECT_EQ(Movo_NET_WifiGetConnectedSignal(0, text, nullptr, &level), 5);
    EXPECT_EQ(Movo_NET_WifiGetConnectedSignal(0, text, text, nullptr), 5);
    EXPECT_EQ(said(set), Lines{});
    EXPECT_STREQ(text, "-");
    EXPECT_EQ(level, 1);
}

TEST(WifiGetConnectedSignal, BeforeTheStartWritesNothing)
{
    sim::Set set;
    char ifname[9] = "-";
    char essid[32] = "-";
    int level = 1;
    EXPECT_EQ(Movo_NET_WifiGetConnectedSignal(0, ifname, essid, &level), 1);
    EXPECT_EQ(said(set), Lines{std::string("ERROR ") + kCall + ": s_bIsInitDone=false\n"});
    EXPECT_STREQ(ifname, "-");
    EXPECT_STREQ(essid, "-");
    EXPECT_EQ(level, 1);
}

TEST(WifiGetConnectedSignal, NoInterfaceIsConnected)
{
    Connected layer;
    layer.connect("wlan0").isActived = 0;
    layer.connect("wlan1").isConnected = 0;
    layer.connect("eth0").type = _MOVO_NET_IFACE_ETHER_;
    EXPECT_EQ(layer.ask(), 1);
    EXPECT_EQ(said(layer.set), Lines{std::string("ERROR ") + kCall + ": no connected wifi iface found\n"});
    EXPECT_STREQ(layer.ifname, "--------");
    EXPECT_STREQ(layer.essid, "");
    EXPECT_EQ(layer.level, 0);
}

TEST(WifiGetConnectedSignal, TakesTheHighestPriorityAndOfEqualOnesTheEarliest)
{
    Connected layer;
    (void)layer.connect("wlan0", -1);
    (void)layer.connect("wlan1", 3);
    (void)layer.connect("wlan2", 3);
    layer.connect("wlan3", 9).isConnected = 0;
    EXPECT_EQ(layer.ask(), 0);
    EXPECT_STREQ(layer.ifname, "wlan1");
    EXPECT_EQ(s_askedOf, "wlan1");
}

TEST(WifiGetConnectedSignal, WalksTheListWithoutItsLock)
{
    Connected layer;
    (void)layer.connect("wlan0");
    const int fault = layer.set.fail({.call = sim::Call::MutexLock,
                                      .object = &movonet::ifaceListLock,
                                      .size = sizeof(movonet::ifaceListLock),
                                      .error = EINVAL,
                                      .mayMiss = true});
    EXPECT_EQ(layer.ask(), 0);
    EXPECT_EQ(layer.set.hits(fault), 0);
}

TEST(WifiGetConnectedSignal, ANetworkWithoutNameIsNone)
{
    Connected layer;
    MovoNetIface_t& wlan0 = layer.connect("wlan0");
    const Lines failed{"ERROR get connected ess failed, iface name=wlan0\n"};
    s_name = "";
    EXPECT_EQ(layer.ask(), 1);
    EXPECT_EQ(said(layer.set, kCall), failed);
    layer.set.forget();
    s_name = nullptr;
    EXPECT_EQ(layer.ask(), 1);
    EXPECT_EQ(said(layer.set, kCall), failed);
    layer.set.forget();
    wlan0.funcs.WifiGetConnectedEss = nullptr;
    EXPECT_EQ(layer.ask(), 1);
    EXPECT_EQ(said(layer.set, kCall), failed);
    EXPECT_STREQ(layer.ifname, "--------");
}

TEST(WifiGetConnectedSignal, ASignalThatCannotBeReadIsAFailure)
{
    Connected layer;
    MovoNetIface_t& wlan0 = layer.connect("wlan0");
    const Lines failed{"ERROR get signal failed, iface name=wlan0, essid=Net\n"};
    s_signal = 0;
    EXPECT_EQ(layer.ask(), 1);
    EXPECT_EQ(said(layer.set, kCall), failed);
    layer.set.forget();
    wlan0.funcs.WifiGetSignalEss = nullptr;
    EXPECT_EQ(layer.ask(), 1);
    EXPECT_EQ(said(layer.set, kCall), failed);
    EXPECT_STREQ(layer.ifname, "--------");
    EXPECT_STREQ(layer.essid, "Net");
    EXPECT_EQ(layer.level, 0);
}

TEST(WifiGetConnectedSignal, KeepsANameOfEightCharactersWithoutEndMark)
{
    Connected layer;
    (void)layer.connect("wireless");
    std::memcpy(layer.ifname, "--------", 9);
    layer.ifname[8] = '!';
    EXPECT_EQ(layer.ask(), 0);
    EXPECT_EQ(std::string(layer.ifname, 9), "wireless!");
}

TEST(WifiSetSecurityType, KeepsAnyValueAtAnyTime)
{
    sim::Set set;
    for (const int wish : {0, 1, 2, 3, 4, -1, 0x7fffffff}) {
        EXPECT_EQ(Movo_NET_WifiSetSecurityType(0, static_cast<MovoNetWifiUISecurity_e>(wish)), 0);
        EXPECT_EQ(g_UISecurityType, wish);
    }
    EXPECT_TRUE(set.log().empty());
}
} // namespace
