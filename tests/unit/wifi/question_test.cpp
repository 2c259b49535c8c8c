#include "bench.h"
#include "names.h"

#include <functional>
#include <gtest/gtest.h>

// The checks that every operation on the scanned networks makes, and what each says.

using namespace wifi;
using namespace movonet;

namespace {
constexpr auto kWpa2 = _MOVO_NET_WIFI_SECURITY_WPA2_PSK_;
constexpr auto kAes = _MOVO_NET_WIFI_ENCRYP_AES_;

/** An operation with arguments that are right, and outputs that nobody looks at. */
struct Operation {
    std::string function;
    std::function<RETURN_TYPE(MovoNetIface_t*, const char* essid)> call;
    bool needsNetwork = true; ///< It is about the network of that name.
};

template <typename Output>
Operation reading(const char* function, RETURN_TYPE (*call)(MovoNetIface_t*, const char*, Output*))
{
    return {function, [call](MovoNetIface_t* iface, const char* essid) {
                Output output{};
                return call(iface, essid, &output);
            }};
}

template <typename Output>
Operation readingState(const char* function, RETURN_TYPE (*call)(MovoNetIface_t*, Output*))
{
    return {function,
            [call](MovoNetIface_t* iface, const char*) {
                Output output{};
                return call(iface, &output);
            },
            false};
}

#define NAMED(call) "int_Movo_NET_" #call, int_Movo_NET_##call

const std::vector<Operation> kOperations{
    readingState(NAMED(WifiGetNumOfEsss)),
    readingState(NAMED(WifiGetWpsModeEss)),
    readingState(NAMED(WifiGetDevType)),
    {"int_Movo_NET_WifiGetSsidEss",
     [](MovoNetIface_t* iface, const char*) {
         char name[33];
         return int_Movo_NET_WifiGetSsidEss(iface, 0, name);
     },
     false},
    {"int_Movo_NET_WifiGetConnectedEss",
     [](MovoNetIface_t* iface, const char*) {
         char name[33];
         return int_Movo_NET_WifiGetConnectedEss(iface, name, sizeof(name));
     },
     false},
    {"int_Movo_NET_WifiStartWpsConnection",
     [](MovoNetIface_t* iface, const char*) {
         return int_Movo_NET_WifiStartWpsConnection(iface, _MOVO_NET_WIFI_WPS_NONE_, nullptr);
     },
     false},
    reading(NAMED(WifiGetBssidEss)),
    reading(NAMED(WifiGetSignalEss)),
    reading(NAMED(WifiIsWPS)),
    reading(NAMED(WifiGetEncryptionEss)),
    reading(NAMED(WifiGetSecurityEss)),
    reading(NAMED(WifiGetFrequencyEss)),
    reading(NAMED(WifiGetChannelEss)),
    reading(NAMED(WifiGetPriorityEss)),
    {"int_Movo_NET_WifiSetPriorityEss",
     [](MovoNetIface_t* iface, const char* essid) { return int_Movo_NET_WifiSetPriorityEss(iface, essid, 7); }},
    {"int_Movo_NET_WifiSetKey",
     [](MovoNetIface_t* iface, const char* essid) { return int_Movo_NET_WifiSetKey(iface, essid, "key", 3); }},
    {"int_Movo_NET_WifiGetKey",
     [](MovoNetIface_t* iface, const char* essid) {
         char key[65];
         std::int32_t length = 0;
         return int_Movo_NET_WifiGetKey(iface, essid, key, &length);
     }},
    {"int_Movo_NET_WifiConnectEss", int_Movo_NET_WifiConnectEss},
};

} // namespace

TEST(EachOperation, ReportsThatThereIsNoRecord)
{
    Bench bench;
    for (const Operation& each : kOperations) {
        const sim::CapturedOutput output;
        EXPECT_EQ(each.call(nullptr, "Net"), 5) << each.function;
        EXPECT_NE(output.text().find("File:movo_net_fl_wifi"), std::string::npos) << output.text();
        EXPECT_NE(output.text().find("Routine:" + each.function + ", pIface failed"), std::string::npos)
            << output.text();
    }
    EXPECT_TRUE(bench.set.log().empty());
}

