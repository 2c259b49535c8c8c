#include "bench.h"

#include "movo_net_fl_eventloop/eventloop.h"
#include "support/atomic.h"

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <sched.h>

// A person looks for a hidden network, and picks another one before the search has ended: what is being joined is
// neither removed by the scan's result nor by its time-out, and WIFISCANDONE comes once.

using namespace wifi;
using namespace movonet;

namespace {
constexpr const char* kAssociatingHome =
    "<3>Trying to associate with 02:00:00:00:01:00 (SSID='My Home Net' freq=2412 MHz)";

struct Pick {
    const char* name;
    void (*picks)(Bench& bench);
    WpactrlConnectStatus_e status;
};
void PrintTo(const Pick& row, std::ostream* out)
{
    *out << row.name;
}

/** A search that has begun and that a pick has ended; 100 ticks later than it began, so that its time-out comes first.
 */
class HiddenSearchThenPick : public testing::TestWithParam<Pick> {
protected:
    HiddenSearchThenPick()
    {
        bench.supplicant.replies["WPS_PIN any"] = {"12345670"};
        bench.supplicant.replies["WPS_PIN any 12345670"] = {"12345670"};
        EXPECT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bench.iface, "Hidden"), 0);
        EXPECT_EQ(bench.link().isSearchingHideEss, 1);
        bench.set.grantTicks(100);
        GetParam().picks(bench);
        (void)sent(bench.supplicant);
    }

    void expectUntouched()
    {
        EXPECT_EQ(bench.link().isSearchingHideEss, 0);
        EXPECT_EQ(bench.link().connectStatus, GetParam().status);
        EXPECT_EQ(bench.link().connectTimerEventHandle != 0, GetParam().status == WPACTRL_STATUS_CONNECTING);
        EXPECT_EQ(sent(bench.supplicant), Lines{});
    }

    Bench bench;
};

const Pick kPicks[] = {
    {"Join", [](Bench& bench) { bench.connect(); }, WPACTRL_STATUS_CONNECTING},
    {"PushButton", [](Bench& bench) { EXPECT_EQ(int_Movo_Net_Wpactrl_WPSPBC(&bench.iface), 0); },
     WPACTRL_STATUS_CONNECTING},
    {"Pin", [](Bench& bench) { EXPECT_EQ(int_Movo_Net_Wpactrl_WPSSetPIN(&bench.iface, "12345670"), 0); },
     WPACTRL_STATUS_CONNECTING},
    {"MadePin",
     [](Bench& bench) {
         char pin[9];
         EXPECT_EQ(int_Movo_Net_Wpactrl_WPSGetPIN(&bench.iface, pin, sizeof(pin)), 0);
     },
     WPACTRL_STATUS_NONE},
    {"JoinThatIsDone",
     [](Bench& bench) {
         bench.connect();
         (void)bench.hear({kConnected});
         EXPECT_CALLBACKS(bench.set, {{sim::IFCONNECTED, "mlan0"}});
     },
     WPACTRL_STATUS_CONNECTED},
};
} // namespace

TEST_P(HiddenSearchThenPick, EndsWithTheResults)
{
    EXPECT_EQ(bench.hear({kAssociatingHome}), 0);
    EXPECT_CALLBACKS(bench.set, {}) << "that is the pick's";
    EXPECT_EQ(bench.hear({kResults, kAssociatingHome, kResults}), 0);
    EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}});
    expectUntouched();
    bench.set.grantTicks(290);
    EXPECT_CALLBACKS(bench.set, {});
}

TEST_P(HiddenSearchThenPick, EndsWithItsTimeOut)
{
    bench.set.grantTicks(202);
    EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}});
    EXPECT_EQ(bench.link().isScanning, 0);
    expectUntouched();
    EXPECT_EQ(bench.hear({kResults, kAssociatingHome}), 0);
    EXPECT_CALLBACKS(bench.set, {});
}
INSTANTIATE_TEST_SUITE_P(Picks, HiddenSearchThenPick, testing::ValuesIn(kPicks),
                         [](const auto& row) { return row.param.name; });

TEST(HiddenSearch, ThatAJoinOvertakesMarksNothing)
{
    Bench bench;
    bool overtaken = false;
    bench.set.onLog([&](const sim::LogLine& line) {
        // The search's last command is on its way: another thread's join begins and is taken.
        if (line.text == "command: SELECT_NETWORK  0\n" && !std::exchange(overtaken, true)) {
            MovNetWifiEssItem_t& ess = bench.list("Net", _MOVO_NET_WIFI_SECURITY_OPEN_, _MOVO_NET_WIFI_ENCRYP_NONE_);
            EXPECT_EQ(int_Movo_Net_Wpactrl_Connect(&bench.iface, &ess), 0);
        }
    });
    EXPECT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bench.iface, "Hidden"), 0);
    EXPECT_TRUE(overtaken);
    EXPECT_EQ(bench.link().isSearchingHideEss, 0);
    (void)sent(bench.supplicant);
    EXPECT_EQ(bench.hear({kResults, kConnected}), 0);
    EXPECT_EQ(sent(bench.supplicant), Lines{});
    EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}, {sim::IFCONNECTED, "mlan0"}});
}

namespace {
/** A command of each pick, behind its removal of networks. */
struct Sending {
    std::string command;
    const Pick& pick;
};
const Sending kSendings[] = {{"ADD_NETWORK", kPicks[0]},
                             {"WPS_PBC any", kPicks[1]},
                             {"WPS_PIN any 12345670", kPicks[2]},
                             {"WPS_PIN any", kPicks[3]}};
} // namespace

