#include "bench.h"
#include "names.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace wifi;
using namespace movonet;

namespace {
constexpr auto kIfConnected = _MOVO_NET_CALLBACK_IFCONNECTED_;
constexpr auto kBadKey = _MOVO_NET_CALLBACK_WIFIBADKEY_;
constexpr auto kScanDone = _MOVO_NET_CALLBACK_WIFISCANDONE_;

/** The events of a real supplicant's transcript, up to `until`. */
Lines eventsOf(const std::string& transcript, const std::string& until)
{
    Lines events;
    std::istringstream lines(fixture(transcript));
    for (std::string line; std::getline(lines, line);) {
        if (const auto at = line.find(" EVENT "); at != std::string::npos) {
            events.push_back(line.substr(at + 7));
            if (line.find(until) != std::string::npos) {
                break;
            }
        }
    }
    return events;
}
} // namespace

TEST(Connecting_ConnectedEvent, GoesToConnectedTellsConfiguresAndRemembers)
{
    Bench bench;
    bench.connect();
    EXPECT_EQ(bench.hear({kConnected}), 0);
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTED);
    EXPECT_EQ(bench.link().connectTimerEventHandle, 0);
    EXPECT_EQ(bench.wifi().curOperatingEsss.isConnected, 1);
    EXPECT_CALLBACKS(bench.set, {{kIfConnected, "mlan0"}});
    EXPECT_RAN_IN_ORDER(bench.set, {"netcfg mlan0 up", "ifconfig mlan0 0.0.0.0"});
    EXPECT_TRUE(bench.set.dhcp("mlan0").running());
    ASSERT_NE(int_Movo_Net_GetSavedConnectedEss(), nullptr);
    EXPECT_STREQ(int_Movo_Net_GetSavedConnectedEss()->Key, "correct horse");
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, kHandler, "connected\n");
}

TEST(Connecting_FirstHandshakeFailure, GoesToNoneAndReportsBadKey)
{
    Bench bench;
    bench.connect();
    EXPECT_EQ(bench.hear({kHandshake, kHandshake}), 0);
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_NONE);
    EXPECT_EQ(sent(bench.supplicant), Lines{"REMOVE_NETWORK ALL"});
    EXPECT_CALLBACKS(bench.set, {{kBadKey, "mlan0"}});
    EXPECT_EQ(bench.link().connectTimerEventHandle, 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, kHandler, "handshake failed count: 1\n");
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, kHandler, "too many handshake failed events\n");
    bench.set.grantTicks(400);
    EXPECT_CALLBACKS(bench.set, {});
}

TEST(Connecting_ConnectedAndHandshakeInOneMessage, IsConnected)
{
    Bench bench;
    bench.connect();
    EXPECT_EQ(bench.hear({std::string(kConnected) + " Handshake failed"}), 0);
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTED);
}

TEST(Connected_DisconnectedEvent, GoesToConnectingAndReEnablesTheNetwork)
{
    Bench bench;
    bench.connect();
    (void)bench.hear({kConnected});
    EXPECT_CALLBACKS(bench.set, {{kIfConnected, "mlan0"}});
    (void)sent(bench.supplicant);
    EXPECT_EQ(bench.hear({kDisconnected}), 0);
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTING);
    EXPECT_EQ(sent(bench.supplicant), (Lines{"DISABLE_NETWORK 0", "ENABLE_NETWORK 0"}));
    EXPECT_CALLBACKS(bench.set, {{sim::IFDISCONNECTED, "mlan0"}});
    EXPECT_EQ(bench.link().connectTimerEventHandle, 0) << "no time-out for the supplicant's own retry";
}

TEST(OtherEvents, LeaveTheStateAlone)
{
    Bench bench;
    EXPECT_EQ(bench.hear({kConnected, kDisconnected, kHandshake, kResults, "", "<3>anything"}), 0);
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_NONE);
    bench.connect();
    EXPECT_EQ(bench.hear({kDisconnected}), 0);
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTING);
    (void)bench.hear({kConnected});
    (void)bench.hear({kConnected});
    EXPECT_CALLBACKS(bench.set, {{kIfConnected, "mlan0"}});
}

