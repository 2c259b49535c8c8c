#include "bench.h"
#include "sim/freed.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <vector>

using namespace wifi;
using namespace movonet;

// The keys of remembered networks: nobody else reads their files, and nothing of them stays in freed memory.

namespace {
const std::string kFile = "/data/tv/save/saved_esss";
const std::string kBackup = "/data/tv/save/saved_esss_back";
constexpr const char* kKey = "correct horse";

mode_t modeOf(const sim::Set& set, const std::string& path)
{
    struct stat status {};
    EXPECT_EQ(stat(set.real(path).c_str(), &status), 0);
    return status.st_mode & 07777;
}

MovNetWifiEssItem_t network(const std::string& name)
{
    MovNetWifiEssItem_t ess{};
    name.copy(ess.essid, MOVO_NET_ESSID_LENGTH);
    std::strcpy(ess.Key, kKey);
    return ess;
}

void save(const std::string& name)
{
    MovNetWifiEssItem_t ess = network(name);
    EXPECT_EQ(int_Movo_Net_SaveEss(&ess), 0);
}

/** Both files as a version before this one made them. */
void loosen(const sim::Set& set)
{
    for (const std::string& path : {kFile, kBackup}) {
        EXPECT_EQ(chmod(set.real(path).c_str(), 0644), 0);
    }
}

class SecretFiles : public testing::Test {
protected:
    SecretFiles() : m_before(umask(0)) {}
    ~SecretFiles() override { (void)umask(m_before); }

    sim::Set set;

private:
    mode_t m_before;
};

TEST_F(SecretFiles, AreNobodyElsesFromTheFirstSaveOn)
{
    mode_t copied = 0;
    set.onCommand("cat ").does([&] { copied = modeOf(set, kBackup); });
    save("One");
    EXPECT_EQ(modeOf(set, kFile), 0600U);
    EXPECT_EQ(modeOf(set, kBackup), 0600U);
    EXPECT_EQ(copied, 0600U) << "before the copy fills it";
    EXPECT_EQ(set.read(kBackup), set.read(kFile));
    EXPECT_EQ(set.openDescriptors(), Lines{});
}

TEST_F(SecretFiles, OfOlderVersionsAreClosedByTheNextSave)
{
    save("One");
    loosen(set);
    mode_t written = 0;
    set.fail({.call = sim::Call::Write, .on = kFile, .nth = 1, .does = [&] { written = modeOf(set, kFile); }});
    save("Two");
    EXPECT_EQ(written, 0600U) << "before a key is in it";
    EXPECT_EQ(modeOf(set, kFile), 0600U);
    EXPECT_EQ(modeOf(set, kBackup), 0600U);
}

/** The same network again saves nothing. */
TEST_F(SecretFiles, OfOlderVersionsAreClosedWhenTheyAreRead)
{
    save("One");
    loosen(set);
    EXPECT_EQ(LoadEsss(), 0);
    EXPECT_EQ(modeOf(set, kFile), 0600U);
    EXPECT_EQ(modeOf(set, kBackup), 0600U);
}

TEST_F(SecretFiles, AreWrittenAllTheSameWhereModesCannotBeChanged)
{
    set.fail({.call = sim::Call::Chmod, .on = kFile, .error = EPERM});
    save("One");
    EXPECT_EQ(set.read(kFile).size(), 152U);
    EXPECT_EQ(set.read(kBackup), set.read(kFile));
    EXPECT_EQ(LoadEsss(), 0);
}

class SecretMemory : public testing::Test {
protected:
    SecretMemory() { sim::watchFreed(kKey); }

    sim::Set set;
};

TEST_F(SecretMemory, OfADeletedNetworkIsWiped)
{
    save("One");
    EXPECT_EQ(int_Movo_Net_DelEss(network("One")), 0);
    EXPECT_EQ(g_pSavedEsss, nullptr);
    EXPECT_EQ(sim::freedWithText(), 0);
}

TEST_F(SecretMemory, OfAListThatIsReadAnewIsWiped)
{
    save("One");
    save("Two");
    EXPECT_EQ(LoadEsss(), 0);
    forgetSavedEsss();
    EXPECT_EQ(sim::freedWithText(), 0);
}

TEST_F(SecretMemory, OfAListThatCannotBeInstalledIsWiped)
{
    save("One");
    set.failLock(essListLock, 1);
    EXPECT_EQ(LoadEsss(), 1);
    EXPECT_EQ(sim::freedWithText(), 0);
}

TEST(SecretTable, OfAnInterfaceThatGoesIsWiped)
{
    {
        Bench bench;
        (void)bench.list("Net", _MOVO_NET_WIFI_SECURITY_WPA2_PSK_, _MOVO_NET_WIFI_ENCRYP_AES_, kKey);
        sim::watchFreed(kKey);
    }
    EXPECT_EQ(sim::freedWithText(), 0);
}
} // namespace
