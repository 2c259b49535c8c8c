#include "bench.h"
#include "movo_net_fl_wifi/device.h"
#include "names.h"

#include <gtest/gtest.h>

using namespace wifi;
using namespace movonet;

namespace {
/** A set with its folder, whose copies between the two files work. */
struct Store {
    Store()
    {
        set.write("/data/tv/save/x", "");
        set.onCommand(kSavedCopy).does([this] { set.write(kSavedBackup, set.read(kSavedFile)); }).prints("");
    }
    sim::Set set;
};

MovNetWifiEssItem_t network(const std::string& name, const std::string& key = "", std::int64_t bssid = 0)
{
    MovNetWifiEssItem_t ess{};
    name.copy(ess.essid, MOVO_NET_ESSID_LENGTH);
    key.copy(ess.Key, MOVO_NET_KEY_LENGTH);
    ess.bssid = bssid;
    return ess;
}

void save(const std::string& name, const std::string& key = "", std::int64_t bssid = 0)
{
    MovNetWifiEssItem_t ess = network(name, key, bssid);
    EXPECT_EQ(int_Movo_Net_SaveEss(&ess), 0);
}
} // namespace

TEST(SavedRecord, HasItsFieldsAtTheirPlacesAndZerosBetween)
{
    Store store;
    MovNetWifiEssItem_t ess{};
    std::memset(static_cast<void*>(&ess), 0xee, sizeof(ess));
    ess = {.essid = "Net",
           .bssid = 0x0000665544332211,
           .securityType = _MOVO_NET_WIFI_SECURITY_WPA2_PSK_,
           .encrypType = _MOVO_NET_WIFI_ENCRYP_AES_,
           .Key = "key",
           .signalVal = -2,
           .frequency = 2412,
           .isSaved = 1,
           .priority = 7,
           .isConnected = 1,
           .bWPS = 1,
           .next = &ess};
    ASSERT_EQ(int_Movo_Net_SaveEss(&ess), 0);
    std::string expected(152, '\0');
    expected.replace(0, 3, "Net");
    expected.replace(40, 6, "\x11\x22\x33\x44\x55\x66");
    expected[48] = 2;
    expected[52] = 3;
    expected.replace(56, 3, "key");
    expected.replace(124, 4, "\xfe\xff\xff\xff");
    expected.replace(128, 2, "\x6c\x09");
    expected[132] = 1;
    expected[136] = 7;
    expected[140] = 1;
    expected[141] = 1;
    EXPECT_EQ(store.set.read(kSavedFile), expected);
    EXPECT_EQ(store.set.read(kSavedBackup), expected);
}

TEST(Saved, TheNewestComesFirstAndTheSameTwiceCostsNothing)
{
    Store store;
    save("A");
    save("B");
    save("A");
    EXPECT_EQ(rememberedNames(), (Lines{"A", "B"}));
    store.set.forget();
    save("A");
    EXPECT_NOT_RAN(store.set, kSavedCopy);
    save("A", "another key");
    EXPECT_RAN(store.set, kSavedCopy);
    EXPECT_EQ(rememberedNames(), (Lines{"A", "B"}));
    save("A", "another key", 42);
    EXPECT_EQ(rememberedNames(), (Lines{"A", "A", "B"})) << "another access point is another network";
}

TEST(Saved, AnEmptyFileIsRestoredFromTheBackup)
{
    Store store;
    save("A");
    save("B");
    store.set.write(kSavedFile, "");
    store.set.onCommand("cat /data/tv/save/saved_esss_back > /data/tv/save/saved_esss")
        .does([&store] { store.set.write(kSavedFile, store.set.read(kSavedBackup)); })
        .prints("");
    EXPECT_EQ(LoadEsss(), 0);
    EXPECT_EQ(store.set.read(kSavedFile).size(), 304U);
}

TEST(Saved, NothingIsLoadedWithoutAFile)
{
    Store store;
    save("A");
    store.set.remove(kSavedFile);
    EXPECT_EQ(LoadEsss(), 1);
    EXPECT_EQ(rememberedNames(), Lines{"A"});
    EXPECT_LOGGED(store.set, KEST_LEVEL_ERROR, "movo_net_fl_wifi", "LoadEsss",
                  "esss :cannot open /data/tv/save/saved_esss for read\n");
}

TEST(Saved, TheListStaysUsableWhenTheBackupFails)
{
    Store store;
    store.set.onCommand(kSavedCopy).fails(256);
    MovNetWifiEssItem_t ess = network("A");
    EXPECT_EQ(int_Movo_Net_SaveEss(&ess), 1);
    EXPECT_LOGGED(store.set, KEST_LEVEL_ERROR, "movo_net_fl_wifi", "SaveEsss",
                  "cannot cp  /data/tv/save/saved_esss to /data/tv/save/saved_esss_back\n");
    store.set.background([] { EXPECT_NE(int_Movo_Net_GetSavedEss("A"), nullptr); });
    store.set.joinBackground();
}

TEST(Saved, DeletingTakesTheNameAndTheAccessPoint)
{
    Store store;
    save("A", "", 1);
    save("B", "", 2);
    EXPECT_EQ(int_Movo_Net_DelEss(network("A", "", 9)), 0);
    EXPECT_EQ(rememberedNames(), (Lines{"B", "A"}));
    EXPECT_EQ(int_Movo_Net_DelEss(network("A", "", 1)), 0);
    EXPECT_EQ(int_Movo_Net_DelEss(network("B", "", 2)), 0);
    EXPECT_FALSE(store.set.exists(kSavedFile));
    EXPECT_FALSE(store.set.exists(kSavedBackup));
    EXPECT_EQ(int_Movo_Net_DelEss(network("")), 5);
}

