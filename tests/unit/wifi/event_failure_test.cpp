#include "bench.h"
#include "movo_net_fl_wpactrl/learnt.h"
#include "names.h"

#include <gtest/gtest.h>

using namespace wifi;
using namespace movonet;

// Events of the supplicant that meet a lock that cannot be taken, a callback that asks for something, or a
// configuration that teaches little.

namespace {
constexpr const char* kAssociating = "<3>Trying to associate with 02:00:00:00:04:00 (SSID='Net' freq=2422 MHz)";
} // namespace

TEST(Drain, ChecksWhatItIsGiven)
{
    Bench bench;
    MovoNetIface_t bare{};
    const sim::CapturedOutput output;
    EXPECT_EQ(OnWpactrlEventRev(-1, nullptr, 0), 5);
    EXPECT_NE(output.text().find("Routine:OnWpactrlEventRev, pIface failed"), std::string::npos);
    EXPECT_EQ(OnWpactrlEventRev(-1, &bare, 0), 5);
    MovoNetWifi_t unlinked{};
    bare.priv = &unlinked;
    EXPECT_EQ(OnWpactrlEventRev(-1, &bare, 0), 1);
    bench.set.failLock(bench.link().lock, 1);
    EXPECT_EQ(bench.hear({kConnected}), 1);
    EXPECT_EQ(errors(bench.set), Lines{"OnWpactrlEventRev: lock wpactrl mutex failed\n"});
    EXPECT_EQ(bench.supplicant.events.size(), 1U);
}

TEST(Drain, TakesTheFirst255BytesOfAMessageAndEachTextWithItsBlank)
{
    Bench bench;
    bench.connect();
    const std::string connected = "CTRL-EVENT-CONNECTED ";
    ASSERT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 0);
    bench.set.forget();
    EXPECT_EQ(bench.hear({std::string(256 - connected.size(), 'x') + connected, "<3>CTRL-EVENT-CONNECTED",
                          "<3>CTRL-EVENT-SCAN-RESULTS", "<3>Handshake", "<3>anything"}),
              0);
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTING);
    EXPECT_TRUE(bench.set.log().empty()) << "what means nothing is not told of";
    EXPECT_EQ(bench.hear({std::string(255 - connected.size(), 'x') + connected, "<3>CTRL-EVENT-DISCONNECTED"}), 0);
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTED);
    EXPECT_CALLBACKS(bench.set, {{sim::IFCONNECTED, "mlan0"}});
}

TEST(Connecting_ConnectedEvent, EndsWithoutTheNetworksLock)
{
    Bench bench;
    bench.connect();
    bench.set.failLock(bench.wifi().lock, 1);
    EXPECT_EQ(bench.hear({kConnected, kResults}), 1);
    EXPECT_EQ(errors(bench.set), Lines{"OnWpactrlEventRev: lock wifi iface mutex failed\n"});
    EXPECT_EQ(bench.set.heldLocks(), 0);
    EXPECT_CALLBACKS(bench.set, {{sim::IFCONNECTED, "mlan0"}});
    EXPECT_EQ(bench.wifi().curOperatingEsss.isConnected, 0);
    EXPECT_EQ(g_pSavedEsss, nullptr);
}

TEST(Connecting_ConnectedEvent, TakesTheFirstConnectsTimerAway)
{
    Bench bench;
    s_bFirstConnect = 1;
    bench.connect();
    bench.link().handshake_fail_count = bench.link().disconnect_count = 7;
    EXPECT_EQ(bench.hear({kConnected}), 0);
    EXPECT_EQ(bench.link().firstConnectHandle, 0);
    EXPECT_EQ(bench.link().handshake_fail_count, 0);
    EXPECT_EQ(bench.link().disconnect_count, 0);
}

TEST(Connecting_ConnectedEvent, ListsANetworkThatNoScanHasSeen)
{
    Bench bench;
    bench.connect();
    bench.wifi().esss_num = 0;
    EXPECT_EQ(bench.hear({kConnected}), 0);
    ASSERT_EQ(bench.wifi().esss_num, 1);
    EXPECT_STREQ(bench.wifi().esss[0].essid, "My Home Net");
    EXPECT_EQ(bench.wifi().esss[0].isConnected, 1);
}

TEST(Connecting_ConnectedEvent, TakesTheLastPlaceOfAFullTable)
{
    Bench bench;
    bench.connect();
    bench.wifi().esss_num = 0;
    for (int index = 0; index < MOVO_NET_MAX_ESSS; ++index) {
        bench.list("n" + std::to_string(index), _MOVO_NET_WIFI_SECURITY_OPEN_, _MOVO_NET_WIFI_ENCRYP_NONE_);
    }
    EXPECT_EQ(bench.hear({kConnected}), 0);
    EXPECT_EQ(bench.wifi().esss_num, 50);
    EXPECT_STREQ(bench.wifi().esss[48].essid, "n48");
    EXPECT_STREQ(bench.wifi().esss[49].essid, "My Home Net");
}

