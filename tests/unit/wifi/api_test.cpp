#include "names.h"
#include "television.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <movo_net.h>
#include <sched.h>

// The public Wi-Fi calls on a television that runs, from the scan to the address and back.

using namespace wifi;
using namespace movonet;

namespace {
const Network kHome{"My Home Net", "[WPA2-PSK-CCMP][WPS][ESS]", "02:00:00:00:01:00", 5180, -47};
const Network kCafe{"Cafe", "[ESS]", "02:00:00:00:02:00", 2412, -70};

/** What a call reads of one network; it must not fail. */
template <typename Value>
Value fact(RETURN_TYPE (*call)(kest_sint32, const char*, const char*, Value*), const char* essid)
{
    Value value{};
    EXPECT_EQ(call(0, kIf, essid, &value), 0);
    return value;
}

/** The same of the interface. */
template <typename Value>
Value fact(RETURN_TYPE (*call)(kest_sint32, const char*, Value*))
{
    Value value{};
    EXPECT_EQ(call(0, kIf, &value), 0);
    return value;
}

int setKey(const char* essid, const std::string& key)
{
    return Movo_NET_WifiSetKey(0, kIf, essid, key.data(), static_cast<int>(key.size()));
}

std::string joinedName()
{
    char name[33] = "nothing";
    EXPECT_EQ(Movo_NET_WifiGetConnectedEss(0, kIf, name, sizeof(name)), 0);
    return name;
}

/** Joins the network and gets an address. */
void join(Television& television, const char* essid)
{
    ASSERT_EQ(Movo_NET_WifiConnectEss(0, kIf, essid), 0);
    television.hears({kConnected});
    television.set.dhcp(kIf).leases();
}
} // namespace

TEST(WifiApi, ReadsEachFactOfANetwork)
{
    Television television;
    television.startWith({kHome, kCafe});
    EXPECT_EQ(fact(Movo_NET_GetNumOfWifiEsss), 2);
    char name[33] = "";
    EXPECT_EQ(Movo_NET_WifiGetSsidEss(0, kIf, 1, name), 0);
    EXPECT_STREQ(name, "Cafe");
    EXPECT_EQ(fact(Movo_NET_WifiGetSignalEss, "My Home Net"), -47);
    EXPECT_EQ(fact(Movo_NET_WifiIsWPS, "My Home Net"), 1);
    EXPECT_EQ(fact(Movo_NET_WifiIsWPS, "Cafe"), 0);
    EXPECT_EQ(fact(Movo_NET_WifiGetEncryptionEss, "My Home Net"), _MOVO_NET_WIFI_ENCRYP_AES_);
    EXPECT_EQ(fact(Movo_NET_WifiGetSecurityEss, "My Home Net"), _MOVO_NET_WIFI_SECURITY_WPA2_PSK_);
    EXPECT_EQ(fact(Movo_NET_WifiGetSecurityEss, "Cafe"), _MOVO_NET_WIFI_SECURITY_OPEN_);
    EXPECT_EQ(fact(Movo_NET_WifiGetFrequencyEss, "My Home Net"), 5180);
    EXPECT_EQ(fact(Movo_NET_WifiGetChannelEss, "My Home Net"), 36);
    EXPECT_EQ(fact(Movo_NET_WifiGetBssidEss, "Cafe"), 0x000200000002);
    EXPECT_EQ(fact(Movo_NET_WifiGetPriorityEss, "Cafe"), 0);
    EXPECT_EQ(Movo_NET_WifiSetPriorityEss(0, kIf, "Cafe", 7), 0);
    EXPECT_EQ(fact(Movo_NET_WifiGetPriorityEss, "Cafe"), 7);
    EXPECT_EQ(fact(Movo_NET_WifiGetDevType), _MOVO_NET_WIFI_ATHEROS_);
    EXPECT_EQ(fact(Movo_NET_WifiGetWpsModeEss), _MOVO_NET_WIFI_WPS_NONE_);
    EXPECT_EQ(fact(Movo_NET_WifiIsReconnecting), 0);
    EXPECT_EQ(sent(television.supplicant), Lines{}) << "questions cost the supplicant nothing";
}

TEST(WifiApi, ScansAndReadsTheResults)
{
    Television television;
    television.start();
    television.set.forget();
    EXPECT_EQ(Movo_NET_WifiScanEsss(0, kIf), 0);
    EXPECT_CALLBACKS(television.set, {});
    television.hears({kResults});
    EXPECT_CALLBACKS(television.set, {{sim::WIFISCANDONE, kIf}});
    EXPECT_EQ(fact(Movo_NET_GetNumOfWifiEsss), 0) << "nothing is read unasked";
    television.tells({kHome, kCafe});
    EXPECT_EQ(Movo_NET_WifiUpdateEsss(0, kIf), 0);
    EXPECT_CALLBACKS(television.set, {{sim::WIFIESSSUPDATED, kIf}});
    EXPECT_EQ(fact(Movo_NET_GetNumOfWifiEsss), 2);
}

