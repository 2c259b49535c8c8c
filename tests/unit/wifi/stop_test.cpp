#include "names.h"
#include "television.h"

#include <atomic>
#include <gtest/gtest.h>
#include <movo_net.h>
#include <sched.h>
#include <thread>

using namespace wifi;
using namespace movonet;

// The stop forgets the remembered networks while the loop may still be at one. None of them may be lost.

namespace {
/** The names in a file of remembered networks. */
Lines namesIn(const std::string& contents)
{
    Lines names;
    for (std::size_t at = 0; at + kSavedRecord <= contents.size(); at += kSavedRecord) {
        names.emplace_back(contents.substr(at).c_str());
    }
    return names;
}

void waitUntil(const std::function<bool()>& condition)
{
    while (!condition()) {
        (void)sched_yield();
    }
}
} // namespace

TEST(WifiStop, WhileANetworkIsBeingJoinedKeepsTheOthers)
{
    Television television;
    EXPECT_EQ(remember(networkNamed("B")), 0);
    EXPECT_EQ(remember(networkNamed("A")), 0);
    freeSavedEsss(); // as after a restart
    television.startWith({{"Cafe", "[ESS]"}});
    ASSERT_EQ(Movo_NET_WifiConnectEss(0, kIf, "Cafe"), 0);
    MovoNetIface_t& mlan0 = television.mlan0();
    std::atomic<bool> inside{false};
    television.set.onCommand("netcfg mlan0 up").does([&] {
        inside = true;
        waitUntil([&] { return wpactrl_iface(&mlan0) == nullptr; });
    });
    std::thread air([&television] { television.hears({kConnected}); });
    waitUntil([&] { return inside.load(); });
    EXPECT_EQ(television.set.stop(), 0);
    air.join();
    EXPECT_EQ(namesIn(television.set.read(kSavedFile)), (Lines{"Cafe", "A", "B"}));
    EXPECT_EQ(television.set.read(kSavedBackup), television.set.read(kSavedFile));
}

TEST(WifiStop, WhileANetworkIsSavedKeepsTheOthers)
{
    for (unsigned seed = 1; seed <= 40; ++seed) {
        EXPECT_EQ(sim::forkedRun([seed] {
                      sim::Set set(seed);
                      MovoNetIface_t mlan0{};
                      std::strcpy(mlan0.name, kIf);
                      EXPECT_EQ(remember(networkNamed("B")), 0);
                      EXPECT_EQ(remember(networkNamed("A")), 0);
                      EXPECT_EQ(int_Movo_Net_InitWifi(&mlan0), 0);
                      set.background([] { EXPECT_EQ(remember(networkNamed("Cafe")), 0); });
                      set.background([&mlan0] { EXPECT_EQ(int_Movo_Net_DeInitWifi(&mlan0), 0); });
                      set.joinBackground();
                      EXPECT_EQ(namesIn(set.read(kSavedFile)), (Lines{"Cafe", "A", "B"}));
                      EXPECT_EQ(set.read(kSavedBackup), set.read(kSavedFile));
                      discardWifi(mlan0);
                  }),
                  0)
            << "seed " << seed;
    }
}
