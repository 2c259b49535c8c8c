#include "movo_net_fl_wpactrl/learnt.h"
#include "names.h"
#include "television.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <movo_net.h>

// Names as the supplicant writes them and as they are: in results, in events, in its configuration and on their way
// back.

using namespace wifi;
using namespace movonet;

namespace {
constexpr const char* kConfiguration = "/etc/wpa_supplicant.conf";

struct Name {
    std::string written;
    std::string real;
};

/** Nine letters of three bytes, one of four and one of one: the most that a name holds. */
const Name kLongest{R"(\xe6\x88\x91\xe5\xae\xb6\xe7\x9a\x84\xe6\x97\xa0\xe7\xba\xbf\xe7\xbd\x91\xe7\xbb\x9c\xe5)"
                    R"(\xbe\x88\xe5\xbf\xab\xf0\x9f\x8f\xa0!)",
                    "\u6211\u5bb6\u7684\u65e0\u7ebf\u7f51\u7edc\u5f88\u5feb\U0001F3E0!"};

const std::vector<Name> kDecoded{
    {R"(Caf\xc3\xa9)", "Caf\u00e9"},
    {R"(\xC3\xA9)", "\u00e9"},
    {R"(Latin caf\xe9)", "Latin caf\xe9"},
    {R"(say \"hi\" \\o/)", R"(say "hi" \o/)"},
    {R"(\\x0a \\t)", R"(\x0a \t)"},
    {R"(\x41\x20)", "A "},
    {R"(\\)", R"(\)"},
    kLongest,
};

/** Names that hold a control character, the last of them no name that the supplicant writes. */
const std::vector<std::string> kKept{
    R"(a\tb)",      R"(a\nb)",   R"(a\rb)",   R"(a\eb)",  R"(\xc3\xa9\x1b[2J)",
    R"(a\x7fb)",    R"(a\x00b)", R"(a\x1fb)", R"(\\\t)",  R"(a\)",
    R"(\xc3\xa9\)", R"(a\xc)",   R"(a\x)",    R"(a\xcg)", R"(a\x-1)",
    R"(a\xg0)",     R"(a\q\\)",  R"(a\'b)",   R"(a\303)",
};

std::vector<Network> openNetworks(const std::vector<std::string>& names)
{
    std::vector<Network> networks;
    for (const std::string& name : names) {
        networks.push_back({.name = name, .flags = "[ESS]"});
    }
    return networks;
}

/** The names that are listed after this table of the supplicant. */
Lines listed(Bench& bench, const std::vector<std::string>& written, const std::string& flags = "[ESS]\t")
{
    std::string table = "bssid / frequency / signal level / flags / ssid\n";
    for (const std::string& name : written) {
        table += "02:00:00:00:01:00\t2412\t-40\t" + flags + name + "\n";
    }
    bench.supplicant.answers("SCAN_RESULTS", table);
    EXPECT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 0);
    Lines names;
    for (int index = 0; index < bench.wifi().esss_num; ++index) {
        names.emplace_back(bench.wifi().esss[index].essid);
    }
    return names;
}

std::string association(const std::string& name)
{
    return "<3>Trying to associate with 02:00:00:00:01:00 (SSID='" + name + "' freq=2437 MHz)";
}

/** The name that the configuration teaches. */
std::string taught(sim::Set& set, const std::string& line)
{
    set.write(kConfiguration, "network={\n" + line + "\n\tkey_mgmt=NONE\n}\n");
    MovNetWifiEssItem_t ess{};
    Wpa_GetSavedEss(&ess);
    return ess.essid;
}

std::string hexadecimal(const std::string& bytes)
{
    std::string digits;
    for (const char byte : bytes) {
        constexpr const char* kDigits = "0123456789abcdef";
        digits += kDigits[static_cast<unsigned char>(byte) >> 4];
        digits += kDigits[static_cast<unsigned char>(byte) & 0xF];
    }
    return digits;
}
} // namespace