TEST(HiddenSearch, IsEndedBeforeAPicksFirstCommands)
{
    for (const Sending& each : kSendings) {
        const int failed = sim::forkedRun([&] {
            Bench bench;
            bench.supplicant.replies["WPS_PIN any"] = {"12345670"};
            bench.supplicant.replies["WPS_PIN any 12345670"] = {"12345670"};
            ASSERT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bench.iface, "Hidden"), 0);
            (void)sent(bench.supplicant);
            bench.set.onLog([&](const sim::LogLine& line) {
                if (line.text == "command: " + each.command + "\n") {
                    EXPECT_CALLBACKS(bench.set, {});
                    EXPECT_EQ(bench.hear({kResults}), 0);
                    EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}});
                    EXPECT_EQ(sent(bench.supplicant), Lines{"REMOVE_NETWORK ALL"}) << "the pick's own";
                }
            });
            each.pick.picks(bench);
            EXPECT_EQ(bench.link().isScanning, 0) << "the results came";
        });
        EXPECT_EQ(failed, 0) << each.command;
    }
}

TEST(HiddenSearch, ThatBeginsInsideAJoinIsEndedByIt)
{
    for (const Sending& each : kSendings) {
        if (each.pick.status == WPACTRL_STATUS_NONE) {
            continue; // the search takes its place
        }
        const int failed = sim::forkedRun([&] {
            Bench bench;
            bench.supplicant.replies["WPS_PIN any 12345670"] = {"12345670"};
            bool searched = false;
            bench.set.onLog([&](const sim::LogLine& line) {
                // The join's command is on its way: another thread's search begins and is taken.
                if (line.text == "command: " + each.command + "\n" && !std::exchange(searched, true)) {
                    EXPECT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bench.iface, "Hidden"), 0);
                    EXPECT_EQ(bench.link().isSearchingHideEss, 1);
                }
            });
            each.pick.picks(bench);
            EXPECT_TRUE(searched);
            EXPECT_EQ(bench.link().isSearchingHideEss, 0);
            (void)sent(bench.supplicant);
            EXPECT_EQ(bench.hear({kResults, kAssociating}), 0);
            EXPECT_EQ(sent(bench.supplicant), Lines{});
            EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTING);
            EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}});
        });
        EXPECT_EQ(failed, 0) << each.command;
    }
}

/** A lost lease is retried meanwhile: what it makes of the searched network goes with the search. */
TEST(HiddenSearch, ThatARetryOvertakesStillTakesItsNetworkAway)
{
    Bench bench;
    bool retried = false;
    bench.set.onLog([&](const sim::LogLine& line) {
        if (line.text == "command: SELECT_NETWORK  0\n" && !std::exchange(retried, true)) {
            EXPECT_EQ(int_Movo_Net_Wpactrl_ResetConnecting(&bench.iface), 0);
        }
    });
    EXPECT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bench.iface, "Hidden"), 0);
    EXPECT_TRUE(retried);
    EXPECT_EQ(bench.link().isSearchingHideEss, 1);
    (void)sent(bench.supplicant);
    EXPECT_EQ(bench.hear({kResults}), 0);
    EXPECT_EQ(sent(bench.supplicant), Lines{"REMOVE_NETWORK ALL"});
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_NONE);
    EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}});
}

/** The time-out has seen the search and is about to remove its network, while another thread begins a join. */
TEST(HiddenSearch, ThatTimesOutTakesNoNetworkThatAJoinHasAdded)
{
    Bench bench;
    ASSERT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bench.iface, "Hidden"), 0);
    (void)sent(bench.supplicant);
    std::atomic<bool> begun = false;
    bench.set.onLog([&](const sim::LogLine& line) { begun = begun || line.text.starts_with("try to connect"); });
    bench.set.fail({.call = sim::Call::MutexLock,
                    .object = &bench.link().lock,
                    .size = sizeof(bench.link().lock),
                    .thread = sim::ThreadKind::Loop,
                    .nth = 2, // the first one is the handler's own
                    .does = [&] {
                        bench.set.background([&bench] { bench.connect(); });
                        for (int yields = 0; !begun || yields < 1000; ++yields) {
                            (void)sched_yield(); // it goes as far as it can
                        }
                        EXPECT_EQ(sent(bench.supplicant), Lines{});
                    }});
    bench.set.grantTicks(302);
    bench.set.joinBackground();
    EXPECT_TRUE(begun);
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTING);
    EXPECT_EQ(bench.link().isSearchingHideEss, 0);
}

/** The time-out of an earlier scan is reported while another thread's search is half way. */
TEST(HiddenSearch, DuringTheReportOfATimeOutIsReportedToo)
{
    Bench bench;
    ASSERT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 0);
    std::atomic<bool> halfWay = false;
    std::atomic<bool> reported = false;
    bench.set.onLog([&](const sim::LogLine& line) {
        if (line.text == "command: ADD_NETWORK\n") {
            halfWay = true;
            while (!reported) {
                (void)sched_yield();
            }
        }
    });
    bench.set.onCallback([&](MovoNetCBReason_e, void*) {
        reported = true;
        for (int yields = 0; load(bench.link().isSearchingHideEss) == 0 && yields < 1000; ++yields) {
            (void)sched_yield(); // it goes as far as it can
        }
    });
    bench.set.background([&bench] { EXPECT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bench.iface, "Hidden"), 0); });
    while (!halfWay) {
        (void)sched_yield();
    }
    {
        const LoopGate gate; // handlers run with the loop's lock held
        EXPECT_EQ(OnScanTimeoutEventRev(-1, &bench.iface, kTrue), 0);
    }
    bench.set.joinBackground();
    EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}});
    (void)sent(bench.supplicant);
    EXPECT_EQ(bench.hear({kResults}), 0);
    EXPECT_EQ(sent(bench.supplicant), Lines{"REMOVE_NETWORK ALL"});
    EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}});
}