TEST(ScanEnd, IsToldOnceAndItsTimerRemoved)
{
    Bench bench;
    ASSERT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 0);
    EXPECT_EQ(bench.link().isScanning, 1);
    EXPECT_EQ(bench.hear({kResults, kResults}), 0);
    EXPECT_CALLBACKS(bench.set, {{kScanDone, "mlan0"}});
    EXPECT_EQ(bench.link().isScanning, 0);
    EXPECT_EQ(bench.link().scanTimerEventHandle, 0);
    bench.set.grantTicks(400);
    EXPECT_CALLBACKS(bench.set, {});
}

TEST(ScanEnd, AfterTheConnectionInTheSameMessage)
{
    Bench bench;
    bench.connect();
    ASSERT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 0);
    EXPECT_EQ(bench.hear({std::string(kConnected) + kResults}), 0);
    EXPECT_CALLBACKS(bench.set, {{kIfConnected, "mlan0"}, {kScanDone, "mlan0"}});
}

TEST(Drain, TellsWhatItCannotRead)
{
    Bench bench;
    bench.supplicant.receiveFails = true;
    EXPECT_EQ(bench.hear({kConnected}), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kLinkModule, kHandler, "could not read pending message.\n");
    bench.supplicant.events.clear();
    bench.supplicant.pendingAtEnd = -1;
    EXPECT_EQ(bench.hear({}), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kLinkModule, kHandler,
                  "Connection to wpa_supplicant lost - trying to reconnect\n");
}

TEST(Drain, StopsWhenACallbackShutsTheLinkDown)
{
    for (const char* message : {kConnected, kHandshake}) {
        const int failed = sim::forkedRun([message] {
            Bench bench;
            bench.connect();
            bench.set.onCallback([&bench](MovoNetCBReason_e, void*) { (void)ShutdownWpactrl(&bench.iface); });
            EXPECT_EQ(bench.hear({message, kDisconnected, kResults}), 0);
            EXPECT_EQ(bench.link().ctrl_conn, nullptr);
            EXPECT_NOT_RAN(bench.set, "netcfg mlan0 up");
            EXPECT_EQ(bench.supplicant.events.size(), 2U) << "nothing more is read";
        });
        EXPECT_EQ(failed, 0) << message;
    }
}

TEST(Drain, CutsAMessageOfAnyLength)
{
    Bench bench;
    bench.connect();
    EXPECT_EQ(bench.hear({std::string(5000, 'x') + kConnected}), 0);
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTING);
}

TEST(RealTranscripts, WpsTeachesItsNetwork)
{
    Bench bench;
    bench.list("WpsNet", _MOVO_NET_WIFI_SECURITY_WPA2_PSK_, _MOVO_NET_WIFI_ENCRYP_AES_).bssid = 42;
    bench.set.write("/etc/wpa_supplicant.conf",
                    "network={\n\tssid=\"WpsNet\"\n\tpsk=\"learnt key\"\n\tkey_mgmt=WPA-PSK\n}\n");
    ASSERT_EQ(int_Movo_Net_Wpactrl_WPSPBC(&bench.iface), 0);
    EXPECT_EQ(bench.hear(eventsOf("wps_pbc.txt", "CTRL-EVENT-CONNECTED")), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, kHandler, "get wps ssid: WpsNet\n");
    const MovNetWifiEssItem_t* saved = int_Movo_Net_GetSavedConnectedEss();
    ASSERT_NE(saved, nullptr);
    EXPECT_STREQ(saved->essid, "WpsNet");
    EXPECT_STREQ(saved->Key, "learnt key");
    EXPECT_EQ(saved->bssid, 42);
    EXPECT_EQ(bench.link().isWpsMode, 0);
    EXPECT_RAN_IN_ORDER(bench.set, {"cp -f Misc/wpa_supplicant.conf /etc/", "sync"});
}

