#include "bench.h"
#include "names.h"

#include <gtest/gtest.h>

using namespace wifi;
using namespace movonet;

namespace {
/** What is sent for one network, between its name and the end. */
struct Case {
    const char* name;
    MovoNetWifiSecurity_e security;
    MovoNetWifiEncryption_e cipher;
    MovoNetWifiUISecurity_e wish;
    std::string key;
    Lines middle;
    bool openOnly = false;
};

class Sequence : public testing::TestWithParam<Case> {};
} // namespace

TEST_P(Sequence, SendsItsCommandsToTheLetter)
{
    const Case& row = GetParam();
    Bench bench;
    g_UISecurityType = row.wish;
    g_WEPLinkType = row.openOnly ? 1 : 0;
    MovNetWifiEssItem_t& ess = bench.list("Net", row.security, row.cipher, row.key);
    ASSERT_EQ(int_Movo_Net_Wpactrl_Connect(&bench.iface, &ess), 0);

    Lines expected{"REMOVE_NETWORK ALL", "ADD_NETWORK", "SET_NETWORK 0 ssid \"Net\"", "SET_NETWORK 0 scan_ssid 1"};
    expected.insert(expected.end(), row.middle.begin(), row.middle.end());
    expected.emplace_back("ENABLE_NETWORK  0");
    EXPECT_EQ(sent(bench.supplicant), expected);
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTING);
    EXPECT_STREQ(bench.wifi().curOperatingEsss.essid, "Net");
    EXPECT_EQ(bench.wifi().curOperatingEsss.isConnected, 0);
    EXPECT_NE(bench.link().connectTimerEventHandle, 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, "int_Movo_Net_Wpactrl_Connect",
                  "try to connect to esss [Net]\n");
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, "int_Movo_Net_Wpactrl_Connect",
                  "connect to Net, with netid 0 OK\n");
}

namespace {
constexpr auto kOpen = _MOVO_NET_WIFI_SECURITY_OPEN_;
constexpr auto kShared = _MOVO_NET_WIFI_SECURITY_SHARED_;
constexpr auto kWpa2 = _MOVO_NET_WIFI_SECURITY_WPA2_PSK_;
constexpr auto kWpa = _MOVO_NET_WIFI_SECURITY_WPA_PSK_;
constexpr auto kWpa2Eap = _MOVO_NET_WIFI_SECURITY_WPA_PSK_A2_;
constexpr auto kWpaEap = _MOVO_NET_WIFI_SECURITY_WPA_;
constexpr auto kNone = _MOVO_NET_WIFI_ENCRYP_NONE_;
constexpr auto kWep = _MOVO_NET_WIFI_ENCRYP_WEP_;
constexpr auto kTkip = _MOVO_NET_WIFI_ENCRYP_WEP_RYP_TKIP_;
constexpr auto kAes = _MOVO_NET_WIFI_ENCRYP_AES_;
constexpr auto kBoth = _MOVO_NET_WIFI_ENCRYP_TKIPAES_;
constexpr auto kAsScanned = _MOVO_NET_WIFI_UI_DEFAULT_;
constexpr auto kWishNone = _MOVO_NET_WIFI_UI_NONE_;
constexpr auto kWishWep = _MOVO_NET_WIFI_UI_WEP_;
constexpr auto kWishMix = _MOVO_NET_WIFI_UI_MIX_;
constexpr auto kUnknownWish = static_cast<MovoNetWifiUISecurity_e>(9);

const Lines kJoinOpen{"SET_NETWORK 0 key_mgmt NONE"};

Lines wep(const std::string& key, const std::string& algorithm = "OPEN SHARED")
{
    return {"SET_NETWORK 0 key_mgmt NONE", "SET_NETWORK 0 wep_key0 " + key, "SET_NETWORK 0 wep_tx_keyidx 0",
            "SET_NETWORK 0 auth_alg " + algorithm};
}

Lines wpa(const std::string& proto, const std::string& management, const std::string& pairwise)
{
    return {"SET_NETWORK 0 proto " + proto, "SET_NETWORK 0 key_mgmt " + management,
            "SET_NETWORK 0 pairwise " + pairwise, "SET_NETWORK 0 psk \"a phrase\""};
}
} // namespace

