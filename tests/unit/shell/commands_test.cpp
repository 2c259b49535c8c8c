/** Each command: what it calls, with which arguments, and what it prints. */
#include "cases.h"
#include "fake_net.h"
#include "play.h"
#include "tools/movo_net_shell/command.h"

#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

namespace {
const Case kCases[] = {
    {"stop", {"Movo_NET_Glue_Exit"}, "0 success\n"},
    {"running", {"Movo_NET_IsInitializationDone"}, "1 yes\n"},
    {"callback on", {"Movo_NET_InstallCallback"}, "0 success\n"},
    {"callback off", {"Movo_NET_UnInstallCallback 0"}, "0 success\n"},
    {"limits",
     {"Movo_NET_GetMaxNumOfIfacesSupported", "Movo_NET_GetMaxNumOfWifiEssSupported"},
     "0 success: 10 interfaces\n0 success: 50 Wi-Fi networks\n"},
    {"virgin", {"Movo_NET_IsNetworkModeVirgin"}, "0 no\n"},
    {"virgin set", {"Movo_NET_SetNetworkToModeVirgin"}, "0 success\n"},
    {"resource set 65536 1 7", {"Movo_NET_SetResourceAllocation 65536 1 7"}, "0 success\n"},
    {"resource set 65536 0", {"Movo_NET_SetResourceAllocation 65536 0 0"}, "0 success\n"},
    {"resource add 65536 -1 7", {"Movo_NET_SetClientResourceAllocation 65536 -1 7"}, "0 success\n"},
    {"count", {"Movo_NET_GetNumOfIfaces"}, "0 success: 2\n"},
    {"name 1", {"Movo_NET_GetIfaceName 1 8"}, "0 success: eth0\n"},
    {"name 1 4", {"Movo_NET_GetIfaceName 1 4"}, "0 success: eth0\n"},
    {"name 1 3",
     {"Movo_NET_GetIfaceName 1 3"},
     "3 buffer too small\n  the name is longer; 8 characters are enough for each\n"},
    {"name 2 255",
     {"Movo_NET_GetIfaceName 2 255"},
     "1 failure\n  no interface at this position; count tells how many there are\n"},
    {"name -1", {"Movo_NET_GetIfaceName -1 8"}, "0 success: \n"},
    {"type lo", {"Movo_NET_GetIfaceType lo"}, "0 success: lo\n"},
    {"type eth0", {"Movo_NET_GetIfaceType eth0"}, "0 success: ether\n"},
    {"mac eth0", {"Movo_NET_GetIfaceMacAddress eth0"}, "0 success: 02:4d:4f:56:4f:01\n"},
    {"throughput eth0", {"Movo_NET_GetIfaceThroughput eth0"}, "0 success: 100\n"},
    {"enable eth0", {"Movo_NET_EnableIface eth0"}, "0 success\n"},
    {"disable eth0", {"Movo_NET_DisableIface eth0"}, "0 success\n"},
    {"disable-all", {"Movo_NET_DisableAllIfaces"}, "0 success\n"},
    {"enabled eth0", {"Movo_NET_IsEnabledIface eth0"}, "0 no\n"},
    {"active eth0", {"Movo_NET_IsActivedIface eth0"}, "0 no\n"},
    {"best", {"Movo_NET_GetActivedIface"}, "0 success: 1\n"},
    {"best-type", {"Movo_NET_GetActivedIfaceType"}, "0 success: wifi\n"},
    {"link eth0", {"Movo_NET_IsPhyConnected eth0"}, "0 no\n"},
    {"priority eth0", {"Movo_NET_GetIfacePriority eth0"}, "0 success: 2\n"},
    {"priority eth0 -5", {"Movo_NET_SetIfacePriority eth0 -5"}, "0 success\n"},
    {"filter eth0", {"Movo_NET_FilterOutIF eth0"}, "0 success\n"},
    {"wol eth0 on", {"Movo_NET_SetWol eth0 1"}, "0 success\n"},
    {"wol eth0 off", {"Movo_NET_SetWol eth0 0"}, "0 success\n"},
    {"mode eth0", {"Movo_NET_GetIPMode eth0"}, "0 success: static\n"},
    {"mode eth0 dhcp", {"Movo_NET_GetIPMode eth0", "Movo_NET_ConfigIPMode eth0 0"}, "0 success\n"},
    {"mode eth0 autoip", {"Movo_NET_GetIPMode eth0", "Movo_NET_ConfigIPMode eth0 1"}, "0 success\n"},
    {"mode eth0 static", {"Movo_NET_GetIPMode eth0", "Movo_NET_ConfigIPMode eth0 2"}, "0 success\n"},
    {"mode eth0 dnsonly", {"Movo_NET_GetIPMode eth0", "Movo_NET_ConfigIPMode eth0 3"}, "0 success\n"},
    {"mode eth0 -9", {"Movo_NET_GetIPMode eth0", "Movo_NET_ConfigIPMode eth0 -9"}, "0 success\n"},
    {"state eth0", {"Movo_NET_GetIPStatus eth0", "Movo_NET_IsConnected eth0"}, "0 success: dhcp-got\n"},
    {"ip eth0",
     {"Movo_NET_GetIP eth0"},
     "0 success\n  address  10.0.2.15\n  mask     255.255.255.0\n  gateway  10.0.2.2\n  dns      10.0.2.3 9.9.9.9\n"},
    {"static eth0",
     {"Movo_NET_GetIPStatic eth0"},
     "0 success\n  address  10.0.2.77\n  mask     255.255.255.0\n  gateway  10.0.2.2\n  dns      10.0.2.3 9.9.9.9\n"},
    {"static eth0 10.1.1.5 255.0.0.0 10.1.1.1 8.8.4.4 1.2.3.4",
     {"Movo_NET_ConfigIPStatic eth0 10.1.1.5 255.0.0.0 10.1.1.1 8.8.4.4 1.2.3.4"},
     "0 success\n"},
    {"static eth0 10.1.1.5 255.0.0.0 10.1.1.1 8.8.4.4",
     {"Movo_NET_ConfigIPStatic eth0 10.1.1.5 255.0.0.0 10.1.1.1 8.8.4.4 0.0.0.0"},
     "0 success\n"},
    {"connected eth0", {"Movo_NET_IsConnected eth0"}, "0 success: yes\n"},
    {"dns", {"Movo_NET_IsDNSOK "}, "0 no\n"},
    {"dns eth0", {"Movo_NET_IsDNSOK eth0"}, "0 no\n"},
    {"network", {"Movo_NET_IsNetworkOK"}, "0 no\n"},
    {"clear eth0", {"Movo_NET_ClearIP eth0"}, "0 success\n"},
    {"ap start", {"Movo_Net_WiFi_HostAP_Start"}, "0 success\n"},
    {"ap stop", {"Movo_Net_WiFi_HostAP_Stop"}, "0 success\n"},
    {"ap status",
     {"Movo_Net_WiFi_HostAP_Status", "Movo_Net_WiFi_HostAP_Config"},
     "0 no\n  network  MyTV\\x0a\n  address  42:00:00:00:00:01\n  hidden   no\n"},
    {"ap clients", {}, "no device\n"},
    {"wake", {"Movo_Net_WiFi_Wakeup  1"}, "0 success\n"},
    {"echo  a \"b  c\" d", {}, "a b  c d\n"},
    {"link-type", {}, "0\n"},
    {"log", {}, "error\n"},
    {"quit", {}, ""},
};

// What tests of their own hold: scripts, start, status, help.
const std::set<std::string> kElsewhere = {"help",  "?",      "exit",       "watch", "sleep",     "expect",
                                          "start", "status", "interfaces", "join",  "wifi back", "wifi connect"};

std::vector<Case> allCases()
{
    std::vector<Case> cases(std::begin(kCases), std::end(kCases));
    cases.insert(cases.end(), wifiCases().begin(), wifiCases().end());
    return cases;
}

std::string nameOf(const std::string& line)
{
    std::istringstream words(line);
    std::vector<std::string> split{std::istream_iterator<std::string>(words), {}};
    std::size_t length = 0;
    const shell::Command* const command = shell::findCommand(split, length);
    return command != nullptr ? command->name : "";
}

/** Without the questions after which a cause is found, unless they are what is expected. */
std::vector<std::string> withoutLookUps(std::vector<std::string> calls, const std::vector<std::string>& expected)
{
    const auto isLookUp = [](const std::string& call) {
        return call.starts_with("Movo_NET_IsInitializationDone") || call.starts_with("Movo_NET_GetNumOfIfaces") ||
               call.starts_with("Movo_NET_GetIfaceName");
    };
    while (calls.size() > expected.size() && isLookUp(calls.back())) {
        calls.pop_back();
    }
    return calls;
}

std::set<std::string> functionsOf(const std::string& calls)
{
    std::istringstream words(calls);
    return {std::istream_iterator<std::string>(words), {}};
}
} // namespace

