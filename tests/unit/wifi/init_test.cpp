#include "bench.h"
#include "movo_net_fl_common/common.h"
#include "names.h"

#include <gtest/gtest.h>

// The wireless back end of a record: what it brings, what it leaves, and what is said when it cannot be made.

using namespace wifi;
using namespace movonet;

namespace {
constexpr const char* kInit = "int_Movo_Net_InitWifi";
constexpr const char* kDeInit = "int_Movo_Net_DeInitWifi";

/** A set with a wireless record that has no back end yet. */
struct Fresh {
    Fresh()
    {
        std::strcpy(iface.name, "mlan0");
        iface.type = _MOVO_NET_IFACE_WIFI_;
    }
    ~Fresh() { discardWifi(iface); }
    Fresh(const Fresh&) = delete;
    Fresh& operator=(const Fresh&) = delete;

    /** Saved networks n0, n1 and so on, n0 the newest. */
    void remember(int count)
    {
        std::string contents;
        for (int number = 0; number < count; ++number) {
            std::string record(kSavedRecord, '\0');
            const std::string name = "n" + std::to_string(number);
            record.replace(0, name.size(), name);
            contents += record;
        }
        set.write(kSavedFile, contents);
    }

    sim::Set set;
    MovoNetIface_t iface{};
};
} // namespace

TEST(WifiInit, LaysItsOperationsOverTheCommonOnes)
{
    Fresh fresh;
    EXPECT_EQ(int_Movo_Net_Init(&fresh.iface), 0);
    const MovoNetIfaceFunc_t& ops = fresh.iface.funcs;
    EXPECT_EQ(ops.Init, int_Movo_Net_InitWifi);
    EXPECT_EQ(ops.DeInit, int_Movo_Net_DeInitWifi);
    EXPECT_EQ(ops.CanActive, int_Movo_Net_CanActiveWifi);
    EXPECT_EQ(ops.Active, int_Movo_Net_Wpactrl_Active);
    EXPECT_EQ(ops.WifiScanEsss, int_Movo_Net_Wpactrl_Scan);
    EXPECT_EQ(ops.WifiUpdateEsss, int_Movo_Net_Wpactrl_ScanResult);
    EXPECT_EQ(ops.WifiGetNumOfEsss, int_Movo_NET_WifiGetNumOfEsss);
    EXPECT_EQ(ops.WifiGetSsidEss, int_Movo_NET_WifiGetSsidEss);
    EXPECT_EQ(ops.WifiGetSignalEss, int_Movo_NET_WifiGetSignalEss);
    EXPECT_EQ(ops.WifiIsWPS, int_Movo_NET_WifiIsWPS);
    EXPECT_EQ(ops.WifiGetEncryptionEss, int_Movo_NET_WifiGetEncryptionEss);
    EXPECT_EQ(ops.WifiGetSecurityEss, int_Movo_NET_WifiGetSecurityEss);
    EXPECT_EQ(ops.WifiGetFrequencyEss, int_Movo_NET_WifiGetFrequencyEss);
    EXPECT_EQ(ops.WifiGetChannelEss, int_Movo_NET_WifiGetChannelEss);
    EXPECT_EQ(ops.WifiSetPriorityEss, int_Movo_NET_WifiSetPriorityEss);
    EXPECT_EQ(ops.WifiGetPriorityEss, int_Movo_NET_WifiGetPriorityEss);
    EXPECT_EQ(ops.WifiSetKey, int_Movo_NET_WifiSetKey);
    EXPECT_EQ(ops.WifiGetKey, int_Movo_NET_WifiGetKey);
    EXPECT_EQ(ops.WifiConnectEss, int_Movo_NET_WifiConnectEss);
    EXPECT_EQ(ops.WifiDisConnect, int_Movo_Net_Wpactrl_Disconnect);
    EXPECT_EQ(ops.WifiGetConnectedEss, int_Movo_NET_WifiGetConnectedEss);
    EXPECT_EQ(ops.WifiGetWpsModeEss, int_Movo_NET_WifiGetWpsModeEss);
    EXPECT_EQ(ops.WifiStartWpsConnection, int_Movo_NET_WifiStartWpsConnection);
    EXPECT_EQ(ops.WifiGenerateWpsPin, int_Movo_Net_Wpactrl_WPSGetPIN);
    EXPECT_EQ(ops.WifiSearchHideEss, int_Movo_Net_Wpactrl_SearchHideEss);
    EXPECT_EQ(ops.WifiGetBssidEss, int_Movo_NET_WifiGetBssidEss);
    EXPECT_EQ(ops.WifiGetDevType, int_Movo_NET_WifiGetDevType);
    EXPECT_EQ(ops.WifiIsReconnecting, int_Movo_Net_Wpactrl_IsReconnecting);
    EXPECT_EQ(ops.SetIpv4, int_Movo_Net_SetIpv4);
    EXPECT_EQ(ops.GetIfaceThroughput, int_Movo_Net_GetThroughput) << "the wireless one is not installed";
}