TEST(WifiApi, JoinsGetsAnAddressAndLeaves)
{
    Television television;
    television.startWith({kHome});
    EXPECT_EQ(setKey("My Home Net", "correct horse"), 0);
    join(television, "My Home Net");
    EXPECT_CALLBACKS(television.set, {{sim::IFCONNECTED, kIf}, {sim::IPCHANGED, kIf}, {sim::DHCP_SUCCESS, kIf}});
    EXPECT_EQ(television.set.defaultRoutes(), Lines{"10.0.2.2 dev mlan0"});
    EXPECT_EQ(joinedName(), "My Home Net");
    char ifname[9] = "";
    char essid[33] = "";
    int signal = 0;
    EXPECT_EQ(Movo_NET_WifiGetConnectedSignal(0, ifname, essid, &signal), 0);
    EXPECT_STREQ(ifname, kIf);
    EXPECT_STREQ(essid, "My Home Net");
    EXPECT_EQ(signal, -47);

    EXPECT_EQ(Movo_NET_WifiDisConnect(0, kIf), 0);
    EXPECT_CALLBACKS(television.set, {{sim::IFDISCONNECTED, kIf}});
    EXPECT_EQ(joinedName(), "nothing");
    EXPECT_FALSE(television.set.dhcp(kIf).running());
    EXPECT_EQ(Movo_NET_WifiGetConnectedSignal(0, ifname, essid, &signal), 1);
    const std::map<End, int> once{{End::Connected, 1}};
    EXPECT_EQ(television.supplicant.attempts.ends(), once);
}

TEST(WifiApi, GivesTheRememberedKeyBack)
{
    Television television;
    television.startWith({kHome, kCafe});
    char key[65] = "";
    int length = -1;
    EXPECT_EQ(setKey("My Home Net", "correct horse"), 0);
    EXPECT_EQ(Movo_NET_WifiGetKey(0, kIf, "My Home Net", key, &length), 1) << "not remembered before it has worked";
    join(television, "My Home Net");
    EXPECT_EQ(Movo_NET_WifiGetKey(0, kIf, "My Home Net", key, &length), 0);
    EXPECT_STREQ(key, "correct horse");
    EXPECT_EQ(length, 13);
    EXPECT_EQ(Movo_NET_WifiGetKey(0, kIf, "Cafe", key, &length), 1);
}

TEST(WifiApi, TellsAWrongKeyAsSuch)
{
    Television television;
    television.startWith({kHome});
    EXPECT_EQ(setKey("My Home Net", "wrong horse"), 0);
    EXPECT_EQ(Movo_NET_WifiConnectEss(0, kIf, "My Home Net"), 0);
    EXPECT_EQ(fact(Movo_NET_WifiIsReconnecting), 1);
    television.hears({kHandshake});
    EXPECT_EQ(fact(Movo_NET_WifiIsReconnecting), 0);
    television.set.grantTicks(400);
    EXPECT_CALLBACKS(television.set, {{sim::WIFIBADKEY, kIf}});
    const std::map<End, int> once{{End::BadKey, 1}};
    EXPECT_EQ(television.supplicant.attempts.ends(), once);
}

TEST(WifiApi, TellsATimeoutAfterThirtySeconds)
{
    Television television;
    television.startWith({kHome});
    EXPECT_EQ(setKey("My Home Net", "correct horse"), 0);
    EXPECT_EQ(Movo_NET_WifiConnectEss(0, kIf, "My Home Net"), 0);
    television.set.grantTicks(299);
    EXPECT_CALLBACKS(television.set, {});
    television.set.grantTicks(2);
    EXPECT_CALLBACKS(television.set, {{sim::WIFITIMEOUT, kIf}});
    const std::map<End, int> once{{End::TimeOut, 1}};
    EXPECT_EQ(television.supplicant.attempts.ends(), once);
}

TEST(WifiApi, AnotherRequestReplacesTheFirst)
{
    Television television;
    television.startWith({kHome, kCafe});
    EXPECT_EQ(setKey("My Home Net", "correct horse"), 0);
    EXPECT_EQ(Movo_NET_WifiConnectEss(0, kIf, "My Home Net"), 0);
    join(television, "Cafe");
    EXPECT_EQ(joinedName(), "Cafe");
    const std::map<End, int> both{{End::Replaced, 1}, {End::Connected, 1}};
    EXPECT_EQ(television.supplicant.attempts.ends(), both);
}

