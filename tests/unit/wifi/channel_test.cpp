#include "bench.h"
#include "names.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <utility>
#include <wpa_ctrl.h>

using namespace wifi;
using namespace movonet;

namespace {
}

TEST(Open, GoesOverTheSetsSocketWhateverTheInterface)
{
    Bench bench;
    EXPECT_EQ(bench.supplicant.opened, (Lines{"/dev/socket//wpa_mlan0", "/dev/socket//wpa_mlan0"}));
    EXPECT_EQ(bench.supplicant.attached, 1);
    EXPECT_EQ(Wpactrl_Init(&bench.link(), "wlan7"), 0);
    EXPECT_EQ(told(bench.set, KEST_LEVEL_INFO), Lines{"Wpactrl_Init: open wpa_ctrl /dev/socket//wpa_mlan0, ctrl\n"});
}

TEST(Open, LeavesNothingToTheProgramsThatTheGlueStarts)
{
    Bench bench;
    for (wpa_ctrl* connection : {bench.link().ctrl_conn, bench.link().mon_conn}) {
        EXPECT_EQ(fcntl(wpa_ctrl_get_fd(connection), F_GETFD), FD_CLOEXEC);
    }
    EXPECT_EQ(bench.link().fd, wpa_ctrl_get_fd(bench.link().mon_conn));
}

TEST(Open, RefusesADescriptorThatTheLoopCannotWatch)
{
    Bench bench;
    bench.supplicant.shownDescriptor = 1023;
    EXPECT_EQ(Wpactrl_Init(&bench.link(), "mlan0"), 0);
    bench.supplicant.shownDescriptor = 1024;
    EXPECT_EQ(Wpactrl_Init(&bench.link(), "mlan0"), 1);
    EXPECT_EQ(told(bench.set, KEST_LEVEL_ERROR),
              Lines{"Wpactrl_Init: cannot open wpa_ctrl /dev/socket//wpa_mlan0, ctrl\n"});
    EXPECT_EQ(bench.supplicant.connections(), 0);
}

TEST(Open, ClosesWhatItOpenedWhenAStepFails)
{
    for (const char* text : {"cannot open wpa_ctrl /dev/socket//wpa_mlan0, ctrl\n",
                             "cannot open wpa_ctrl /dev/socket//wpa_mlan0, mon\n", "cannot attach to wpa_ctrl\n"}) {
        const int failed = sim::forkedRun([text] {
            Bench bench;
            const int before = bench.supplicant.closed;
            const std::string wanted(text);
            bench.supplicant.openFailures = wanted.find("attach") == std::string::npos ? 1 : 0;
            bench.supplicant.openGrants = wanted.find("mon") != std::string::npos ? 1 : 0;
            bench.supplicant.attachFails = wanted.find("attach") != std::string::npos;
            EXPECT_EQ(Wpactrl_Init(&bench.link(), "mlan0"), 1);
            EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kLinkModule, "Wpactrl_Init", wanted);
            EXPECT_EQ(bench.link().ctrl_conn, nullptr);
            const auto opened = static_cast<int>(bench.supplicant.opened.size());
            EXPECT_EQ(bench.supplicant.closed - before, opened - bench.supplicant.openFailures - 1 +
                                                            (wanted.find("attach") != std::string::npos ? 1 : 0));
        });
        EXPECT_EQ(failed, 0) << text;
    }
}

TEST(Open, LeavesNoClosedConnectionInItsPlaceMeanwhile)
{
    Bench bench;
    ASSERT_NE(bench.link().ctrl_conn, nullptr) << "left over";
    bench.supplicant.onOpen = [&bench] {
        EXPECT_EQ(bench.link().ctrl_conn, nullptr) << "another thread would send on it";
        EXPECT_EQ(bench.supplicant.closed, 2);
    };
    EXPECT_EQ(Wpactrl_Init(&bench.link(), "mlan0"), 0);
    EXPECT_EQ(bench.supplicant.connections(), 2);
}

