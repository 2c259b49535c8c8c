/** What stands below a result that is no success: the cause, and the next step. */
#include "fake_net.h"
#include "play.h"
#include "tools/movo_net_shell/causes.h"
#include "tools/movo_net_shell/likeness.h"

#include <gtest/gtest.h>

namespace {
using namespace std::chrono_literals;

/** The line below the failure of a command whose call returns the code. */
std::string causeWhen(const std::string& function, int code, const std::string& line)
{
    fake::returns(function, code);
    const std::string output = play(line + "\n").output;
    const std::size_t end = output.find('\n');
    return end == std::string::npos || end + 1 == output.size() ? "" : output.substr(end + 1);
}

/** wlan0, which is wanted and up. */
void haveWireless()
{
    fake::addWireless("wlan0");
    fake::returns("Movo_NET_IsEnabledIface", 1);
    fake::returns("Movo_NET_IsActivedIface", 1);
}
} // namespace

TEST(ShellCauses, AnUnknownInterfaceIsNamedBesideTheKnownOnes)
{
    EXPECT_EQ(causeWhen("Movo_NET_GetIfaceMacAddress", 1, "mac eth9"),
              "  no interface \"eth9\"; there are lo and eth0\n");
    EXPECT_EQ(causeWhen("Movo_NET_ConfigIPMode", 1, "mode \x1b[2J dhcp"),
              "  no interface \"\\x1b[2J\"; there are lo and eth0\n");
}

TEST(ShellCauses, AnAnswerAboutAnUnknownInterfaceHasItsCauseToo)
{
    fake::returns("Movo_NET_IsPhyConnected", 1); // as the call answers for it
    EXPECT_EQ(play("link eth9\n").output, "1 yes\n  no interface \"eth9\"; there are lo and eth0\n");
    fake::returns("Movo_NET_IsPhyConnected", 0);
    EXPECT_EQ(play("link eth9\n").output, "0 no\n  no interface \"eth9\"; there are lo and eth0\n");
    EXPECT_EQ(play("link eth0\nrunning\nnetwork\n").output, "0 no\n1 yes\n0 no\n");
}

TEST(ShellCauses, AGlueThatDoesNotRun)
{
    fake::returns("Movo_NET_GetIfaceMacAddress", 1);
    EXPECT_EQ(play("stop\nmac eth0\n").output,
              "0 success\n1 failure\n  the glue was stopped, for good in this process; "
              "leave the shell and start it anew\n");
}

TEST(ShellCauses, AGlueThatWasNotStarted)
{
    fake::returns("Movo_NET_GetNumOfIfaces", 1);
    fake::returns("Movo_NET_IsInitializationDone", 0);
    fake::onCall([](const std::string& call) {
        if (call == "Movo_NET_GetNumOfIfaces") {
            fake::setRunning(false);
        }
    });
    EXPECT_EQ(play("count\n").output, "1 failure\n  the glue does not run; start starts it\n");
}

TEST(ShellCauses, NoWirelessInterface)
{
    EXPECT_EQ(causeWhen("Movo_NET_WifiScanEsss", 1, "wifi scan"), "  no wireless interface; there are lo and eth0\n");
}

TEST(ShellCauses, AChosenInterfaceThatIsUnknownOrNotWireless)
{
    fake::returns("Movo_NET_WifiScanEsss", 1);
    EXPECT_EQ(play("wifi use wlan7\nwifi scan\n").output,
              "1 failure\n  no interface \"wlan7\"; there are lo and eth0\n");
    EXPECT_EQ(play("wifi use eth0\nwifi scan\n").output,
              "1 failure\n  eth0 is not wireless; wifi use \"\" goes back to the one that is\n");
}