TEST(WifiApi, AnotherRequestWhileALeaseArrivesLeavesNoneOfIt)
{
    Television television;
    television.startWith({kCafe});
    ASSERT_EQ(Movo_NET_WifiConnectEss(0, kIf, "Cafe"), 0);
    television.hears({kConnected});
    television.set.holdSleeps(500);
    television.set.dhcp(kIf).leases(); // the loop has its address and waits for its route
    television.set.forget();
    television.supplicant.answers("ADD_NETWORK", "FAIL\n");
    television.supplicant.answers("SET_NETWORK 0 ssid \"Cafe\"", "FAIL\n");
    television.set.background([] { EXPECT_EQ(Movo_NET_WifiConnectEss(0, kIf, "Cafe"), 1); });
    const auto stopping = [&television] {
        return std::ranges::any_of(television.set.log(),
                                   [](const sim::LogLine& line) { return line.function == "ShutdownDhcpcd"; });
    };
    while (!stopping()) {
        (void)sched_yield();
    }
    television.set.holdSleeps(0); // the loop goes on
    television.set.joinBackground();
    kest_bool connected = 1;
    EXPECT_EQ(Movo_NET_IsConnected(0, kIf, &connected), 0);
    EXPECT_EQ(connected, 0);
    EXPECT_FALSE(television.set.dhcp(kIf).running());
}

TEST(WifiApi, LeavesWhileItJoins)
{
    Television television;
    television.startWith({kCafe});
    EXPECT_EQ(Movo_NET_WifiConnectEss(0, kIf, "Cafe"), 0);
    EXPECT_EQ(Movo_NET_WifiDisConnect(0, kIf), 0);
    television.hears({kConnected});
    television.set.grantTicks(400);
    EXPECT_CALLBACKS(television.set, {{sim::IFDISCONNECTED, kIf}});
    const std::map<End, int> once{{End::Left, 1}};
    EXPECT_EQ(television.supplicant.attempts.ends(), once);
}

TEST(WifiApi, ChoosesHowTheNextNetworkIsTaken)
{
    Television television;
    television.startWith({kHome});
    EXPECT_EQ(Movo_NET_WifiSetSecurityType(0, _MOVO_NET_WIFI_UI_NONE_), 0);
    EXPECT_EQ(Movo_NET_WifiConnectEss(0, kIf, "My Home Net"), 0);
    EXPECT_EQ(sent(television.supplicant),
              (Lines{"REMOVE_NETWORK ALL", "ADD_NETWORK", "SET_NETWORK 0 ssid \"My Home Net\"",
                     "SET_NETWORK 0 scan_ssid 1", "SET_NETWORK 0 key_mgmt NONE", "ENABLE_NETWORK  0"}));
}

TEST(WifiApi, JoinsByPushButton)
{
    Television television;
    television.startWith({kHome});
    EXPECT_EQ(Movo_NET_WifiStartWpsConnection(0, kIf, _MOVO_NET_WIFI_WPS_PBC_, nullptr), 0);
    EXPECT_EQ(sent(television.supplicant), (Lines{"REMOVE_NETWORK ALL", "WPS_PBC any"}));
    EXPECT_EQ(fact(Movo_NET_WifiGetWpsModeEss), _MOVO_NET_WIFI_WPS_PBC_);
    television.hears({"<3>Trying to associate with 02:00:00:00:01:00 (SSID='My Home Net' freq=5180 MHz)", kConnected});
    EXPECT_EQ(joinedName(), "My Home Net");
    EXPECT_CALLBACKS(television.set, {{sim::IFCONNECTED, kIf}});
}

TEST(WifiApi, JoinsByAPinOfTheSupplicantsOwn)
{
    Television television;
    television.startWith({kHome});
    television.supplicant.replies["WPS_PIN any"] = {"12345670"};
    television.supplicant.replies["WPS_PIN any 12345670"] = {"12345670"};
    char pin[9] = "";
    EXPECT_EQ(Movo_NET_WifiGenerateWpsPin(0, kIf, pin, 8), 1) << "no room for its end mark";
    EXPECT_EQ(Movo_NET_WifiGenerateWpsPin(0, kIf, pin, sizeof(pin)), 0);
    EXPECT_STREQ(pin, "12345670");
    EXPECT_EQ(Movo_NET_WifiStartWpsConnection(0, kIf, _MOVO_NET_WIFI_WPS_PIN, pin), 0);
    television.set.grantTicks(1201);
    EXPECT_CALLBACKS(television.set, {{sim::WIFITIMEOUT, kIf}});
}

