#include "bench.h"
#include "movo_net_fl_wpactrl/learnt.h"
#include "names.h"

#include <gtest/gtest.h>

using namespace wifi;
using namespace movonet;

namespace {
constexpr auto kWpa2 = _MOVO_NET_WIFI_SECURITY_WPA2_PSK_;
constexpr auto kAes = _MOVO_NET_WIFI_ENCRYP_AES_;

class Channel : public testing::TestWithParam<std::pair<int, int>> {};
} // namespace

TEST_P(Channel, FollowsTheFrequency)
{
    Bench bench;
    bench.list("Net", kWpa2, kAes).frequency = GetParam().first;
    int channel = -1;
    EXPECT_EQ(int_Movo_NET_WifiGetChannelEss(&bench.iface, "Net", &channel), 0);
    EXPECT_EQ(channel, GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(Rows, Channel,
                         testing::Values(std::pair(2411, 0), std::pair(2412, 1), std::pair(2416, 1),
                                         std::pair(2467, 12), std::pair(2472, 13), std::pair(2473, 0),
                                         std::pair(2483, 0), std::pair(2484, 14), std::pair(2485, 0),
                                         std::pair(4914, 0), std::pair(4915, 183), std::pair(4920, 184),
                                         std::pair(4980, 196), std::pair(4981, 0), std::pair(5034, 0),
                                         std::pair(5035, 7), std::pair(5180, 36), std::pair(5825, 165),
                                         std::pair(5826, 0), std::pair(2300, 0), std::pair(0, 0), std::pair(-2412, 0),
                                         std::pair(2147483647, 0)));

TEST(Query, ReadsTheFirstOfAName)
{
    Bench bench;
    MovNetWifiEssItem_t& ess = bench.list("Net", kWpa2, kAes);
    ess.bssid = 42;
    ess.signalVal = -60;
    ess.bWPS = 1;
    ess.frequency = 2437;
    bench.list("Net", _MOVO_NET_WIFI_SECURITY_OPEN_, _MOVO_NET_WIFI_ENCRYP_NONE_);
    std::int64_t bssid = 0;
    int value = 0;
    kest_bool wps = 0;
    MovoNetWifiSecurity_e security{};
    MovoNetWifiEncryption_e cipher{};
    EXPECT_EQ(int_Movo_NET_WifiGetBssidEss(&bench.iface, "Net", &bssid), 0);
    EXPECT_EQ(bssid, 42);
    EXPECT_EQ(int_Movo_NET_WifiGetSignalEss(&bench.iface, "Net", &value), 0);
    EXPECT_EQ(value, -60);
    EXPECT_EQ(int_Movo_NET_WifiGetFrequencyEss(&bench.iface, "Net", &value), 0);
    EXPECT_EQ(value, 2437);
    EXPECT_EQ(int_Movo_NET_WifiIsWPS(&bench.iface, "Net", &wps), 0);
    EXPECT_EQ(wps, 1);
    EXPECT_EQ(int_Movo_NET_WifiGetSecurityEss(&bench.iface, "Net", &security), 0);
    EXPECT_EQ(security, kWpa2);
    EXPECT_EQ(int_Movo_NET_WifiGetEncryptionEss(&bench.iface, "Net", &cipher), 0);
    EXPECT_EQ(cipher, kAes);
    EXPECT_EQ(int_Movo_NET_WifiGetSignalEss(&bench.iface, "Nowhere", &value), 1);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kWifiModule, "get_essid_index", "no matched essid Nowhere\n");
}

TEST(Query, ChecksInItsOrder)
{
    Bench bench;
    bench.list("Net", kWpa2, kAes);
    int value = 17;
    const sim::CapturedOutput output;
    EXPECT_EQ(int_Movo_NET_WifiGetSignalEss(nullptr, "Net", &value), 5);
    EXPECT_NE(output.text().find("Routine:int_Movo_NET_WifiGetSignalEss, pIface failed"), std::string::npos);
    MovoNetIface_t bare{};
    EXPECT_EQ(int_Movo_NET_WifiGetSignalEss(&bare, "Net", &value), 5);
    EXPECT_EQ(int_Movo_NET_WifiGetSignalEss(&bench.iface, nullptr, &value), 5);
    EXPECT_EQ(int_Movo_NET_WifiGetSignalEss(&bench.iface, "Net", nullptr), 5);
    bench.iface.isActived = 0;
    EXPECT_EQ(int_Movo_NET_WifiGetSignalEss(&bench.iface, "Net", &value), 1);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kWifiModule, "int_Movo_NET_WifiGetSignalEss", "not actived yet");
    EXPECT_EQ(value, 17);
}

