#include "bench.h"

#include "movo_net_fl_eventloop/eventloop.h"
#include "names.h"
#include "support/atomic.h"

#include <atomic>
#include <gtest/gtest.h>
#include <sched.h>

using namespace wifi;
using namespace movonet;

// The two time-outs of a supplicant's link, the questions about a connection, and the link's own life.

namespace {
const sim::Fault kNoMemoryForAnEvent{
    .call = sim::Call::Malloc, .thread = sim::ThreadKind::Test, .nth = 1, .error = ENOMEM};

constexpr std::pair<const char*, RETURN_TYPE (*)(Wpactrl_t*, int)> kTimers[] = {
    {"Wpactrl_Add_ScanEvent", Wpactrl_Add_ScanEvent}, {"Wpactrl_Add_ConnectEvent", Wpactrl_Add_ConnectEvent}};
} // namespace

TEST(Timers, CheckTheirArguments)
{
    Bench bench;
    MovoNetWifi_t wifi{};
    for (const auto& [function, arm] : kTimers) {
        Wpactrl_t unowned{};
        bench.set.forget();
        EXPECT_EQ(arm(nullptr, 1), 5);
        EXPECT_EQ(arm(&unowned, 1), 5);
        unowned.pWifiIface = &wifi;
        EXPECT_EQ(arm(&unowned, 1), 5);
        EXPECT_EQ(arm(&bench.link(), -1), 5);
        EXPECT_TRUE(bench.set.log().empty()) << function;
        EXPECT_EQ(arm(&bench.link(), 0), 5) << "no event without ticks";
        EXPECT_EQ(told(bench.set, KEST_LEVEL_ERROR), Lines{"int_addEvent: invalid param\n"});
    }
}

TEST(Timers, ThatCannotBeArmedChangeNothing)
{
    Bench bench;
    const Wpactrl_t& w = bench.link();
    for (const auto& [function, arm] : kTimers) {
        bench.set.forget();
        bench.set.failLock(w.lock, 1);
        EXPECT_EQ(arm(&bench.link(), 300), 1);
        EXPECT_EQ(told(bench.set, KEST_LEVEL_ERROR), Lines{std::string(function) + ": lock wpactrl mutex failed\n"});
        bench.set.fail(kNoMemoryForAnEvent);
        EXPECT_EQ(arm(&bench.link(), 300), 4);
        EXPECT_EQ(w.scanTimerEventHandle, 0);
        EXPECT_EQ(w.connectTimerEventHandle, 0);
        EXPECT_EQ(w.isScanning, 0);
        EXPECT_EQ(w.connectStatus, WPACTRL_STATUS_NONE);
        EXPECT_EQ(bench.set.heldLocks(), 0);
    }
}

TEST(ScanTimer, ReplacesTheEarlierOne)
{
    Bench bench;
    ASSERT_EQ(Wpactrl_Add_ScanEvent(&bench.link(), 300), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, "Wpactrl_Add_ScanEvent", "add scan timer event\n");
    EXPECT_EQ(bench.link().isScanning, 1);
    bench.set.grantTicks(200);
    ASSERT_EQ(Wpactrl_Add_ScanEvent(&bench.link(), 300), 0);
    bench.set.grantTicks(300);
    EXPECT_CALLBACKS(bench.set, {});
    bench.set.grantTicks(1);
    EXPECT_CALLBACKS(bench.set, {{sim::WIFISCANDONE, "mlan0"}});
    EXPECT_EQ(bench.link().scanTimerEventHandle, 0);
}

TEST(ConnectTimer, ReplacesTheEarlierOneAndBeginsAnew)
{
    Bench bench;
    bench.connect();
    bench.set.grantTicks(200);
    bench.link().handshake_fail_count = bench.link().disconnect_count = 7;
    bench.link().connectStatus = WPACTRL_STATUS_NONE;
    ASSERT_EQ(Wpactrl_Add_ConnectEvent(&bench.link(), 300), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, "Wpactrl_Add_ConnectEvent", "add connect timer event\n");
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTING);
    EXPECT_EQ(bench.link().handshake_fail_count, 0);
    EXPECT_EQ(bench.link().disconnect_count, 0);
    bench.set.grantTicks(300);
    EXPECT_CALLBACKS(bench.set, {});
    bench.set.grantTicks(1);
    EXPECT_CALLBACKS(bench.set, {{sim::WIFITIMEOUT, "mlan0"}});
}

TEST(ConnectTimer, OfAFirstConnectLastsThirtySecondsWhateverIsAsked)
{
    Bench bench;
    s_bFirstConnect = 1;
    ASSERT_EQ(Wpactrl_Add_ConnectEvent(&bench.link(), 5), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, kLinkModule, "Wpactrl_Add_ConnectEvent", "add first connect event\n");
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_CONNECTING);
    bench.set.grantTicks(300);
    EXPECT_NE(bench.link().firstConnectHandle, 0);
    bench.set.grantTicks(1);
    EXPECT_EQ(bench.link().firstConnectHandle, 0);
}

