#include "bench.h"
#include "movo_net_fl_wpactrl/flags.h"
#include "names.h"

#include <gtest/gtest.h>

using namespace wifi;
using namespace movonet;

// Scans and their results when a step fails.

namespace {
const std::string kReader = "int_Movo_Net_Wpactrl_ScanResult: ";

/** A bench whose table holds one network and whose supplicant tells another. */
struct Listed : Bench {
    Listed()
    {
        list("Kept", _MOVO_NET_WIFI_SECURITY_OPEN_, _MOVO_NET_WIFI_ENCRYP_NONE_);
        supplicant.replies["SCAN_RESULTS"] = {kTable};
    }
    std::string first() { return wifi().esss_num == 1 ? wifi().esss[0].essid : ""; }
};
} // namespace

TEST(ScanResultFailure, OfTheRequest)
{
    Listed bench;
    bench.supplicant.results = {-1};
    EXPECT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 1);
    EXPECT_EQ(errors(bench.set), Lines{"Wpactrl_SendCmd: wpa_ctrl_request error\n"});
    EXPECT_EQ(bench.first(), "Kept");
    EXPECT_FALSE(bench.set.exists(kScanFile));
}

TEST(ScanResultFailure, OfTheFileForWriting)
{
    Listed bench;
    bench.set.fail({.call = sim::Call::Open, .on = kScanFile, .error = EACCES});
    EXPECT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 1);
    EXPECT_EQ(errors(bench.set), Lines{kReader + "Could not open scan result file.\n"});
    EXPECT_EQ(bench.set.heldLocks(), 0);
    EXPECT_EQ(bench.first(), "Kept");
}

TEST(ScanResultFailure, OfTheDiskIsPrinted)
{
    Listed bench;
    const Lines open = bench.set.openDescriptors();
    bench.set.fail({.call = sim::Call::Write, .on = kScanFile, .nth = 1, .bytes = 10});
    std::string printed;
    {
        const sim::CapturedOutput output;
        EXPECT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 1);
        (void)std::fflush(stdout);
        printed = output.text();
    }
    EXPECT_EQ(printed, "Error when write to scan result file");
    EXPECT_EQ(errors(bench.set), Lines{});
    EXPECT_EQ(bench.set.read(kScanFile), kTable.substr(0, 10));
    EXPECT_EQ(bench.set.openDescriptors(), open);
    EXPECT_EQ(bench.first(), "Kept");
    EXPECT_CALLBACKS(bench.set, {});
}

TEST(ScanResultFailure, KeepsTheNetworksLockWhenTheFileCannotBeReadAgain)
{
    Listed bench;
    bench.set.fail({.call = sim::Call::Open, .on = kScanFile, .nth = 3, .error = EMFILE});
    EXPECT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 1);
    EXPECT_EQ(errors(bench.set), Lines{kReader + "Could not open scan result file.\n"});
    EXPECT_EQ(bench.set.heldLocks(), 1);
    EXPECT_EQ(bench.first(), "Kept");
    EXPECT_CALLBACKS(bench.set, {});
    bench.wifi().lock.unlock();
}

TEST(ScanResultFailure, KeepsReadingWithoutTheNetworksLock)
{
    Listed bench;
    bench.set.failLock(bench.wifi().lock, 1);
    EXPECT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 0);
    EXPECT_EQ(errors(bench.set), Lines{kReader + "lock failed\n"});
    EXPECT_EQ(bench.first(), "Net");
    EXPECT_EQ(bench.set.heldLocks(), 0);
    EXPECT_CALLBACKS(bench.set, {{sim::WIFIESSSUPDATED, "mlan0"}});
}