TEST(Priority, IsFromZeroToSeven)
{
    Bench bench;
    bench.list("Net", kWpa2, kAes);
    EXPECT_EQ(int_Movo_NET_WifiSetPriorityEss(&bench.iface, "Nowhere", 8), 5);
    EXPECT_EQ(int_Movo_NET_WifiSetPriorityEss(&bench.iface, "Net", -1), 5);
    EXPECT_EQ(int_Movo_NET_WifiSetPriorityEss(&bench.iface, "Nowhere", 7), 1);
    EXPECT_EQ(int_Movo_NET_WifiSetPriorityEss(&bench.iface, "Net", 7), 0);
    int priority = 0;
    EXPECT_EQ(int_Movo_NET_WifiGetPriorityEss(&bench.iface, "Net", &priority), 0);
    EXPECT_EQ(priority, 7);
}

TEST(Names, KeepsANameOfThirtyTwoBytesWithoutEndMark)
{
    Bench bench;
    const std::string name(32, 'n');
    bench.list(name, kWpa2, kAes);
    char ssid[33];
    std::memset(ssid, '#', sizeof(ssid));
    EXPECT_EQ(int_Movo_NET_WifiGetSsidEss(&bench.iface, 0, ssid), 0);
    EXPECT_EQ(std::string(ssid, 33), name + "#");
    EXPECT_EQ(int_Movo_NET_WifiGetSsidEss(&bench.iface, 1, ssid), 1);
    EXPECT_EQ(int_Movo_NET_WifiGetSsidEss(&bench.iface, -1, ssid), 1);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kWifiModule, "int_Movo_NET_WifiGetSsidEss", "ess index invalid\n");
}

TEST(ConnectedName, IsCutToItsBufferAndUntouchedWithoutConnection)
{
    Bench bench;
    char essid[8] = "before";
    EXPECT_EQ(int_Movo_NET_WifiGetConnectedEss(&bench.iface, essid, 8), 0);
    EXPECT_STREQ(essid, "before");
    bench.connect();
    bench.wifi().curOperatingEsss.isConnected = 1;
    EXPECT_EQ(int_Movo_NET_WifiGetConnectedEss(&bench.iface, essid, 8), 0);
    EXPECT_STREQ(essid, "My Home");
    EXPECT_EQ(int_Movo_NET_WifiGetConnectedEss(&bench.iface, essid, 0), 5);
    EXPECT_EQ(int_Movo_NET_WifiGetConnectedEss(&bench.iface, essid, -1), 5);
}

TEST(WifiInit, LeavesAuxiliaryInterfacesWithoutBackEnd)
{
    sim::Set set;
    for (const char* name : {"p2p0", "wifi0"}) {
        MovoNetIface_t iface{};
        std::strcpy(iface.name, name);
        EXPECT_EQ(int_Movo_Net_InitWifi(&iface), 0);
        EXPECT_EQ(iface.priv, nullptr);
        int value = 0;
        EXPECT_EQ(int_Movo_NET_WifiGetNumOfEsss(&iface, &value), 5);
    }
}