INSTANTIATE_TEST_SUITE_P(
    Branches, Sequence,
    testing::Values(
        Case{"Open", kOpen, kNone, kAsScanned, "", kJoinOpen},
        Case{"OpenByWish", kOpen, kNone, kWishNone, "", kJoinOpen},
        Case{"ProtectedTakenAsOpen", kWpa2, kAes, kWishNone, "a phrase", kJoinOpen},
        Case{"WepFive", kOpen, kWep, kAsScanned, "12345", wep("\"12345\"")},
        Case{"WepThirteen", kOpen, kWep, kAsScanned, "1234567890123", wep("\"1234567890123\"")},
        Case{"WepSixteen", kOpen, kWep, kAsScanned, "1234567890123456", wep("\"1234567890123456\"")},
        Case{"WepTen", kOpen, kWep, kAsScanned, "0123456789", wep("0123456789")},
        Case{"WepTwentySix", kOpen, kWep, kAsScanned, "01234567890123456789012345", wep("01234567890123456789012345")},
        Case{"WepThirtyTwo", kOpen, kWep, kAsScanned, "01234567890123456789012345678901",
             wep("01234567890123456789012345678901")},
        Case{"WepOpenOnly", kOpen, kWep, kAsScanned, "12345", wep("\"12345\"", "OPEN"), true},
        Case{"OpenTakenAsWep", kOpen, kNone, kWishWep, "12345", wep("\"12345\"")},
        Case{"OpenOfUnknownWish", kOpen, kNone, kUnknownWish, "a phrase", wpa("WPA RSN", "WPA-PSK", "CCMP TKIP")},
        Case{"WepTakenAsOpen", kOpen, kWep, kWishNone, "12345", kJoinOpen},
        Case{"WepTakenAsMix", kOpen, kWep, kWishMix, "a phrase", wpa("WPA RSN", "WPA-PSK", "CCMP TKIP")},
        Case{"ProtectedTakenAsWep", kWpa2, kAes, kWishWep, "12345", wep("\"12345\"")},
        Case{"EnterpriseTakenAsMix", kWpaEap, kTkip, kWishMix, "a phrase", wpa("WPA RSN", "WPA-PSK", "CCMP TKIP")},
        Case{"OpenTakenAsMix", kOpen, kNone, kWishMix, "a phrase", wpa("WPA RSN", "WPA-PSK", "CCMP TKIP")},
        Case{"Mix", kWpa2, kAes, kWishMix, "a phrase", wpa("WPA RSN", "WPA-PSK", "CCMP TKIP")},
        Case{"Wpa2", kWpa2, kAes, kAsScanned, "a phrase", wpa("RSN", "WPA-PSK", "CCMP")},
        Case{"Wpa2Both", kWpa2, kBoth, kAsScanned, "a phrase", wpa("RSN", "WPA-PSK", "CCMP")},
        Case{"Wpa", kWpa, kTkip, kAsScanned, "a phrase", wpa("WPA", "WPA-PSK", "TKIP")},
        Case{"Wpa2Enterprise", kWpa2Eap, kAes, kAsScanned, "a phrase", wpa("RSN", "WPA-EAP", "CCMP")},
        Case{"WpaEnterprise", kWpaEap, kTkip, kAsScanned, "a phrase", wpa("WPA", "WPA-EAP", "TKIP")},
        Case{"SharedWithCipher", kShared, kAes, kAsScanned, "a phrase", wpa("WPA RSN", "WPA-PSK", "CCMP")},
        Case{"WepRecordWithUnknownWish", kOpen, kWep, kUnknownWish, "a phrase",
             wpa("WPA RSN", "WPA-PSK", "CCMP TKIP")}),
    [](const auto& row) { return row.param.name; });