TEST(ShellCauses, AWirelessInterfaceThatIsDisabledOrNotActive)
{
    haveWireless();
    fake::returns("Movo_NET_IsEnabledIface", 0);
    EXPECT_EQ(causeWhen("Movo_NET_WifiScanEsss", 1, "wifi scan"), "  wlan0 is disabled; enable wlan0 brings it up\n");
    fake::returns("Movo_NET_IsEnabledIface", 1);
    fake::returns("Movo_NET_IsActivedIface", 0);
    EXPECT_EQ(causeWhen("Movo_NET_WifiScanEsss", 1, "wifi scan"),
              "  wlan0 is not active: no link yet, or no supplicant runs; IFFOUND comes when it is\n");
}

TEST(ShellCauses, AnUnknownNetworkAndTheOneThatMayBeMeant)
{
    haveWireless();
    for (const char* name : {"\"my home net\"", "\"My Hone Net\"", "My"}) {
        const std::string cause = causeWhen("Movo_NET_WifiGetSignalEss", 1, std::string("wifi info ") + name);
        EXPECT_TRUE(cause.ends_with("\"; did you mean My Home Net?\n")) << cause;
    }
    EXPECT_EQ(causeWhen("Movo_NET_WifiGetSignalEss", 1, "wifi info Elsewhere"),
              "  no network \"Elsewhere\" is listed; wifi scan and wifi update look again, wifi list shows them\n");
    fake::setNetworks({});
    EXPECT_EQ(causeWhen("Movo_NET_WifiGetSignalEss", 1, "wifi info Elsewhere"),
              "  no network \"Elsewhere\", no network is listed; wifi scan looks for them, wifi update reads what was "
              "found\n");
}

TEST(ShellCauses, AKeyThatIsNotRemembered)
{
    haveWireless();
    EXPECT_EQ(causeWhen("Movo_NET_WifiGetKey", 1, "wifi key \"My Home Net\""),
              "  its key is not remembered; wifi key NAME KEY sets the one to join with\n");
}

TEST(ShellCauses, ASupplicantThatDoesNotAnswerTakesTenSeconds)
{
    haveWireless();
    fake::setRunning(true);
    std::size_t length = 0;
    const std::vector<std::string> words = {"wifi", "scan"};
    const shell::Command& scan = *shell::findCommand(words, length);
    EXPECT_EQ(shell::causeOf({scan, {}, {1, false}, 10s}),
              "the supplicant did not answer within 10 s; disable and enable the interface to start another");
    EXPECT_EQ(shell::causeOf({scan, {}, {1, false}, 9999ms}),
              "the supplicant refused to look; it may be busy: try again in some seconds");
}

TEST(ShellCauses, EachFailureHasOne)
{
    haveWireless();
    fake::setRunning(true);
    for (const shell::Command& command : shell::allCommands()) {
        for (const int code : {1, 3, 4, 5, 6}) {
            EXPECT_NE(shell::causeOf({command, {}, {code, false}, 0s}), "") << command.name << code;
        }
    }
}

TEST(ShellLikeness, ForgivesASlipForThreeLetters)
{
    using shell::closest;
    EXPECT_EQ(closest("hme", {"Cafe", "Home"}), "Home");
    EXPECT_EQ(closest("Hoem", {"Cafe", "Home"}), "Home");
    EXPECT_EQ(closest("Hoemx", {"Cafe", "Home"}), "");
    EXPECT_EQ(closest("stauts", {"start", "status"}), "status");
    EXPECT_EQ(closest("c", {"Home", "Cafe"}), "Cafe");
    EXPECT_EQ(closest("", {"Home"}), "");
    EXPECT_EQ(closest("Home", {}), "");
    EXPECT_EQ(shell::enumerated({"a", "b\n", "c"}), "a, b\\x0a and c");
    EXPECT_EQ(shell::enumerated({"a"}, " or "), "a");
}

TEST(ShellAliases, ExitAndQuestionMark)
{
    EXPECT_EQ(play("exit\nnonsense\n").status, 0);
    EXPECT_EQ(play("? quit\n").output, play("help quit\n").output);
}