TEST(EachOperation, SaysNothingOfARecordWithoutBackEndOrLink)
{
    Bench bench;
    MovoNetIface_t bare{};
    bare.isActived = 1;
    MovoNetWifi_t withoutLink{};
    for (const Operation& each : kOperations) {
        bare.priv = nullptr;
        EXPECT_EQ(each.call(&bare, "Net"), 5) << each.function;
        bare.priv = &withoutLink;
        EXPECT_EQ(each.call(&bare, "Net"), 5) << each.function;
    }
    EXPECT_TRUE(bench.set.log().empty());
}

TEST(EachOperation, TellsOfAnInterfaceThatIsNotActive)
{
    Bench bench;
    bench.list("Net", kWpa2, kAes);
    bench.iface.isActived = 0;
    for (const Operation& each : kOperations) {
        bench.set.forget();
        EXPECT_EQ(each.call(&bench.iface, "Net"), 1) << each.function;
        EXPECT_EQ(bench.set.log().size(), 1U) << each.function;
        EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kWifiModule, each.function, "not actived yet");
    }
    EXPECT_EQ(bench.supplicant.commands, Lines{});
}

TEST(EachOperation, TellsOfANetworkThatIsNotListed)
{
    Bench bench;
    bench.list("Net", kWpa2, kAes);
    bench.wifi().esss_num = 0; // what lies behind the table's end does not count
    for (const Operation& each : kOperations) {
        if (!each.needsNetwork) {
            continue;
        }
        bench.set.forget();
        EXPECT_EQ(each.call(&bench.iface, "Net"), 1) << each.function;
        EXPECT_EQ(bench.set.log().size(), 1U) << each.function;
        EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kWifiModule, "get_essid_index", "no matched essid Net\n");
    }
    EXPECT_EQ(bench.supplicant.commands, Lines{});
    EXPECT_EQ(g_isWifiConnectByUI, 0);
}

TEST(EssidIndex, ComparesThirtyTwoBytes)
{
    Bench bench;
    const std::string name(32, 'n');
    bench.list("first", kWpa2, kAes);
    bench.list(name, kWpa2, kAes);
    EXPECT_EQ(get_essid_index(&bench.wifi(), "first"), 0);
    EXPECT_EQ(get_essid_index(&bench.wifi(), name.c_str()), 1);
    EXPECT_EQ(get_essid_index(&bench.wifi(), (name + "more").c_str()), 1);
    EXPECT_EQ(get_essid_index(&bench.wifi(), name.substr(1).c_str()), -1);
    EXPECT_EQ(get_essid_index(&bench.wifi(), "firs"), -1);
    EXPECT_EQ(get_essid_index(&bench.wifi(), ""), -1);
}

TEST(Question, TellsTheNumberOfNetworks)
{
    Bench bench;
    bench.list("A", kWpa2, kAes);
    bench.list("B", kWpa2, kAes);
    std::int32_t number = 0;
    EXPECT_EQ(int_Movo_NET_WifiGetNumOfEsss(&bench.iface, &number), 0);
    EXPECT_EQ(number, 2);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kWifiModule, "int_Movo_NET_WifiGetNumOfEsss", "num of esss: 2\n");
}

TEST(Question, TellsWhetherANetworkIsJoined)
{
    Bench bench;
    char essid[33] = "before";
    EXPECT_EQ(int_Movo_NET_WifiGetConnectedEss(&bench.iface, essid, sizeof(essid)), 0);
    EXPECT_EQ(told(bench.set, KEST_LEVEL_INFO), Lines{"int_Movo_NET_WifiGetConnectedEss: no connected esss found\n"});
    bench.set.forget();
    std::strcpy(bench.wifi().curOperatingEsss.essid, "Net");
    bench.wifi().curOperatingEsss.isConnected = 1;
    EXPECT_EQ(int_Movo_NET_WifiGetConnectedEss(&bench.iface, essid, sizeof(essid)), 0);
    EXPECT_EQ(told(bench.set, KEST_LEVEL_INFO), Lines{"int_Movo_NET_WifiGetConnectedEss: connected esss: Net\n"});
}

