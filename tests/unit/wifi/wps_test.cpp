#include "bench.h"
#include "names.h"

#include <climits>
#include <gtest/gtest.h>

using namespace wifi;
using namespace movonet;

// WPS and the search for a hidden network: what fails, in which words, and what is left then.

TEST(WpsButton, ThatTheSupplicantRefusesArmsNothing)
{
    Bench bench;
    bench.supplicant.replies["WPS_PBC any"] = {"FAIL\n"};
    EXPECT_EQ(int_Movo_NET_WifiStartWpsConnection(&bench.iface, _MOVO_NET_WIFI_WPS_PBC_, nullptr), 1);
    EXPECT_EQ(errors(bench.set),
              (Lines{"Wpactrl_ExecCmd: [WPS_PBC any] failed\n", "int_Movo_Net_Wpactrl_WPSPBC: [wps_pbc any] failed\n",
                     "int_Movo_NET_WifiStartWpsConnection: WPS PBC failed\n"}));
    EXPECT_EQ(bench.link().connectTimerEventHandle, 0);
    EXPECT_EQ(bench.link().isWpsMode, 0);
    EXPECT_EQ(bench.wifi().wpsMode, _MOVO_NET_WIFI_WPS_NONE_);
}

TEST(WpsButton, ForgetsWhatAnEarlierOneTaught)
{
    Bench bench;
    bench.link().isWpsEssSaved = 1;
    EXPECT_EQ(int_Movo_Net_Wpactrl_WPSPBC(&bench.iface), 0);
    EXPECT_EQ(bench.link().isWpsEssSaved, 0);
    EXPECT_EQ(bench.link().isWpsMode, 1);
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTING);
    EXPECT_CALLBACKS(bench.set, {});
}

TEST(WpsButton, NeedsNoActiveInterfaceAndGoesOnWithoutRemoval)
{
    Bench bench;
    bench.iface.isActived = 0;
    bench.set.failLock(bench.link().lock, 1);
    EXPECT_EQ(int_Movo_Net_Wpactrl_WPSPBC(&bench.iface), 0);
    EXPECT_EQ(errors(bench.set), (Lines{"int_Movo_Net_Wpactrl_RemoveNetwork: lock wpactrl mutex failed\n",
                                        "int_Movo_Net_Wpactrl_WPSPBC: [REMOVE_NETWORK] failed\n"}));
    EXPECT_EQ(sent(bench.supplicant), Lines{"WPS_PBC any"});
}

TEST(WpsButton, KeepsItsTimerWhenItCannotTakeTheLock)
{
    Bench bench;
    bench.set.failLock(bench.link().lock, 3); // after the removal and the timer
    EXPECT_EQ(int_Movo_Net_Wpactrl_WPSPBC(&bench.iface), 1);
    EXPECT_EQ(errors(bench.set), Lines{"int_Movo_Net_Wpactrl_WPSPBC: lock wpactrl mutex failed\n"});
    EXPECT_NE(bench.link().connectTimerEventHandle, 0);
    EXPECT_EQ(bench.link().isWpsMode, 0);
}

TEST(WpsPin, OfAnotherAnswerArmsNothing)
{
    Bench bench;
    bench.iface.isConnected = 1;
    bench.supplicant.replies["WPS_PIN any 12345670"] = {"12345670\n", "1234567", "FAIL\n", ""};
    for (int answer = 0; answer < 4; ++answer) {
        EXPECT_EQ(int_Movo_Net_Wpactrl_WPSSetPIN(&bench.iface, "12345670"), 1) << answer;
        EXPECT_EQ(errors(bench.set), Lines{"int_Movo_Net_Wpactrl_WPSSetPIN: [wps_pin any] does not match\n"});
        bench.set.forget();
    }
    EXPECT_EQ(bench.link().connectTimerEventHandle, 0);
    EXPECT_EQ(bench.link().isWpsMode, 0);
    EXPECT_CALLBACKS(bench.set, {});
}

