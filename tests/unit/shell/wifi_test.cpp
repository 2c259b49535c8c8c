/** What the commands for the wireless interface do beyond one call. */
#include "fake_net.h"
#include "play.h"
#include "tools/movo_net_shell/names.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <kest.h>

namespace {
bool wasCalled(const std::string& function)
{
    return std::ranges::any_of(fake::calls(), [&](const std::string& call) { return call.starts_with(function); });
}
} // namespace

TEST(ShellWifi, TakesTheFirstWirelessInterface)
{
    fake::addInterfaces(1);
    fake::addWireless("wlan0");
    fake::addWireless("wlan1");
    EXPECT_EQ(play("wifi use\nwifi chip\n").output, "wlan0\n0 success: realtek-8812au\n");
    EXPECT_EQ(fake::calls().back(), "Movo_NET_WifiGetDevType wlan0");
    EXPECT_EQ(play("wifi use wlan1\nwifi use\nwifi use \"\"\nwifi use\n").output, "wlan1\nwlan0\n");
}

TEST(ShellWifi, SaysWhenThereIsNone)
{
    EXPECT_EQ(play("wifi use\n").output, "no wireless interface\n");
}

TEST(ShellWifi, ListsNamesOfEveryLanguageInOneTable)
{
    fake::setNetworks(
        {"\u6211\u5bb6\u7684\u65e0\u7ebf\u7f51\u7edc\u5f88\u5feb\U0001F3E0!", "say \"hi\" \\o/", "\u009b2J\xe9"});
    const std::string output = play("wifi use wlan0\nwifi list\n").output;
    for (const std::string row :
         {"name                              bssid", "say \"hi\" \\o/                      02:00",
          "\u6211\u5bb6\u7684\u65e0\u7ebf\u7f51\u7edc\u5f88\u5feb\U0001F3E0!             02:00",
          "\\xc2\\x9b2J\\xe9                    02:00"}) {
        EXPECT_NE(output.find("\n" + row), std::string::npos) << row << "\n" << output;
    }
}

TEST(ShellWifi, AKeyThatIsRefusedJoinsNothing)
{
    fake::returns("Movo_NET_WifiSetKey", 5);
    EXPECT_TRUE(play("wifi use wlan0\nwifi join Net secrecies\n").output.starts_with("5 invalid argument\n"));
    EXPECT_TRUE(wasCalled("Movo_NET_WifiSetKey wlan0 Net secrecies 9"));
    EXPECT_FALSE(wasCalled("Movo_NET_WifiConnectEss"));
}

TEST(ShellWifi, APinThatIsNotMadeStartsNothing)
{
    fake::returns("Movo_NET_WifiGenerateWpsPin", 1);
    EXPECT_TRUE(play("wifi use wlan0\nwifi wps both\n").output.starts_with("1 failure\n"));
    EXPECT_FALSE(wasCalled("Movo_NET_WifiStartWpsConnection"));
}

TEST(ShellWifi, NothingIsShownOfWhatCannotBeRead)
{
    for (const char* function :
         {"Movo_NET_GetNumOfWifiEsss", "Movo_NET_WifiGetSignalEss", "Movo_NET_WifiGetConnectedEss",
          "Movo_NET_WifiGetConnectedSignal", "Movo_NET_WifiGetKey", "Movo_NET_WifiGetPriorityEss"}) {
        fake::returns(function, 1);
    }
    fake::addWireless("wlan0");
    for (const char* line :
         {"wifi list", "wifi info N", "wifi status", "wifi signal", "wifi key N", "wifi priority N"}) {
        const std::string output = play(std::string(line) + "\n").output;
        EXPECT_TRUE(output.starts_with("1 failure\n  ")) << line << output;
        EXPECT_EQ(std::ranges::count(output, '\n'), 2) << line << output;
    }
}

