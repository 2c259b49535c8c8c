#include "bench.h"

#include <gtest/gtest.h>

using namespace wifi;
using namespace movonet;

namespace {
constexpr const char* kModule = "movo_net_fl_wpactrl";
}

TEST(Open, GoesOverTheSetsSocketWhateverTheInterface)
{
    Bench bench;
    EXPECT_EQ(bench.supplicant.opened, (Lines{"/dev/socket//wpa_mlan0", "/dev/socket//wpa_mlan0"}));
    EXPECT_EQ(bench.supplicant.attached, 1);
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
            EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kModule, "Wpactrl_Init", wanted);
            EXPECT_EQ(bench.link().ctrl_conn, nullptr);
            const auto opened = static_cast<int>(bench.supplicant.opened.size());
            EXPECT_EQ(bench.supplicant.closed - before, opened - bench.supplicant.openFailures - 1 +
                                                            (wanted.find("attach") != std::string::npos ? 1 : 0));
        });
        EXPECT_EQ(failed, 0) << text;
    }
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
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kModule, "Wpactrl_ExecCmd", "send [X] again\n");
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

TEST(Shutdown, EndsTheSupplicantAndClosesBothConnections)
{
    Bench bench;
    EXPECT_EQ(ShutdownWpactrl(&bench.iface), 0);
    EXPECT_EQ(sent(bench.supplicant), Lines{"TERMINATE"});
    EXPECT_EQ(bench.supplicant.detached, 1);
    EXPECT_EQ(bench.supplicant.closed, 2);
    EXPECT_EQ(bench.link().ctrl_conn, nullptr);
    EXPECT_EQ(ShutdownWpactrl(&bench.iface), 0);
    EXPECT_EQ(bench.supplicant.closed, 2);
}

namespace {
struct PidCase {
    const char* contents;
    const char* command;
};
class KillByPidFile : public testing::TestWithParam<PidCase> {};
} // namespace

TEST_P(KillByPidFile, WhenTheSupplicantDoesNotObey)
{
    Bench bench;
    bench.supplicant.replies["TERMINATE"] = {"FAIL\n"};
    bench.set.write("/tmp/wpa_supplicant_mlan0.pid", GetParam().contents);
    bench.set.onCommand("kill -9").prints("");
    EXPECT_EQ(ShutdownWpactrl(&bench.iface), 0);
    EXPECT_EQ(bench.supplicant.closed, 2);
    if (*GetParam().command == '\0') {
        EXPECT_TRUE(bench.set.commands().empty());
    } else {
        EXPECT_RAN(bench.set, GetParam().command);
    }
}

INSTANTIATE_TEST_SUITE_P(Contents, KillByPidFile,
                         testing::Values(PidCase{"4711\n", "kill -9 4711"}, PidCase{"0\n", ""}, PidCase{"-1\n", ""},
                                         PidCase{"1\n", ""}, PidCase{"rubbish", ""}, PidCase{"", ""},
                                         PidCase{"99999999999999999999", ""}));

TEST(SupplicantAtBoot, IsAdoptedWithinTwelveFailures)
{
    Bench bench;
    bench.set.onCommand("ps |grep wpa_supplicant").fails(256).times(12);
    bench.set.onCommand("ps |grep wpa_supplicant").fails(256).times(12);
    for (int look = 0; look < 12; ++look) {
        EXPECT_EQ(Wpa_SetWpa_supplicantOn(&bench.iface), 1);
        EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kModule, "Wpa_SetWpa_supplicantOn",
                      "Wpa_supplicant is not running.wait_count " + std::to_string(look) + "\n");
    }
    bench.set.onCommand("ps |grep wpa_supplicant").prints("");
    EXPECT_EQ(Wpa_SetWpa_supplicantOn(&bench.iface), 0);
    EXPECT_EQ(Wpa_SetWpa_supplicantOn(&bench.iface), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kModule, "Wpa_SetWpa_supplicantOn",
                  "Wpa_supplicant is already running.\n");
}

