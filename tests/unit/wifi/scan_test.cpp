#include "bench.h"
#include "movo_net_fl_wpactrl/flags.h"
#include "names.h"

#include <algorithm>
#include <cctype>
#include <gtest/gtest.h>
#include <sstream>

using namespace wifi;
using namespace movonet;

namespace {
constexpr const char* kReader = "int_Movo_Net_Wpactrl_ScanResult";
constexpr auto kUpdated = _MOVO_NET_CALLBACK_WIFIESSSUPDATED_;
constexpr auto kScanDone = _MOVO_NET_CALLBACK_WIFISCANDONE_;
const std::string kHeader = "bssid / frequency / signal level / flags / ssid\n";

std::string line(const std::string& ssid, int signal, const std::string& flags = "[ESS]",
                 const std::string& bssid = "02:00:00:00:01:00", int frequency = 2412)
{
    return bssid + "\t" + std::to_string(frequency) + "\t" + std::to_string(signal) + "\t" + flags + "\t" + ssid + "\n";
}

/** Reads a result into the table; the names that it then holds. */
Lines read(Bench& bench, const std::string& result)
{
    bench.supplicant.replies["SCAN_RESULTS"] = {result};
    EXPECT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 0);
    Lines names;
    for (int index = 0; index < bench.wifi().esss_num; ++index) {
        names.emplace_back(bench.wifi().esss[index].essid);
    }
    return names;
}

/** The table of the real supplicant's transcript. */
std::string realTable()
{
    const std::string transcript = fixture("scan.txt");
    const auto start = transcript.find(kHeader);
    return transcript.substr(start, transcript.find("  3.808 EVENT") - start);
}
} // namespace

TEST(ScanResult, ListsARealTable)
{
    Bench bench;
    EXPECT_EQ(read(bench, realTable()),
              (Lines{"My Home Net", "WpsNet", "Caf\u00e9 \u65e5\u672c", "a\\\"b\\\\c\\te", "OpenNet"}));
    const MovNetWifiEssItem_t& home = bench.wifi().esss[0];
    EXPECT_EQ(home.bssid, 0x000100000002);
    EXPECT_EQ(home.frequency, 2412);
    EXPECT_EQ(home.signalVal, -30);
    EXPECT_EQ(home.securityType, _MOVO_NET_WIFI_SECURITY_WPA2_PSK_);
    EXPECT_EQ(home.encrypType, _MOVO_NET_WIFI_ENCRYP_AES_);
    EXPECT_EQ(home.bWPS, 0);
    EXPECT_EQ(bench.wifi().esss[1].bWPS, 1);
    EXPECT_EQ(bench.wifi().esss[2].encrypType, _MOVO_NET_WIFI_ENCRYP_TKIPAES_);
    EXPECT_EQ(bench.wifi().esss[4].securityType, _MOVO_NET_WIFI_SECURITY_OPEN_);
    EXPECT_EQ(bench.set.read("/tmp/wpa_scan_result"), realTable());
    EXPECT_CALLBACKS(bench.set, {{kUpdated, "mlan0"}});
}

TEST(ScanResult, KeepsTheStrongestOfAName)
{
    Bench bench;
    EXPECT_EQ(read(bench, kHeader + line("Net", -70) + line("Net", -50, "[ESS]", "02:00:00:00:02:00", 2437) +
                              line("Net", -50, "[ESS]", "02:00:00:00:03:00", 2462)),
              Lines{"Net"});
    EXPECT_EQ(bench.wifi().esss[0].frequency, 2437);
    EXPECT_EQ(bench.wifi().esss[0].bssid, 0x000200000002);
}

TEST(ScanResult, LeavesOutHiddenNamesAndOwnDirectGroups)
{
    Bench bench;
    EXPECT_EQ(read(bench, kHeader + line("", -30) + line("\\x00\\x00", -30) + line("DIRECT-ab-ZENTATV", -30) +
                              line("DIRECT-abc-ZENTATV", -30) + line("DIRECT-ab-Other", -30) + "\n" + "one two\n"),
              (Lines{"DIRECT-abc-ZENTATV", "DIRECT-ab-Other"}));
}

TEST(ScanResult, TakesTheFourthFieldWithoutFlagsAsTheName)
{
    Bench bench;
    EXPECT_EQ(read(bench, kHeader + "02:00:00:00:01:00\t2412\t-40\tMyNet\n"), Lines{"MyNet"});
    EXPECT_EQ(bench.wifi().esss[0].securityType, _MOVO_NET_WIFI_SECURITY_OPEN_);
    EXPECT_EQ(bench.wifi().esss[0].encrypType, _MOVO_NET_WIFI_ENCRYP_NONE_);
}

