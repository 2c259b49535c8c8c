#include "television.h"

#include "support/atomic.h"
#include "unit/fg/every_call.h"

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <movo_net.h>

// A callback on behalf of the wireless interface may call every public function: it leaves, joins, scans, takes the
// interface down and up again, from inside any event. What goes wrong here is a deadlock, which the watchdog ends,
// memory that is gone, which the sanitizers see, or a state that nothing leads out of.

using namespace wifi;
using namespace movonet;

namespace {
struct Happening {
    const char* name;
    std::function<void(Television&)> happens;
    MovoNetCBReason_e reason; // of the callback that it causes
};
void PrintTo(const Happening& row, std::ostream* out)
{
    *out << row.name;
}

void join()
{
    EXPECT_EQ(Movo_NET_WifiConnectEss(0, "mlan0", "Net"), 0);
}

void connect(Television& television)
{
    join();
    television.hears({kConnected});
}

const std::vector<Happening> kHappenings{
    {"Connected", connect, sim::IFCONNECTED},
    {"Lease",
     [](Television& television) {
         connect(television);
         television.set.dhcp("mlan0").leases();
     },
     sim::DHCP_SUCCESS},
    {"BadKey",
     [](Television& television) {
         join();
         television.hears({kHandshake, kConnected, kDisconnected, kResults});
     },
     sim::WIFIBADKEY},
    {"TimeOut",
     [](Television& television) {
         join();
         television.set.grantTicks(301);
     },
     sim::WIFITIMEOUT},
    {"LinkLost",
     [](Television& television) {
         connect(television);
         television.hears({kDisconnected, kConnected, kResults});
     },
     sim::IFDISCONNECTED},
    {"ScanEnd",
     [](Television& television) {
         EXPECT_EQ(Movo_NET_WifiScanEsss(0, "mlan0"), 0);
         television.hears({kResults, kConnected});
     },
     sim::WIFISCANDONE},
    {"ScanTimeout",
     [](Television& television) {
         EXPECT_EQ(Movo_NET_WifiScanEsss(0, "mlan0"), 0);
         television.set.grantTicks(301);
     },
     sim::WIFISCANDONE},
    {"HiddenFound",
     [](Television& television) {
         EXPECT_EQ(Movo_NET_WifiSearchHideEss(0, "mlan0", "Hidden"), 0);
         television.hears({"<3>Trying to associate with 02:00:00:00:01:00 (SSID='Hidden' freq=2412 MHz)"});
     },
     sim::WIFISCANDONE},
    {"Update", [](Television&) { EXPECT_EQ(Movo_NET_WifiUpdateEsss(0, "mlan0"), 0); }, sim::WIFIESSSUPDATED},
    {"Leave", [](Television&) { EXPECT_EQ(Movo_NET_WifiDisConnect(0, "mlan0"), 0); }, sim::IFDISCONNECTED},
};

/** The state is in itself what it must be, and an attempt has an end to come. */
void expectSound(Television& television)
{
    EXPECT_LE(television.supplicant.connections(), 2);
    EXPECT_EQ(television.set.heldLocks(), 0);
    const Wpactrl_t& link = television.link();
    const WpactrlConnectStatus_e status = link.connectStatus;
    if (!load(television.mlan0().isActived)) {
        return;
    }
    EXPECT_EQ(wifi_iface(&television.mlan0())->curOperatingEsss.isConnected, status == WPACTRL_STATUS_CONNECTED);
    if (status == WPACTRL_STATUS_CONNECTING && television.supplicant.attempts.resets() == 0) {
        EXPECT_NE(link.connectTimerEventHandle + link.firstConnectHandle, 0);
    }
    EXPECT_TRUE(!link.isScanning || link.scanTimerEventHandle != 0);
}

class InACallback : public testing::TestWithParam<Happening> {};

TEST_P(InACallback, EverythingMayBeCalled)
{
    Television television;
    television.startWith({{"Net", "[ESS]"}});
    int calls = 0;
    television.set.onCallback([&](MovoNetCBReason_e reason, void*) {
        if (reason == GetParam().reason && calls++ == 0) {
            callEverything(television.set, "mlan0");
        }
    });
    GetParam().happens(television);
    EXPECT_GE(calls, 1);
    television.set.grantTicks(400);
    expectSound(television);
    EXPECT_TRUE(television.supplicant.attempts.agreesWith(television.link().connectStatus));
}

/** One call at a time, so that those after it meet what it has left behind. Emulated, every tenth is tried. */
TEST_P(InACallback, EachCallMayBeTheOnlyOne)
{
    constexpr std::size_t kStride = 10 / sim::repetitions(10);
    const std::vector<PublicCall>& calls = everyCall();
    for (std::size_t call = 0; call < calls.size(); call += kStride) {
        const PublicCall& each = calls[call];
        const int failed = sim::forkedRun([&each] {
            Television television;
            television.startWith({{"Net", "[ESS]"}});
            bool called = false;
            television.set.onCallback([&](MovoNetCBReason_e reason, void*) {
                if (reason == GetParam().reason && !called) {
                    called = true;
                    each.call(television.set, "mlan0");
                }
            });
            GetParam().happens(television);
            EXPECT_TRUE(called);
            television.set.grantTicks(11);
            expectSound(television);
            const bool watched = std::string_view(each.name) != "Movo_NET_UnInstallCallback";
            EXPECT_TRUE(!watched || television.supplicant.attempts.agreesWith(television.link().connectStatus));
        });
        EXPECT_EQ(failed, 0) << each.name;
    }
}

INSTANTIATE_TEST_SUITE_P(Happenings, InACallback, testing::ValuesIn(kHappenings),
                         [](const auto& row) { return row.param.name; });

class Threads : public testing::TestWithParam<unsigned> {};

TEST_P(Threads, ApplicationsCallEverythingWhileTheSupplicantTalks)
{
    Television television(GetParam());
    television.startWith({{"Net", "[ESS]"}});
    television.supplicant.attempts.lookAway();
    std::atomic<int> left = 10; // each causes further callbacks, on further threads
    television.set.onCallback([&](MovoNetCBReason_e, void*) {
        if (left-- > 0) {
            callEverything(television.set, "mlan0");
        }
    });
    for (int thread = 0; thread < 2; ++thread) {
        television.set.background([&television] {
            for (int round = 0; round < 3; ++round) {
                callEverything(television.set, "mlan0");
            }
        });
    }
    for (int round = 0; round < 10; ++round) {
        television.supplicant.says({kConnected, kHandshake, kDisconnected, kResults});
        television.set.grantTicks(5);
    }
    television.set.joinBackground();
    EXPECT_LE(television.supplicant.connections(), 2);
}

TEST_P(Threads, TheNetworkThatWasAskedForIsJoinedThoughTheTableChanges)
{
    Television television(GetParam());
    television.startWith({{"Net", "[ESS]"}, {"Other", "[ESS]"}});
    television.supplicant.attempts.lookAway();
    television.set.background([&television] {
        for (int round = 0; round < 50; ++round) {
            television.tells({{"Net", "[ESS]"}, {"Other", "[ESS]"}});
            EXPECT_EQ(Movo_NET_WifiUpdateEsss(0, "mlan0"), 0);
            television.tells({{"Other", "[ESS]"}, {"Net", "[ESS]"}});
            EXPECT_EQ(Movo_NET_WifiUpdateEsss(0, "mlan0"), 0);
        }
    });
    for (int round = 0; round < 50; ++round) {
        EXPECT_EQ(Movo_NET_WifiConnectEss(0, "mlan0", "Net"), 0);
    }
    television.set.joinBackground();
    const Lines commands = sent(television.supplicant);
    EXPECT_EQ(std::ranges::count(commands, "SET_NETWORK 0 ssid \"Net\""), 50);
    EXPECT_EQ(std::ranges::count(commands, "SET_NETWORK 0 ssid \"Other\""), 0);
}
INSTANTIATE_TEST_SUITE_P(Seeds, Threads, testing::Range(1U, 5U));
} // namespace