TEST(ScanResult, ListsTheJoinedNetworkOnlyWhileItIsJoined)
{
    Bench bench;
    bench.connect();
    bench.supplicant.replies["SCAN_RESULTS"] = {kTable};
    for (const auto& [status, isConnected] :
         {std::pair(WPACTRL_STATUS_CONNECTING, 1), std::pair(WPACTRL_STATUS_NONE, 1),
          std::pair(WPACTRL_STATUS_CONNECTED, 0)}) {
        bench.link().connectStatus = status;
        bench.wifi().curOperatingEsss.isConnected = static_cast<kest_bool>(isConnected);
        EXPECT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 0);
        EXPECT_EQ(bench.wifi().esss_num, 1) << status;
    }
}

TEST(ScanResult, KeepsNoKeyOfTheTableBefore)
{
    Listed bench;
    std::strcpy(bench.wifi().esss[0].essid, "Net");
    ASSERT_EQ(int_Movo_NET_WifiSetKey(&bench.iface, "Net", "a key", 5), 0);
    EXPECT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 0);
    EXPECT_STREQ(bench.wifi().esss[0].Key, "");
}

TEST(ScanResult, TakesAStrongerLineWholeAndAWeakerOneNotAtAll)
{
    Bench bench;
    const std::string header = "bssid / frequency / signal level / flags / ssid\n";
    const std::string first = "02:00:00:00:01:00\t2412\t-60\t[WPA2-PSK-CCMP][ESS]\tn0\n";
    const std::string stronger = "02:00:00:00:02:00\t5180\t-40\t[WPA-PSK-TKIP][WPS][ESS]\tn0\n";
    const std::string weaker = "02:00:00:00:03:00\t2437\t-50\t[ESS]\tn0\n";
    std::string fifty = first;
    for (int index = 1; index < 50; ++index) {
        fifty += "02:00:00:00:01:00\t2412\t-60\t[ESS]\tn" + std::to_string(index) + "\n";
    }
    bench.supplicant.replies["SCAN_RESULTS"] = {header + first + stronger + weaker, header + fifty + stronger};
    ASSERT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 0);
    const MovNetWifiEssItem_t& ess = bench.wifi().esss[0];
    EXPECT_EQ(bench.wifi().esss_num, 1);
    EXPECT_EQ(ess.bssid, 0x000200000002);
    EXPECT_EQ(ess.frequency, 5180);
    EXPECT_EQ(ess.signalVal, -40);
    EXPECT_EQ(ess.bWPS, 1);
    EXPECT_EQ(ess.securityType, _MOVO_NET_WIFI_SECURITY_WPA_PSK_);
    EXPECT_EQ(ess.encrypType, _MOVO_NET_WIFI_ENCRYP_WEP_RYP_TKIP_);
    ASSERT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 0);
    EXPECT_EQ(bench.wifi().esss_num, 50);
    EXPECT_EQ(ess.signalVal, -60) << "nothing is read after the fiftieth name";
}

TEST(ScanResult, KeepsTheFirstWordOfANameWithoutFlagsForFlags)
{
    Bench bench;
    const std::string long33(33, 'n');
    bench.supplicant.replies["SCAN_RESULTS"] = {"any first line\n"};
    EXPECT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 1);
    bench.supplicant.replies["SCAN_RESULTS"] = {"bssid / frequency / signal level / flags / ssid and more\n"
                                                "02:00:00:00:01:00\t2412\t-40\tMy Net\n"
                                                "02:00:00:00:02:00\t2412\t-40\t" +
                                                long33 + "\n02:00:00:00:03:00\t2412\t-40\t[ESS]\t" + long33 + "x\n"};
    EXPECT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 0);
    ASSERT_EQ(bench.wifi().esss_num, 2);
    EXPECT_STREQ(bench.wifi().esss[0].essid, "Net");
    EXPECT_EQ(bench.wifi().esss[1].essid, long33.substr(0, 32));
    EXPECT_EQ(bench.wifi().esss[1].bssid, 0x000200000002) << "names are equal over 32 bytes";
}