TEST(Question, ReadsStateWithoutANetwork)
{
    Bench bench;
    bench.wifi().wpsMode = _MOVO_NET_WIFI_WPS_PBC_PIN;
    bench.wifi().devType = _MOVO_NET_WIFI_BRCM_43242_;
    MovoNetWifiWPSMode_e mode{};
    MovoNetWifiDevType_e chip{};
    EXPECT_EQ(int_Movo_NET_WifiGetWpsModeEss(&bench.iface, &mode), 0);
    EXPECT_EQ(int_Movo_NET_WifiGetDevType(&bench.iface, &chip), 0);
    EXPECT_EQ(mode, _MOVO_NET_WIFI_WPS_PBC_PIN);
    EXPECT_EQ(chip, _MOVO_NET_WIFI_BRCM_43242_);
    EXPECT_TRUE(bench.set.log().empty());
}

TEST(Question, ReadsWhileTheWritersLockCannotBeTaken)
{
    Bench bench;
    bench.list("Net", kWpa2, kAes).signalVal = -70;
    const int fault = bench.set.fail({.call = sim::Call::MutexLock,
                                      .object = &bench.wifi().lock,
                                      .size = sizeof(bench.wifi().lock),
                                      .error = EINVAL,
                                      .mayMiss = true});
    std::int32_t value = 0;
    EXPECT_EQ(int_Movo_NET_WifiGetSignalEss(&bench.iface, "Net", &value), 0);
    EXPECT_EQ(value, -70);
    EXPECT_EQ(int_Movo_NET_WifiGetNumOfEsss(&bench.iface, &value), 0);
    EXPECT_EQ(bench.set.hits(fault), 0);
}

TEST(Writer, WithoutItsLockChangesNothing)
{
    Bench bench;
    MovNetWifiEssItem_t& ess = bench.list("Net", kWpa2, kAes, "old key");
    bench.set.failLock(bench.wifi().lock);
    EXPECT_EQ(int_Movo_NET_WifiSetPriorityEss(&bench.iface, "Net", 7), 1);
    EXPECT_EQ(int_Movo_NET_WifiSetKey(&bench.iface, "Net", "new key", 7), 1);
    EXPECT_EQ(told(bench.set, KEST_LEVEL_ERROR), (Lines{"int_Movo_NET_WifiSetPriorityEss: lock wifi Iface failed\n",
                                                        "int_Movo_NET_WifiSetKey: lock wifi Iface failed\n"}));
    EXPECT_EQ(ess.priority, 0);
    EXPECT_STREQ(ess.Key, "old key");
}

TEST(Writer, ChangesTheFirstOfANameAndNothingRemembered)
{
    Bench bench;
    MovNetWifiEssItem_t& first = bench.list("Net", kWpa2, kAes);
    const MovNetWifiEssItem_t& second = bench.list("Net", kWpa2, kAes);
    MovNetWifiEssItem_t saved = first;
    EXPECT_EQ(int_Movo_Net_SaveEss(&saved), 0);
    bench.set.forget();
    EXPECT_EQ(int_Movo_NET_WifiSetPriorityEss(&bench.iface, "Net", 7), 0);
    EXPECT_EQ(int_Movo_NET_WifiSetKey(&bench.iface, "Net", "key", 3), 0);
    EXPECT_EQ(first.priority, 7);
    EXPECT_STREQ(first.Key, "key");
    EXPECT_EQ(second.priority, 0);
    EXPECT_STREQ(second.Key, "");
    EXPECT_EQ(g_pSavedEsss->priority, 0);
    EXPECT_STREQ(g_pSavedEsss->Key, "");
    EXPECT_TRUE(bench.set.commands().empty());
    EXPECT_TRUE(bench.set.log().empty());
}

TEST(ConnectByName, IsTheApplicationsWishWhateverComesOfIt)
{
    Bench bench;
    bench.list("Net", kWpa2, kAes, "correct horse");
    g_isWifiConnectByUI = 0;
    bench.supplicant.replies["ENABLE_NETWORK  0"] = {"FAIL\n"};
    EXPECT_EQ(int_Movo_NET_WifiConnectEss(&bench.iface, "Net"), 1);
    EXPECT_EQ(g_isWifiConnectByUI, 1);
    bench.supplicant.replies["ENABLE_NETWORK  0"] = {"OK\n"};
    EXPECT_EQ(int_Movo_NET_WifiConnectEss(&bench.iface, "Net"), 0);
    EXPECT_EQ(bench.wifi().curOperatingEsss.isConnected, 0);
    EXPECT_STREQ(bench.wifi().curOperatingEsss.essid, "Net");
}
