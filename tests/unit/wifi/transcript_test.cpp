#include "names.h"
#include "support/atomic.h"
#include "television.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <movo_net.h>
#include <sstream>

using namespace wifi;
using namespace movonet;

// What a real supplicant was sent, answered and told, replayed event by event: the glue sends the same commands in the
// same order, and makes of the events what is told to the application, remembered and done.

namespace {
struct Line {
    enum class Kind { Send, Reply, Event, Other } kind;
    std::string text;
};

/** The lines of a transcript, up to the one that holds `until`; replies of several lines are one. */
std::vector<Line> linesOf(const std::string& name, const std::string& until = "no such text")
{
    constexpr std::size_t kTimeWidth = 7; // like " 10.372"
    static constexpr std::pair<const char*, Line::Kind> kKinds[] = {
        {" SEND  ", Line::Kind::Send}, {" REPLY ", Line::Kind::Reply}, {" EVENT ", Line::Kind::Event}};
    std::vector<Line> lines;
    std::istringstream transcript(fixture(name));
    for (std::string each; std::getline(transcript, each) && each.find(until) == std::string::npos;) {
        Line line{Line::Kind::Other, each};
        for (const auto& [mark, kind] : kKinds) {
            if (each.find(mark) == kTimeWidth) {
                line = {kind, each.substr(kTimeWidth + std::strlen(mark))};
            }
        }
        const bool goesOn = line.kind == Line::Kind::Other && !each.starts_with(" ") && !lines.empty();
        if (goesOn) {
            lines.back().text += "\n" + each;
        } else {
            lines.push_back(line);
        }
    }
    return lines;
}

using Requests = std::vector<std::function<void()>>;

/**
 * Plays a transcript. A command that the glue has not sent by itself is what the next of the requests is for. Commands
 * that the glue never sends are left out: those that begin with one of `foreign`.
 */
void play(Television& television, const std::vector<Line>& lines, const Requests& requests, const Lines& foreign = {})
{
    Supplicant& supplicant = television.supplicant;
    const auto isForeign = [&](const Line& line) {
        return std::ranges::any_of(foreign, [&](const std::string& start) { return line.text.starts_with(start); });
    };
    supplicant.replies.clear();
    for (std::size_t at = 0; at + 1 < lines.size(); ++at) {
        if (lines[at].kind == Line::Kind::Send && !isForeign(lines[at])) {
            supplicant.replies[lines[at].text].push_back(lines[at + 1].text + "\n");
        }
    }
    std::size_t sent = 0;
    auto request = requests.begin();
    for (const Line& line : lines) {
        if (line.kind == Line::Kind::Event) {
            television.hears({line.text});
        } else if (line.kind == Line::Kind::Send && !isForeign(line)) {
            if (sent == supplicant.commands.size()) {
                ASSERT_NE(request, requests.end()) << line.text;
                (*request++)();
            }
            ASSERT_LT(sent, supplicant.commands.size()) << line.text;
            EXPECT_EQ(supplicant.commands[sent++], line.text);
        }
    }
    EXPECT_EQ(sent, supplicant.commands.size());
    EXPECT_EQ(request, requests.end());
}

/** The events between the nth command that begins so and the command after it. */
Lines eventsAfter(const std::vector<Line>& lines, const std::string& command, int nth)
{
    Lines events;
    for (const Line& line : lines) {
        if (line.kind == Line::Kind::Send) {
            nth -= line.text.starts_with(command) ? 1 : 0;
            if (!events.empty()) {
                break;
            }
        } else if (line.kind == Line::Kind::Event && nth == 0) {
            events.push_back(line.text);
        }
    }
    return events;
}

std::function<void()> joining(const char* essid, const std::string& key = "")
{
    return [essid, key] {
        if (!key.empty()) {
            EXPECT_EQ(Movo_NET_WifiSetKey(0, kIf, essid, key.c_str(), static_cast<int>(key.size())), 0);
        }
        EXPECT_EQ(Movo_NET_WifiConnectEss(0, kIf, essid), 0);
    };
}

void leave()
{
    EXPECT_EQ(Movo_NET_WifiDisConnect(0, kIf), 0);
}

/** The newest remembered network. */
std::string remembered()
{
    return g_pSavedEsss == nullptr ? "" : std::string(g_pSavedEsss->essid) + "/" + g_pSavedEsss->Key;
}

const Network kHome{"My Home Net", "[WPA2-PSK-CCMP][ESS]", "02:00:00:00:01:00", 2412, -30};
const Network kWps{"WpsNet", "[WPA2-PSK-CCMP][WPS][ESS]", "02:00:00:00:04:00", 2422, -30};

/** A file of `cat -A`, as it was before. */
std::string plain(std::string text)
{
    for (const auto& [shown, meant] : {std::pair("$\n", "\n"), std::pair("^I", "\t")}) {
        for (std::size_t at = text.find(shown); at != std::string::npos; at = text.find(shown, at + 1)) {
            text.replace(at, 2, meant);
        }
    }
    return text;
}
} // namespace

