#include "bench.h"

#include "movo_net_fl_eventloop/eventloop.h"

#include <atomic>
#include <gtest/gtest.h>
#include <sched.h>

// The supplicant acts before it answers: what it reports may be read as soon as its reply has come, on the loop's
// thread, while the caller's has not gone on.

using namespace wifi;
using namespace movonet;

namespace {
/** What the loop does when `message` arrives now: unless its handlers are kept off, it reads it at once. */
void readNow(Bench& bench, const char* message)
{
    bench.supplicant.events.emplace_back(message);
    bench.set.background([&bench] {
        if (eventListLock.tryLock()) {
            (void)OnWpactrlEventRev(bench.link().fd, &bench.iface, 0);
            eventListLock.unlock();
        }
    });
    bench.set.joinBackground();
}

void waitFor(const std::atomic<bool>& flag)
{
    while (!flag) {
        (void)sched_yield();
    }
}

/** Tells whether the loop could run a handler now. */
bool loopIsFree(Bench& bench)
{
    bool isFree = false;
    bench.set.background([&isFree] {
        isFree = eventListLock.tryLock();
        if (isFree) {
            eventListLock.unlock();
        }
    });
    bench.set.joinBackground();
    return isFree;
}

/** `message` arrives right after the reply to `command`. */
void arrivesAfter(Bench& bench, const std::string& command, const char* message)
{
    auto previous = std::make_shared<std::string>();
    bench.set.onLog([&bench, command, message, previous](const sim::LogLine& line) {
        const std::string before = std::exchange(*previous, line.text);
        if (before == "command: " + command + "\n" && line.text.starts_with("reply: ")) {
            readNow(bench, message);
        }
    });
}

/** Joins an open network; `early` is reported before the call has returned. */
void join(Bench& bench, const char* early)
{
    MovNetWifiEssItem_t& ess = bench.list("Net", _MOVO_NET_WIFI_SECURITY_OPEN_, _MOVO_NET_WIFI_ENCRYP_NONE_);
    arrivesAfter(bench, "ENABLE_NETWORK  0", early);
    EXPECT_EQ(int_Movo_Net_Wpactrl_Connect(&bench.iface, &ess), 0);
    (void)bench.hear({}); // what is left
    EXPECT_TRUE(bench.supplicant.events.empty());
}
} // namespace

TEST(EarlyEvent, ConnectedIsAJoin)
{
    Bench bench;
    join(bench, kConnected);
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTED);
    EXPECT_EQ(bench.link().connectTimerEventHandle, 0);
    EXPECT_STREQ(bench.wifi().curOperatingEsss.essid, "Net");
    EXPECT_EQ(bench.wifi().curOperatingEsss.isConnected, 1);
    ASSERT_NE(int_Movo_Net_GetSavedConnectedEss(), nullptr);
    EXPECT_STREQ(int_Movo_Net_GetSavedConnectedEss()->essid, "Net");
    bench.set.grantTicks(400);
    EXPECT_CALLBACKS(bench.set, {{sim::IFCONNECTED, "mlan0"}});
}

TEST(EarlyEvent, HandshakeFailureIsABadKey)
{
    Bench bench;
    join(bench, kHandshake);
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_NONE);
    EXPECT_EQ(bench.link().connectTimerEventHandle, 0);
    EXPECT_EQ(sent(bench.supplicant).back(), "REMOVE_NETWORK ALL");
    bench.set.grantTicks(400);
    EXPECT_CALLBACKS(bench.set, {{sim::WIFIBADKEY, "mlan0"}});
}

TEST(Enabling, IsSentWhileConnectingAndNoneIsBackWhenItIsRefused)
{
    Bench bench;
    bench.supplicant.replies["ENABLE_NETWORK  0"] = {"FAIL\n"};
    bench.supplicant.onCommand = [&bench](const std::string& command) {
        const bool enables = command.starts_with("ENABLE");
        EXPECT_EQ(bench.link().connectStatus, enables ? WPACTRL_STATUS_CONNECTING : WPACTRL_STATUS_NONE) << command;
    };
    MovNetWifiEssItem_t& ess = bench.list("Net", _MOVO_NET_WIFI_SECURITY_OPEN_, _MOVO_NET_WIFI_ENCRYP_NONE_);
    EXPECT_EQ(int_Movo_Net_Wpactrl_Connect(&bench.iface, &ess), 1);
    EXPECT_EQ(sent(bench.supplicant).back(), "ENABLE_NETWORK  0");
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_NONE);
    EXPECT_EQ(bench.link().connectTimerEventHandle, 0);
    EXPECT_STREQ(bench.wifi().curOperatingEsss.essid, "");
    EXPECT_EQ(errors(bench.set), (Lines{"Wpactrl_ExecCmd: [ENABLE_NETWORK  0] failed\n",
                                        "int_Movo_Net_Wpactrl_Connect: [ENABLE_NETWORK  0] failed\n"}));
}