namespace {
/** The messages in which the supplicant quotes a name, each with names that hold the words of events. */
Lines messagesOfEvilNames()
{
    Lines messages;
    for (const std::string name :
         {"Handshake failed", "CTRL-EVENT-CONNECTED ", "CTRL-EVENT-DISCONNECTED ", "CTRL-EVENT-SCAN-RESULTS ",
          "' CTRL-EVENT-CONNECTED ", "'' Handshake failed'", R"(\" CTRL-EVENT-DISCONNECTED \")"}) {
        messages.insert(messages.end(),
                        {"<3>Trying to associate with 02:00:00:00:04:00 (SSID='" + name + "' freq=2422 MHz)",
                         "<3>SME: Trying to authenticate with 02:00:00:00:04:00 (SSID='" + name + "' freq=2422 MHz)",
                         "<3>Trying to associate with SSID '" + name + "'",
                         "<3>CTRL-EVENT-SSID-REENABLED id=0 ssid=\"" + name + "\""});
    }
    return messages;
}
} // namespace

TEST(QuotedName, ThatHoldsTheWordsOfAnEventDoesNothing)
{
    Bench bench;
    bench.connect();
    ASSERT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 0);
    EXPECT_EQ(bench.hear(messagesOfEvilNames()), 0);
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTING);
    EXPECT_EQ(bench.link().isScanning, 1);
    EXPECT_CALLBACKS(bench.set, {});

    (void)bench.hear({kConnected});
    EXPECT_CALLBACKS(bench.set, {{kIfConnected, "mlan0"}});
    EXPECT_EQ(bench.hear(messagesOfEvilNames()), 0);
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTED);
    EXPECT_EQ(bench.link().isScanning, 1);
    EXPECT_CALLBACKS(bench.set, {});
}

TEST(QuotedName, DoesNotHideTheWordsBehindIt)
{
    Bench bench;
    bench.connect();
    EXPECT_EQ(bench.hear({"<3>ssid=\"it's\" CTRL-EVENT-CONNECTED "}), 0);
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTED);
}

TEST(WpsMode, LearnsANameThatHoldsTheTextBehindNames)
{
    const std::string name = "Net' freq=2412 MHz)";
    Bench bench;
    bench.list("Net", _MOVO_NET_WIFI_SECURITY_OPEN_, _MOVO_NET_WIFI_ENCRYP_NONE_);
    bench.list(name.c_str(), _MOVO_NET_WIFI_SECURITY_WPA2_PSK_, _MOVO_NET_WIFI_ENCRYP_AES_).bssid = 42;
    ASSERT_EQ(int_Movo_Net_Wpactrl_WPSPBC(&bench.iface), 0);
    EXPECT_EQ(bench.hear({"<3>Trying to associate with x (SSID='" + name + "' freq=2422 MHz)"}), 0);
    EXPECT_EQ(bench.link().isWpsEssSaved, 1);
    EXPECT_STREQ(bench.wifi().curOperatingEsss.essid, name.c_str());
    EXPECT_EQ(bench.wifi().curOperatingEsss.bssid, 42);
}

TEST(WpsMode, LearnsNothingFromAHiddenOrOverlongName)
{
    Bench bench;
    ASSERT_EQ(int_Movo_Net_Wpactrl_WPSPBC(&bench.iface), 0);
    EXPECT_EQ(bench.hear({"<3>Trying to associate with 02:00:00:00:04:00 (SSID='' freq=2422 MHz)",
                          "<3>Trying to associate with x (SSID='" + std::string(33, 's') + "' freq=2422 MHz)",
                          "<3>Trying to associate with ' freq (SSID='"}),
              0);
    EXPECT_EQ(bench.link().isWpsEssSaved, 0);
    EXPECT_EQ(bench.hear({"<3>Trying to associate with x (SSID='" + std::string(32, 's') + "' freq=2422 MHz)"}), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kLinkModule, kHandler,
                  "get essid: " + std::string(32, 's') + " in index failed\n");
}