TEST(WifiApi, FindsAHiddenNetwork)
{
    Television television;
    television.startWith({});
    EXPECT_EQ(Movo_NET_WifiSearchHideEss(0, kIf, "Hidden"), 0);
    EXPECT_EQ(sent(television.supplicant), (Lines{"REMOVE_NETWORK ALL", "ADD_NETWORK", "SET_NETWORK 0 ssid \"Hidden\"",
                                                  "SET_NETWORK 0 key_mgmt NONE", "SET_NETWORK 0 scan_ssid 1",
                                                  "SCAN_CANCEL", "SCAN", "SELECT_NETWORK  0"}));
    television.hears({"<3>Trying to associate with 02:00:00:00:01:00 (SSID='Hidden' freq=2412 MHz)"});
    EXPECT_EQ(sent(television.supplicant), Lines{"REMOVE_NETWORK ALL"});
    EXPECT_CALLBACKS(television.set, {{sim::WIFISCANDONE, kIf}});
}

TEST(WifiApi, RejoinsTheNetworkOfLastTimeAtTheStart)
{
    const int failed = sim::forkedRun([] {
        Television television;
        television.set.write("/data/tv/save/x", "");
        MovNetWifiEssItem_t saved{};
        std::strcpy(saved.essid, "Cafe");
        saved.isConnected = 1;
        EXPECT_EQ(int_Movo_Net_SaveEss(&saved), 0);
        freeSavedEsss(); // as after a restart
        television.start();
        EXPECT_EQ(sent(television.supplicant).back(), "ENABLE_NETWORK  0");
        television.hears({kConnected});
        EXPECT_EQ(joinedName(), "Cafe");
    });
    EXPECT_EQ(failed, 0);
}

TEST(WifiGetConnectedSignal, KeepsFailingForANameOfThirtyTwoBytes)
{
    Television television;
    const std::string name(32, 'n');
    television.startWith({{name, "[ESS]"}});
    join(television, name.c_str());
    char ifname[9] = "";
    char essid[33] = "";
    int signal = 1;
    EXPECT_EQ(Movo_NET_WifiGetConnectedSignal(0, ifname, essid, &signal), 1);
    EXPECT_EQ(std::string(essid), name.substr(0, 31));
    EXPECT_EQ(signal, 0);
    EXPECT_LOGGED(television.set, KEST_LEVEL_ERROR, "movo_net_fg", "Movo_NET_WifiGetConnectedSignal",
                  "get signal failed, iface name=mlan0, essid=" + name.substr(0, 31) + "\n");
}

TEST(WifiApi, AnInterfaceThatIsNotActiveAnswersOneQuestion)
{
    Television television;
    television.startWith({kHome});
    EXPECT_EQ(Movo_NET_DisableIface(0, kIf), 0);
    int value = 17;
    char text[65] = "";
    EXPECT_EQ(Movo_NET_WifiScanEsss(0, kIf), 1);
    EXPECT_EQ(Movo_NET_WifiUpdateEsss(0, kIf), 1);
    EXPECT_EQ(Movo_NET_GetNumOfWifiEsss(0, kIf, &value), 1);
    EXPECT_EQ(Movo_NET_WifiGetSsidEss(0, kIf, 0, text), 1);
    EXPECT_EQ(Movo_NET_WifiGetSignalEss(0, kIf, "My Home Net", &value), 1);
    EXPECT_EQ(Movo_NET_WifiSetPriorityEss(0, kIf, "My Home Net", 1), 1);
    EXPECT_EQ(setKey("My Home Net", "correct horse"), 1);
    EXPECT_EQ(Movo_NET_WifiGetKey(0, kIf, "My Home Net", text, &value), 1);
    EXPECT_EQ(Movo_NET_WifiConnectEss(0, kIf, "My Home Net"), 1);
    EXPECT_EQ(Movo_NET_WifiDisConnect(0, kIf), 1);
    EXPECT_EQ(Movo_NET_WifiGetConnectedEss(0, kIf, text, 33), 1);
    EXPECT_EQ(Movo_NET_WifiStartWpsConnection(0, kIf, _MOVO_NET_WIFI_WPS_PBC_, ""), 1);
    EXPECT_EQ(Movo_NET_WifiGenerateWpsPin(0, kIf, text, 9), 1);
    EXPECT_EQ(Movo_NET_WifiSearchHideEss(0, kIf, "Hidden"), 1);
    EXPECT_EQ(value, 17);
    EXPECT_EQ(fact(Movo_NET_WifiIsReconnecting), 0);
}
