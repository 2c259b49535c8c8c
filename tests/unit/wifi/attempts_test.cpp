#include "television.h"

#include <gtest/gtest.h>

// The watcher of attempts sees what it is for: each of these must fail the test that it happens in.

using namespace wifi;

namespace {
void expectComplaint(const std::function<void(Bench&)>& mistake)
{
    EXPECT_EQ(sim::forkedRun([&mistake] {
                  Bench bench;
                  mistake(bench);
              }),
              1);
}

void tell(Bench& bench, MovoNetCBReason_e reason)
{
    (void)NotifyApp(reason, &bench.iface);
}
} // namespace

TEST(Attempts, ACallbackThatEndsNoneIsSeen)
{
    for (const auto reason : {sim::IFCONNECTED, sim::WIFIBADKEY, sim::WIFITIMEOUT, sim::IFDISCONNECTED}) {
        expectComplaint([reason](Bench& bench) { tell(bench, reason); });
    }
}

TEST(Attempts, ASecondEndIsSeen)
{
    for (const auto reason : {sim::IFCONNECTED, sim::WIFIBADKEY, sim::WIFITIMEOUT}) {
        expectComplaint([reason](Bench& bench) {
            bench.connect();
            (void)bench.hear({kConnected});
            tell(bench, reason);
        });
    }
}

TEST(Attempts, AnAttemptOverAnotherIsSeen)
{
    expectComplaint([](Bench& bench) {
        bench.connect();
        (void)Wpactrl_ExecCmd(&bench.link(), "ENABLE_NETWORK  1");
    });
}

TEST(Attempts, ABadKeyWhoseNetworkStaysIsSeen)
{
    expectComplaint([](Bench& bench) {
        bench.connect();
        tell(bench, sim::WIFIBADKEY);
    });
}

TEST(Attempts, ANetworkThatTheEndOfAScanTakesIsSeen)
{
    for (const bool joined : {false, true}) {
        expectComplaint([joined](Bench& bench) {
            bench.connect();
            (void)bench.hear(joined ? Lines{kConnected} : Lines{});
            bench.link().isScanning = bench.link().isSearchingHideEss = 1; // as if a search had not been ended
            (void)bench.hear({kResults});
            EXPECT_EQ(bench.supplicant.attempts.ends()[End::Lost], 1);
        });
    }
}

TEST(Attempts, TheLastRequestOfTheTestNeedNotEnd)
{
    EXPECT_EQ(sim::forkedRun([] {
                  Bench bench;
                  bench.connect();
              }),
              0);
}