TEST(ScannedName, IsWhatTheSupplicantsEscapesStandFor)
{
    ASSERT_EQ(kLongest.real.size(), 32U);
    Bench bench;
    for (const auto& [written, real] : kDecoded) {
        EXPECT_EQ(listed(bench, {written}), Lines{real});
        if (written.find(' ') == std::string::npos) { // else it would be several fields
            EXPECT_EQ(listed(bench, {written}, ""), Lines{real}) << "without flags";
        }
    }
}

TEST(ScannedName, StaysEscapedWhenItIsMalformedOrHoldsAControlCharacter)
{
    Bench bench;
    for (const std::string& name : kKept) {
        EXPECT_EQ(listed(bench, {name}), Lines{name});
        EXPECT_EQ(listed(bench, {name}, ""), Lines{name}) << "without flags";
    }
    const std::string longName = R"(\xe6\x88\x91 thirty-two bytes\twritten)";
    EXPECT_EQ(listed(bench, {longName}), Lines{longName.substr(0, 32)});
}

TEST(ScannedName, IsLookedAtForZerosAsItIsWritten)
{
    Bench bench;
    EXPECT_EQ(listed(bench, {R"(\x00\x00)", R"(\x01)", R"(\\x00)"}), Lines{R"(\x00)"});
    EXPECT_EQ(listed(bench, {R"(\x00\x00)", R"(\x01)", R"(\\x00)"}, ""), Lines{R"(\x00)"}) << "without flags";
}

TEST(ScannedName, IsComparedAsItIs)
{
    Bench bench;
    EXPECT_EQ(listed(bench, {R"(caf\xc3\xa9)", "caf\u00e9", R"(caf\xC3\xa9)"}), Lines{"caf\u00e9"});
    const std::string same = R"(\xe6\x88\x91\xe5\xae\xb6\xe7\x9a\x84)"; // over more than 32 written characters
    EXPECT_EQ(listed(bench, {same + "1", same + "2"}).size(), 2U);
    EXPECT_EQ(listed(bench, {R"(DIRECT-\xc3\xa9-ZENTATV)", R"(DIRECT-\\\"-ZENTATV)", R"(DIRECT-a\xc3\xa9-ZENTATV)"}),
              Lines{"DIRECT-a\u00e9-ZENTATV"});
}

TEST(EventName, IsWhatTheSupplicantsEscapesStandFor)
{
    Bench bench;
    for (const auto& [written, real] : kDecoded) {
        (void)listed(bench, {written});
        ASSERT_EQ(int_Movo_Net_Wpactrl_WPSPBC(&bench.iface), 0);
        EXPECT_EQ(bench.hear({association(written)}), 0);
        EXPECT_EQ(bench.link().isWpsEssSaved, 1) << real;
        EXPECT_EQ(bench.wifi().curOperatingEsss.essid, real);
        EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, "movo_net_fl_wpactrl", "OnWpactrlEventRev",
                      "get wps ssid: " + real + "\n");
    }
}

TEST(EventName, StaysEscapedAsInTheTable)
{
    Bench bench;
    (void)listed(bench, {R"(a\tb)"});
    ASSERT_EQ(int_Movo_Net_Wpactrl_WPSPBC(&bench.iface), 0);
    EXPECT_EQ(bench.hear({association(R"(a\tb)")}), 0);
    EXPECT_STREQ(bench.wifi().curOperatingEsss.essid, R"(a\tb)");
}

TEST(EventName, HasThirtyTwoBytesAtMost)
{
    Bench bench;
    ASSERT_EQ(int_Movo_Net_Wpactrl_WPSPBC(&bench.iface), 0);
    EXPECT_EQ(bench.hear({association(kLongest.written + "!"), association(R"(\t)" + std::string(31, 's'))}), 0);
    EXPECT_EQ(errors(bench.set), Lines{}) << "neither is looked up";
    EXPECT_EQ(bench.hear({association(kLongest.written)}), 0);
    EXPECT_EQ(errors(bench.set), (Lines{"get_essid_index: no matched essid " + kLongest.real + "\n",
                                        "OnWpactrlEventRev: get essid: " + kLongest.real + " in index failed\n"}));
}

TEST(LearntName, IsDecodedFromHexadecimalDigits)
{
    sim::Set set;
    for (const std::string& name : {std::string("Caf\u00e9"), std::string("Net"), kLongest.real}) {
        EXPECT_EQ(taught(set, "\tssid=" + hexadecimal(name)), name);
    }
    EXPECT_EQ(taught(set, "\tssid=436166C3A9"), "Caf\u00e9");
}