TEST(WifiInit, ListsTheRememberedNetworksOnce)
{
    sim::Set set;
    set.write("/data/tv/save/saved_esss", "Net" + std::string(149, '\0'));
    MovoNetIface_t first{};
    MovoNetIface_t second{};
    std::strcpy(first.name, "mlan0");
    std::strcpy(second.name, "mlan1");
    EXPECT_EQ(int_Movo_Net_InitWifi(&first), 0);
    EXPECT_EQ(int_Movo_Net_InitWifi(&second), 0);
    EXPECT_EQ(wifi_iface(&first)->esss_num, 1);
    EXPECT_EQ(wifi_iface(&second)->esss_num, 0);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kWifiModule, "int_Movo_Net_InitWifi", "pWifiIface->esss_num[1]\n");
    EXPECT_EQ(int_Movo_Net_DeInitWifi(&first), 0);
    EXPECT_EQ(g_pSavedEsss, nullptr);
    EXPECT_EQ(int_Movo_Net_DeInitWifi(&first), 5) << "the link is gone";
    discardWifi(first);
    discardWifi(second);
}

TEST(WpsPin, MustComeBackAsItWasSent)
{
    Bench bench;
    bench.supplicant.replies["WPS_PIN any 12345670"] = {"12345670"};
    EXPECT_EQ(int_Movo_NET_WifiStartWpsConnection(&bench.iface, _MOVO_NET_WIFI_WPS_PIN, "12345670"), 0);
    EXPECT_EQ(sent(bench.supplicant), (Lines{"REMOVE_NETWORK ALL", "WPS_PIN any 12345670"}));
    EXPECT_EQ(bench.link().isWpsMode, 1);
    EXPECT_EQ(bench.wifi().wpsMode, _MOVO_NET_WIFI_WPS_PIN);
    EXPECT_EQ(int_Movo_NET_WifiStartWpsConnection(&bench.iface, _MOVO_NET_WIFI_WPS_PIN, "999"), 1);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, "movo_net_fl_wpactrl", "int_Movo_Net_Wpactrl_WPSSetPIN",
                  "[wps_pin any] does not match\n");
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kWifiModule, "int_Movo_NET_WifiStartWpsConnection", "WPS PIN failed\n");
    EXPECT_EQ(int_Movo_NET_WifiStartWpsConnection(&bench.iface, _MOVO_NET_WIFI_WPS_PIN, nullptr), 5);
}

TEST(WpsButton, TellsOfTheLostConnectionBeforeAnythingElse)
{
    Bench bench;
    bench.iface.isConnected = 1;
    Lines before{"not called"};
    bench.set.onCallback([&bench, &before](MovoNetCBReason_e, void*) { before = bench.supplicant.commands; });
    EXPECT_EQ(int_Movo_NET_WifiStartWpsConnection(&bench.iface, _MOVO_NET_WIFI_WPS_PBC_, nullptr), 0);
    EXPECT_EQ(before, Lines{});
    EXPECT_CALLBACKS(bench.set, {{sim::IFDISCONNECTED, "mlan0"}});
    EXPECT_EQ(sent(bench.supplicant), (Lines{"REMOVE_NETWORK ALL", "WPS_PBC any"}));
    bench.set.grantTicks(1200);
    EXPECT_CALLBACKS(bench.set, {});
    bench.set.grantTicks(1);
    EXPECT_CALLBACKS(bench.set, {{sim::WIFITIMEOUT, "mlan0"}});
}

TEST(Wps, AnUnknownModeStartsNothing)
{
    Bench bench;
    bench.wifi().wpsMode = _MOVO_NET_WIFI_WPS_PBC_;
    EXPECT_EQ(int_Movo_NET_WifiStartWpsConnection(&bench.iface, static_cast<MovoNetWifiWPSMode_e>(9), nullptr), 0);
    EXPECT_EQ(sent(bench.supplicant), Lines{});
    EXPECT_EQ(bench.wifi().wpsMode, _MOVO_NET_WIFI_WPS_NONE_);
}

TEST(GeneratedPin, MustFitWithItsEndMark)
{
    Bench bench;
    bench.supplicant.replies["WPS_PIN any"] = {"74838189"};
    char pin[10];
    std::memset(pin, '#', sizeof(pin));
    for (const int room : {8, 0, -1}) {
        EXPECT_EQ(int_Movo_Net_Wpactrl_WPSGetPIN(&bench.iface, pin, room), 1) << room;
    }
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, "movo_net_fl_wpactrl", "int_Movo_Net_Wpactrl_WPSGetPIN",
                  "pin strlen too long");
    EXPECT_EQ(int_Movo_Net_Wpactrl_WPSGetPIN(&bench.iface, pin, 9), 0);
    EXPECT_STREQ(pin, "74838189");
}