TEST(Transcript, OfAnOpenNetwork)
{
    Television television;
    television.startWith({{"OpenNet", "[ESS]", "02:00:00:00:03:00", 2462, -30}});
    play(television, linesOf("open.txt"), {joining("OpenNet"), leave});
    EXPECT_CALLBACKS(television.set, {{sim::IFCONNECTED, kIf}, {sim::IFDISCONNECTED, kIf}});
    EXPECT_EQ(remembered(), "OpenNet/");
    EXPECT_EQ(television.link().connectStatus, WPACTRL_STATUS_NONE);
}

TEST(Transcript, OfAWpa2Network)
{
    Television television;
    television.startWith({kHome});
    play(television, linesOf("wpa2_ok.txt", " 10.372 "),
         {joining("My Home Net", "correct horse"), [] { EXPECT_EQ(Movo_NET_WifiScanEsss(0, kIf), 0); }}, {"STATUS"});
    EXPECT_CALLBACKS(television.set, {{sim::IFCONNECTED, kIf}, {sim::WIFISCANDONE, kIf}});
    EXPECT_EQ(remembered(), "My Home Net/correct horse");
    EXPECT_EQ(television.link().connectStatus, WPACTRL_STATUS_CONNECTED);
}

TEST(Transcript, OfAWrongKey)
{
    Television television;
    television.startWith({kHome});
    play(television, linesOf("wpa2_wrong_key.txt", " 14.957 "), {joining("My Home Net", "wrong horse")});
    EXPECT_CALLBACKS(television.set, {{sim::WIFIBADKEY, kIf}});
    EXPECT_EQ(remembered(), "");
    EXPECT_EQ(television.link().connectStatus, WPACTRL_STATUS_NONE);
    const std::map<End, int> once{{End::BadKey, 1}};
    EXPECT_EQ(television.supplicant.attempts.ends(), once);
}

TEST(Transcript, OfAWepNetworkFromItsScanOn)
{
    Television television;
    television.startWith({});
    play(television, linesOf("wep.txt"),
         {[] { EXPECT_EQ(Movo_NET_WifiScanEsss(0, kIf), 0); }, [] { EXPECT_EQ(Movo_NET_WifiUpdateEsss(0, kIf), 0); },
          joining("WepNet", "abcde"), leave},
         {"SET_NETWORK 0 wep_key0 6162636465"});
    EXPECT_CALLBACKS(
        television.set,
        {{sim::WIFISCANDONE, kIf}, {sim::WIFIESSSUPDATED, kIf}, {sim::IFCONNECTED, kIf}, {sim::IFDISCONNECTED, kIf}});
    EXPECT_EQ(remembered(), "WepNet/abcde");
    int count = 0;
    EXPECT_EQ(Movo_NET_GetNumOfWifiEsss(0, kIf, &count), 0);
    EXPECT_EQ(count, 6) << "hidden ones and the set's own direct group are not listed";
}

TEST(Transcript, OfANetworkOfBothKindsWhoseNameIsNotAscii)
{
    constexpr const char* kName = "Caf\xc3\xa9 \xe6\x97\xa5\xe6\x9c\xac";
    Television television;
    television.startWith({{kName, "[WPA-PSK-CCMP+TKIP][WPA2-PSK-CCMP+TKIP][ESS]", "02:00:00:00:02:00", 2437, -30}});
    EXPECT_EQ(Movo_NET_WifiSetSecurityType(0, _MOVO_NET_WIFI_UI_MIX_), 0);
    play(television, linesOf("mixed_utf8.txt"), {joining(kName, "12345678"), leave}, {"STATUS"});
    EXPECT_CALLBACKS(television.set, {{sim::IFCONNECTED, kIf}, {sim::IFDISCONNECTED, kIf}});
    EXPECT_EQ(remembered(), std::string(kName) + "/12345678");
}

TEST(Transcript, OfAnAccessPointThatVanishesAndReturns)
{
    Television television;
    television.startWith({kHome});
    play(television, linesOf("ap_vanish.txt", "reason=4"), {joining("My Home Net", "correct horse")});
    EXPECT_CALLBACKS(television.set, {{sim::IFCONNECTED, kIf}, {sim::IFDISCONNECTED, kIf}, {sim::IFCONNECTED, kIf}});
    EXPECT_EQ(television.link().connectStatus, WPACTRL_STATUS_CONNECTED);
}