void PrintTo(const Case& shown, std::ostream* out)
{
    *out << shown.line;
}

class EachCommand : public testing::TestWithParam<Case> {};

TEST_P(EachCommand, CallsAndPrints)
{
    (void)play("wifi use wlan0\n");
    const Played played = play(std::string(GetParam().line) + "\n");

    EXPECT_EQ(played.output, GetParam().output);
    EXPECT_EQ(played.errors, "");
    EXPECT_EQ(played.status, 0);
    EXPECT_EQ(withoutLookUps(fake::calls(), GetParam().calls), GetParam().calls);
}

INSTANTIATE_TEST_SUITE_P(Shell, EachCommand, testing::ValuesIn(allCases()),
                         [](const auto& each) { return std::to_string(each.index); });

TEST(ShellCommands, AllAreTested)
{
    std::set<std::string> tested = kElsewhere;
    for (const Case& each : allCases()) {
        tested.insert(nameOf(each.line));
    }
    for (const shell::Command& command : shell::allCommands()) {
        EXPECT_TRUE(tested.contains(command.name)) << command.name;
    }
}

TEST(ShellCommands, TheHelpNamesWhatACommandCalls)
{
    std::map<std::string, std::set<std::string>> called;
    for (const Case& each : allCases()) {
        for (const std::string& call : each.calls) {
            called[nameOf(each.line)].insert(call.substr(0, call.find(' ')));
        }
    }
    for (const shell::Command& command : shell::allCommands()) {
        if (!kElsewhere.contains(command.name)) {
            EXPECT_EQ(functionsOf(command.calls), called[command.name]) << command.name;
        }
    }
}