TEST(WifiInit, MakesAnEmptyStateThatPointsBack)
{
    Fresh fresh;
    EXPECT_EQ(int_Movo_Net_InitWifi(&fresh.iface), 0);
    const MovoNetWifi_t& wifi = *wifi_iface(&fresh.iface);
    EXPECT_EQ(wifi.piface, &fresh.iface);
    EXPECT_EQ(wifi.devType, _MOVO_NET_WIFI_UNKNOWN_) << "activation looks for the chip";
    EXPECT_EQ(wifi.esss_num, 0);
    EXPECT_EQ(wifi.curOperatingEsss.isConnected, 0);
    EXPECT_EQ(wifi.wpsMode, _MOVO_NET_WIFI_WPS_NONE_);
    EXPECT_EQ(wpactrl_iface(&fresh.iface)->pWifiIface, &wifi);
    EXPECT_TRUE(fresh.set.commands().empty());
}

TEST(WifiInit, TellsWhatItDoesWithoutAFile)
{
    Fresh fresh;
    EXPECT_EQ(int_Movo_Net_InitWifi(&fresh.iface), 0);
    EXPECT_EQ(told(fresh.set, KEST_LEVEL_INFO), Lines{"int_Movo_Net_InitWifi: ifname = mlan0\n"});
    EXPECT_EQ(
        told(fresh.set, KEST_LEVEL_ERROR),
        (Lines{"LoadEsss: esss: enter LoadEsss\n", "LoadEsss: esss :cannot open /data/tv/save/saved_esss for read\n",
               "int_Movo_Net_InitWifi: load esss failed\n", "int_Movo_Net_InitWifi: pWifiIface->esss_num[0]\n"}));
}

TEST(WifiInit, ListsTheSavedNetworksInTheirOrder)
{
    Fresh fresh;
    fresh.remember(3);
    EXPECT_EQ(int_Movo_Net_InitWifi(&fresh.iface), 0);
    const MovoNetWifi_t& wifi = *wifi_iface(&fresh.iface);
    ASSERT_EQ(wifi.esss_num, 3);
    EXPECT_STREQ(wifi.esss[0].essid, "n0");
    EXPECT_STREQ(wifi.esss[2].essid, "n2");
    EXPECT_EQ(told(fresh.set, KEST_LEVEL_ERROR),
              (Lines{"LoadEsss: esss: enter LoadEsss\n", "LoadEsss: esss: /data/tv/save/saved_esss file size 456\n",
                     "int_Movo_Net_InitWifi: pWifiIface->esss_num[3]\n"}));
}

TEST(WifiInit, ListsFiftyOfMoreSavedNetworks)
{
    Fresh fresh;
    fresh.remember(52);
    EXPECT_EQ(int_Movo_Net_InitWifi(&fresh.iface), 0);
    const MovoNetWifi_t& wifi = *wifi_iface(&fresh.iface);
    ASSERT_EQ(wifi.esss_num, 50);
    EXPECT_STREQ(wifi.esss[49].essid, "n49");
    EXPECT_STREQ(wifi.curOperatingEsss.essid, "");
    EXPECT_NE(int_Movo_Net_GetSavedEss("n51"), nullptr) << "all of them are remembered";
    EXPECT_LOGGED(fresh.set, KEST_LEVEL_ERROR, kWifiModule, kInit, "pWifiIface->esss_num[50]\n");
}