TEST(Connect, RefusesAWepKeyOfNoKnownLengthAfterKeyManagement)
{
    Bench bench;
    MovNetWifiEssItem_t& ess = bench.list("Net", kOpen, kWep, "12345678");
    EXPECT_EQ(int_Movo_Net_Wpactrl_Connect(&bench.iface, &ess), 1);
    EXPECT_EQ(sent(bench.supplicant).back(), "SET_NETWORK 0 key_mgmt NONE");
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kLinkModule, "int_Movo_Net_Wpactrl_Connect", "BAD key length\n");
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_NONE);
}

TEST(Connect, StopsAtTheFirstCommandThatFails)
{
    Bench bench;
    bench.supplicant.replies["SET_NETWORK 0 psk \"short\""] = {"FAIL\n"};
    MovNetWifiEssItem_t& ess = bench.list("Net", kWpa2, kAes, "short");
    EXPECT_EQ(int_Movo_Net_Wpactrl_Connect(&bench.iface, &ess), 1);
    EXPECT_EQ(sent(bench.supplicant).back(), "SET_NETWORK 0 psk \"short\"");
    EXPECT_EQ(told(bench.set, KEST_LEVEL_ERROR), (Lines{"Wpactrl_ExecCmd: [SET_NETWORK 0 psk \"short\"] failed\n",
                                                        "int_Movo_Net_Wpactrl_Connect: [SET_NETWORK 0 psk \"short\"] "
                                                        "failed\n"}));
    EXPECT_EQ(bench.link().connectTimerEventHandle, 0);
}

TEST(Connect, TakesTheIdThatTheSupplicantGives)
{
    Bench bench;
    bench.supplicant.replies["ADD_NETWORK"] = {"7\n"};
    MovNetWifiEssItem_t& ess = bench.list("Net", kOpen, kNone);
    EXPECT_EQ(int_Movo_Net_Wpactrl_Connect(&bench.iface, &ess), 0);
    EXPECT_EQ(sent(bench.supplicant).back(), "ENABLE_NETWORK  7");
}

TEST(Connect, LongestNameAndKeyAreSentWhole)
{
    Bench bench;
    const std::string name(32, 'n');
    const std::string key(64, 'k');
    MovNetWifiEssItem_t& ess = bench.list(name, kWpa2, kAes, key);
    EXPECT_EQ(int_Movo_Net_Wpactrl_Connect(&bench.iface, &ess), 0);
    const Lines commands = sent(bench.supplicant);
    EXPECT_EQ(commands[2], "SET_NETWORK 0 ssid \"" + name + "\"");
    EXPECT_EQ(commands[7], "SET_NETWORK 0 psk \"" + key + "\"");
}

TEST(Connect, ChecksItsArguments)
{
    Bench bench;
    MovNetWifiEssItem_t ess{};
    const sim::CapturedOutput output;
    EXPECT_EQ(int_Movo_Net_Wpactrl_Connect(nullptr, &ess), 5);
    EXPECT_NE(output.text().find("Routine:int_Movo_Net_Wpactrl_Connect, pIface failed"), std::string::npos);
    EXPECT_EQ(int_Movo_Net_Wpactrl_Connect(&bench.iface, nullptr), 5);
    MovoNetIface_t bare{};
    EXPECT_EQ(int_Movo_Net_Wpactrl_Connect(&bare, &ess), 5);
}

TEST(ConnectTimeout, RemovesTheNetworkThenTellsOnce)
{
    Bench bench;
    bench.connect();
    bench.set.grantTicks(300);
    EXPECT_EQ(sent(bench.supplicant), Lines{}) << "live from the next pass on";
    bench.set.grantTicks(1);
    EXPECT_EQ(sent(bench.supplicant), Lines{"REMOVE_NETWORK ALL"});
    EXPECT_CALLBACKS(bench.set, {{sim::WIFITIMEOUT, "mlan0"}});
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_NONE);
    bench.set.grantTicks(700);
    EXPECT_CALLBACKS(bench.set, {});
}