TEST(LearntName, IsNotTakenFromOtherDigits)
{
    sim::Set set;
    for (const std::string& digits :
         {std::string(), std::string("4"), std::string("436"), std::string("4g"), std::string("g4"), std::string("41 "),
          std::string("4100"), std::string("1b41"), std::string("417f"), hexadecimal(kLongest.real + "!")}) {
        EXPECT_EQ(taught(set, "\tssid=" + digits), "") << digits;
    }
}

TEST(LearntName, KeepsQuotesAndBackslashesAsTheyStand)
{
    sim::Set set;
    EXPECT_EQ(taught(set, R"(	ssid="say "hi" \o/ \xc3")"), R"(say "hi" \o/ \xc3)");
}

TEST(RealName, IsWhatTheSupplicantIsSentAndWhatIsRemembered)
{
    for (const Name& name : kDecoded) {
        const std::string& real = name.real;
        const int failed = sim::forkedRun([&] {
            Television television;
            television.startWith(openNetworks({name.written}));
            ASSERT_EQ(Movo_NET_WifiConnectEss(0, kIf, real.c_str()), 0);
            EXPECT_EQ(sent(television.supplicant)[2], "SET_NETWORK 0 ssid \"" + real + "\"");
            television.hears({kConnected});
            const std::string file = television.set.read(kSavedFile);
            EXPECT_EQ(file.substr(0, 33), real + std::string(33 - real.size(), '\0'));
            char joined[33] = "";
            EXPECT_EQ(Movo_NET_WifiGetConnectedEss(0, kIf, joined, sizeof(joined)), 0);
            EXPECT_EQ(joined, real);
            EXPECT_EQ(Movo_NET_WifiSearchHideEss(0, kIf, real.c_str()), 0);
            EXPECT_EQ(sent(television.supplicant)[2], "SET_NETWORK 0 ssid \"" + real + "\"");
        });
        EXPECT_EQ(failed, 0) << real;
    }
}

TEST(RealName, IsJoinedAgainAfterAPowerCut)
{
    for (const Name& name : kDecoded) {
        const std::string& real = name.real;
        const int failed = sim::forkedRun([&] {
            Television television;
            MovNetWifiEssItem_t ess{};
            std::memcpy(ess.essid, real.data(), real.size());
            ess.isConnected = kTrue;
            EssRecord record;
            encodeEss(ess, record);
            television.set.write(kSavedFile, {record.begin(), record.end()});
            television.start();
            const Lines commands = sent(television.supplicant);
            const std::string naming = "SET_NETWORK 0 ssid \"" + real + "\"";
            EXPECT_NE(std::ranges::find(commands, naming), commands.end());
        });
        EXPECT_EQ(failed, 0) << real;
    }
}

TEST(RealName, IsLearntByButtonWithTheKeyOfTheConfiguration)
{
    for (const bool scanned : {true, false}) {
        const int failed = sim::forkedRun([&] {
            Television television;
            television.startWith(openNetworks(scanned ? std::vector{kLongest.written} : std::vector<std::string>{}));
            ASSERT_EQ(Movo_NET_WifiStartWpsConnection(0, kIf, _MOVO_NET_WIFI_WPS_PBC_, nullptr), 0);
            television.set.write(kConfiguration, "network={\n\tssid=" + hexadecimal(kLongest.real) +
                                                     "\n\tpsk=\"learnt key\"\n\tkey_mgmt=WPA-PSK\n}\n");
            television.hears({association(kLongest.written), kConnected});
            ASSERT_NE(g_pSavedEsss, nullptr);
            EXPECT_EQ(g_pSavedEsss->essid, kLongest.real);
            EXPECT_STREQ(g_pSavedEsss->Key, "learnt key");
            int count = 0;
            EXPECT_EQ(Movo_NET_GetNumOfWifiEsss(0, kIf, &count), 0);
            EXPECT_EQ(count, 1) << "listed once";
        });
        EXPECT_EQ(failed, 0) << scanned;
    }
}