TEST(Open, ChecksItsArguments)
{
    Bench bench;
    EXPECT_EQ(Wpactrl_Init(nullptr, "mlan0"), 5);
    EXPECT_EQ(Wpactrl_Init(&bench.link(), nullptr), 5);
    EXPECT_EQ(Wpactrl_Init(&bench.link(), ""), 5);
}

TEST(Execute, RepeatsABusyCommandOnceAfterHalfASecond)
{
    Bench bench;
    bench.supplicant.replies["X"] = {"FAIL-BUSY\n", "OK\n"};
    const std::int64_t before = bench.set.clock();
    EXPECT_EQ(Wpactrl_ExecCmd(&bench.link(), "X"), 0);
    EXPECT_EQ(bench.set.clock() - before, 500);
    EXPECT_EQ(sent(bench.supplicant), (Lines{"X", "X"}));
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, "Wpactrl_ExecCmd", "send [X] again\n");
}

TEST(Execute, KeepsTheSecondReplyWithinTheFirstOnesLength)
{
    Bench bench;
    bench.supplicant.replies["X"] = {"FAIL-BUSY\n", "OK, but longer\n"};
    EXPECT_EQ(Wpactrl_ExecCmd(&bench.link(), "X"), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, "Wpactrl_SendCmd", "command: X\n");
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, "Wpactrl_SendCmd", "reply: FAIL-BUSY\n\n");
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, "Wpactrl_SendCmd", "reply: OK, but lo\n");
}

TEST(Execute, GivesUpWhenTheSecondTimeFailsToo)
{
    Bench bench;
    bench.supplicant.nextReplies = {"FAIL-BUSY\n", "FAIL-BUSY\n", "FAIL-BUSY\n"};
    EXPECT_EQ(Wpactrl_ExecCmd(&bench.link(), "SCAN X"), 1);
    bench.supplicant.results = {0, -1};
    EXPECT_EQ(Wpactrl_ExecCmd(&bench.link(), "X"), 1);
    EXPECT_EQ(told(bench.set, KEST_LEVEL_ERROR),
              (Lines{"Wpactrl_ExecCmd: [SCAN X] failed\n", "Wpactrl_ExecCmd: [SCAN X] failed again\n",
                     "Wpactrl_ExecCmd: [X] failed\n", "Wpactrl_SendCmd: wpa_ctrl_request error\n",
                     "Wpactrl_ExecCmd: [X] failed again\n"}));
    EXPECT_EQ(bench.link().scanTimerEventHandle, 0) << "that is for a scan";
}

TEST(Execute, TakesARefusalAtOnce)
{
    Bench bench;
    bench.supplicant.replies["X"] = {"FAIL\n"};
    EXPECT_EQ(Wpactrl_ExecCmd(&bench.link(), "X"), 1);
    EXPECT_EQ(sent(bench.supplicant), Lines{"X"});
    EXPECT_EQ(told(bench.set, KEST_LEVEL_ERROR), Lines{"Wpactrl_ExecCmd: [X] failed\n"});
}

TEST(Execute, ChecksItsArguments)
{
    Bench bench;
    EXPECT_EQ(Wpactrl_ExecCmd(&bench.link(), nullptr), 5);
    EXPECT_EQ(Wpactrl_ExecCmd(nullptr, "X"), 5);
    EXPECT_EQ(told(bench.set, KEST_LEVEL_ERROR), Lines{"Wpactrl_ExecCmd: Wpactrl_SendCmd failed\n"});
}

TEST(Send, FailsAtOnceWhenThePeerIsGone)
{
    Bench bench;
    bench.supplicant.results = {-1};
    EXPECT_EQ(Wpactrl_ExecCmd(&bench.link(), "X"), 1);
    EXPECT_EQ(told(bench.set, KEST_LEVEL_ERROR),
              (Lines{"Wpactrl_SendCmd: wpa_ctrl_request error\n", "Wpactrl_ExecCmd: Wpactrl_SendCmd failed\n"}));
    EXPECT_EQ(bench.supplicant.opened.size(), 2U) << "no reconnection";
}

