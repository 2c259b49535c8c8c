#include "bench.h"
#include "names.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace wifi;
using namespace movonet;

// Bringing the interface up and down, step by step, and the connection that an activation begins by itself.

namespace {
constexpr const char* kActive = "int_Movo_Net_Wpactrl_Active";
constexpr auto kWpa2 = _MOVO_NET_WIFI_SECURITY_WPA2_PSK_;
constexpr auto kAes = _MOVO_NET_WIFI_ENCRYP_AES_;

/** A bench whose interface is down, with a chip and a supplicant that the system has launched. */
struct Down : Bench {
    Down()
    {
        (void)setenv("ATHEROS_DEVICE_ID", "0cf3:1022", 1);
        (void)setenv("ATHEROS_DRIVER_NAME", "ath6kl", 1);
        set.onCommand("lsusb | grep 0cf3:1022").prints("");
        set.onCommand("ps |grep wpa_supplicant").prints("");
        EXPECT_EQ(int_Movo_Net_Wpactrl_Active(&iface, 0), 0);
        (void)sent(supplicant);
        set.forget();
    }
    RETURN_TYPE activate() { return int_Movo_Net_Wpactrl_Active(&iface, 1); }
};

MovNetWifiEssItem_t network(const char* name, kest_bool isConnected)
{
    MovNetWifiEssItem_t ess{};
    std::strcpy(ess.essid, name);
    ess.bssid = 42;
    ess.securityType = kWpa2;
    ess.encrypType = kAes;
    ess.isConnected = isConnected;
    std::strcpy(ess.Key, "remembered");
    EXPECT_EQ(int_Movo_Net_SaveEss(&ess), 0);
    return ess;
}
} // namespace

TEST(Deactivation, TakesTheAddressAwayBeforeTheSupplicant)
{
    Bench bench;
    bench.iface.ipMode = _MOVO_NET_IPMODE_STATIC_;
    bench.iface.isConnected = 1;
    g_isWifiConnectByUI = 1;
    bool addressless = false;
    bench.supplicant.onCommand = [&](const std::string& command) {
        addressless = command == "TERMINATE" && bench.set.ran("ifconfig mlan0 0.0.0.0");
    };
    EXPECT_EQ(int_Movo_Net_Wpactrl_Active(&bench.iface, 0), 0);
    EXPECT_TRUE(addressless);
    EXPECT_EQ(bench.iface.isActived, 0);
    EXPECT_EQ(bench.iface.isConnected, 0);
    EXPECT_EQ(g_isWifiConnectByUI, 0);
    EXPECT_EQ(bench.link().ctrl_conn, nullptr);
    EXPECT_EQ(bench.supplicant.connections(), 0);
}

TEST(Deactivation, KeepsTheStateOfTheConnection)
{
    Bench bench;
    bench.connect();
    EXPECT_EQ(int_Movo_Net_Wpactrl_Active(&bench.iface, 0), 0);
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTING);
    bench.set.grantTicks(301);
    EXPECT_CALLBACKS(bench.set, {{sim::WIFITIMEOUT, "mlan0"}});
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_NONE);
}

TEST(Activation, ChecksItsArgumentsAndDoesNothingTwice)
{
    Bench bench;
    MovoNetIface_t bare{};
    const sim::CapturedOutput output;
    EXPECT_EQ(int_Movo_Net_Wpactrl_Active(nullptr, 1), 5);
    EXPECT_NE(output.text().find("Routine:int_Movo_Net_Wpactrl_Active, pIface failed"), std::string::npos);
    EXPECT_EQ(int_Movo_Net_Wpactrl_Active(&bare, 0), 5);
    EXPECT_EQ(int_Movo_Net_Wpactrl_Active(&bench.iface, 1), 0);
    EXPECT_EQ(int_Movo_Net_Wpactrl_Active(&bench.iface, 2), 0) << "any value but 0 is up";
    EXPECT_TRUE(bench.set.log().empty());
    EXPECT_TRUE(bench.set.commands().empty());
}

TEST(Activation, FindsTheChipAndOpensTheLink)
{
    Down bench;
    EXPECT_EQ(bench.activate(), 0);
    EXPECT_EQ(bench.iface.isActived, 1);
    EXPECT_EQ(bench.wifi().devType, _MOVO_NET_WIFI_ATHEROS_);
    EXPECT_NE(bench.link().event_handle, 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, kActive, "start to active interface mlan0\n");
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, kActive, "no saved Esss, need manual connect\n");
    EXPECT_EQ(sent(bench.supplicant), Lines{});
}

