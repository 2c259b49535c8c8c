#include "names.h"
#include "television.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <movo_net.h>

// Promises of the public headers that surprise.

using namespace wifi;

namespace {
const Network kHome{"My Home Net", "[WPA2-PSK-CCMP][WPS][ESS]", "02:00:00:00:01:00", 5180, -47};
const Network kCafe{"Cafe", "[ESS]", "02:00:00:00:02:00", 2412, -70};
const std::string kDigits(64, 'a'); // a key as some routers hand out, in hexadecimal

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

int priority(const char* essid)
{
    int value = -1;
    EXPECT_EQ(Movo_NET_WifiGetPriorityEss(0, kIf, essid, &value), 0);
    return value;
}

struct WifiContract : testing::Test {
    Television television;

    WifiContract() { television.startWith({kHome, kCafe}); }
    void join(const char* essid)
    {
        ASSERT_EQ(Movo_NET_WifiConnectEss(0, kIf, essid), 0);
        television.hears({kConnected});
        television.set.dhcp(kIf).leases();
    }
};

TEST_F(WifiContract, KeepsHandingOutARefusalAsAPin)
{
    television.supplicant.answers("WPS_PIN any", "FAIL\n");
    char pin[9] = "";
    EXPECT_EQ(Movo_NET_WifiGenerateWpsPin(0, kIf, pin, sizeof(pin)), 0);
    EXPECT_STREQ(pin, "FAIL\n");
}

TEST_F(WifiContract, AMadePinHasTheSupplicantSearchWhileTheGlueDoesNot)
{
    television.supplicant.answers("WPS_PIN any", "12345670");
    char pin[9] = "";
    EXPECT_EQ(Movo_NET_WifiGenerateWpsPin(0, kIf, pin, sizeof(pin)), 0);
    EXPECT_EQ(sent(television.supplicant).back(), "WPS_PIN any"); // which starts WPS there
    EXPECT_EQ(fact(Movo_NET_WifiIsReconnecting), 0);
    television.set.grantTicks(1201);
    EXPECT_CALLBACKS(television.set, {});
}

TEST_F(WifiContract, APinIsStartedWhenItComesBackAsItWasSent)
{
    television.supplicant.answers("WPS_PIN any 1", "1");
    EXPECT_EQ(Movo_NET_WifiStartWpsConnection(0, kIf, _MOVO_NET_WIFI_WPS_PIN, "1"), 0) << "whatever it is";
    television.supplicant.answers("WPS_PIN any 12345670", "12345670\n");
    EXPECT_EQ(Movo_NET_WifiStartWpsConnection(0, kIf, _MOVO_NET_WIFI_WPS_PIN, "12345670"), 1);
}

TEST_F(WifiContract, KeepsEndingAHiddenSearchWithTheFirstResults)
{
    EXPECT_EQ(Movo_NET_WifiSearchHideEss(0, kIf, "Hidden"), 0);
    television.hears({kResults}); // without it
    EXPECT_CALLBACKS(television.set, {{sim::WIFISCANDONE, kIf}});
    EXPECT_EQ(sent(television.supplicant).back(), "REMOVE_NETWORK ALL");
    television.hears({"<3>Trying to associate with 02:00:00:00:03:01 (SSID='Hidden' freq=2462 MHz)"});
    television.set.grantTicks(301);
    EXPECT_CALLBACKS(television.set, {});
}

TEST_F(WifiContract, KeepsADisabledInterfaceReconnectingThatWasJoined)
{
    join("Cafe");
    EXPECT_EQ(fact(Movo_NET_WifiIsReconnecting), 0);
    EXPECT_EQ(Movo_NET_DisableIface(0, kIf), 0);
    EXPECT_EQ(fact(Movo_NET_WifiIsReconnecting), 1);
}

TEST_F(WifiContract, KeepsADisabledInterfaceReconnectingUntilTheTimeoutOfItsJoin)
{
    EXPECT_EQ(Movo_NET_WifiConnectEss(0, kIf, "Cafe"), 0);
    EXPECT_EQ(Movo_NET_DisableIface(0, kIf), 0);
    EXPECT_EQ(fact(Movo_NET_WifiIsReconnecting), 1);
    television.set.grantTicks(301);
    EXPECT_EQ(fact(Movo_NET_WifiIsReconnecting), 0);
}

TEST_F(WifiContract, ADisabledInterfaceThatHadLeftIsNotReconnecting)
{
    join("Cafe");
    EXPECT_EQ(Movo_NET_WifiDisConnect(0, kIf), 0);
    EXPECT_EQ(Movo_NET_DisableIface(0, kIf), 0);
    EXPECT_EQ(fact(Movo_NET_WifiIsReconnecting), 0);
}

TEST_F(WifiContract, KeepsTakingAJoinAlongThatABadKeyHasBegun)
{
    EXPECT_EQ(Movo_NET_WifiConnectEss(0, kIf, "My Home Net"), 0);
    television.set.onCallback([](MovoNetCBReason_e reason, void*) {
        if (reason == sim::WIFIBADKEY) {
            EXPECT_EQ(Movo_NET_WifiConnectEss(0, kIf, "Cafe"), 0);
        }
    });
    television.hears({kHandshake});
    EXPECT_CALLBACKS(television.set, {{sim::WIFIBADKEY, kIf}});
    EXPECT_EQ(fact(Movo_NET_WifiIsReconnecting), 0);
    EXPECT_EQ(sent(television.supplicant).back(), "REMOVE_NETWORK ALL");
    television.set.grantTicks(301);
    EXPECT_CALLBACKS(television.set, {}); // nobody reports that join
}

TEST_F(WifiContract, KeepsALeaveInsideTheLossOfTheNetworkReconnecting)
{
    join("Cafe");
    television.set.forget();
    int losses = 0;
    television.set.onCallback([&losses](MovoNetCBReason_e reason, void*) {
        if (reason == sim::IFDISCONNECTED && losses++ == 0) {
            EXPECT_EQ(Movo_NET_WifiDisConnect(0, kIf), 0);
        }
    });
    television.hears({kDisconnected});
    EXPECT_EQ(losses, 2) << "the loss, and the leave";
    EXPECT_EQ(fact(Movo_NET_WifiIsReconnecting), 1);
    television.set.grantTicks(400);
    EXPECT_EQ(fact(Movo_NET_WifiIsReconnecting), 1);
    EXPECT_EQ(Movo_NET_WifiDisConnect(0, kIf), 0);
    EXPECT_EQ(fact(Movo_NET_WifiIsReconnecting), 0);
}

TEST_F(WifiContract, AnUpdateForgetsKeysAndPriorities)
{
    EXPECT_EQ(setKey("My Home Net", "correct horse"), 0);
    EXPECT_EQ(Movo_NET_WifiSetPriorityEss(0, kIf, "My Home Net", 5), 0);
    EXPECT_EQ(priority("My Home Net"), 5);
    EXPECT_EQ(Movo_NET_WifiUpdateEsss(0, kIf), 0);
    EXPECT_EQ(priority("My Home Net"), 0);
    (void)Movo_NET_WifiConnectEss(0, kIf, "My Home Net");
    const Lines commands = sent(television.supplicant);
    EXPECT_NE(std::find(commands.begin(), commands.end(), "SET_NETWORK 0 psk \"\""), commands.end());
}

TEST_F(WifiContract, APriorityNeedsTheNetworksLock)
{
    television.set.failLock(wifi_iface(&television.mlan0())->lock);
    EXPECT_EQ(Movo_NET_WifiSetPriorityEss(0, kIf, "My Home Net", 5), 1);
    EXPECT_LOGGED(television.set, KEST_LEVEL_ERROR, "movo_net_fl_wifi", "int_Movo_NET_WifiSetPriorityEss",
                  "lock wifi Iface failed\n");
    television.set.clearFaults();
    EXPECT_EQ(priority("My Home Net"), 0);
}

TEST_F(WifiContract, AKeyOfSixtyFourDigitsIsSentAsAPassPhrase)
{
    const std::string command = "SET_NETWORK 0 psk \"" + kDigits + "\"";
    television.supplicant.answers(command, "FAIL\n"); // a pass phrase has 63 characters at the most
    EXPECT_EQ(setKey("My Home Net", kDigits), 0);
    EXPECT_EQ(Movo_NET_WifiConnectEss(0, kIf, "My Home Net"), 1);
    EXPECT_EQ(sent(television.supplicant).back(), command);
    television.set.grantTicks(301);
    EXPECT_CALLBACKS(television.set, {});
}

/** What WPS has given in hexadecimal is lost: after a restart the rejoin is refused, and the next join pays for it. */
TEST_F(WifiContract, KeepsARouterOfSixtyFourDigitsWithoutKeyAndTheNextJoinWithoutTimeout)
{
    television.set.write("/etc/wpa_supplicant.conf",
                         "network={\n\tssid=\"My Home Net\"\n\tpsk=" + kDigits + "\n\tkey_mgmt=WPA-PSK\n}\n");
    ASSERT_EQ(Movo_NET_WifiStartWpsConnection(0, kIf, _MOVO_NET_WIFI_WPS_PBC_, nullptr), 0);
    television.hears({"<3>Trying to associate with 02:00:00:00:01:00 (SSID='My Home Net' freq=5180 MHz)", kConnected});
    char key[65] = "";
    int length = -1;
    EXPECT_EQ(Movo_NET_WifiGetKey(0, kIf, "My Home Net", key, &length), 0) << "it is remembered";
    EXPECT_EQ(length, 0);

    television.supplicant.answers("SET_NETWORK 0 psk \"\"", "FAIL\n");
    EXPECT_EQ(Movo_NET_DisableIface(0, kIf), 0);
    television.set.forget();
    EXPECT_EQ(Movo_NET_EnableIface(0, kIf), 0);
    EXPECT_LOGGED(television.set, KEST_LEVEL_ERROR, "movo_net_fl_wpactrl", "int_Movo_Net_Wpactrl_Active",
                  "connect to saved esss failed");
    EXPECT_EQ(fact(Movo_NET_WifiIsReconnecting), 0);

    EXPECT_EQ(Movo_NET_WifiConnectEss(0, kIf, "Cafe"), 0);
    television.set.forget();
    television.set.grantTicks(400);
    EXPECT_CALLBACKS(television.set, {}); // no WIFITIMEOUT
    EXPECT_EQ(Movo_NET_WifiConnectEss(0, kIf, "Cafe"), 0);
    television.set.grantTicks(301);
    EXPECT_CALLBACKS(television.set, {{sim::WIFITIMEOUT, kIf}});
}
} // namespace