TEST(WpsPin, ThatCannotBeSentGivesTheCodeOfTheLink)
{
    Bench bench;
    bench.supplicant.results = {0, -1};
    EXPECT_EQ(int_Movo_Net_Wpactrl_WPSSetPIN(&bench.iface, "12345670"), 1);
    EXPECT_EQ(errors(bench.set), Lines{"Wpactrl_SendCmd: wpa_ctrl_request error\n"});
    (void)sent(bench.supplicant);
    EXPECT_EQ(int_Movo_Net_Wpactrl_WPSSetPIN(&bench.iface, nullptr), 5);
    EXPECT_EQ(sent(bench.supplicant), Lines{}) << "nothing is removed for it";
}

TEST(WpsPin, OfAnyLengthIsCutAtTheCommand)
{
    Bench bench;
    const std::string pin(200, '7');
    EXPECT_EQ(int_Movo_Net_Wpactrl_WPSSetPIN(&bench.iface, pin.c_str()), 1);
    EXPECT_EQ(sent(bench.supplicant).back(), "WPS_PIN any " + pin.substr(0, 87));
}

TEST(WpsPin, FailsWithoutTheLock)
{
    Bench bench;
    bench.supplicant.replies["WPS_PIN any 12345670"] = {"12345670"};
    bench.set.failLock(bench.link().lock, 1);
    bench.set.failLock(bench.link().lock, 2); // of those that the first leaves: after the timer
    EXPECT_EQ(int_Movo_Net_Wpactrl_WPSSetPIN(&bench.iface, "12345670"), 1);
    EXPECT_EQ(errors(bench.set), (Lines{"int_Movo_Net_Wpactrl_RemoveNetwork: lock wpactrl mutex failed\n",
                                        "int_Movo_Net_Wpactrl_WPSSetPIN: [REMOVE_NETWORK] failed\n",
                                        "int_Movo_Net_Wpactrl_WPSSetPIN: lock wpactrl mutex failed\n"}));
    EXPECT_EQ(bench.link().isWpsMode, 0);
}

TEST(WpsBoth, LeavesThePinRunning)
{
    Bench bench;
    bench.supplicant.replies["WPS_PIN any 12345670"] = {"12345670"};
    EXPECT_EQ(int_Movo_NET_WifiStartWpsConnection(&bench.iface, _MOVO_NET_WIFI_WPS_PBC_PIN, "12345670"), 0);
    EXPECT_EQ(sent(bench.supplicant),
              (Lines{"REMOVE_NETWORK ALL", "WPS_PBC any", "REMOVE_NETWORK ALL", "WPS_PIN any 12345670"}));
    EXPECT_EQ(bench.wifi().wpsMode, _MOVO_NET_WIFI_WPS_PBC_PIN);
}

TEST(WpsBoth, WithoutPinStartsNothing)
{
    Bench bench;
    bench.connect();
    (void)bench.hear({kConnected});
    EXPECT_CALLBACKS(bench.set, {{sim::IFCONNECTED, "mlan0"}});
    bench.iface.isConnected = 1;
    EXPECT_EQ(int_Movo_NET_WifiStartWpsConnection(&bench.iface, _MOVO_NET_WIFI_WPS_PBC_PIN, nullptr), 5);
    EXPECT_EQ(errors(bench.set), Lines{"int_Movo_NET_WifiStartWpsConnection: WPS PIN failed\n"});
    EXPECT_EQ(sent(bench.supplicant), Lines{});
    EXPECT_CALLBACKS(bench.set, {});
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTED) << "the network of before stays";
    EXPECT_EQ(bench.link().connectTimerEventHandle, 0);
    EXPECT_EQ(bench.link().isWpsMode, 0);
    EXPECT_EQ(bench.wifi().wpsMode, _MOVO_NET_WIFI_WPS_NONE_);
}