TEST(ShellCommands, NoTwoHaveOneNameAndNoSubjectIsACommand)
{
    std::set<std::string> names;
    for (const shell::Command& command : shell::allCommands()) {
        EXPECT_TRUE(names.insert(command.name).second) << command.name;
    }
    for (const shell::Command& command : shell::allCommands()) {
        EXPECT_FALSE(names.contains(command.subject)) << command.subject;
    }
}

TEST(ShellResults, EachCodeHasItsMeaning)
{
    const std::pair<int, const char*> kMeanings[] = {{0, "0 success\n"},
                                                     {1, "1 failure\n"},
                                                     {3, "3 buffer too small\n"},
                                                     {4, "4 out of memory\n"},
                                                     {5, "5 invalid argument\n"},
                                                     {6, "6 not supported\n"},
                                                     {2, "2 2\n"},
                                                     {-1, "-1 -1\n"}};
    for (const auto& [code, text] : kMeanings) {
        fake::returns("Movo_NET_EnableIface", code);
        EXPECT_TRUE(play("enable eth0\n").output.starts_with(text)) << text;
    }
}

TEST(ShellResults, NoValueComesWithAFailure)
{
    for (const char* function : {"Movo_NET_GetIfaceMacAddress", "Movo_NET_GetIP", "Movo_NET_GetIPMode"}) {
        fake::returns(function, 1);
    }
    for (const char* line : {"mac eth0\n", "ip eth0\n", "mode eth0\n"}) {
        EXPECT_EQ(play(line).output, "1 failure\n  the log names the step that failed; log info makes it say more\n");
    }
}