TEST(ConnectTimeout, DoesNothingOnceTheLinkIsUp)
{
    Bench bench;
    bench.connect();
    bench.link().connectStatus = WPACTRL_STATUS_CONNECTED;
    EXPECT_EQ(OnConnectTimeoutEventRev(-1, &bench.iface, 1), 0);
    EXPECT_EQ(sent(bench.supplicant), Lines{});
    EXPECT_CALLBACKS(bench.set, {});
}

TEST(Disconnect, RemovesTheNetworkAndTells)
{
    Bench bench;
    bench.connect();
    bench.iface.isConnected = 1;
    EXPECT_EQ(int_Movo_Net_Wpactrl_Disconnect(&bench.iface), 0);
    EXPECT_EQ(sent(bench.supplicant), Lines{"REMOVE_NETWORK ALL"});
    EXPECT_CALLBACKS(bench.set, {{sim::IFDISCONNECTED, "mlan0"}});
    EXPECT_EQ(bench.iface.isConnected, 0);
    EXPECT_NE(bench.link().connectTimerEventHandle, 0) << "the time-out stays and will find nothing to do";
    bench.iface.isActived = 0;
    EXPECT_EQ(int_Movo_Net_Wpactrl_Disconnect(&bench.iface), 1);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kLinkModule, "int_Movo_Net_Wpactrl_Disconnect", "not actived yet\n");
}

TEST(ResetConnecting, KeepsNetworkZeroWhateverTheId)
{
    Bench bench;
    bench.supplicant.replies["ADD_NETWORK"] = {"7\n"};
    bench.connect();
    bench.iface.isConnected = 1;
    bench.link().isWpsMode = 1;
    EXPECT_EQ(int_Movo_Net_Wpactrl_ResetConnecting(&bench.iface), 0);
    EXPECT_EQ(sent(bench.supplicant), (Lines{"DISABLE_NETWORK 0", "ENABLE_NETWORK 0"}));
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTING);
    EXPECT_EQ(bench.link().isWpsMode, 0);
    EXPECT_EQ(bench.iface.isConnected, 0);
}

TEST(ResetConnecting, KeepsTheWordsOfAScanForItsFailures)
{
    Bench bench;
    bench.supplicant.replies["ENABLE_NETWORK 0"] = {"FAIL\n"};
    EXPECT_EQ(int_Movo_Net_Wpactrl_ResetConnecting(&bench.iface), 1);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kLinkModule, "int_Movo_Net_Wpactrl_ResetConnecting", "[SCAN] failed\n");
}

TEST(FirstConnect, ArmsItsOwnTimerOnce)
{
    Bench bench;
    s_bFirstConnect = 1;
    bench.connect();
    EXPECT_NE(bench.link().firstConnectHandle, 0);
    EXPECT_EQ(bench.link().connectTimerEventHandle, 0);
    EXPECT_EQ(s_bFirstConnect, 0);
}

TEST(FirstConnect, JoinsTheRememberedNetworkThatTheScanSaw)
{
    Bench bench;
    s_bFirstConnect = 1;
    bench.connect();
    MovNetWifiEssItem_t saved = bench.list("Seen", kWpa2, kAes);
    std::strcpy(saved.Key, "remembered");
    ASSERT_EQ(int_Movo_Net_SaveEss(&saved), 0);
    bench.set.grantTicks(301);
    const Lines commands = sent(bench.supplicant);
    ASSERT_EQ(commands.size(), 9U);
    EXPECT_EQ(commands[2], "SET_NETWORK 0 ssid \"Seen\"");
    EXPECT_EQ(commands[7], "SET_NETWORK 0 psk \"remembered\"");
    EXPECT_NE(bench.link().connectTimerEventHandle, 0);
    EXPECT_EQ(bench.link().firstConnectHandle, 0);
}
