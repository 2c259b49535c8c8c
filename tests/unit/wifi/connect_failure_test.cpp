#include "bench.h"
#include "names.h"

#include <gtest/gtest.h>

using namespace wifi;
using namespace movonet;

// Joining and leaving when a step fails: the words, the code, and what is left then.

namespace {
constexpr const char* kConnect = "int_Movo_Net_Wpactrl_Connect";

MovNetWifiEssItem_t& listOpen(Bench& bench)
{
    return bench.list("Net", _MOVO_NET_WIFI_SECURITY_OPEN_, _MOVO_NET_WIFI_ENCRYP_NONE_);
}
} // namespace

TEST(ConnectFailure, OfTheRemovalIsNoneOfItsOwn)
{
    Bench bench;
    bench.set.failLock(bench.link().lock, 1);
    EXPECT_EQ(int_Movo_Net_Wpactrl_Connect(&bench.iface, &listOpen(bench)), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, kConnect, "[REMOVE_NETWORK] failed\n");
    EXPECT_EQ(errors(bench.set), Lines{"int_Movo_Net_Wpactrl_RemoveNetwork: lock wpactrl mutex failed\n"});
    EXPECT_EQ(sent(bench.supplicant).front(), "ADD_NETWORK");
}

TEST(ConnectFailure, OfTheRequestForANetwork)
{
    Bench bench;
    bench.supplicant.results = {0, -1};
    EXPECT_EQ(int_Movo_Net_Wpactrl_Connect(&bench.iface, &listOpen(bench)), 1);
    EXPECT_EQ(errors(bench.set), (Lines{"Wpactrl_SendCmd: wpa_ctrl_request error\n",
                                        "int_Movo_Net_Wpactrl_Connect: Wpactrl_SendCmd failed\n"}));
    EXPECT_EQ(sent(bench.supplicant).back(), "ADD_NETWORK");
}

TEST(ConnectFailure, WithoutSupplicant)
{
    Bench bench;
    ASSERT_EQ(ShutdownWpactrl(&bench.iface), 0);
    bench.set.forget();
    EXPECT_EQ(int_Movo_Net_Wpactrl_Connect(&bench.iface, &listOpen(bench)), 5);
    EXPECT_EQ(errors(bench.set), (Lines{"Wpactrl_ExecCmd: Wpactrl_SendCmd failed\n",
                                        "int_Movo_Net_Wpactrl_RemoveNetwork: [REMOVE_NETWORK] failed\n",
                                        "int_Movo_Net_Wpactrl_Connect: Wpactrl_SendCmd failed\n"}));
}

TEST(ConnectFailure, OfACommandThatIsNotAnsweredTellsTwice)
{
    Bench bench;
    bench.supplicant.results = {0, 0, -1};
    EXPECT_EQ(int_Movo_Net_Wpactrl_Connect(&bench.iface, &listOpen(bench)), 1);
    EXPECT_EQ(errors(bench.set),
              (Lines{"Wpactrl_SendCmd: wpa_ctrl_request error\n", "Wpactrl_ExecCmd: Wpactrl_SendCmd failed\n",
                     "int_Movo_Net_Wpactrl_Connect: [SET_NETWORK 0 ssid \"Net\"] failed\n"}));
}

TEST(ConnectFailure, OfItsTimer)
{
    Bench bench;
    bench.set.fail({.call = sim::Call::Malloc, .thread = sim::ThreadKind::Test, .nth = 1, .error = ENOMEM});
    s_bFirstConnect = 1;
    EXPECT_EQ(int_Movo_Net_Wpactrl_Connect(&bench.iface, &listOpen(bench)), 4);
    EXPECT_EQ(errors(bench.set), (Lines{"int_addEvent: out of memory\n",
                                        "int_Movo_Net_Wpactrl_Connect: add connect time out event failed\n"}));
    EXPECT_EQ(sent(bench.supplicant).back(), "ENABLE_NETWORK  0");
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_NONE);
    EXPECT_STREQ(bench.wifi().curOperatingEsss.essid, "");
    EXPECT_EQ(s_bFirstConnect, 1);
}

TEST(ConnectFailure, OfTheLockThatGuardsTheCurrentNetwork)
{
    Bench bench;
    bench.set.failLock(bench.wifi().lock, 2); // after the removal
    EXPECT_EQ(int_Movo_Net_Wpactrl_Connect(&bench.iface, &listOpen(bench)), 1);
    EXPECT_EQ(errors(bench.set), Lines{"int_Movo_Net_Wpactrl_Connect: lock wifi iface mutex failed\n"});
    EXPECT_NE(bench.link().connectTimerEventHandle, 0);
    EXPECT_STREQ(bench.wifi().curOperatingEsss.essid, "");
}

TEST(Connect, KeepsNetworkZeroForAnAnswerThatIsNoNumber)
{
    Bench bench;
    bench.supplicant.replies["ADD_NETWORK"] = {"FAIL\n"};
    EXPECT_EQ(int_Movo_Net_Wpactrl_Connect(&bench.iface, &listOpen(bench)), 0);
    EXPECT_EQ(sent(bench.supplicant).back(), "ENABLE_NETWORK  0");
}