TEST(EarlyEvent, OfWpsIsReadOnceItsModeIsSet)
{
    Bench bench;
    bool keptOff = false;
    bench.set.onLog([&](const sim::LogLine& line) {
        if (line.text == "add connect timer event\n") {
            keptOff = !loopIsFree(bench);
        }
    });
    EXPECT_EQ(int_Movo_Net_Wpactrl_WPSPBC(&bench.iface), 0);
    EXPECT_TRUE(keptOff) << "a handler would find the state without the mode";
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTING);
    EXPECT_EQ(bench.link().isWpsMode, 1);
}

namespace {
/** The results of a scan are read while its command is on its way. */
void scanWithEarlyResults(Bench& bench)
{
    bench.set.onLog([&bench](const sim::LogLine& line) {
        if (line.text == "command: SCAN\n") {
            EXPECT_EQ(bench.hear({kResults}), 0);
        }
    });
}
} // namespace

TEST(EarlyEvent, OfAScanEndsIt)
{
    Bench bench;
    scanWithEarlyResults(bench);
    EXPECT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 0);
    EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}});
    EXPECT_EQ(bench.link().isScanning, 0);
    EXPECT_EQ(bench.link().scanTimerEventHandle, 0);
    EXPECT_EQ(bench.hear({kResults}), 0);
    bench.set.grantTicks(400);
    EXPECT_CALLBACKS(bench.set, {}) << "once";
}

TEST(EarlyEvent, RightAfterTheReplyToAScanEndsItOnce)
{
    Bench bench;
    arrivesAfter(bench, "SCAN", kResults);
    EXPECT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 0);
    (void)bench.hear({});
    EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}});
    bench.set.grantTicks(400);
    EXPECT_CALLBACKS(bench.set, {});
}

TEST(EarlyEvent, MeetsNoScanHalfArmed)
{
    Bench bench;
    bool keptOff = false;
    bench.set.onLog([&](const sim::LogLine& line) {
        if (line.text == "add scan timer event\n") {
            keptOff = !loopIsFree(bench);
        }
    });
    EXPECT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 0);
    EXPECT_TRUE(keptOff) << "a scan that has ended would be marked again";
    EXPECT_EQ(bench.link().isScanning, 1);
}

TEST(RefusedScan, IsNoneThatRuns)
{
    Bench bench;
    bench.supplicant.replies["SCAN"] = {"FAIL\n"};
    bench.supplicant.onCommand = [&bench](const std::string&) { EXPECT_EQ(bench.link().isScanning, 1); };
    EXPECT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 1);
    EXPECT_EQ(bench.link().isScanning, 0);
    EXPECT_EQ(bench.hear({kResults}), 0);
    EXPECT_CALLBACKS(bench.set, {});
}

TEST(RefusedScan, LeavesTheOneBeforeItRunning)
{
    Bench bench;
    bench.supplicant.replies["SCAN"] = {"OK\n", "FAIL\n"};
    EXPECT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 0);
    EXPECT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 1);
    EXPECT_EQ(bench.link().isScanning, 1);
    EXPECT_EQ(bench.hear({kResults}), 0);
    EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}});
}

/** Two threads scan at once; the supplicant refuses the first scan, and takes the second before that one has ended. */
TEST(RefusedScan, LeavesOneAloneThatAnotherThreadHasBegun)
{
    Bench bench;
    std::atomic<bool> refused = false;
    std::atomic<bool> taken = false;
    bench.supplicant.replies["SCAN"] = {"FAIL\n", "OK\n"};
    bench.set.onLog([&](const sim::LogLine& line) {
        if (line.text == "[SCAN] failed\n" && line.function == "int_Movo_Net_Wpactrl_Scan") {
            refused = true;
            waitFor(taken);
        } else if (line.text == "reply: OK\n\n") {
            taken = true;
            bench.set.joinBackground();
        }
    });
    bench.set.background([&bench] { EXPECT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 1); });
    waitFor(refused);
    EXPECT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 0);
    EXPECT_EQ(bench.link().isScanning, 1);
    EXPECT_NE(bench.link().scanTimerEventHandle, 0);
    EXPECT_EQ(bench.hear({kResults}), 0);
    EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}});
}

/** The time-out of a scan is reported, and another thread scans at once, before the callback has returned. */
TEST(Scan, OfAnotherThreadDuringTheReportOfATimeOutIsReported)
{
    Bench bench;
    ASSERT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 0);
    std::atomic<bool> taken = false;
    bench.set.onLog([&](const sim::LogLine& line) { taken = taken || line.text == "reply: OK\n\n"; });
    bench.set.onCallback([&](MovoNetCBReason_e, void*) {
        if (!taken) {
            bench.set.background([&bench] { EXPECT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 0); });
            waitFor(taken);
        }
    });
    bench.set.grantTicks(302);
    bench.set.joinBackground();
    EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}});
    EXPECT_NE(bench.link().scanTimerEventHandle, 0);
    EXPECT_EQ(bench.hear({kResults}), 0);
    EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}});
}

TEST(Scan, DuringAnotherOneIsReportedToo)
{
    Bench bench;
    ASSERT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 0);
    scanWithEarlyResults(bench); // those of the first
    EXPECT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 0);
    EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}});
    EXPECT_NE(bench.link().scanTimerEventHandle, 0);
    EXPECT_EQ(bench.hear({kResults}), 0);
    EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}});
}