TEST(Send, ReconnectsUnderTheInterfacesNameAfterATimeout)
{
    Bench bench;
    bench.supplicant.results = {-2};
    EXPECT_EQ(Wpactrl_ExecCmd(&bench.link(), "X"), 1) << "the command is not repeated, its reply is empty";
    EXPECT_EQ(bench.supplicant.opened.back(), "/dev/socket//mlan0");
    EXPECT_EQ(bench.supplicant.closed, 1);
    EXPECT_EQ(sent(bench.supplicant), Lines{"X"});
    EXPECT_EQ(told(bench.set, KEST_LEVEL_ERROR),
              (Lines{"Wpactrl_SendCmd: wpa_ctrl_request time out\n", "Wpactrl_ExecCmd: [X] failed\n"}));
    EXPECT_EQ(Wpactrl_ExecCmd(&bench.link(), "X"), 0) << "the new connection works";
}

namespace {
/** A link with a connection but not yet with an owner. */
struct Unowned {
    explicit Unowned(Bench& bench) { w.ctrl_conn = std::exchange(bench.link().ctrl_conn, nullptr); }
    ~Unowned() { closeCommandConnection(w); }
    Unowned(const Unowned&) = delete;
    Unowned& operator=(const Unowned&) = delete;

    Wpactrl_t w{};
};
} // namespace

TEST(Send, ReconnectsUnderTheNameOfWhoeverOwnsTheLink)
{
    Bench bench;
    Unowned unowned(bench);
    MovoNetWifi_t wifi{};
    std::strcpy(bench.iface.name, "wlan7");
    bench.supplicant.results = {-2, -2, -2};
    EXPECT_EQ(Wpactrl_ExecCmd(&unowned.w, "X"), 1);
    unowned.w.pWifiIface = &wifi;
    EXPECT_EQ(Wpactrl_ExecCmd(&unowned.w, "X"), 1);
    wifi.piface = &bench.iface;
    EXPECT_EQ(Wpactrl_ExecCmd(&unowned.w, "X"), 1);
    const Lines& opened = bench.supplicant.opened;
    EXPECT_EQ(Lines(opened.end() - 3, opened.end()),
              (Lines{"/dev/socket//mlan0", "/dev/socket//mlan0", "/dev/socket//wlan7"}));
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, "Wpactrl_Reconnect",
                  "open wpa_ctrl /dev/socket//wlan7, ctrl\n");
}

TEST(Send, ClosesWhatAnotherThreadHasReopenedMeanwhile)
{
    Bench bench;
    bench.supplicant.results = {-2};
    bool other = false;
    bench.supplicant.onOpen = [&] {
        if (!std::exchange(other, true)) {
            bench.link().ctrl_conn = wpa_ctrl_open("by another thread");
            bench.link().ctrlClosed = 0;
        }
    };
    EXPECT_EQ(Wpactrl_ExecCmd(&bench.link(), "X"), 1);
    EXPECT_EQ(bench.supplicant.connections(), 2) << "one for commands, one for events";
}

TEST(Send, LeavesTheConnectionAloneWithoutAName)
{
    Bench bench;
    bench.iface.name[0] = '\0';
    bench.supplicant.results = {-2};
    EXPECT_EQ(Wpactrl_ExecCmd(&bench.link(), "X"), 1);
    EXPECT_EQ(bench.supplicant.closed, 0);
    EXPECT_EQ(told(bench.set, KEST_LEVEL_ERROR),
              (Lines{"Wpactrl_SendCmd: wpa_ctrl_request time out\n", "Wpactrl_SendCmd: Wpactrl_Reconnect failed\n",
                     "Wpactrl_ExecCmd: Wpactrl_SendCmd failed\n"}));
    EXPECT_EQ(Wpactrl_ExecCmd(&bench.link(), "X"), 0);
}

