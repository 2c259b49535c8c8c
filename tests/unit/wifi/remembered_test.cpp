#include "bench.h"
#include "names.h"

#include <functional>
#include <gtest/gtest.h>

// Which networks count as the same, what is written when, and what is said when it cannot be.

using namespace wifi;
using namespace movonet;

namespace {
constexpr const char* kRestore = "cat /data/tv/save/saved_esss_back > /data/tv/save/saved_esss";

MovNetWifiEssItem_t secured(const std::string& name, std::int64_t bssid = 0)
{
    MovNetWifiEssItem_t ess{};
    name.copy(ess.essid, MOVO_NET_ESSID_LENGTH);
    ess.bssid = bssid;
    ess.securityType = _MOVO_NET_WIFI_SECURITY_WPA2_PSK_;
    ess.encrypType = _MOVO_NET_WIFI_ENCRYP_AES_;
    std::strcpy(ess.Key, "key");
    return ess;
}

class Remembered : public testing::Test {
protected:
    Remembered() { set.onCommand("cat ").prints(""); }
    ~Remembered() override { EXPECT_EQ(set.heldLocks(), 0); }

    sim::Set set;
};

/** A change to a network that was saved last, and whether it makes it worth writing. */
struct Difference {
    const char* name;
    std::function<void(MovNetWifiEssItem_t&)> make;
    bool written;
    std::size_t networks; ///< How many are remembered then.
};

void PrintTo(const Difference& difference, std::ostream* out)
{
    *out << difference.name;
}

class SavedAgain : public Remembered, public testing::WithParamInterface<Difference> {};
} // namespace

TEST_P(SavedAgain, IsWrittenWhenItIsAnotherOrHasAnotherKey)
{
    const Difference& difference = GetParam();
    MovNetWifiEssItem_t ess = secured("Net", 7);
    EXPECT_EQ(remember(ess), 0);
    set.forget();
    difference.make(ess);
    EXPECT_EQ(remember(ess), 0);
    EXPECT_EQ(static_cast<bool>(set.ran(kSavedCopy)), difference.written);
    EXPECT_EQ(rememberedNames().size(), difference.networks);
}

INSTANTIATE_TEST_SUITE_P(
    Differences, SavedAgain,
    testing::Values(Difference{"None", [](MovNetWifiEssItem_t&) {}, false, 1},
                    Difference{"KeepsSignal", [](MovNetWifiEssItem_t& ess) { ess.signalVal = -1; }, false, 1},
                    Difference{"KeepsConnected", [](MovNetWifiEssItem_t& ess) { ess.isConnected = 1; }, false, 1},
                    Difference{"KeepsPriority", [](MovNetWifiEssItem_t& ess) { ess.priority = 7; }, false, 1},
                    Difference{"KeepsWps", [](MovNetWifiEssItem_t& ess) { ess.bWPS = 1; }, false, 1},
                    Difference{"Key", [](MovNetWifiEssItem_t& ess) { ess.Key[0] = 'K'; }, true, 1},
                    Difference{"Name", [](MovNetWifiEssItem_t& ess) { ess.essid[3] = '2'; }, true, 2},
                    Difference{"Bssid", [](MovNetWifiEssItem_t& ess) { ess.bssid = 8; }, true, 2},
                    Difference{"Security",
                               [](MovNetWifiEssItem_t& ess) { ess.securityType = _MOVO_NET_WIFI_SECURITY_WPA_PSK_; },
                               true, 2},
                    Difference{"Cipher",
                               [](MovNetWifiEssItem_t& ess) { ess.encrypType = _MOVO_NET_WIFI_ENCRYP_TKIPAES_; }, true,
                               2}),
    [](const auto& test) { return test.param.name; });

TEST_F(Remembered, ANetworkThatComesBackMovesToTheFrontWithAllThatIsNew)
{
    for (const char* name : {"A", "B", "C"}) {
        EXPECT_EQ(remember(secured(name)), 0);
    }
    MovNetWifiEssItem_t again = secured("B");
    std::strcpy(again.Key, "another key");
    again.signalVal = -44;
    again.isConnected = 1;
    again.next = &again;
    EXPECT_EQ(remember(again), 0);
    EXPECT_EQ(rememberedNames(), (Lines{"B", "C", "A"}));
    EXPECT_STREQ(g_pSavedEsss->Key, "another key");
    EXPECT_EQ(g_pSavedEsss->signalVal, -44);
    EXPECT_EQ(g_pSavedEsss->isConnected, 1);
    EXPECT_EQ(set.read(kSavedFile).size(), 3U * 152U);
}

TEST_F(Remembered, TheNewestOfANameAndTheNewestConnectedOneAreFound)
{
    MovNetWifiEssItem_t connected = secured("A", 1);
    connected.isConnected = 1;
    EXPECT_EQ(remember(connected), 0);
    connected.bssid = 2;
    EXPECT_EQ(remember(connected), 0);
    EXPECT_EQ(remember(secured("A", 3)), 0);
    EXPECT_EQ(int_Movo_Net_GetSavedEss("A")->bssid, 3);
    EXPECT_EQ(int_Movo_Net_GetSavedConnectedEss()->bssid, 2);
    EXPECT_EQ(int_Movo_Net_GetSavedEss("B"), nullptr);
    const std::string longest(32, 'n');
    EXPECT_EQ(remember(secured(longest)), 0);
    EXPECT_EQ(int_Movo_Net_GetSavedEss((longest + "more").c_str()), g_pSavedEsss) << "32 bytes count";
}