TEST(Connecting_FirstHandshakeFailure, KeepsRemovingWhatTheCallbackHasBegun)
{
    Bench bench;
    bench.connect();
    bench.set.onCallback([&bench](MovoNetCBReason_e reason, void*) {
        if (reason == sim::WIFIBADKEY) {
            EXPECT_EQ(int_Movo_Net_Wpactrl_Connect(&bench.iface, &bench.wifi().esss[0]), 0);
        }
    });
    EXPECT_EQ(bench.hear({kHandshake}), 0);
    EXPECT_EQ(sent(bench.supplicant).back(), "REMOVE_NETWORK ALL");
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_NONE);
    EXPECT_EQ(bench.link().handshake_fail_count, 0);
}

TEST(ScanEnd, LeavesAScanAloneThatItsCallbackBegins)
{
    Bench bench;
    ASSERT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 0);
    int scans = 1;
    bench.set.onCallback([&](MovoNetCBReason_e, void*) {
        if (scans++ == 1) {
            EXPECT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 0);
        }
    });
    EXPECT_EQ(bench.hear({kResults}), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, kHandler, "scan done\n");
    EXPECT_EQ(bench.link().isScanning, 1);
    EXPECT_EQ(bench.hear({kResults}), 0);
    EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}, {sim::WIFISCANDONE, "mlan0"}});
}

TEST(ScanEnd, OfAHiddenSearchTakesBackWhatARetryHasMadeOfIt)
{
    Bench bench;
    ASSERT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bench.iface, "Hidden"), 0);
    ASSERT_EQ(int_Movo_Net_Wpactrl_ResetConnecting(&bench.iface), 0);
    EXPECT_EQ(bench.hear({kConnected}), 0);
    EXPECT_CALLBACKS(bench.set, {{sim::IFCONNECTED, "mlan0"}});
    (void)sent(bench.supplicant);
    EXPECT_EQ(bench.hear({kAssociating}), 0);
    EXPECT_EQ(sent(bench.supplicant), Lines{"REMOVE_NETWORK ALL"});
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_NONE);
    EXPECT_EQ(bench.wifi().curOperatingEsss.isConnected, 0);
    EXPECT_FALSE(bench.set.dhcp("mlan0").running());
    EXPECT_EQ(bench.link().isSearchingHideEss, 0);
    EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}});
}

TEST(ScanEnd, OfAHiddenSearchNeedsNoScan)
{
    Bench bench;
    bench.link().isSearchingHideEss = 1;
    EXPECT_EQ(bench.hear({kResults}), 0);
    EXPECT_CALLBACKS(bench.set, {}) << "it has not found anything";
    EXPECT_EQ(bench.hear({kAssociating}), 0);
    EXPECT_EQ(sent(bench.supplicant), Lines{"REMOVE_NETWORK ALL"});
    EXPECT_EQ(bench.link().isSearchingHideEss, 0);
    EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}});
    EXPECT_EQ(bench.set.commands().size(), 0U) << "there is no address to take back";
}

TEST(WpsMode, KeepsTheLinksLockWhenItCannotTakeTheNetworks)
{
    Bench bench;
    bench.list("Net", _MOVO_NET_WIFI_SECURITY_OPEN_, _MOVO_NET_WIFI_ENCRYP_NONE_);
    ASSERT_EQ(int_Movo_Net_Wpactrl_WPSPBC(&bench.iface), 0);
    bench.set.failLock(bench.wifi().lock, 1);
    EXPECT_EQ(bench.hear({kAssociating}), 1);
    EXPECT_EQ(errors(bench.set), Lines{"OnWpactrlEventRev: lock wifi iface mutex failed\n"});
    EXPECT_EQ(bench.set.heldLocks(), 1);
    EXPECT_EQ(bench.link().isWpsEssSaved, 0);
    bench.link().lock.unlock();
}

TEST(WpsMode, TakesTheNetworkFromTheTableAndItsKeyFromTheConfiguration)
{
    Bench bench;
    MovNetWifiEssItem_t& ess =
        bench.list("Net", _MOVO_NET_WIFI_SECURITY_WPA2_PSK_, _MOVO_NET_WIFI_ENCRYP_AES_, "an old key");
    ess.isConnected = 1;
    ASSERT_EQ(int_Movo_Net_Wpactrl_WPSPBC(&bench.iface), 0);
    EXPECT_EQ(bench.hear({kAssociating}), 0);
    EXPECT_EQ(bench.link().isWpsEssSaved, 1);
    EXPECT_STREQ(bench.wifi().curOperatingEsss.essid, "Net");
    EXPECT_EQ(bench.wifi().curOperatingEsss.isConnected, 0);
    bench.set.write("/etc/wpa_supplicant.conf", "network={\n\tssid=\"Other\"\n\tpsk=\"the new key\"\n}\n");
    EXPECT_EQ(bench.hear({kConnected}), 0);
    EXPECT_STREQ(bench.wifi().curOperatingEsss.essid, "Net");
    EXPECT_STREQ(bench.wifi().curOperatingEsss.Key, "the new key");
    EXPECT_EQ(bench.wifi().curOperatingEsss.encrypType, _MOVO_NET_WIFI_ENCRYP_AES_);
}