TEST(Send, ChecksItsArguments)
{
    Bench bench;
    char reply[8];
    std::size_t length = sizeof(reply) - 1;
    EXPECT_EQ(Wpactrl_SendCmd(nullptr, "X", reply, &length), 5);
    EXPECT_EQ(Wpactrl_SendCmd(&bench.link(), "X", nullptr, &length), 5);
    EXPECT_EQ(Wpactrl_SendCmd(&bench.link(), "X", reply, nullptr), 5);
    Wpactrl_t unopened{};
    EXPECT_EQ(Wpactrl_SendCmd(&unopened, "X", reply, &length), 5);
    EXPECT_TRUE(bench.set.log().empty());
}

TEST(Send, NeverUsesAConnectionThatCouldNotBeReopened)
{
    Bench bench;
    bench.supplicant.results = {-2};
    bench.supplicant.openFailures = 1;
    const std::int64_t before = bench.set.clock();
    EXPECT_EQ(Wpactrl_ExecCmd(&bench.link(), "X"), 1);
    EXPECT_EQ(bench.set.clock() - before, 500);
    EXPECT_NE(bench.link().ctrl_conn, nullptr);
    EXPECT_EQ(told(bench.set, KEST_LEVEL_ERROR),
              (Lines{"Wpactrl_SendCmd: wpa_ctrl_request time out\n",
                     "Wpactrl_Reconnect: cannot open wpa_ctrl /dev/socket//mlan0, "
                     "ctrl\n",
                     "Wpactrl_SendCmd: Wpactrl_Reconnect failed\n", "Wpactrl_ExecCmd: Wpactrl_SendCmd failed\n"}));
    (void)sent(bench.supplicant);
    EXPECT_EQ(Wpactrl_ExecCmd(&bench.link(), "X"), 1);
    EXPECT_EQ(sent(bench.supplicant), Lines{});
    EXPECT_EQ(ShutdownWpactrl(&bench.iface), 0);
    EXPECT_EQ(bench.supplicant.closed, 2) << "each connection once";
}

namespace {
/** While the link is being reopened after a time-out, another thread shuts it down at that line of the log. */
void shutDownAt(Bench& bench, const std::string& text)
{
    bench.set.onLog([&bench, text, left = 1](const sim::LogLine& line) mutable {
        if (line.text == text && left-- == 1) {
            EXPECT_EQ(ShutdownWpactrl(&bench.iface), 0);
        }
    });
}
} // namespace

TEST(Reconnection, OfALinkThatWasShutDownIsGivenUp)
{
    for (const char* text : {"wpa_ctrl_request time out\n", "open wpa_ctrl /dev/socket//mlan0, ctrl\n"}) {
        const int failed = sim::forkedRun([text] {
            Bench bench;
            bench.supplicant.results = {-2};
            shutDownAt(bench, text);
            const std::int64_t before = bench.set.clock();
            EXPECT_EQ(Wpactrl_ExecCmd(&bench.link(), "X"), 1);
            EXPECT_EQ(bench.set.clock() - before, 500);
            EXPECT_EQ(bench.link().ctrl_conn, nullptr);
            EXPECT_EQ(bench.supplicant.connections(), 0) << "nobody would close it";
            EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kLinkModule, "Wpactrl_SendCmd", "Wpactrl_Reconnect failed\n");
        });
        EXPECT_EQ(failed, 0) << text;
    }
}

TEST(Reconnection, LeavesALinkAloneThatWasOpenedAnew)
{
    Bench bench;
    bench.supplicant.results = {-2};
    bench.set.onLog([&bench, left = 1](const sim::LogLine& line) mutable {
        if (line.text == "wpa_ctrl_request time out\n" && left-- == 1) {
            EXPECT_EQ(ShutdownWpactrl(&bench.iface), 0);
            EXPECT_EQ(Wpactrl_Init(&bench.link(), "mlan0"), 0);
        }
    });
    EXPECT_EQ(Wpactrl_ExecCmd(&bench.link(), "X"), 1);
    EXPECT_EQ(bench.supplicant.opened.back(), "/dev/socket//wpa_mlan0");
    EXPECT_EQ(bench.supplicant.connections(), 2);
    EXPECT_EQ(Wpactrl_ExecCmd(&bench.link(), "X"), 0);
}