TEST(Activation, EndsWithTheStepThatFails)
{
    Down bench;
    unsetenv("ATHEROS_DEVICE_ID");
    EXPECT_EQ(bench.activate(), 1);
    (void)setenv("ATHEROS_DEVICE_ID", "0cf3:1022", 1);
    bench.set.onCommand("ps |grep wpa_supplicant").fails(256);
    EXPECT_EQ(bench.activate(), 1);
    bench.set.onCommand("ps |grep wpa_supplicant").prints("");
    bench.supplicant.attachFails = true;
    EXPECT_EQ(bench.activate(), 1);
    bench.supplicant.attachFails = false;
    EXPECT_EQ(errors(bench.set), (Lines{"int_Movo_Net_Wpactrl_Active: Wifi device type unknown\n",
                                        "int_Movo_Net_Wpactrl_Active: start wpa_supplicant failed\n",
                                        "Wpactrl_Init: cannot attach to wpa_ctrl\n",
                                        "int_Movo_Net_Wpactrl_Active: Wpactrl_Init failed\n"}));
    EXPECT_EQ(bench.iface.isActived, 0);
    EXPECT_EQ(bench.supplicant.connections(), 0);
}

TEST(Activation, ClosesWhatOneBeforeItLeftOpenForWantOfAnEvent)
{
    Down bench;
    bench.set.fail({.call = sim::Call::Malloc, .thread = sim::ThreadKind::Test, .nth = 1, .error = ENOMEM});
    EXPECT_EQ(bench.activate(), 4);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kLinkModule, kActive, "add event failed\n");
    EXPECT_EQ(bench.iface.isActived, 0);
    EXPECT_EQ(bench.supplicant.connections(), 2);
    EXPECT_EQ(bench.activate(), 0);
    EXPECT_EQ(bench.supplicant.connections(), 2);
}

TEST(Activation, JoinsNothingThatWasNotJoinedLast)
{
    Down bench;
    network("Net", 0);
    EXPECT_EQ(bench.activate(), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, kActive, "no saved connected esss, need manual connect\n");
    EXPECT_EQ(sent(bench.supplicant), Lines{});
}

TEST(Activation, JoinsNothingByItselfWhenItMayNot)
{
    Down bench;
    network("Net", 1);
    g_bWiFiAutoLink = 0;
    EXPECT_EQ(bench.activate(), 0);
    EXPECT_EQ(sent(bench.supplicant), Lines{});
}

TEST(Activation, SucceedsAlthoughTheRememberedNetworkIsRefused)
{
    Down bench;
    network("Net", 1);
    bench.supplicant.replies["ENABLE_NETWORK  0"] = {"FAIL\n"};
    EXPECT_EQ(bench.activate(), 0);
    EXPECT_EQ(bench.iface.isActived, 1);
    EXPECT_EQ(errors(bench.set).back(), "int_Movo_Net_Wpactrl_Active: connect to saved esss failed");
    EXPECT_EQ(s_bFirstConnect, 1);
}

TEST(FirstConnect, KeepsItsTimeoutForTheNextRequestAfterItFailed)
{
    Down bench;
    network("Net", 1);
    bench.supplicant.replies["ENABLE_NETWORK  0"] = {"FAIL\n", "OK\n"};
    EXPECT_EQ(bench.activate(), 0);
    bench.connect();
    EXPECT_NE(bench.link().firstConnectHandle, 0);
    EXPECT_EQ(bench.link().connectTimerEventHandle, 0);
    EXPECT_EQ(s_bFirstConnect, 0);
}

namespace {
/** The first time-out comes; what it has logged and sent is all there is. */
RETURN_TYPE timeOut(Bench& bench)
{
    (void)sent(bench.supplicant);
    bench.set.forget();
    const RETURN_TYPE result = OnFirstConnectTimeout(-1, &bench.iface, 1);
    bench.set.settle();
    return result;
}
constexpr const char* kTimeout = "OnFirstConnectTimeout";
} // namespace

TEST(FirstConnectTimeout, ChecksWhatItIsGiven)
{
    Bench bench;
    MovoNetIface_t bare{};
    EXPECT_EQ(OnFirstConnectTimeout(-1, nullptr, 1), 5);
    EXPECT_EQ(OnFirstConnectTimeout(-1, &bare, 1), 5);
    MovoNetWifi_t unlinked{};
    bare.priv = &unlinked;
    EXPECT_EQ(OnFirstConnectTimeout(-1, &bare, 1), 1);
    bench.set.failLock(bench.link().lock, 1);
    EXPECT_EQ(timeOut(bench), 1);
    EXPECT_EQ(errors(bench.set), Lines{"OnFirstConnectTimeout: lock wpactrl mutex failed\n"});
}

TEST(FirstConnectTimeout, HasNothingToDoOnceThereIsAnAddress)
{
    Bench bench;
    network("Net", 1);
    bench.iface.isConnected = 1;
    EXPECT_EQ(timeOut(bench), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, kTimeout, "first connect successfully\n");
    EXPECT_EQ(sent(bench.supplicant), Lines{});
}