TEST(ShellResults, AnswersShowWhatWasReturned)
{
    fake::returns("Movo_NET_IsPhyConnected", 1);
    fake::returns("Movo_NET_IsNetworkModeVirgin", 1);
    EXPECT_EQ(play("link eth0\nvirgin\n").output, "1 yes\n1 yes\n");
}

TEST(ShellStatus, IsATableOfTheInterfaces)
{
    fake::returns("Movo_NET_IsEnabledIface", 1);
    fake::returns("Movo_NET_IsNetworkOK", 1);
    EXPECT_EQ(play("status\n").output, "interface     lo                  eth0\n"
                                       "type          lo                  ether\n"
                                       "mac           02:4d:4f:56:4f:01   02:4d:4f:56:4f:01\n"
                                       "enabled       yes                 yes\n"
                                       "active        no                  no\n"
                                       "link          -                   no\n"
                                       "connected     yes                 yes\n"
                                       "priority      2                   2\n"
                                       "mode          static              static\n"
                                       "state         dhcp-got            dhcp-got\n"
                                       "address       10.0.2.15           10.0.2.15\n"
                                       "mask          255.255.255.0       255.255.255.0\n"
                                       "gateway       10.0.2.2            10.0.2.2\n"
                                       "dns 1         10.0.2.3            10.0.2.3\n"
                                       "dns 2         9.9.9.9             9.9.9.9\n"
                                       "\n"
                                       "the network works\n");
}

TEST(ShellStatus, ALostConnectionHasNoLease)
{
    fake::setConnected(false);
    EXPECT_NE(play("status\n").output.find("state         lost                lost\n"), std::string::npos);
    EXPECT_EQ(play("state eth0\n").output, "0 success: dhcp-got\n  of the last connection, which is lost\n");
}

TEST(ShellStatus, InterfacesIsTheSame)
{
    EXPECT_EQ(play("interfaces\n").output, play("status\n").output);
}

TEST(ShellStatus, ShowsADashForWhatCannotBeRead)
{
    for (const char* function : {"Movo_NET_GetIfaceMacAddress", "Movo_NET_GetIP", "Movo_NET_IsConnected"}) {
        fake::returns(function, 1);
    }
    const std::string output = play("status\n").output;

    EXPECT_NE(output.find("mac           -                   -\n"), std::string::npos) << output;
    EXPECT_NE(output.find("connected     -                   -\n"), std::string::npos) << output;
    EXPECT_NE(output.find("dns 2         -                   -\n"), std::string::npos) << output;
    EXPECT_NE(output.find("the network does not work\n"), std::string::npos) << output;
}

TEST(ShellStatus, DoesNotAskWhetherADisabledInterfaceIsActive)
{
    (void)play("status\n");
    for (const std::string& call : fake::calls()) {
        EXPECT_FALSE(call.starts_with("Movo_NET_IsActivedIface")) << call;
    }
}

TEST(ShellStatus, ShowsThreeInterfacesBesideEachOther)
{
    fake::addInterfaces(8);
    const std::string output = play("status\n").output;

    EXPECT_NE(output.find("interface     lo                  eth0                eth1\n"), std::string::npos) << output;
    EXPECT_NE(output.find("interface     eth2                eth3                eth4\n"), std::string::npos) << output;
    EXPECT_NE(output.find("interface     eth8\n"), std::string::npos) << output;
}

TEST(ShellStatus, TellsThatTheGlueDoesNotRun)
{
    EXPECT_EQ(play("stop\nstatus\n").output, "0 success\nthe glue does not run\n");
}