TEST(WpsBoth, EndsWithAButtonThatFails)
{
    Bench bench;
    bench.supplicant.replies["WPS_PBC any"] = {"FAIL\n"};
    EXPECT_EQ(int_Movo_NET_WifiStartWpsConnection(&bench.iface, _MOVO_NET_WIFI_WPS_PBC_PIN, "12345670"), 1);
    EXPECT_EQ(errors(bench.set).back(), "int_Movo_NET_WifiStartWpsConnection: WPS PBC failed\n");
    EXPECT_EQ(sent(bench.supplicant), (Lines{"REMOVE_NETWORK ALL", "WPS_PBC any"}));
}

TEST(Wps, IsNotRecordedWithoutTheLock)
{
    Bench bench;
    bench.set.failLock(bench.wifi().lock, 2); // after the removal
    EXPECT_EQ(int_Movo_NET_WifiStartWpsConnection(&bench.iface, _MOVO_NET_WIFI_WPS_PBC_, nullptr), 1);
    EXPECT_EQ(errors(bench.set), Lines{"int_Movo_NET_WifiStartWpsConnection: lock wifi iface failed\n"});
    EXPECT_EQ(bench.wifi().wpsMode, _MOVO_NET_WIFI_WPS_NONE_);
}

TEST(Wps, TellsWhatItWasCalledOn)
{
    Bench bench;
    bench.iface.isActived = 0;
    char pin[9];
    EXPECT_EQ(int_Movo_NET_WifiStartWpsConnection(&bench.iface, _MOVO_NET_WIFI_WPS_PBC_, nullptr), 1);
    EXPECT_EQ(int_Movo_Net_Wpactrl_WPSGetPIN(&bench.iface, pin, sizeof(pin)), 1);
    EXPECT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bench.iface, "Hidden"), 1);
    EXPECT_EQ(errors(bench.set), (Lines{"int_Movo_NET_WifiStartWpsConnection: not actived yet",
                                        "int_Movo_Net_Wpactrl_WPSGetPIN: not actived yet",
                                        "int_Movo_Net_Wpactrl_SearchHideEss: not actived yet"}));
    MovoNetIface_t bare{};
    EXPECT_EQ(int_Movo_Net_Wpactrl_WPSPBC(&bare), 5);
    EXPECT_EQ(int_Movo_Net_Wpactrl_WPSSetPIN(&bare, "1"), 5);
    EXPECT_EQ(int_Movo_Net_Wpactrl_WPSGetPIN(&bare, pin, sizeof(pin)), 5);
    EXPECT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bare, "Hidden"), 5);
    const sim::CapturedOutput output;
    EXPECT_EQ(int_Movo_Net_Wpactrl_WPSPBC(nullptr), 5);
    EXPECT_EQ(int_Movo_Net_Wpactrl_WPSSetPIN(nullptr, "1"), 5);
    for (const char* function : {"int_Movo_Net_Wpactrl_WPSPBC", "int_Movo_Net_Wpactrl_WPSSetPIN"}) {
        EXPECT_NE(output.text().find("Routine:" + std::string(function) + ", pIface failed"), std::string::npos);
    }
    EXPECT_EQ(sent(bench.supplicant), Lines{});
}

TEST(GeneratedPin, FillsItsBufferAndArmsNothing)
{
    Bench bench;
    bench.supplicant.replies["WPS_PIN any"] = {"7483"};
    char pin[12];
    std::memset(pin, '#', sizeof(pin));
    bench.link().connectStatus = WPACTRL_STATUS_CONNECTED;
    EXPECT_EQ(int_Movo_Net_Wpactrl_WPSGetPIN(&bench.iface, pin, 10), 0);
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_NONE);
    EXPECT_EQ(std::string(pin, sizeof(pin)), "7483" + std::string(6, '\0') + "##");
    EXPECT_EQ(sent(bench.supplicant), (Lines{"REMOVE_NETWORK ALL", "WPS_PIN any"}));
    EXPECT_EQ(bench.link().isWpsMode, 0);
    EXPECT_EQ(bench.link().connectTimerEventHandle, 0);
}