TEST(ScanResult, EndsAtFiftyAndKeepsTheJoinedNetworkListed)
{
    Bench bench;
    bench.connect();
    std::string result = kHeader;
    for (int index = 0; index < 51; ++index) {
        result += line("n" + std::to_string(index), -90 + index, "[ESS]", "a", 2412);
    }
    EXPECT_EQ(read(bench, result).back(), "n49");
    bench.link().connectStatus = WPACTRL_STATUS_CONNECTED;
    bench.wifi().curOperatingEsss.isConnected = 1;
    const Lines names = read(bench, result);
    EXPECT_EQ(names.size(), 50U);
    EXPECT_EQ(names.back(), "My Home Net");
    EXPECT_EQ(read(bench, kHeader + line("Other", -40)), (Lines{"Other", "My Home Net"}));
    EXPECT_STREQ(bench.wifi().esss[1].Key, "correct horse");
}

TEST(ScanResult, RefusesWhatIsNoTable)
{
    Bench bench;
    bench.list("Kept", _MOVO_NET_WIFI_SECURITY_OPEN_, _MOVO_NET_WIFI_ENCRYP_NONE_);
    bench.supplicant.replies["SCAN_RESULTS"] = {"FAIL\n"};
    EXPECT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 1);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kLinkModule, kReader, "not scan_result reply\n");
    EXPECT_EQ(bench.wifi().esss_num, 1);
    bench.iface.isActived = 0;
    EXPECT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 1);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kLinkModule, kReader, "not actived yet");
    EXPECT_CALLBACKS(bench.set, {});
}

/** The names of a table, as far as it was told. */
Lines namesIn(const std::string& table)
{
    Lines names;
    std::istringstream lines(table);
    std::string each;
    for (std::getline(lines, each); std::getline(lines, each) && names.size() < MOVO_NET_MAX_ESSS;) {
        const std::size_t name = each.rfind('\t');
        const bool whole = std::ranges::count(each, '\t') == 4 && name + 1 < each.size();
        if (whole && std::ranges::find(names, each.substr(name + 1)) == names.end()) {
            names.push_back(each.substr(name + 1));
        }
    }
    return names;
}

TEST(ScanResult, CutsARepliesAtItsRoomWhateverItsSize)
{
    constexpr std::size_t kRoom = 5119;
    std::string table = kHeader;
    for (int number = 0; table.size() < 6000; ++number) {
        // Names of all lengths, so that fewer than fifty lines fill the room and the cut meets every field.
        table += line(std::to_string(number) + std::string(static_cast<std::size_t>(60 + number % 20), 'n'), -40);
    }
    Bench bench;
    for (std::size_t size = 4900; size <= 5400; ++size) {
        ASSERT_EQ(read(bench, table.substr(0, size)).size(), namesIn(table.substr(0, std::min(size, kRoom))).size())
            << size;
        ASSERT_EQ(bench.set.read("/tmp/wpa_scan_result"), table.substr(0, std::min(size, kRoom)));
        bench.set.forget();
    }
}

TEST(ScanResult, OfEverySizeIsReadAsFarAsItGoes)
{
    const std::string table = kHeader + line("Home", -40, "[WPA2-PSK-CCMP][ESS]") + line("Other Net", -50);
    Bench bench;
    for (std::size_t size = 0; size <= table.size(); ++size) {
        bench.supplicant.replies["SCAN_RESULTS"] = {table.substr(0, size)};
        const bool isTable = size + 1 >= kHeader.size();
        ASSERT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), isTable ? 0 : 1) << size;
        ASSERT_LE(bench.wifi().esss_num, 2) << size;
    }
    EXPECT_STREQ(bench.wifi().esss[1].essid, "Other Net");
}

TEST(ScanResult, ListsNamesOfEveryByteThatALineCanHold)
{
    Bench bench;
    for (int byte = 1; byte < 256; ++byte) {
        const char character = static_cast<char>(byte);
        for (const std::size_t length : {1U, 31U, 32U}) {
            // In the middle every byte but the line's end stands as it is; blanks at the beginning get lost.
            const std::string name = length == 1 ? std::string(1, character) : "a" + std::string(length - 1, character);
            const std::string written = character == '\\' ? name + std::string(length - (length > 1), '\\') : name;
            const bool lost = character == '\n' || (length == 1 && std::isspace(byte) != 0);
            const Lines names = read(bench, kHeader + line(written, -40));
            const Lines expected = character == '\n' && length > 1 ? Lines{"a"} : (lost ? Lines{} : Lines{name});
            ASSERT_EQ(names, expected) << byte << " " << length;
        }
        bench.set.forget();
    }
}