TEST(Transcript, OfAPushButton)
{
    Television television;
    television.startWith({kWps});
    television.set.write("/etc/wpa_supplicant.conf", plain(fixture("conf_after_wps_pbc.txt")));
    play(television, linesOf("wps_pbc.txt"),
         {[] { EXPECT_EQ(Movo_NET_WifiStartWpsConnection(0, kIf, _MOVO_NET_WIFI_WPS_PBC_, nullptr), 0); }, leave},
         {"STATUS"});
    EXPECT_CALLBACKS(television.set, {{sim::IFCONNECTED, kIf}, {sim::IFDISCONNECTED, kIf}});
    ASSERT_NE(g_pSavedEsss, nullptr);
    EXPECT_EQ(g_pSavedEsss->bssid, 0x000400000002);
}

TEST(Transcript, KeepsNoKeyOfAPushButtonThatTheSupplicantWritesInHexadecimal)
{
    Television television;
    television.startWith({kWps});
    television.set.write("/etc/wpa_supplicant.conf", plain(fixture("conf_after_wps_pbc.txt")));
    EXPECT_EQ(Movo_NET_WifiStartWpsConnection(0, kIf, _MOVO_NET_WIFI_WPS_PBC_, nullptr), 0);
    television.hears(eventsAfter(linesOf("wps_pbc.txt"), "WPS_PBC any", 1));
    EXPECT_EQ(remembered(), "WpsNet/");
    EXPECT_LOGGED(television.set, KEST_LEVEL_INFO, "movo_net_fl_wpactrl", "Wpa_GetSavedEss",
                  "get saved ess:\n\tssid-\"WpsNet\"\n\tkey-\"\"\n\tsecurityStr-WPA-PSK\n\tencrypStr-CCMP-256 GCMP-256 "
                  "CCMP GCMP\n");
}

TEST(Transcript, OfAPinThatTheSupplicantMakes)
{
    Television television;
    television.startWith({kWps});
    const std::vector<Line> lines = linesOf("wps_pin.txt");
    television.supplicant.replies["WPS_PIN any"] = {"74838189"}; // without a newline, as it was
    television.supplicant.replies["WPS_PIN any 12345670"] = {"12345670"};
    char pin[9] = "";
    EXPECT_EQ(Movo_NET_WifiGenerateWpsPin(0, kIf, pin, sizeof(pin)), 0);
    EXPECT_STREQ(pin, "74838189");
    television.hears(eventsAfter(lines, "WPS_PIN any", 1));
    EXPECT_CALLBACKS(television.set, {});
    EXPECT_EQ(Movo_NET_WifiStartWpsConnection(0, kIf, _MOVO_NET_WIFI_WPS_PIN, "12345670"), 0);
    television.hears(eventsAfter(lines, "WPS_PIN any 12345670", 1));
    EXPECT_CALLBACKS(television.set, {{sim::IFCONNECTED, kIf}});
    EXPECT_EQ(remembered(), "WpsNet/");
}

TEST(Transcript, OfHiddenNetworksThatAreFoundOrNot)
{
    Television television;
    television.startWith({});
    store(wifi_iface(&television.mlan0())->devType, _MOVO_NET_WIFI_BRCM_43242_); // it cannot cancel scans
    const std::vector<Line> lines = linesOf("hidden_search.txt");
    int search = 0;
    for (const char* name : {"HiddenEmpty", "HiddenZeros", "NoSuchNet"}) {
        const std::string ssid = name;
        (void)sent(television.supplicant);
        EXPECT_EQ(Movo_NET_WifiSearchHideEss(0, kIf, name), 0);
        EXPECT_EQ(sent(television.supplicant),
                  (Lines{"REMOVE_NETWORK ALL", "ADD_NETWORK", "SET_NETWORK 0 ssid \"" + ssid + "\"",
                         "SET_NETWORK 0 key_mgmt NONE", "SET_NETWORK 0 scan_ssid 1", "SELECT_NETWORK  0"}));
        television.hears(eventsAfter(lines, "SELECT_NETWORK", ++search));
        EXPECT_EQ(sent(television.supplicant), Lines{"REMOVE_NETWORK ALL"}) << "the search's network goes";
        EXPECT_CALLBACKS(television.set, {{sim::WIFISCANDONE, kIf}});
        EXPECT_EQ(television.link().connectStatus, WPACTRL_STATUS_NONE) << "what follows joins nothing";
    }
}