TEST(ShellWifi, ADashStandsForASingleFactThatCannotBeRead)
{
    for (const char* function : {"Movo_NET_WifiGetBssidEss", "Movo_NET_WifiIsWPS", "Movo_NET_WifiGetDevType"}) {
        fake::returns(function, 1);
    }
    fake::returns("Movo_NET_WifiGetKey", 1);
    const std::string output = play("wifi use wlan0\nwifi info N\nwifi status\n").output;
    EXPECT_NE(output.find("  bssid       -\n"), std::string::npos) << output;
    EXPECT_NE(output.find("  wps         -\n"), std::string::npos) << output;
    EXPECT_NE(output.find("  remembered  no\n"), std::string::npos) << output;
    EXPECT_NE(output.find("  chip        -\n"), std::string::npos) << output;
}

TEST(ShellWifi, AskingForRememberedNetworksLeavesTheLogAlone)
{
    __atomic_store_n(&__kest_debug_min, static_cast<int>(KEST_LEVEL_WARNING), __ATOMIC_RELAXED);
    int levelOfKeys = -1;
    int levelOfOthers = -1;
    fake::onCall([&](const std::string& call) {
        (call.starts_with("Movo_NET_WifiGetKey") ? levelOfKeys : levelOfOthers) = __kest_debug_min;
    });
    (void)play("wifi use wlan0\nwifi list\n");
    EXPECT_EQ(levelOfKeys, KEST_LEVEL_NONE);
    EXPECT_EQ(levelOfOthers, KEST_LEVEL_WARNING);
    EXPECT_EQ(__kest_debug_min, KEST_LEVEL_WARNING);

    (void)play("wifi key Net\n");
    EXPECT_EQ(levelOfKeys, KEST_LEVEL_WARNING) << "one that was asked for by name is told of";
}

TEST(ShellWifi, EachValueHasItsName)
{
    using namespace shell;
    EXPECT_EQ(textOf(_MOVO_NET_WIFI_SECURITY_OPEN_), "open");
    EXPECT_EQ(textOf(_MOVO_NET_WIFI_SECURITY_SHARED_), "shared");
    EXPECT_EQ(textOf(_MOVO_NET_WIFI_SECURITY_WPA2_PSK_), "wpa2-psk");
    EXPECT_EQ(textOf(_MOVO_NET_WIFI_SECURITY_WPA_PSK_), "wpa-psk");
    EXPECT_EQ(textOf(_MOVO_NET_WIFI_SECURITY_WPA_PSK_A2_), "wpa2-eap");
    EXPECT_EQ(textOf(_MOVO_NET_WIFI_SECURITY_WPA_), "wpa-eap");
    EXPECT_EQ(textOf(_MOVO_NET_WIFI_ENCRYP_NONE_), "none");
    EXPECT_EQ(textOf(_MOVO_NET_WIFI_ENCRYP_WEP_), "wep");
    EXPECT_EQ(textOf(_MOVO_NET_WIFI_ENCRYP_WEP_RYP_TKIP_), "tkip");
    EXPECT_EQ(textOf(_MOVO_NET_WIFI_ENCRYP_AES_), "ccmp");
    EXPECT_EQ(textOf(_MOVO_NET_WIFI_ENCRYP_TKIPAES_), "tkip+ccmp");
    EXPECT_EQ(textOf(_MOVO_NET_WIFI_WPS_NONE_), "none");
    EXPECT_EQ(textOf(_MOVO_NET_WIFI_WPS_PIN), "pin");
    EXPECT_EQ(textOf(_MOVO_NET_WIFI_WPS_PBC_PIN), "both");
    EXPECT_EQ(textOf(_MOVO_NET_WIFI_UNKNOWN_), "unknown");
    EXPECT_EQ(textOf(_MOVO_NET_WIFI_ATHEROS_), "atheros");
    EXPECT_EQ(textOf(_MOVO_NET_WIFI_REALTEK_8188EU_), "realtek-8188eu");
    EXPECT_EQ(textOf(_MOVO_NET_WIFI_BRCM_43242_), "broadcom-43242");
    EXPECT_EQ(textOf(_MOVO_NET_WIFI_BRCM_43569_), "broadcom-43569");
    EXPECT_EQ(textOf(_MOVO_NET_WIFI_BRCM_LITEON_43569_), "broadcom-liteon-43569");
    EXPECT_EQ(textOf(static_cast<MovoNetWifiSecurity_e>(77)), "77");
}