TEST(GeneratedPin, NeverFitsABufferOfNoSize)
{
    Bench bench;
    bench.supplicant.replies["WPS_PIN any"] = {""};
    char pin = '#';
    for (const int room : {0, -1, INT_MIN}) {
        EXPECT_EQ(int_Movo_Net_Wpactrl_WPSGetPIN(&bench.iface, &pin, room), 1) << room;
        EXPECT_EQ(pin, '#');
    }
    EXPECT_EQ(int_Movo_Net_Wpactrl_WPSGetPIN(&bench.iface, &pin, 1), 0);
    EXPECT_EQ(pin, '\0');
}

TEST(GeneratedPin, IsNoneWhenTheLinkWasReopenedForIt)
{
    Bench bench;
    bench.supplicant.results = {0, -2}; // the removal works, the request times out and the reconnection works
    char pin[9] = "########";
    EXPECT_EQ(int_Movo_Net_Wpactrl_WPSGetPIN(&bench.iface, pin, sizeof(pin)), 1);
    EXPECT_EQ(bench.supplicant.opened.size(), 3U);
    EXPECT_EQ(errors(bench.set), (Lines{"Wpactrl_SendCmd: wpa_ctrl_request time out\n",
                                        "int_Movo_Net_Wpactrl_WPSGetPIN: pin strlen too long"}));
    EXPECT_STREQ(pin, "########");
}

TEST(GeneratedPin, KeepsTheNameThatItsFailureHas)
{
    Bench bench;
    bench.set.failLock(bench.link().lock, 1);
    bench.supplicant.results = {-1};
    char pin[9];
    EXPECT_EQ(int_Movo_Net_Wpactrl_WPSGetPIN(&bench.iface, pin, sizeof(pin)), 1);
    EXPECT_EQ(errors(bench.set), (Lines{"int_Movo_Net_Wpactrl_RemoveNetwork: lock wpactrl mutex failed\n",
                                        "int_Movo_Net_Wpactrl_WPSGetPIN: [REMOVE_NETWORK] failed\n",
                                        "Wpactrl_SendCmd: wpa_ctrl_request error\n",
                                        "int_Movo_Net_Wpactrl_WPSGetPIN: Wpactrl_SendCommand failed\n"}));
}

namespace {
const std::string kSearch = "int_Movo_Net_Wpactrl_SearchHideEss: ";

struct Refused {
    const char* command;
    MovoNetWifiDevType_e chip;
    Lines errors; // after the one of the command itself
};
constexpr auto kCancels = _MOVO_NET_WIFI_ATHEROS_;
constexpr auto kCannotCancel = _MOVO_NET_WIFI_BRCM_43242_;
const Refused kRefused[] = {
    {"SET_NETWORK 3 ssid \"Hidden\"", kCannotCancel, {kSearch + "[SET_NETWORK 3 ssid \"Hidden\"] failed\n"}},
    {"SET_NETWORK 3 key_mgmt NONE", kCannotCancel, {kSearch + "[SET_NETWORK 3 key_mgmt NONE] failed\n"}},
    {"SET_NETWORK 3 scan_ssid 1", kCannotCancel, {kSearch + "[SET_NETWORK 3 scan_ssid 1] failed\n"}},
    {"SCAN", kCancels, {"int_Movo_Net_Wpactrl_Scan: [SCAN] failed\n", kSearch + "[SCAN] failed\n"}},
    {"SELECT_NETWORK  3", kCannotCancel, {kSearch + "[SELECT_NETWORK  3] failed\n"}},
};
} // namespace

TEST(HiddenSearch, EndsWithTheCommandThatFails)
{
    Bench bench;
    bench.supplicant.replies["ADD_NETWORK"] = {"3\n"};
    for (const Refused& row : kRefused) {
        bench.wifi().devType = row.chip;
        bench.supplicant.replies[row.command] = {"FAIL\n"};
        EXPECT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bench.iface, "Hidden"), 1);
        EXPECT_EQ(sent(bench.supplicant).back(), row.command);
        Lines expected{"Wpactrl_ExecCmd: [" + std::string(row.command) + "] failed\n"};
        expected.insert(expected.end(), row.errors.begin(), row.errors.end());
        EXPECT_EQ(errors(bench.set), expected);
        EXPECT_EQ(bench.link().isSearchingHideEss, 0);
        bench.supplicant.replies.erase(row.command);
        bench.set.forget();
    }
}