TEST(ScanFlags, GiveTheGroupThatDecidesOrAllOfThem)
{
    MovoNetWifiSecurity_e type{};
    char info[MOVO_NET_INFO_SIZE];
    const auto group = [&](const std::string& flags) {
        std::memset(info, '#', sizeof(info));
        EXPECT_EQ(security_str_to_type(flags.c_str(), &type, info), 0);
        return std::string(info);
    };
    EXPECT_EQ(group("[WPA-PSK-TKIP][WPA2-PSK-CCMP][ESS]"), "WPA2-PSK-CCMP");
    EXPECT_EQ(type, _MOVO_NET_WIFI_SECURITY_WPA2_PSK_);
    EXPECT_EQ(group("[ESS][WPA-PSK-TKIP"), "[ESS][WPA-PSK-TKIP");
    EXPECT_EQ(group("[WEP][ESS]"), "[WEP][ESS]");
    EXPECT_EQ(type, _MOVO_NET_WIFI_SECURITY_OPEN_);
    const std::string rest(200, 'x');
    EXPECT_EQ(group(rest), rest.substr(0, 127));
    EXPECT_EQ(group("[WPA-EAP" + rest + "]"), "WPA-EAP" + rest.substr(0, 120));
    EXPECT_EQ(security_str_to_type(nullptr, &type, info), 5);
    EXPECT_EQ(security_str_to_type("[ESS]", nullptr, info), 5);

    MovoNetWifiEncryption_e cipher = _MOVO_NET_WIFI_ENCRYP_WEP_;
    EXPECT_EQ(encryp_str_to_type(nullptr, &cipher), 5);
    EXPECT_EQ(encryp_str_to_type("", &cipher), 5);
    EXPECT_EQ(encryp_str_to_type("CCMP", nullptr), 5);
    EXPECT_EQ(cipher, _MOVO_NET_WIFI_ENCRYP_WEP_);
    EXPECT_EQ(encryp_str_to_type("CCMP TKIP", &cipher), 0);
    EXPECT_EQ(cipher, _MOVO_NET_WIFI_ENCRYP_WEP_RYP_TKIP_);
    EXPECT_EQ(encryp_str_to_type("GCMP", &cipher), 0);
    EXPECT_EQ(cipher, _MOVO_NET_WIFI_ENCRYP_NONE_);
}

TEST(ScanItem, LeavesWhatItsTextsDoNotTell)
{
    MovNetWifiEssItem_t ess{};
    Wpa_Add_EsssItem(nullptr, "02:00:00:00:01:00", "Net", "2412", -40, "[ESS]", 0);
    Wpa_Add_EsssItem(&ess, "02:00:00:00:01:00", "Net", "2412", -40, "[WPA2-PSK-CCMP][ESS]", 1);
    Wpa_Add_EsssItem(&ess, "", "", "2437", -50, nullptr, 0);
    EXPECT_STREQ(ess.essid, "Net");
    EXPECT_EQ(ess.bssid, 0x000100000002);
    EXPECT_EQ(ess.frequency, 2437);
    EXPECT_EQ(ess.signalVal, -50);
    EXPECT_EQ(ess.bWPS, 0);
    EXPECT_EQ(ess.securityType, _MOVO_NET_WIFI_SECURITY_WPA2_PSK_);
    EXPECT_EQ(ess.encrypType, _MOVO_NET_WIFI_ENCRYP_AES_);
    Wpa_Add_EsssItem(&ess, nullptr, nullptr, "MHz", -50, "", 0);
    EXPECT_EQ(ess.frequency, 0);
    EXPECT_EQ(ess.securityType, _MOVO_NET_WIFI_SECURITY_WPA2_PSK_);
    EXPECT_EQ(ess.encrypType, _MOVO_NET_WIFI_ENCRYP_NONE_);
}

TEST(ScanFailure, OfItsTimer)
{
    Bench bench;
    bench.set.fail({.call = sim::Call::Malloc, .thread = sim::ThreadKind::Test, .nth = 1, .error = ENOMEM});
    EXPECT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 4);
    EXPECT_EQ(errors(bench.set),
              (Lines{"int_addEvent: out of memory\n", "int_Movo_Net_Wpactrl_Scan: add scan time out event failed\n"}));
    EXPECT_EQ(bench.link().isScanning, 0);
}

