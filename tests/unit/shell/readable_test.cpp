/** What a person at a terminal reads: tables that fit, marks, the time of day, progress. */
#include "fake_net.h"
#include "terminal.h"
#include "tools/movo_net_shell/text.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>

namespace {
void haveNetworks()
{
    fake::addWireless("wlan0");
    fake::setNetworks({"My Home Net", "exactly thirty-two bytes of name", "caf\u00e9"});
}

std::size_t widest(const std::string& text)
{
    std::istringstream lines(text);
    std::size_t most = 0;
    for (std::string line; std::getline(lines, line);) {
        line.erase(line.find_last_not_of('\r') + 1);
        most = std::max(most, shell::shownColumns(line));
    }
    return most;
}
} // namespace

TEST(ShellReadable, AListFitsANarrowTerminal)
{
    haveNetworks();
    Terminal terminal;
    EXPECT_EQ(terminal.answerTo("wifi list"),
              "0 success: 3\r\n"
              "  name                              signal  channel  security  wps  remembered\r\n"
              "* My Home Net                       -50     6        wpa2-psk  yes  yes\r\n"
              "  exactly thirty-two bytes of name  -50     6        wpa2-psk  yes  yes\r\n"
              "  caf\u00e9                              -50     6        wpa2-psk  yes  yes\r\n");
}

TEST(ShellReadable, AListShowsMoreOnAWideTerminal)
{
    haveNetworks();
    Terminal terminal("", 120);
    const std::string list = terminal.answerTo("wifi list");
    EXPECT_NE(
        list.find("  name                              bssid              signal  channel  security  cipher  wps  "
                  "remembered\r\n"
                  "* My Home Net                       02:00:00:00:01:ff  -50     6        wpa2-psk  ccmp    yes  "
                  "yes\r\n"),
        std::string::npos)
        << list;
}

TEST(ShellReadable, NamesAreCutWhereNothingElseHelps)
{
    haveNetworks();
    Terminal terminal("", 44);
    const std::string list = terminal.answerTo("wifi list");
    EXPECT_NE(list.find("  exactly thirty-two byte…  -50     wpa2-psk\r\n"), std::string::npos) << list;
    EXPECT_LE(widest(list), 44U);
}

TEST(ShellReadable, EverythingFitsTheTerminal)
{
    haveNetworks();
    fake::addInterfaces(5);
    fake::returns("Movo_NET_GetIfaceMacAddress", 1);
    for (const unsigned short columns : std::initializer_list<unsigned short>{80, 120}) {
        Terminal terminal("", columns);
        for (const char* line :
             {"help", "help wifi", "help wifi info", "status", "wifi list", "mac eth99", "expect NOTHING"}) {
            EXPECT_LE(widest(terminal.answerTo(line)), columns) << line;
        }
    }
}

TEST(ShellReadable, MoreInterfacesStandBesideEachOtherOnAWideTerminal)
{
    fake::addInterfaces(3);
    Terminal terminal("", 120);
    EXPECT_NE(terminal.answerTo("status").find(
                  "interface     lo                  eth0                eth1                eth2                eth3"),
              std::string::npos);
}

TEST(ShellReadable, ColoursMarkTheJoinedNetworkItsSignalAndFailures)
{
    haveNetworks();
    fake::returns("Movo_NET_GetIfaceMacAddress", 1);
    Terminal terminal("", 120, true);
    const std::string list = terminal.answerTo("wifi list");
    EXPECT_NE(list.find("\033[1;32m* My Home Net  "), std::string::npos) << list;
    EXPECT_NE(list.find("▂▄▆█ -50"), std::string::npos) << list;
    EXPECT_TRUE(terminal.answerTo("mac eth0").starts_with("\033[1;31m1 failure\033[0m\r\n"));
}

TEST(ShellReadable, ACallbackHasTheTimeOfDayToo)
{
    Terminal terminal;
    (void)terminal.answerTo("callback on");
    terminal.type("watch\r");
    EXPECT_TRUE(terminal.sees("watch\r\n"));
    terminal.callBack();
    const std::string shown = terminal.shownUntil(" IPCHANGED eth0\r\n");
    EXPECT_TRUE(std::regex_search(shown, std::regex(R"(callback \d+\.\d{3} \d\d:\d\d:\d\d$)"))) << shown;
}

TEST(ShellReadable, AWaitShowsWhatItWaitsForAndHowLong)
{
    Terminal terminal;
    terminal.type("expect IFFOUND eth0 3000\r");
    EXPECT_TRUE(terminal.sees("\r\033[Kwaiting for IFFOUND eth0, 3000 s left"));
    EXPECT_TRUE(terminal.sees("\r\033[Kwaiting for IFFOUND eth0, 2999 s left"));
    terminal.type("\003");
    EXPECT_TRUE(terminal.sees("\r\033[K"));
    EXPECT_TRUE(terminal.prompts());
}

TEST(ShellReadable, ACallbackDuringAWaitTakesThePlaceOfItsLine)
{
    Terminal terminal;
    (void)terminal.answerTo("callback on");
    terminal.type("watch\r");
    EXPECT_TRUE(terminal.sees("\r\033[Kwatching"));
    terminal.callBack();
    EXPECT_TRUE(terminal.sees("\r\033[Kcallback "));
    EXPECT_TRUE(terminal.sees("\r\033[Kwatching"));
}

TEST(ShellReadable, AKeyIsAskedForWithoutBeingShown)
{
    haveNetworks();
    fake::returns("Movo_NET_WifiGetKey", 1);
    fake::returns("Movo_NET_IsEnabledIface", 1);
    fake::returns("Movo_NET_IsActivedIface", 1);
    bool right = false;
    fake::onCall([&right](const std::string& call) {
        right = right || call == "Movo_NET_WifiSetKey wlan0 caf\u00e9 horses \u6211 10";
        if (call.starts_with("Movo_NET_WifiConnectEss")) {
            fake::callBack(right ? _MOVO_NET_CALLBACK_IFCONNECTED_ : _MOVO_NET_CALLBACK_WIFIBADKEY_, "wlan0");
            fake::callBack(_MOVO_NET_CALLBACK_DHCP_SUCCESS_, "wlan0");
        }
    });
    Terminal terminal;
    (void)terminal.answerTo("callback on");
    terminal.type("wifi connect caf\u00e9\r");
    EXPECT_TRUE(terminal.sees("key of caf\u00e9: "));
    terminal.type("horses \u6211x\177\r"); // the last letter is taken back
    const std::string shown = terminal.shownUntil("joined caf\u00e9 in ");
    EXPECT_EQ(shown.find("horses"), std::string::npos) << shown;
    EXPECT_TRUE(terminal.prompts());
    EXPECT_EQ(terminal.answerTo("echo shown"), "shown\r\n");
}

TEST(ShellReadable, AnInterruptEndsTheQuestionForAKey)
{
    haveNetworks();
    fake::returns("Movo_NET_WifiGetKey", 1);
    Terminal terminal;
    terminal.type("wifi connect caf\u00e9\r");
    EXPECT_TRUE(terminal.sees("key of caf\u00e9: "));
    terminal.type("\003");
    EXPECT_TRUE(terminal.prompts());
    EXPECT_EQ(terminal.answerTo("echo shown"), "shown\r\n");
}