TEST(Scan, IsEndedByItsTimeoutLikeByItsResult)
{
    Bench bench;
    ASSERT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 0);
    EXPECT_EQ(sent(bench.supplicant), Lines{"SCAN"});
    bench.set.grantTicks(301);
    EXPECT_CALLBACKS(bench.set, {{kScanDone, "mlan0"}});
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, "OnScanTimeoutEventRev", "wifi scan timeout\n");
    bench.set.grantTicks(400);
    EXPECT_CALLBACKS(bench.set, {});
}

TEST(Scan, RefusedForBeingBusyTwiceEndsAfterAHundredTicks)
{
    Bench bench;
    bench.supplicant.replies["SCAN"] = {"FAIL-BUSY\n"};
    EXPECT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 1);
    EXPECT_EQ(sent(bench.supplicant), (Lines{"SCAN", "SCAN"}));
    EXPECT_EQ(told(bench.set, KEST_LEVEL_ERROR),
              (Lines{"Wpactrl_ExecCmd: [SCAN] failed\n", "Wpactrl_ExecCmd: [SCAN] failed again\n",
                     "int_Movo_Net_Wpactrl_Scan: [SCAN] failed\n"}));
    bench.set.grantTicks(101);
    EXPECT_CALLBACKS(bench.set, {{kScanDone, "mlan0"}});
}

TEST(CancelScan, IsForOneChipAlone)
{
    Bench bench;
    EXPECT_EQ(int_Movo_Net_Wpactrl_CancelScan(&bench.iface), 6);
    EXPECT_EQ(sent(bench.supplicant), Lines{});
    bench.wifi().devType = _MOVO_NET_WIFI_ATHEROS_;
    ASSERT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 0);
    EXPECT_EQ(int_Movo_Net_Wpactrl_CancelScan(&bench.iface), 0);
    EXPECT_EQ(sent(bench.supplicant), (Lines{"SCAN", "SCAN_CANCEL"}));
    bench.set.grantTicks(400);
    EXPECT_CALLBACKS(bench.set, {});
}

namespace {
struct FlagCase {
    const char* flags;
    MovoNetWifiSecurity_e security;
    MovoNetWifiEncryption_e cipher;
};
class Flags : public testing::TestWithParam<FlagCase> {};
} // namespace

TEST_P(Flags, TellSecurityAndCipher)
{
    MovNetWifiEssItem_t ess{};
    Wpa_Add_EsssItem(&ess, "", "x", "1", 0, GetParam().flags, 0);
    EXPECT_EQ(ess.securityType, GetParam().security);
    EXPECT_EQ(ess.encrypType, GetParam().cipher);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Flags,
    testing::Values(
        FlagCase{"[WPA-PSK-TKIP+CCMP][WPS][ESS]", _MOVO_NET_WIFI_SECURITY_WPA_PSK_, _MOVO_NET_WIFI_ENCRYP_TKIPAES_},
        FlagCase{"[WPA-PSK-CCMP+TKIP][ESS]", _MOVO_NET_WIFI_SECURITY_WPA_PSK_, _MOVO_NET_WIFI_ENCRYP_TKIPAES_},
        FlagCase{"[WPA-PSK-TKIP][WPA2-PSK-CCMP][ESS]", _MOVO_NET_WIFI_SECURITY_WPA2_PSK_, _MOVO_NET_WIFI_ENCRYP_AES_},
        FlagCase{"[WPA2-EAP-CCMP][ESS]", _MOVO_NET_WIFI_SECURITY_WPA_PSK_A2_, _MOVO_NET_WIFI_ENCRYP_AES_},
        FlagCase{"[WPA-EAP-TKIP][ESS]", _MOVO_NET_WIFI_SECURITY_WPA_, _MOVO_NET_WIFI_ENCRYP_WEP_RYP_TKIP_},
        FlagCase{"[WEP][ESS]", _MOVO_NET_WIFI_SECURITY_OPEN_, _MOVO_NET_WIFI_ENCRYP_WEP_},
        FlagCase{"[ESS]", _MOVO_NET_WIFI_SECURITY_OPEN_, _MOVO_NET_WIFI_ENCRYP_NONE_},
        FlagCase{"[WPA2-PSK-CCMP", _MOVO_NET_WIFI_SECURITY_WPA2_PSK_, _MOVO_NET_WIFI_ENCRYP_AES_}));

TEST(MacText, ReadsPairsAndCountsTheRestAsZero)
{
    EXPECT_EQ(mac_string_to_long_long("01:23:45:67:89:aB"), 0xab8967452301);
    EXPECT_EQ(mac_string_to_long_long("01:2"), 0x2001);
    EXPECT_EQ(mac_string_to_long_long("zz:zz:zz:zz:zz:zz"), 0);
    EXPECT_EQ(mac_string_to_long_long(""), 0);
}