TEST(HiddenSearch, ArmsTheTimerAloneWhenTheScanCannotBeCancelled)
{
    Bench bench;
    bench.wifi().devType = _MOVO_NET_WIFI_ATHEROS_;
    bench.supplicant.replies["SCAN_CANCEL"] = {"FAIL\n"};
    EXPECT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bench.iface, "Hidden"), 0);
    const Lines commands = sent(bench.supplicant);
    EXPECT_EQ(Lines(commands.end() - 2, commands.end()), (Lines{"SCAN_CANCEL", "SELECT_NETWORK  0"}));
    EXPECT_EQ(bench.link().isScanning, 1);
    EXPECT_EQ(bench.link().isSearchingHideEss, 1);
    EXPECT_EQ(errors(bench.set), (Lines{"Wpactrl_ExecCmd: [SCAN_CANCEL] failed\n",
                                        "int_Movo_Net_Wpactrl_CancelScan: [SCAN_CANCEL] failed\n"}));
}

TEST(HiddenSearch, TakesTheConnectionBackWhenItBeginsAndWhenItTimesOut)
{
    Bench bench;
    bench.link().connectStatus = WPACTRL_STATUS_CONNECTED;
    ASSERT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bench.iface, "Hidden"), 0);
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_NONE);
    bench.link().connectStatus = WPACTRL_STATUS_CONNECTING;
    bench.set.grantTicks(301);
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_NONE);
    EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}});
    EXPECT_EQ(bench.link().isScanning, 0);
}

TEST(HiddenSearch, SpeaksSofterOfAFailedRemoval)
{
    Bench bench;
    bench.set.failLock(bench.link().lock, 1);
    EXPECT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bench.iface, "Hidden"), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, "int_Movo_Net_Wpactrl_SearchHideEss",
                  "[REMOVE_NETWORK] failed\n");
}

TEST(HiddenSearch, FailsWithoutNetworkTimerOrLock)
{
    Bench bench;
    bench.supplicant.results = {0, -1};
    EXPECT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bench.iface, "Hidden"), 1);
    bench.set.fail({.call = sim::Call::Malloc, .thread = sim::ThreadKind::Test, .nth = 1, .error = ENOMEM});
    EXPECT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bench.iface, "Hidden"), 4);
    bench.set.failLock(bench.link().lock, 3); // after the removal and the timer
    EXPECT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bench.iface, "Hidden"), 1);
    EXPECT_EQ(errors(bench.set),
              (Lines{"Wpactrl_SendCmd: wpa_ctrl_request error\n", kSearch + "Wpactrl_SendCmd failed\n",
                     "int_addEvent: out of memory\n", kSearch + "add scan time out event failed\n",
                     kSearch + "lock wpa_ctrl iface failed\n"}));
    EXPECT_EQ(bench.link().isSearchingHideEss, 0);
    EXPECT_EQ(bench.link().isScanning, 1) << "the timer ends it";
}

TEST(HiddenSearch, SendsALongNameCut)
{
    Bench bench;
    const std::string name(90, 'n');
    EXPECT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bench.iface, name.c_str()), 0);
    EXPECT_EQ(sent(bench.supplicant)[2], "SET_NETWORK 0 ssid \"" + name.substr(0, 79));
    EXPECT_EQ(int_Movo_Net_Wpactrl_SearchHideEss(&bench.iface, name.substr(0, 78).c_str()), 0);
    EXPECT_EQ(sent(bench.supplicant)[2], "SET_NETWORK 0 ssid \"" + name.substr(0, 78) + "\"");
}