TEST(SupplicantAtBoot, KeepsRefusingAfterThirteenFailures)
{
    Bench bench;
    bench.set.onCommand("ps |grep wpa_supplicant").fails(256);
    for (int look = 0; look < 13; ++look) {
        EXPECT_EQ(Wpa_SetWpa_supplicantOn(&bench.iface), 1);
    }
    bench.set.onCommand("ps |grep wpa_supplicant").prints("");
    for (int look = 0; look < 3; ++look) {
        EXPECT_EQ(Wpa_SetWpa_supplicantOn(&bench.iface), 1);
    }
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kModule, "Wpa_SetWpa_supplicantOn",
                  "Max wait count reached, Wpa_supplicant may not be launched\n");
}

namespace {
/** Boot is over: a supplicant was seen once, and is gone. */
void endBoot(Bench& bench)
{
    bench.set.onCommand("ps |grep wpa_supplicant").prints("");
    EXPECT_EQ(Wpa_SetWpa_supplicantOn(&bench.iface), 0);
    bench.set.onCommand("ps |grep wpa_supplicant").fails(256);
    bench.set.forget();
}

struct TemplateCase {
    const char* pattern;
    std::string command;
};
class SupplicantTemplate : public testing::TestWithParam<TemplateCase> {};
} // namespace

TEST_P(SupplicantTemplate, IsExpandedAndNeverAFormat)
{
    setenv("ATHEROS_SUPPLICANT_STR", GetParam().pattern, 1);
    Bench bench;
    endBoot(bench);
    bench.wifi().devType = _MOVO_NET_WIFI_ATHEROS_;
    bench.set.onCommand(GetParam().command).prints("");
    EXPECT_EQ(Wpa_SetWpa_supplicantOn(&bench.iface), 0);
    EXPECT_RAN_IN_ORDER(bench.set, {"cp -f Misc/wpa_supplicant.conf /etc/", "sync", GetParam().command});
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kModule, "Wpa_SetWpa_supplicantOn",
                  "Current WPA_Supplicant cmd is: " + GetParam().command + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SupplicantTemplate,
    testing::Values(TemplateCase{"wpa -i%s -c%s -P/x_%s", "wpa -imlan0 -c/etc/wpa_supplicant.conf -P/x_mlan0"},
                    TemplateCase{"%s%s%s%s", "mlan0/etc/wpa_supplicant.confmlan0"},
                    TemplateCase{"a %% %n %d %5s %", "a % %n %d %5s %"}, TemplateCase{"%s", "mlan0"}));

TEST(SupplicantTemplate, IsCutAtItsBuffer)
{
    const std::string pattern(300, 'x');
    setenv("ATHEROS_SUPPLICANT_STR", pattern.c_str(), 1);
    Bench bench;
    endBoot(bench);
    bench.wifi().devType = _MOVO_NET_WIFI_ATHEROS_;
    bench.set.onCommand("xxx").prints("");
    EXPECT_EQ(Wpa_SetWpa_supplicantOn(&bench.iface), 0);
    EXPECT_RAN(bench.set, std::string(147, 'x'));
}

TEST(SupplicantLaunch, FailsWithoutChipTemplateOrShell)
{
    unsetenv("ATHEROS_SUPPLICANT_STR");
    Bench bench;
    endBoot(bench);
    EXPECT_EQ(Wpa_SetWpa_supplicantOn(&bench.iface), 1);
    bench.wifi().devType = _MOVO_NET_WIFI_ATHEROS_;
    EXPECT_EQ(Wpa_SetWpa_supplicantOn(&bench.iface), 1);
    setenv("ATHEROS_SUPPLICANT_STR", "launch", 1);
    bench.set.onCommand("launch").fails(-1);
    EXPECT_EQ(Wpa_SetWpa_supplicantOn(&bench.iface), 1);
    const std::string function = "Wpa_SetWpa_supplicantOn: ";
    EXPECT_EQ(
        told(bench.set, KEST_LEVEL_ERROR),
        (Lines{function + "The wifi device is not supported.\n",
               function + "WPA_SUPPLICANT_STR for device type 1 is not configured.\n",
               function + "Current WPA_Supplicant cmd is: launch\n", function + "Start wpa_supplicant failed.\n"}));
}
