#include "names.h"
#include "television.h"

#include <gtest/gtest.h>
#include <movo_net.h>
#include <random>

using namespace wifi;
using namespace movonet;

// How many networks, how long names, how much file, and what if nothing of it is as it should be.

namespace {
constexpr std::size_t kMost = 50;

class Count : public testing::TestWithParam<std::size_t> {};
} // namespace

TEST_P(Count, OfNetworksThatComesBackAfterARestart)
{
    sim::Set set;
    for (std::size_t number = 0; number < GetParam(); ++number) {
        EXPECT_EQ(remember(networkNamed("n" + std::to_string(number))), 0);
    }
    EXPECT_EQ(rememberedNames().size(), GetParam()) << "in memory there is no limit";
    const std::size_t kept = std::min(GetParam(), kMost);
    freeSavedEsss();
    EXPECT_EQ(LoadEsss(), GetParam() == 0 ? 1 : 0);
    ASSERT_EQ(rememberedNames().size(), kept);
    for (std::size_t place = 0; place < kept; ++place) {
        EXPECT_EQ(rememberedNames()[place], "n" + std::to_string(GetParam() - 1 - place)) << "newest first";
    }
    if (kept > 0) {
        EXPECT_EQ(set.read(kSavedFile).size(), kept * kSavedRecord);
        EXPECT_EQ(set.read(kSavedBackup), set.read(kSavedFile));
    }
}
INSTANTIATE_TEST_SUITE_P(Saved, Count, testing::Values(0, 1, 49, 50, 51));

TEST(SavedName, OfEveryByteAndLengthComesBackAsItIs)
{
    sim::Set set;
    for (int byte = 1; byte < 256; ++byte) {
        for (const std::size_t length : {1U, 31U, 32U}) {
            const std::string name(length, static_cast<char>(byte));
            ASSERT_EQ(remember(networkNamed(name)), 0);
            ASSERT_EQ(LoadEsss(), 0);
            ASSERT_EQ(rememberedNames().front(), name) << byte << " " << length;
        }
    }
    EXPECT_EQ(remember(networkNamed("")), 5);
    EXPECT_EQ(remember(networkNamed(std::string(32, '\0'))), 5);
}

TEST(SavedFile, OfEveryLengthLoadsItsWholeRecords)
{
    sim::Set set;
    std::string contents;
    for (int number = 0; contents.size() < 7700; ++number) {
        std::string record(kSavedRecord, '\xee'); // what lies between and behind the texts means nothing
        const std::string name = "n" + std::to_string(number);
        record.replace(0, name.size() + 1, name.c_str(), name.size() + 1);
        contents += record;
    }
    set.write(kSavedBackup, "");
    for (std::size_t length = 0; length <= 7700; ++length) {
        set.write(kSavedFile, contents.substr(0, length));
        ASSERT_EQ(LoadEsss(), 0);
        const Lines names = rememberedNames();
        ASSERT_EQ(names.size(), length / kSavedRecord) << length;
        ASSERT_TRUE(names.empty() || names.back() == "n" + std::to_string(names.size() - 1)) << length;
        set.forget();
    }
}

TEST(SavedFile, WithoutMemoryLoadsWhatItCan)
{
    sim::Set set;
    for (const char* name : {"A", "B", "C"}) {
        EXPECT_EQ(remember(networkNamed(name)), 0);
    }
    set.fail({.call = sim::Call::Malloc, .nth = 2, .error = ENOMEM});
    EXPECT_EQ(LoadEsss(), 0);
    EXPECT_EQ(rememberedNames(), Lines{"C"});
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, "movo_net_fl_wifi", "LoadEsss", "out of memory\n");
}

TEST(SavedFile, KeepsCopyingAShortFileOfAFullDiskOverTheBackup)
{
    sim::Set set;
    EXPECT_EQ(remember(networkNamed("A")), 0);
    EXPECT_EQ(remember(networkNamed("B")), 0);
    set.fail({.call = sim::Call::Write, .on = kSavedFile, .nth = 2, .error = ENOSPC});
    EXPECT_EQ(remember(networkNamed("C")), 0) << "the copy worked";
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, "movo_net_fl_wifi", "SaveEsss", "write failed\n");
    EXPECT_EQ(set.read(kSavedFile).size(), kSavedRecord);
    EXPECT_EQ(set.read(kSavedBackup), set.read(kSavedFile));
    EXPECT_EQ(rememberedNames(), (Lines{"C", "B", "A"})) << "until the restart all are known";
    EXPECT_EQ(remember(networkNamed("D")), 0);
    EXPECT_EQ(set.read(kSavedFile).size(), 4 * kSavedRecord) << "and the next save writes them all";
}

TEST(SavedFile, ThatCannotBeOpenedKeepsItsContents)
{
    sim::Set set;
    EXPECT_EQ(remember(networkNamed("A")), 0);
    const std::string before = set.read(kSavedFile);
    set.fail({.call = sim::Call::Open, .on = kSavedFile, .error = EROFS});
    EXPECT_EQ(remember(networkNamed("B")), 1);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, "movo_net_fl_wifi", "SaveEsss",
                  "cannot open /data/tv/save/saved_esss for write\n");
    EXPECT_EQ(set.read(kSavedFile), before);
}

namespace {
/** A file of random bytes; some fields that decide what is done with a record are as they may be. */
std::string hostileFile(unsigned seed)
{
    std::mt19937 random(seed);
    std::string contents(random() % 9000, '\0');
    for (char& byte : contents) {
        byte = static_cast<char>(random());
    }
    for (std::size_t at = 0; at + kSavedRecord <= contents.size(); at += kSavedRecord) {
        contents[at + 140] = static_cast<char>(random() % 2); // was connected
        contents[at + 48] = static_cast<char>(random() % 8);  // security and cipher of some records
        contents[at + 52] = static_cast<char>(random() % 8);
        if (random() % 2 == 0) {
            contents.replace(at + 49, 3, 3, '\0');
            contents.replace(at + 53, 3, 3, '\0');
        }
    }
    return contents;
}

class HostileFile : public testing::TestWithParam<unsigned> {};
} // namespace

TEST_P(HostileFile, HarmsNothing)
{
    Television television;
    television.set.write(kSavedFile, hostileFile(GetParam()));
    television.set.write(kSavedBackup, hostileFile(GetParam() + 1000));
    television.start();
    television.hears({kConnected, kDisconnected});
    int count = 0;
    EXPECT_EQ(Movo_NET_GetNumOfWifiEsss(0, "mlan0", &count), 0);
    EXPECT_LE(count, static_cast<int>(kMost));
    for (int index = 0; index < count; ++index) {
        char name[33] = "";
        char key[65] = "";
        int length = 0;
        EXPECT_EQ(Movo_NET_WifiGetSsidEss(0, "mlan0", index, name), 0);
        (void)Movo_NET_WifiGetKey(0, "mlan0", name, key, &length);
        EXPECT_EQ(std::strlen(key), static_cast<std::size_t>(length));
        (void)Movo_NET_WifiConnectEss(0, "mlan0", name);
    }
    for (const std::string& command : television.supplicant.commands) {
        EXPECT_LT(command.size(), 100U) << command;
    }
    television.set.grantTicks(400);
}
INSTANTIATE_TEST_SUITE_P(Seeds, HostileFile, testing::Range(1U, 41U));
