#include "bench.h"
#include "names.h"

#include <gtest/gtest.h>

// The remembered key of a scanned network, which is given for the same access point alone.

using namespace wifi;
using namespace movonet;

namespace {
MovNetWifiEssItem_t network(const std::string& name, std::int64_t bssid = 0)
{
    MovNetWifiEssItem_t ess{};
    name.copy(ess.essid, MOVO_NET_ESSID_LENGTH);
    ess.bssid = bssid;
    std::strcpy(ess.Key, "key");
    return ess;
}

RETURN_TYPE save(MovNetWifiEssItem_t ess)
{
    return int_Movo_Net_SaveEss(&ess);
}

/** An interface that has scanned the network "Net" of access point 8; what is remembered is the test's. */
class RememberedKey : public testing::Test {
protected:
    RememberedKey()
    {
        scanned = &bench.list("Net", _MOVO_NET_WIFI_SECURITY_WPA2_PSK_, _MOVO_NET_WIFI_ENCRYP_AES_);
        scanned->bssid = 8;
    }

    /** A network learnt by WPS, whose access point is not known yet. */
    static MovNetWifiEssItem_t learnt()
    {
        MovNetWifiEssItem_t ess = network("Net");
        ess.bWPS = 1;
        return ess;
    }

    int ask()
    {
        bench.set.forget();
        std::memset(key, '#', sizeof(key));
        length = -1;
        return int_Movo_NET_WifiGetKey(&bench.iface, "Net", key, &length);
    }

    Bench bench;
    MovNetWifiEssItem_t* scanned = nullptr;
    char key[65] = {};
    std::int32_t length = 0;
};
} // namespace

TEST_F(RememberedKey, KeepsTheFileWhenTheNewestNetworkGetsItsAccessPoint)
{
    EXPECT_EQ(save(learnt()), 0);
    EXPECT_EQ(ask(), 0);
    EXPECT_STREQ(key, "key");
    EXPECT_EQ(length, 3);
    EXPECT_EQ(g_pSavedEsss->bssid, 8);
    EXPECT_TRUE(bench.set.commands().empty()) << "it equals itself";
    scanned->bssid = 9;
    EXPECT_EQ(ask(), 1) << "from now on another access point is another network";
}

TEST_F(RememberedKey, OfAnOlderNetworkIsWrittenWithItsAccessPoint)
{
    EXPECT_EQ(save(learnt()), 0);
    EXPECT_EQ(save(network("Newer")), 0);
    EXPECT_EQ(ask(), 0);
    EXPECT_STREQ(key, "key");
    EXPECT_STREQ(g_pSavedEsss->essid, "Net") << "it is the newest now";
    EXPECT_EQ(g_pSavedEsss->bssid, 8);
    EXPECT_EQ(bench.set.read(kSavedFile)[40], '\x08');
    EXPECT_RAN(bench.set, kSavedCopy);
}

TEST_F(RememberedKey, IsGivenWhileNeitherAccessPointIsKnown)
{
    scanned->bssid = 0;
    EXPECT_EQ(save(learnt()), 0);
    EXPECT_EQ(save(network("Newer")), 0);
    EXPECT_EQ(ask(), 0);
    EXPECT_STREQ(key, "key");
    EXPECT_STREQ(g_pSavedEsss->essid, "Newer");
    EXPECT_TRUE(bench.set.commands().empty());
}

TEST_F(RememberedKey, OfANetworkWithoutAccessPointIsForAnyOfItsName)
{
    EXPECT_EQ(save(network("Net")), 0);
    EXPECT_EQ(ask(), 0);
    EXPECT_EQ(g_pSavedEsss->bssid, 0) << "only what WPS has taught is completed";
    scanned->bssid = 9;
    EXPECT_EQ(ask(), 0);
}

TEST_F(RememberedKey, OfWpsForAnotherAccessPointIsNotGiven)
{
    MovNetWifiEssItem_t ess = learnt();
    ess.bssid = 7;
    EXPECT_EQ(save(ess), 0);
    EXPECT_EQ(ask(), 1);
    EXPECT_EQ(told(bench.set, KEST_LEVEL_ERROR), Lines{"int_Movo_NET_WifiGetKey: Net not found in saved esss\n"});
    EXPECT_EQ(g_pSavedEsss->bssid, 7);
    EXPECT_EQ(length, -1);
    EXPECT_EQ(key[0], '#');
}

TEST_F(RememberedKey, TakesSixtyFiveBytesAtTheMost)
{
    MovNetWifiEssItem_t ess = network("Net", 8);
    std::memset(ess.Key, 'k', MOVO_NET_KEY_LENGTH);
    EXPECT_EQ(save(ess), 0);
    EXPECT_EQ(ask(), 0);
    EXPECT_EQ(std::string(key), std::string(64, 'k'));
    EXPECT_EQ(length, 64);
    ess.bssid = 9;
    ess.Key[0] = '\0';
    scanned->bssid = 9;
    EXPECT_EQ(save(ess), 0);
    EXPECT_EQ(ask(), 0);
    EXPECT_EQ(std::string(key, 2), std::string("\0#", 2)) << "an open network: its end mark alone";
    EXPECT_EQ(length, 0);
}

TEST_F(RememberedKey, IsNotFoundWithoutTheListsLock)
{
    EXPECT_EQ(save(network("Net", 8)), 0);
    bench.set.failLock(essListLock);
    EXPECT_EQ(ask(), 1);
    EXPECT_EQ(told(bench.set, KEST_LEVEL_ERROR), (Lines{"int_Movo_Net_GetSavedEss: lock mutex failed\n",
                                                        "int_Movo_NET_WifiGetKey: Net not found in saved esss\n"}));
}
