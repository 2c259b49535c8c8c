#include "bench.h"
#include "names.h"
#include "sim/plants.h"

#include <gtest/gtest.h>
#include <unistd.h>

using namespace wifi;
using namespace movonet;

// The supplicant's process: adopted, launched and ended.

namespace {
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
    const char* told; // NULL: nothing
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
    const char* function = "Wpa_SetWpa_supplicantOff";
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, function, "checking file /tmp/wpa_supplicant_mlan0.pid\n");
    if (GetParam().told != nullptr) {
        EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, function, GetParam().told);
    }
    if (*GetParam().command == '\0') {
        EXPECT_TRUE(bench.set.commands().empty());
    } else {
        EXPECT_RAN(bench.set, GetParam().command);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Contents, KillByPidFile,
    testing::Values(PidCase{"4711\n", "kill -9 4711", "wpa_supplicant pid=4711\n"},
                    PidCase{"0\n", "", "wpa_supplicant pid=0\n"}, PidCase{"-1\n", "", "wpa_supplicant pid=-1\n"},
                    PidCase{"1\n", "", "wpa_supplicant pid=1\n"}, PidCase{"rubbish", "", "wpa_supplicant pid=0\n"},
                    PidCase{"", "", nullptr}, PidCase{"99999999999999999999", "", "wpa_supplicant pid=0\n"},
                    PidCase{"                              45", "kill -9 4", "wpa_supplicant pid=4\n"}));

TEST(OurOwnPid, IsNotKilledAsTheSupplicants)
{
    Bench bench;
    bench.supplicant.replies["TERMINATE"] = {"FAIL\n"};
    const std::string pid = std::to_string(getpid());
    bench.set.write("/tmp/wpa_supplicant_mlan0.pid", pid + "\n");
    bench.set.onCommand("kill -9").prints("");
    EXPECT_EQ(ShutdownWpactrl(&bench.iface), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, "Wpa_SetWpa_supplicantOff",
                  "wpa_supplicant pid=" + pid + "\n");
    EXPECT_TRUE(bench.set.commands().empty());
    EXPECT_EQ(bench.supplicant.closed, 2);
}

class PlantedSupplicantPid : public testing::TestWithParam<sim::Plant> {};

TEST_P(PlantedSupplicantPid, KillsNobody)
{
    Bench bench;
    bench.supplicant.replies["TERMINATE"] = {"FAIL\n"};
    bench.set.onCommand("kill -9").prints("");
    sim::plant(bench.set, "/tmp/wpa_supplicant_mlan0.pid", GetParam(), "4711\n");
    EXPECT_EQ(ShutdownWpactrl(&bench.iface), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, "Wpa_SetWpa_supplicantOff",
                  "checking file /tmp/wpa_supplicant_mlan0.pid\n");
    EXPECT_TRUE(bench.set.commands().empty());
    EXPECT_EQ(bench.supplicant.closed, 2);
}

INSTANTIATE_TEST_SUITE_P(Kinds, PlantedSupplicantPid,
                         testing::Values(sim::Plant::Link, sim::Plant::DanglingLink, sim::Plant::HardLink,
                                         sim::Plant::Fifo, sim::Plant::ForeignFile),
                         [](const auto& test) { return sim::nameOf(test.param); });

TEST(SupplicantAtBoot, IsAdoptedWithinTwelveFailures)
{
    Bench bench;
    bench.set.onCommand("ps |grep wpa_supplicant").fails(256).times(12);
    for (int look = 0; look < 12; ++look) {
        EXPECT_EQ(Wpa_SetWpa_supplicantOn(&bench.iface), 1);
        EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, "Wpa_SetWpa_supplicantOn",
                      "Wpa_supplicant is not running.wait_count " + std::to_string(look) + "\n");
    }
    bench.set.onCommand("ps |grep wpa_supplicant").prints("");
    EXPECT_EQ(Wpa_SetWpa_supplicantOn(&bench.iface), 0);
    EXPECT_EQ(Wpa_SetWpa_supplicantOn(&bench.iface), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, "Wpa_SetWpa_supplicantOn",
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
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kLinkModule, "Wpa_SetWpa_supplicantOn",
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
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kLinkModule, "Wpa_SetWpa_supplicantOn",
                  "Current WPA_Supplicant cmd is: " + GetParam().command + "\n");
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, "Wpa_SetWpa_supplicantOn",
                  std::string("WPA_SUPPLICANT_STR: ") + GetParam().pattern + "\n");
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, "Wpa_Wpa_supplicantIsOn",
                  "Command: ps |grep wpa_supplicant\n");
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