TEST(WifiInit, OfASecondInterfaceLoadsNothing)
{
    Fresh fresh;
    fresh.remember(1);
    EXPECT_EQ(int_Movo_Net_InitWifi(&fresh.iface), 0);
    fresh.set.forget();
    MovoNetIface_t second{};
    std::strcpy(second.name, "mlan1");
    EXPECT_EQ(int_Movo_Net_InitWifi(&second), 0);
    EXPECT_EQ(told(fresh.set, KEST_LEVEL_INFO), Lines{"int_Movo_Net_InitWifi: ifname = mlan1\n"});
    EXPECT_EQ(told(fresh.set, KEST_LEVEL_ERROR), Lines{});
    EXPECT_EQ(second.funcs.CanActive, int_Movo_Net_CanActiveWifi);
    discardWifi(second);
}

namespace {
/** A call that fails, what is said of it, and what is left. */
struct Unmade {
    const char* name;
    sim::Fault fault;
    Lines errors;
    bool attached;
    bool hasOps;
};

void PrintTo(const Unmade& row, std::ostream* out)
{
    *out << row.name;
}

class WifiInitFails : public testing::TestWithParam<Unmade> {};
} // namespace

TEST_P(WifiInitFails, WithOneAndHoldsNoLock)
{
    const Unmade& row = GetParam();
    Fresh fresh;
    fresh.set.fail(row.fault);
    EXPECT_EQ(int_Movo_Net_InitWifi(&fresh.iface), 1);
    EXPECT_EQ(told(fresh.set, KEST_LEVEL_ERROR), row.errors);
    EXPECT_EQ(fresh.iface.priv != nullptr, row.attached);
    EXPECT_EQ(fresh.iface.funcs.DeInit != nullptr, row.hasOps);
    EXPECT_EQ(fresh.set.heldLocks(), 0);
    EXPECT_EQ(g_pSavedEsss, nullptr);
    int value = 0;
    EXPECT_EQ(int_Movo_NET_WifiGetNumOfEsss(&fresh.iface, &value), row.hasOps ? 1 : 5);
}

namespace {
const std::string kNoLink = "int_Movo_Net_InitWifi: init wpa_ctrl failed\n";
} // namespace

INSTANTIATE_TEST_SUITE_P(
    Steps, WifiInitFails,
    testing::Values(Unmade{"State",
                           {.call = sim::Call::Calloc, .nth = 1, .error = ENOMEM},
                           {"int_Movo_Net_InitWifi: malloc memory failed\n"},
                           false,
                           false},
                    Unmade{"LockOfTheState",
                           {.call = sim::Call::MutexInit, .nth = 1, .error = ENOMEM},
                           {"int_Movo_Net_InitWifi: lock wifi iface failed\n"},
                           false,
                           false},
                    Unmade{"Link",
                           {.call = sim::Call::Calloc, .nth = 2, .error = ENOMEM},
                           {"int_Movo_Net_Wpactrl_Init: malloc wpactrl interface failed\n", kNoLink},
                           true,
                           false},
                    Unmade{"AttributeOfTheLinksLock",
                           {.call = sim::Call::MutexAttrInit, .nth = 2, .error = ENOMEM},
                           {"int_Movo_Net_Wpactrl_Init: int_Movo_Net_Wpactrl_Init, init mutex failed\n", kNoLink},
                           true,
                           false},
                    Unmade{"TypeOfTheLinksLock",
                           {.call = sim::Call::MutexAttrSetType, .nth = 2, .error = EINVAL},
                           {"int_Movo_Net_Wpactrl_Init: int_Movo_Net_Wpactrl_Init, init mutex failed\n", kNoLink},
                           true,
                           false},
                    Unmade{"LockOfTheLink",
                           {.call = sim::Call::MutexInit, .nth = 2, .error = ENOMEM},
                           {"int_Movo_Net_Wpactrl_Init: int_Movo_Net_InitWifi, init mutex failed\n", kNoLink},
                           true,
                           false},
                    Unmade{"LockOfTheSavedNetworks",
                           {.call = sim::Call::MutexInit, .nth = 3, .error = ENOMEM},
                           {"int_Movo_Net_InitWifi: init mutex failed\n"},
                           true,
                           true},
                    Unmade{"AttributeOfTheLockOfTheSavedNetworks",
                           {.call = sim::Call::MutexAttrInit, .nth = 3, .error = ENOMEM},
                           {"int_Movo_Net_InitWifi: init mutex failed\n"},
                           true,
                           true}),
    [](const auto& test) { return test.param.name; });