TEST(Saved, ChecksItsArguments)
{
    Store store;
    EXPECT_EQ(int_Movo_Net_SaveEss(nullptr), 5);
    MovNetWifiEssItem_t nameless{};
    EXPECT_EQ(int_Movo_Net_SaveEss(&nameless), 5);
    EXPECT_EQ(int_Movo_Net_GetSavedEss(nullptr), nullptr);
    EXPECT_EQ(int_Movo_Net_GetSavedConnectedEss(), nullptr);
}

TEST(Key, IsGivenForTheSameAccessPointAlone)
{
    Bench bench;
    MovNetWifiEssItem_t& scanned = bench.list("Net", _MOVO_NET_WIFI_SECURITY_WPA2_PSK_, _MOVO_NET_WIFI_ENCRYP_AES_);
    scanned.bssid = 7;
    char key[65] = {};
    int length = -1;
    EXPECT_EQ(int_Movo_NET_WifiGetKey(&bench.iface, "Net", key, &length), 1) << "not remembered";
    save("Net", "the key", 8);
    EXPECT_EQ(int_Movo_NET_WifiGetKey(&bench.iface, "Net", key, &length), 1) << "another access point";
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, "movo_net_fl_wifi", "int_Movo_NET_WifiGetKey",
                  "Net not found in saved esss\n");
    scanned.bssid = 8;
    EXPECT_EQ(int_Movo_NET_WifiGetKey(&bench.iface, "Net", key, &length), 0);
    EXPECT_STREQ(key, "the key");
    EXPECT_EQ(length, 7);
}

TEST(Key, OfALengthFromOneToSixtyFourIsTaken)
{
    Bench bench;
    const MovNetWifiEssItem_t& ess = bench.list("Net", _MOVO_NET_WIFI_SECURITY_OPEN_, _MOVO_NET_WIFI_ENCRYP_NONE_);
    const std::string longest(80, 'k');
    for (const int length : {0, -1, 65, 100}) {
        EXPECT_EQ(int_Movo_NET_WifiSetKey(&bench.iface, "Net", longest.c_str(), length), 5) << length;
    }
    EXPECT_EQ(int_Movo_NET_WifiSetKey(&bench.iface, "Net", longest.c_str(), 64), 0);
    EXPECT_EQ(std::string(ess.Key), std::string(64, 'k'));
    EXPECT_EQ(int_Movo_NET_WifiSetKey(&bench.iface, "Net", "ab", 5), 0);
    EXPECT_STREQ(ess.Key, "ab");
    EXPECT_EQ(int_Movo_NET_WifiSetKey(&bench.iface, "Other", "ab", 2), 1);
    EXPECT_EQ(int_Movo_NET_WifiSetKey(&bench.iface, nullptr, "ab", 2), 5);
    EXPECT_EQ(int_Movo_NET_WifiSetKey(&bench.iface, "Net", nullptr, 2), 5);
}

TEST(Chip, IsProbedInOrderAndOnlyWhenConfigured)
{
    sim::Set set;
    for (const char* name : {"REALTEK_DEVICE_ID_8188EU", "BROADCOM_DEVICE_ID_43569", "BROADCOM_LITEON__DEVICE_ID_43569",
                             "BRCM_DRIVER_NAME_43569"}) {
        setenv(name, "id", 1);
    }
    set.onCommand("lsusb").prints("");
    EXPECT_EQ(int_Wifi_GetDevType("mlan0"), _MOVO_NET_WIFI_BRCM_43569_);
    ASSERT_EQ(set.commands().size(), 1U);
    EXPECT_EQ(set.commands()[0].text, "lsusb | grep id && lsmod | grep id");
    setenv("REALTEK_DRIVER_NAME_8188EU", "drv", 1);
    EXPECT_EQ(int_Wifi_GetDevType("mlan0"), _MOVO_NET_WIFI_REALTEK_8188EU_);
    EXPECT_RAN(set, "lsusb | grep id && ls /sys/class/net/mlan0/device/driver/ -l | grep drv");
    set.onCommand("lsusb").fails(256);
    EXPECT_EQ(int_Wifi_GetDevType("mlan0"), _MOVO_NET_WIFI_UNKNOWN_);
    EXPECT_EQ(int_Wifi_GetDevType(nullptr), _MOVO_NET_WIFI_UNKNOWN_);
}

TEST(Chip, TheTwoOfOneKindShareTheirTemplate)
{
    setenv("BROADCOM_SUPPLICANT_STR_43569", "template", 1);
    EXPECT_STREQ(int_Wifi_GetWpaSupplicantStr(_MOVO_NET_WIFI_BRCM_LITEON_43569_), "template");
    EXPECT_EQ(int_Wifi_GetWpaSupplicantStr(_MOVO_NET_WIFI_UNKNOWN_), nullptr);
}

TEST(Chip, AProbeThatMustBeCutIsNotRun)
{
    sim::Set set;
    const std::string id(240, 'x');
    setenv("ATHEROS_DEVICE_ID", id.c_str(), 1);
    setenv("ATHEROS_DRIVER_NAME", "drv", 1);
    EXPECT_EQ(int_Wifi_IsDevAvailable("mlan0", _MOVO_NET_WIFI_ATHEROS_), 0);
    EXPECT_TRUE(set.commands().empty());
}