TEST(WpsMode, TakesAllFromTheConfigurationWhenNoEventNamedTheNetwork)
{
    Bench bench;
    ASSERT_EQ(int_Movo_Net_Wpactrl_WPSPBC(&bench.iface), 0);
    bench.set.write("/etc/wpa_supplicant.conf",
                    "network={\n\tssid=\"Other\"\n\tpsk=\"the key\"\n\tkey_mgmt=WPA-PSK\n\tpairwise=CCMP\n}\n");
    EXPECT_EQ(bench.hear({kConnected}), 0);
    ASSERT_NE(g_pSavedEsss, nullptr);
    EXPECT_STREQ(g_pSavedEsss->essid, "Other");
    EXPECT_STREQ(g_pSavedEsss->Key, "the key");
    EXPECT_EQ(g_pSavedEsss->securityType, _MOVO_NET_WIFI_SECURITY_WPA_PSK_);
    EXPECT_EQ(g_pSavedEsss->encrypType, _MOVO_NET_WIFI_ENCRYP_AES_);
    EXPECT_EQ(g_pSavedEsss->isConnected, 1);
    EXPECT_EQ(bench.link().isWpsEssSaved, 1);
    EXPECT_EQ(bench.link().isWpsMode, 0);
}

TEST(WpsMode, KeepsListingANamelessNetworkWhenTheConfigurationCannotBeRead)
{
    Bench bench;
    ASSERT_EQ(int_Movo_Net_Wpactrl_WPSPBC(&bench.iface), 0);
    EXPECT_EQ(bench.hear({kConnected}), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, kLinkModule, "Wpa_GetSavedEss", "Could not open wpa_supplicant.conf\n");
    ASSERT_EQ(bench.wifi().esss_num, 1);
    EXPECT_STREQ(bench.wifi().esss[0].essid, "");
    EXPECT_EQ(bench.wifi().curOperatingEsss.isConnected, 1);
    EXPECT_EQ(g_pSavedEsss, nullptr) << "it is not remembered";
}

namespace {
struct Taught {
    const char* name;
    std::string block;
    std::string told; // name, key, key management, pairwise
};
const Taught kTaught[] = {
    {"WithoutEnd", "\tssid=\"Net\"\n\tkey_mgmt=NONE", "\tssid-\"Net\"\n\tkey-\"\"\n\tsecurityStr-NONE\n\tencrypStr-\n"},
    {"UpToTheBracket", "\tssid=\"Net\"\n}\n\tpsk=\"of another\"\n",
     "\tssid-\"Net\"\n\tkey-\"\"\n\tsecurityStr-\n\tencrypStr-\n"},
    {"QuotesInside", "\tssid=\"a\"b\"\n\tpsk=\"\"\"\n}\n",
     "\tssid-\"a\"b\"\n\tkey-\"\"\"\n\tsecurityStr-\n\tencrypStr-\n"},
    {"LoneAndMissingQuotes", "\tssid=\"\n\tssid=Net\n\tpsk=\"no end\n\tpsk=0123\n}\n",
     "\tssid-\"\"\n\tkey-\"\"\n\tsecurityStr-\n\tencrypStr-\n"},
    {"NotAtTheLinesBeginning", "ssid=\"a\"\n\t\tssid=\"b\"\n\tbssid=\"c\"\n}\n",
     "\tssid-\"\"\n\tkey-\"\"\n\tsecurityStr-\n\tencrypStr-\n"},
    {"LongerThanTheirFields",
     "\tssid=\"" + std::string(33, 's') + "\"\n\tpsk=\"" + std::string(65, 'p') +
         "\"\n\tkey_mgmt=" + std::string(28, 'k') + "\n\tpairwise=" + std::string(28, 'c') + "\n}\n",
     "\tssid-\"" + std::string(32, 's') + "\"\n\tkey-\"" + std::string(64, 'p') + "\"\n\tsecurityStr-" +
         std::string(27, 'k') + "\n\tencrypStr-" + std::string(27, 'c') + "\n"},
    {"AsLongAsTheirFields", "\tssid=\"" + std::string(32, 's') + "\"\n\tpsk=\"" + std::string(64, 'p') + "\"\n}\n",
     "\tssid-\"" + std::string(32, 's') + "\"\n\tkey-\"" + std::string(64, 'p') +
         "\"\n\tsecurityStr-\n\tencrypStr-\n"}};
} // namespace

TEST(Learnt, IsTheBlocksQuotedTextsCutToTheirLengths)
{
    sim::Set set;
    for (const auto& [name, block, expected] : kTaught) {
        set.write("/etc/wpa_supplicant.conf", "ctrl_interface=/dev/socket\nnetwork={\n" + block);
        set.forget();
        MovNetWifiEssItem_t ess{};
        Wpa_GetSavedEss(&ess);
        EXPECT_EQ(told(set, KEST_LEVEL_INFO), Lines{"Wpa_GetSavedEss: get saved ess:\n" + expected}) << name;
    }
}