TEST(Connect, KeepsNetworkZeroWhenTheLinkWasReopenedForIt)
{
    Bench bench;
    bench.supplicant.results = {0, -2};
    EXPECT_EQ(int_Movo_Net_Wpactrl_Connect(&bench.iface, &listOpen(bench)), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, "Wpactrl_SendCmd", "reply: \n");
    EXPECT_EQ(sent(bench.supplicant).back(), "ENABLE_NETWORK  0");
}

TEST(ConnectTimeout, TellsEachStep)
{
    Bench bench;
    bench.connect();
    bench.set.failLock(bench.wifi().lock, 1);
    EXPECT_EQ(OnConnectTimeoutEventRev(-1, &bench.iface, 1), 1) << "what the removal gave";
    EXPECT_CALLBACKS(bench.set, {{sim::WIFITIMEOUT, "mlan0"}});
    const char* function = "OnConnectTimeoutEventRev";
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, function, "wifi connect timeout\n");
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, function, "ctrl->status=1, ifname=mlan0\n");
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, function, "int_Movo_Net_Wpactrl_RemoveNetwork returned 1\n");
    EXPECT_EQ(bench.link().connectTimerEventHandle, 0);
}

TEST(ConnectTimeout, ChecksWhatItIsGiven)
{
    Bench bench;
    MovoNetIface_t bare{};
    EXPECT_EQ(OnConnectTimeoutEventRev(-1, nullptr, 1), 5);
    EXPECT_EQ(OnConnectTimeoutEventRev(-1, &bare, 1), 5);
    MovoNetWifi_t unlinked{};
    bare.priv = &unlinked;
    EXPECT_EQ(OnConnectTimeoutEventRev(-1, &bare, 1), 1);
    EXPECT_EQ(OnConnectTimeoutEventRev(-1, &bench.iface, 1), 0) << "nothing is being joined";
    EXPECT_EQ(sent(bench.supplicant), Lines{});
}

TEST(Disconnect, TellsNothingWhenTheRemovalFails)
{
    Bench bench;
    bench.connect();
    bench.iface.isConnected = 1;
    bench.set.failLock(bench.wifi().lock, 1);
    EXPECT_EQ(int_Movo_Net_Wpactrl_Disconnect(&bench.iface), 1);
    EXPECT_CALLBACKS(bench.set, {});
    EXPECT_EQ(bench.iface.isConnected, 1);
}

TEST(Disconnect, ChecksItsArguments)
{
    MovoNetIface_t bare{};
    const sim::CapturedOutput output;
    EXPECT_EQ(int_Movo_Net_Wpactrl_Disconnect(nullptr), 5);
    EXPECT_EQ(int_Movo_Net_Wpactrl_ResetConnecting(nullptr), 5);
    EXPECT_NE(output.text().find("Routine:int_Movo_Net_Wpactrl_Disconnect, pIface failed"), std::string::npos);
    EXPECT_NE(output.text().find("Routine:int_Movo_Net_Wpactrl_ResetConnecting, pIface failed"), std::string::npos);
    EXPECT_EQ(int_Movo_Net_Wpactrl_Disconnect(&bare), 5);
    EXPECT_EQ(int_Movo_Net_Wpactrl_ResetConnecting(&bare), 5);
}

TEST(ResetConnecting, ArmsNothingAndEndsWithTheCommandThatFails)
{
    Bench bench;
    bench.wifi().curOperatingEsss.isConnected = 1;
    bench.link().disconnect_count = 7;
    bench.supplicant.replies["DISABLE_NETWORK 0"] = {"FAIL\n"};
    EXPECT_EQ(int_Movo_Net_Wpactrl_ResetConnecting(&bench.iface), 1);
    EXPECT_EQ(sent(bench.supplicant), Lines{"DISABLE_NETWORK 0"});
    EXPECT_EQ(errors(bench.set), (Lines{"Wpactrl_ExecCmd: [DISABLE_NETWORK 0] failed\n",
                                        "int_Movo_Net_Wpactrl_ResetConnecting: [SCAN] failed\n"}));
    EXPECT_EQ(bench.wifi().curOperatingEsss.isConnected, 0);
    EXPECT_EQ(bench.link().disconnect_count, 0);
    EXPECT_EQ(bench.link().connectTimerEventHandle, 0);
}

TEST(ResetConnecting, FailsWithoutItsLocks)
{
    Bench bench;
    bench.iface.isConnected = 1;
    bench.set.failLock(bench.wifi().lock, 1);
    EXPECT_EQ(int_Movo_Net_Wpactrl_ResetConnecting(&bench.iface), 1);
    bench.set.failLock(bench.link().lock, 1);
    EXPECT_EQ(int_Movo_Net_Wpactrl_ResetConnecting(&bench.iface), 1);
    EXPECT_EQ(errors(bench.set), (Lines{"int_Movo_Net_Wpactrl_ResetConnecting: lock wifi iface failed\n",
                                        "int_Movo_Net_Wpactrl_ResetConnecting: lock wpa_ctrl iface failed\n"}));
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_NONE);
    EXPECT_EQ(bench.iface.isConnected, 1);
    EXPECT_EQ(sent(bench.supplicant), Lines{});
}