TEST(ConnectTimer, ReplacesTheOneOfAFirstConnect)
{
    Bench bench;
    s_bFirstConnect = 1;
    ASSERT_EQ(Wpactrl_Add_ConnectEvent(&bench.link(), 300), 0);
    s_bFirstConnect = 0;
    ASSERT_EQ(Wpactrl_Add_ConnectEvent(&bench.link(), 1200), 0);
    EXPECT_EQ(bench.link().firstConnectHandle, 0);
    EXPECT_NE(bench.link().connectTimerEventHandle, 0);
    bench.set.forget();
    bench.set.grantTicks(400);
    EXPECT_TRUE(bench.set.log().empty()) << "the first one is gone";
}

namespace {
struct StatusRow {
    WpactrlConnectStatus_e status;
    kest_bool addressed;
    int connected;
    int none;
    int reconnecting;
};
} // namespace

TEST(Status, IsToldByThreeQuestions)
{
    Bench bench;
    for (const auto& [status, addressed, connected, none, reconnecting] :
         {StatusRow{WPACTRL_STATUS_NONE, 0, 0, 1, 0}, StatusRow{WPACTRL_STATUS_NONE, 1, 0, 1, 0},
          StatusRow{WPACTRL_STATUS_CONNECTING, 0, 0, 0, 1}, StatusRow{WPACTRL_STATUS_CONNECTING, 1, 0, 0, 1},
          StatusRow{WPACTRL_STATUS_CONNECTED, 0, 1, 0, 1}, StatusRow{WPACTRL_STATUS_CONNECTED, 1, 1, 0, 0}}) {
        bench.link().connectStatus = status;
        bench.iface.isConnected = addressed;
        kest_bool answer = 9;
        EXPECT_EQ(int_Movo_Net_Wpactrl_IsConnected(&bench.iface, &answer), 0);
        EXPECT_EQ(answer, connected) << status;
        EXPECT_EQ(int_Movo_Net_Wpactrl_Status(&bench.iface, &answer), 0);
        EXPECT_EQ(answer, none) << status;
        EXPECT_EQ(int_Movo_Net_Wpactrl_IsReconnecting(&bench.iface, &answer), 0);
        EXPECT_EQ(answer, reconnecting) << status << " " << int{addressed};
    }
}

TEST(Status, ChecksItsArguments)
{
    Bench bench;
    MovoNetIface_t bare{};
    static constexpr std::pair<const char*, RETURN_TYPE (*)(MovoNetIface_t*, kest_bool*)> kQuestions[] = {
        {"int_Movo_Net_Wpactrl_IsConnected", int_Movo_Net_Wpactrl_IsConnected},
        {"int_Movo_Net_Wpactrl_Status", int_Movo_Net_Wpactrl_Status},
        {"int_Movo_Net_Wpactrl_IsReconnecting", int_Movo_Net_Wpactrl_IsReconnecting}};
    for (const auto& [name, question] : kQuestions) {
        kest_bool answer = 9;
        const sim::CapturedOutput output;
        EXPECT_EQ(question(nullptr, &answer), 5);
        EXPECT_NE(output.text().find("Routine:" + std::string(name) + ", pIface failed"), std::string::npos) << name;
        EXPECT_EQ(question(&bare, &answer), 5);
        EXPECT_EQ(question(&bench.iface, nullptr), 5);
        EXPECT_EQ(answer, 9);
    }
}

TEST(LinkLife, BeginsInStepsThatFailInTheirOwnWords)
{
    static constexpr std::pair<sim::Call, const char*> kSteps[] = {
        {sim::Call::Calloc, "malloc wpactrl interface failed\n"},
        {sim::Call::MutexAttrInit, "int_Movo_Net_Wpactrl_Init, init mutex failed\n"},
        {sim::Call::MutexAttrSetType, "int_Movo_Net_Wpactrl_Init, init mutex failed\n"},
        {sim::Call::MutexInit, "int_Movo_Net_InitWifi, init mutex failed\n"}};
    Bench bench;
    MovoNetIface_t iface{};
    MovoNetWifi_t wifi{};
    iface.priv = &wifi;
    for (const auto& [call, message] : kSteps) {
        bench.set.forget();
        bench.set.fail({.call = call, .thread = sim::ThreadKind::Test, .nth = 1, .error = ENOMEM});
        EXPECT_EQ(int_Movo_Net_Wpactrl_Init(&iface), 1);
        EXPECT_EQ(told(bench.set, KEST_LEVEL_ERROR), Lines{std::string("int_Movo_Net_Wpactrl_Init: ") + message});
        EXPECT_EQ(wifi.priv, nullptr);
    }
}