TEST_F(Remembered, WithoutMemoryNothingChanges)
{
    EXPECT_EQ(remember(secured("A")), 0);
    set.forget();
    set.fail({.call = sim::Call::Malloc, .nth = 1, .error = ENOMEM});
    EXPECT_EQ(remember(secured("B")), 4);
    EXPECT_EQ(told(set, KEST_LEVEL_ERROR), Lines{"int_Movo_Net_SaveEss: out of memory\n"});
    EXPECT_EQ(rememberedNames(), Lines{"A"});
    EXPECT_NOT_RAN(set, kSavedCopy);
}

TEST_F(Remembered, DeletingIsTold)
{
    EXPECT_EQ(remember(secured("A", 1)), 0);
    EXPECT_EQ(remember(secured("A", 2)), 0);
    set.forget();
    EXPECT_EQ(int_Movo_Net_DelEss(secured("A", 1)), 0);
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, kWifiModule, "int_Movo_Net_DelEss", "delete A in saved ess list\n");
    EXPECT_EQ(set.read(kSavedFile).size(), 152U);
    EXPECT_RAN(set, kSavedCopy);
    set.forget();
    EXPECT_EQ(int_Movo_Net_DelEss(secured("A", 1)), 0);
    EXPECT_TRUE(set.log().empty()) << "it is gone already";
    EXPECT_NOT_RAN(set, kSavedCopy);
}

TEST_F(Remembered, LookingForNoNameIsToldAndFindsNothing)
{
    EXPECT_EQ(remember(secured("A")), 0);
    set.forget();
    EXPECT_EQ(int_Movo_Net_GetSavedEss(nullptr), nullptr);
    EXPECT_EQ(told(set, KEST_LEVEL_ERROR), Lines{"int_Movo_Net_GetSavedEss: bad param\n"});
}

TEST_F(Remembered, AnEmptyFileWhoseBackupCannotBeCopiedLoadsNothing)
{
    EXPECT_EQ(remember(secured("A")), 0);
    set.write(kSavedFile, "");
    set.onCommand(kRestore).fails();
    set.forget();
    EXPECT_EQ(LoadEsss(), 1);
    EXPECT_EQ(told(set, KEST_LEVEL_ERROR),
              (Lines{"LoadEsss: esss: enter LoadEsss\n", "LoadEsss: esss: /data/tv/save/saved_esss file size 0\n",
                     "LoadEsss: esss: cannot cp  /data/tv/save/saved_esss_back to /data/tv/save/saved_esss\n"}));
    EXPECT_EQ(rememberedNames(), Lines{"A"});
    EXPECT_EQ(set.openDescriptors(), Lines{});
}

TEST_F(Remembered, AFileThatHoldsSomethingIsNotRestored)
{
    EXPECT_EQ(remember(secured("A")), 0);
    set.write(kSavedFile, "x");
    set.forget();
    EXPECT_EQ(LoadEsss(), 0);
    EXPECT_TRUE(set.commands().empty());
    EXPECT_EQ(rememberedNames(), Lines{});
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kWifiModule, "LoadEsss", "esss: /data/tv/save/saved_esss file size 1\n");
}

TEST_F(Remembered, WithoutTheLockNothingIsReadOrWritten)
{
    EXPECT_EQ(remember(secured("A")), 0);
    const std::string before = set.read(kSavedFile);
    set.write(kSavedFile, before + before);
    set.forget();
    set.failLock(essListLock);
    EXPECT_EQ(LoadEsss(), 1);
    EXPECT_EQ(SaveEsss(), 1);
    EXPECT_EQ(remember(secured("B")), 1);
    EXPECT_EQ(int_Movo_Net_DelEss(secured("A")), 1);
    EXPECT_EQ(int_Movo_Net_GetSavedEss("A"), nullptr);
    EXPECT_EQ(int_Movo_Net_GetSavedConnectedEss(), nullptr);
    EXPECT_EQ(told(set, KEST_LEVEL_ERROR),
              (Lines{"LoadEsss: esss: enter LoadEsss\n", "LoadEsss: esss: /data/tv/save/saved_esss file size 304\n",
                     "LoadEsss: lock mutex failed\n", "SaveEsss: lock mutex failed\n",
                     "int_Movo_Net_SaveEss: lock mutex failed\n", "int_Movo_Net_DelEss: lock mutex failed\n",
                     "int_Movo_Net_GetSavedEss: lock mutex failed\n",
                     "int_Movo_Net_GetSavedConnectedEss: lock mutex failed\n"}));
    EXPECT_EQ(rememberedNames(), Lines{"A"});
    EXPECT_EQ(set.read(kSavedFile), before + before);
    EXPECT_TRUE(set.commands().empty());
}