TEST(ScanFailure, OfAnInterfaceThatIsDown)
{
    Bench bench;
    bench.iface.isActived = 0;
    EXPECT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 1);
    EXPECT_EQ(errors(bench.set), Lines{"int_Movo_Net_Wpactrl_Scan: not actived yet"});
    EXPECT_EQ(sent(bench.supplicant), Lines{});
}

TEST(CancelScan, FailsWhenTheSupplicantRefusesOrWithoutTheLock)
{
    Bench bench;
    bench.wifi().devType = _MOVO_NET_WIFI_ATHEROS_;
    bench.link().isScanning = 1;
    bench.supplicant.replies["SCAN_CANCEL"] = {"FAIL\n", "OK\n"};
    EXPECT_EQ(int_Movo_Net_Wpactrl_CancelScan(&bench.iface), 1);
    bench.set.failLock(bench.link().lock, 1);
    EXPECT_EQ(int_Movo_Net_Wpactrl_CancelScan(&bench.iface), 1);
    EXPECT_EQ(errors(bench.set), (Lines{"Wpactrl_ExecCmd: [SCAN_CANCEL] failed\n",
                                        "int_Movo_Net_Wpactrl_CancelScan: [SCAN_CANCEL] failed\n",
                                        "int_Movo_Net_Wpactrl_CancelScan: lock wpa_ctrl iface failed\n"}));
    EXPECT_EQ(bench.link().isScanning, 1);
}

TEST(CancelScan, ChecksItsArguments)
{
    MovoNetIface_t bare{};
    const sim::CapturedOutput output;
    EXPECT_EQ(int_Movo_Net_Wpactrl_CancelScan(nullptr), 5);
    EXPECT_NE(output.text().find("Routine:int_Movo_Net_Wpactrl_CancelScan, pIface failed"), std::string::npos);
    EXPECT_EQ(int_Movo_Net_Wpactrl_CancelScan(&bare), 5);
}

TEST(ScanTimeout, ChecksWhatItIsGiven)
{
    Bench bench;
    MovoNetIface_t bare{};
    EXPECT_EQ(OnScanTimeoutEventRev(-1, nullptr, 1), 5);
    EXPECT_EQ(OnScanTimeoutEventRev(-1, &bare, 1), 5);
    MovoNetWifi_t unlinked{};
    bare.priv = &unlinked;
    EXPECT_EQ(OnScanTimeoutEventRev(-1, &bare, 1), 1);
    bench.link().isScanning = 1;
    bench.set.failLock(bench.link().lock, 1);
    EXPECT_EQ(OnScanTimeoutEventRev(-1, &bench.iface, 1), 1);
    EXPECT_EQ(errors(bench.set), Lines{"OnScanTimeoutEventRev: lock wpactrl mutex failed\n"});
    EXPECT_CALLBACKS(bench.set, {});
    bench.link().isScanning = 0;
    EXPECT_EQ(OnScanTimeoutEventRev(-1, &bench.iface, 1), 0);
    EXPECT_CALLBACKS(bench.set, {});
}

TEST(ScanTimeout, KeepsSilentAboutAScanThatItsCallbackBegins)
{
    Bench bench;
    ASSERT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 0);
    int scans = 1;
    bench.set.onCallback([&](MovoNetCBReason_e, void*) {
        if (scans++ == 1) {
            EXPECT_EQ(int_Movo_Net_Wpactrl_Scan(&bench.iface), 0);
        }
    });
    bench.set.grantTicks(301);
    EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}});
    EXPECT_EQ(bench.link().isScanning, 0);
    (void)bench.hear({"<3>CTRL-EVENT-SCAN-RESULTS "});
    bench.set.grantTicks(400);
    EXPECT_CALLBACKS(bench.set, {});
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, "OnScanTimeoutEventRev", "wifi scan timeout\n");
}