TEST(HiddenSearch, AsksForTheNameAndWaitsForTheScanTimer)
{
    Bench bench;
    EXPECT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bench.iface, "Hidden"), 0);
    EXPECT_EQ(sent(bench.supplicant),
              (Lines{"REMOVE_NETWORK ALL", "ADD_NETWORK", "SET_NETWORK 0 ssid \"Hidden\"",
                     "SET_NETWORK 0 key_mgmt NONE", "SET_NETWORK 0 scan_ssid 1", "SELECT_NETWORK  0"}));
    EXPECT_EQ(bench.hear({"<3>Trying to associate with 02:00:00:00:03:01 (SSID='Hidden' freq=2462 MHz)"}), 0);
    EXPECT_EQ(sent(bench.supplicant), Lines{"REMOVE_NETWORK ALL"});
    EXPECT_CALLBACKS(bench.set, {{_MOVO_NET_CALLBACK_WIFISCANDONE_, "mlan0"}});
    EXPECT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bench.iface, ""), 5);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, "movo_net_fl_wpactrl", "int_Movo_Net_Wpactrl_SearchHideEss",
                  "invalid ssid\n");
}

TEST(HiddenSearch, ThatFindsNothingIsEndedByTheTimer)
{
    Bench bench;
    ASSERT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bench.iface, "Hidden"), 0);
    (void)sent(bench.supplicant);
    bench.set.grantTicks(301);
    EXPECT_EQ(sent(bench.supplicant), Lines{"REMOVE_NETWORK ALL"});
    EXPECT_CALLBACKS(bench.set, {{_MOVO_NET_CALLBACK_WIFISCANDONE_, "mlan0"}});
    EXPECT_EQ(bench.link().isSearchingHideEss, 0);
}

TEST(Learnt, TakesAKeyFromQuotesAlone)
{
    sim::Set set;
    set.write("/etc/wpa_supplicant.conf", "a\nnetwork={\n\tssid=\"Net\"\n\tpsk=\"the key\"\n\tkey_mgmt=WPA-PSK\n"
                                          "\tpairwise=CCMP TKIP\n}\nnetwork={\n\tssid=\"Other\"\n}\n");
    MovNetWifiEssItem_t ess{};
    Wpa_GetSavedEss(&ess);
    EXPECT_STREQ(ess.essid, "Net");
    EXPECT_STREQ(ess.Key, "the key");
    EXPECT_EQ(ess.securityType, _MOVO_NET_WIFI_SECURITY_WPA_PSK_);
    EXPECT_EQ(ess.encrypType, _MOVO_NET_WIFI_ENCRYP_WEP_RYP_TKIP_);
    EXPECT_EQ(ess.isSaved, 1);
    set.write("/etc/wpa_supplicant.conf", "network={\n\tssid=4e6574\n\tpsk=00ff\n\tssid=\"\n\tpsk=\"\n\tkey_mgmt=");
    ess = {};
    Wpa_GetSavedEss(&ess);
    EXPECT_STREQ(ess.essid, "Net");
    EXPECT_STREQ(ess.Key, "");
}

TEST(Learnt, ResetsTheConfigurationUnlessItCannotBeOpened)
{
    sim::Set set;
    MovNetWifiEssItem_t ess{};
    Wpa_GetSavedEss(&ess);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, "movo_net_fl_wpactrl", "Wpa_GetSavedEss",
                  "Could not open wpa_supplicant.conf\n");
    EXPECT_TRUE(set.commands().empty());
    set.write("/etc/wpa_supplicant.conf", fixture("conf_after_wpa2.txt"));
    Wpa_GetSavedEss(&ess);
    EXPECT_EQ(ess.isSaved, 0);
    EXPECT_RAN_IN_ORDER(set, {"cp -f Misc/wpa_supplicant.conf /etc/", "sync"});
}