TEST(WifiDeInit, ForgetsTheNetworksButNotTheirFile)
{
    Fresh fresh;
    fresh.remember(2);
    EXPECT_EQ(int_Movo_Net_InitWifi(&fresh.iface), 0);
    const void* state = fresh.iface.priv;
    const std::string saved = fresh.set.read(kSavedFile);
    fresh.set.forget();
    EXPECT_EQ(int_Movo_Net_DeInitWifi(&fresh.iface), 0);
    EXPECT_EQ(g_pSavedEsss, nullptr);
    EXPECT_EQ(fresh.set.read(kSavedFile), saved);
    EXPECT_EQ(fresh.iface.priv, state);
    EXPECT_EQ(wpactrl_iface(&fresh.iface), nullptr);
    EXPECT_TRUE(fresh.set.log().empty());
    EXPECT_TRUE(fresh.set.commands().empty());
}

TEST(WifiDeInit, NeedsARecordWithABackEnd)
{
    Fresh fresh;
    const sim::CapturedOutput output;
    EXPECT_EQ(int_Movo_Net_DeInitWifi(nullptr), 5);
    EXPECT_NE(output.text().find("File:movo_net_fl_wifi"), std::string::npos);
    EXPECT_NE(output.text().find("Routine:int_Movo_Net_DeInitWifi, pIface failed"), std::string::npos);
    EXPECT_EQ(int_Movo_Net_DeInitWifi(&fresh.iface), 5);
    EXPECT_TRUE(fresh.set.log().empty());
}

TEST(WifiDeInit, WithoutTheLockOfTheNetworksLeavesAll)
{
    Fresh fresh;
    fresh.remember(1);
    EXPECT_EQ(int_Movo_Net_InitWifi(&fresh.iface), 0);
    fresh.set.forget();
    fresh.set.failLock(essListLock);
    EXPECT_EQ(int_Movo_Net_DeInitWifi(&fresh.iface), 1);
    EXPECT_EQ(told(fresh.set, KEST_LEVEL_ERROR), Lines{std::string(kDeInit) + ": lock essList mutex failed\n"});
    EXPECT_NE(g_pSavedEsss, nullptr);
    EXPECT_NE(wpactrl_iface(&fresh.iface), nullptr);
}

TEST(WifiDeInit, WithoutTheLockOfTheStateLeavesTheLink)
{
    Fresh fresh;
    fresh.remember(1);
    EXPECT_EQ(int_Movo_Net_InitWifi(&fresh.iface), 0);
    fresh.set.forget();
    fresh.set.failLock(wifi_iface(&fresh.iface)->lock);
    EXPECT_EQ(int_Movo_Net_DeInitWifi(&fresh.iface), 1);
    EXPECT_EQ(told(fresh.set, KEST_LEVEL_ERROR), Lines{std::string(kDeInit) + ": lock essList mutex failed\n"});
    EXPECT_EQ(g_pSavedEsss, nullptr);
    EXPECT_NE(wpactrl_iface(&fresh.iface), nullptr);
}

TEST(WirelessConstants, AreTheSameForEveryRecord)
{
    MovoNetIface_t iface{};
    std::int32_t throughput = 7;
    EXPECT_EQ(int_Movo_Net_CanActiveWifi(&iface), 1);
    EXPECT_EQ(int_Movo_Net_WifiGetThroughput(&iface, &throughput), 1);
    EXPECT_EQ(throughput, 7);
}