TEST(LinkLife, ChecksItsArguments)
{
    Bench bench;
    MovoNetIface_t bare{};
    static constexpr std::pair<const char*, RETURN_TYPE (*)(MovoNetIface_t*)> kFunctions[] = {
        {"int_Movo_Net_Wpactrl_Init", int_Movo_Net_Wpactrl_Init},
        {"int_Movo_Net_Wpactrl_DeInit", int_Movo_Net_Wpactrl_DeInit},
        {"int_Movo_Net_Wpactrl_RemoveNetwork", int_Movo_Net_Wpactrl_RemoveNetwork},
        {"ShutdownWpactrl", ShutdownWpactrl},
        {"Wpa_SetWpa_supplicantOn", Wpa_SetWpa_supplicantOn}};
    for (const auto& [name, function] : kFunctions) {
        const sim::CapturedOutput output;
        EXPECT_EQ(function(nullptr), 5);
        EXPECT_NE(output.text().find("Routine:" + std::string(name) + ", pIface failed"), std::string::npos) << name;
        EXPECT_EQ(function(&bare), 5) << name;
    }
}

TEST(RemoveNetwork, TakesTheConnectionBack)
{
    Bench bench;
    bench.connect();
    (void)bench.hear({"<3>CTRL-EVENT-CONNECTED - "});
    bench.iface.isConnected = 1;
    bench.link().isWpsMode = 1;
    ASSERT_TRUE(bench.set.dhcp("mlan0").running());
    bench.set.forget();
    EXPECT_EQ(int_Movo_Net_Wpactrl_RemoveNetwork(&bench.iface), 0);
    EXPECT_EQ(sent(bench.supplicant), Lines{"REMOVE_NETWORK ALL"});
    EXPECT_EQ(bench.link().connectStatus, WPACTRL_STATUS_NONE);
    EXPECT_EQ(bench.link().isWpsMode, 0);
    EXPECT_EQ(bench.wifi().curOperatingEsss.isConnected, 0);
    EXPECT_EQ(bench.iface.isConnected, 0);
    EXPECT_FALSE(bench.set.dhcp("mlan0").running());
}

TEST(RemoveNetwork, ClearsTheAddressOfAnotherModeThanDhcp)
{
    Bench bench;
    for (const auto mode : {_MOVO_NET_IPMODE_AUTOIP_, _MOVO_NET_IPMODE_STATIC_}) {
        bench.iface.ipMode = mode;
        EXPECT_EQ(int_Movo_Net_Wpactrl_RemoveNetwork(&bench.iface), 0);
        EXPECT_RAN(bench.set, "ifconfig mlan0 0.0.0.0");
        bench.set.forget();
    }
}

/** While a thread holds the loop off, as a handler does that is at a lease, another one leaves the network. */
TEST(RemoveNetwork, DuringALeaseLeavesNoneOfIt)
{
    Bench bench;
    bench.iface.ipMode = _MOVO_NET_IPMODE_AUTOIP_;
    std::atomic<bool> addressGone = false;
    bench.set.onCommand("ifconfig").does([&] { addressGone = true; });
    {
        const LoopGate handler;
        bench.set.background([&] { EXPECT_EQ(int_Movo_Net_Wpactrl_RemoveNetwork(&bench.iface), 0); });
        while (!addressGone) {
            (void)sched_yield();
        }
        for (int yields = 0; yields < 1000 && bench.set.liveThreads() > 1; ++yields) {
            (void)sched_yield(); // it goes as far as it can
        }
        movonet::store(bench.iface.isConnected, kTrue);
    }
    bench.set.joinBackground();
    EXPECT_EQ(bench.iface.isConnected, 0);
}

TEST(RemoveNetwork, GoesOnWhenTheSupplicantRefuses)
{
    Bench bench;
    bench.iface.isConnected = 1;
    bench.supplicant.replies["REMOVE_NETWORK ALL"] = {"FAIL\n"};
    EXPECT_EQ(int_Movo_Net_Wpactrl_RemoveNetwork(&bench.iface), 0);
    EXPECT_EQ(told(bench.set, KEST_LEVEL_ERROR),
              (Lines{"Wpactrl_ExecCmd: [REMOVE_NETWORK ALL] failed\n",
                     "int_Movo_Net_Wpactrl_RemoveNetwork: [REMOVE_NETWORK] failed\n"}));
    EXPECT_EQ(bench.iface.isConnected, 0);
}

TEST(RemoveNetwork, FailsWithoutItsLocks)
{
    Bench bench;
    bench.iface.isConnected = 1;
    bench.set.failLock(bench.link().lock, 1);
    EXPECT_EQ(int_Movo_Net_Wpactrl_RemoveNetwork(&bench.iface), 1);
    EXPECT_EQ(sent(bench.supplicant), Lines{});
    bench.set.failLock(bench.wifi().lock, 1);
    EXPECT_EQ(int_Movo_Net_Wpactrl_RemoveNetwork(&bench.iface), 1);
    EXPECT_EQ(sent(bench.supplicant), Lines{"REMOVE_NETWORK ALL"});
    EXPECT_EQ(told(bench.set, KEST_LEVEL_ERROR),
              (Lines{"int_Movo_Net_Wpactrl_RemoveNetwork: lock wpactrl mutex failed\n",
                     "int_Movo_Net_Wpactrl_RemoveNetwork: lock wifi iface failed\n"}));
    EXPECT_EQ(bench.iface.isConnected, 1);
    EXPECT_EQ(bench.set.heldLocks(), 0);
}