TEST(FirstConnectTimeout, NeedsRememberedAndScannedNetworks)
{
    Bench bench;
    EXPECT_EQ(timeOut(bench), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, kTimeout, "no saved esss\n");
    network("Net", 1);
    bench.supplicant.replies["SCAN_RESULTS"] = {"FAIL\n"};
    EXPECT_EQ(timeOut(bench), 1);
    bench.supplicant.replies["SCAN_RESULTS"] = {"bssid / frequency / signal level / flags / ssid\n"};
    EXPECT_EQ(timeOut(bench), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, kTimeout, "no esss in scan list\n");
    EXPECT_EQ(sent(bench.supplicant), Lines{"SCAN_RESULTS"});
    bench.iface.funcs.WifiUpdateEsss = nullptr;
    EXPECT_EQ(timeOut(bench), 1);
    EXPECT_EQ(sent(bench.supplicant), Lines{});
}

TEST(FirstConnectTimeout, ReadsTheScanWhenTheTableIsEmpty)
{
    Bench bench;
    MovNetWifiEssItem_t saved = network("Net", 1);
    saved.bssid = 0x000100000002;
    ASSERT_EQ(int_Movo_Net_SaveEss(&saved), 0);
    bench.supplicant.replies["SCAN_RESULTS"] = {
        "bssid / frequency / signal level / flags / ssid\n02:00:00:00:01:00\t2412\t-40\t[WPA2-PSK-CCMP][ESS]\tNet\n"};
    EXPECT_EQ(timeOut(bench), 0);
    const Lines commands = sent(bench.supplicant);
    EXPECT_EQ(commands.front(), "SCAN_RESULTS");
    EXPECT_EQ(commands.back(), "ENABLE_NETWORK  0");
}

TEST(FirstConnectTimeout, TakesAnAccessPointThatIsTheSameInEverything)
{
    using Change = void (*)(MovNetWifiEssItem_t&);
    static constexpr Change kChanges[] = {
        [](MovNetWifiEssItem_t& ess) { ess.essid[0] = 'n'; }, [](MovNetWifiEssItem_t& ess) { ess.bssid = 43; },
        [](MovNetWifiEssItem_t& ess) { ess.bssid += std::int64_t{1} << 40; },
        [](MovNetWifiEssItem_t& ess) { ess.securityType = _MOVO_NET_WIFI_SECURITY_WPA_PSK_; },
        [](MovNetWifiEssItem_t& ess) { ess.encrypType = _MOVO_NET_WIFI_ENCRYP_TKIPAES_; }};
    Bench bench;
    network("Net", 1);
    MovNetWifiEssItem_t& scanned = bench.list("Net", kWpa2, kAes, "not this key");
    scanned.bssid = 42;
    const MovNetWifiEssItem_t same = scanned;
    for (const Change change : kChanges) {
        scanned = same;
        change(scanned);
        EXPECT_EQ(timeOut(bench), 0);
        EXPECT_EQ(sent(bench.supplicant), Lines{});
        EXPECT_EQ(errors(bench.set), Lines{}) << "no message";
    }
    scanned = same;
    EXPECT_EQ(timeOut(bench), 0);
    const Lines commands = sent(bench.supplicant);
    EXPECT_EQ(std::ranges::count(commands, "SET_NETWORK 0 psk \"remembered\""), 1);
    EXPECT_NE(bench.link().connectTimerEventHandle, 0) << "an ordinary connection";
}

TEST(FirstConnectTimeout, TakesTheNewestRememberedNetworkInRange)
{
    Bench bench;
    for (const char* name : {"Old", "New", "Newest"}) {
        network(name, 1);
    }
    bench.list("Old", kWpa2, kAes).bssid = 42;
    bench.list("New", kWpa2, kAes).bssid = 42;
    EXPECT_EQ(timeOut(bench), 0);
    EXPECT_EQ(sent(bench.supplicant)[2], "SET_NETWORK 0 ssid \"New\"");
}

TEST(FirstConnectTimeout, KeepsConnectingForGoodWithoutANetworkInRange)
{
    Bench bench;
    network("Elsewhere", 1);
    s_bFirstConnect = 1;
    bench.connect();
    bench.set.grantTicks(1000);
    EXPECT_EQ(sent(bench.supplicant), Lines{});
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTING);
    EXPECT_CALLBACKS(bench.set, {});
}

TEST(FirstConnectTimeout, KeepsComingAfterABadKey)
{
    Bench bench;
    MovNetWifiEssItem_t saved = network("My Home Net", 1);
    s_bFirstConnect = 1;
    bench.connect();
    bench.wifi().esss[0].bssid = saved.bssid;
    (void)bench.hear({"<3>WPA: 4-Way Handshake failed - pre-shared key may be incorrect"});
    EXPECT_CALLBACKS(bench.set, {{sim::WIFIBADKEY, "mlan0"}});
    EXPECT_NE(bench.link().firstConnectHandle, 0);
    (void)sent(bench.supplicant);
    bench.set.grantTicks(301);
    EXPECT_EQ(sent(bench.supplicant)[2], "SET_NETWORK 0 ssid \"My Home Net\"");
}
