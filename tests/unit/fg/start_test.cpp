#include "fg_test.h"

#include "movo_net_iface.h"

#include <pthread.h>

namespace {
class Start : public testing::Test {
protected:
    sim::Set set;

    int passes() const { return passesSeen(set); }
};

TEST_F(Start, GoesThroughItsStepsInOrder)
{
    char enter[64];
    (void)std::snprintf(enter, sizeof(enter), "enter, pid=%x\n", static_cast<unsigned>(pthread_self()));
    ASSERT_EQ(set.start(), 0);
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, kFg, kInit, enter);
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, kFg, kInit, "init\n");
    EXPECT_EQ(textsOf(set, kInit), (std::vector<std::string>{enter, "init\n"}));
    EXPECT_EQ(listedInterfaces(), (std::vector<std::string>{"lo", "eth0"}));
    EXPECT_EQ(set.liveThreads(), 1);
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 1);
}

TEST_F(Start, BringsUpWhatHasACableOnTheCallersThread)
{
    set.cable("eth0").plug();
    ASSERT_EQ(set.start(), 0);
    EXPECT_RAN_IN_ORDER(set, {"netcfg eth0 up", "ifconfig eth0 0.0.0.0"});
    EXPECT_CALLBACKS(set, {{sim::IFFOUND, "eth0"}});
    EXPECT_EQ(set.callbacks().at(0).thread, sim::ThreadKind::Test);
    EXPECT_TRUE(set.dhcp("eth0").running());
}

TEST_F(Start, IsDoneWhenTheFirstLookIs)
{
    set.cable("eth0").plug();
    kest_bool doneInside = 1;
    set.onCallback([&](MovoNetCBReason_e, void*) { doneInside = Movo_NET_IsInitializationDone(0); });
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
    ASSERT_EQ(set.start(), 0);
    EXPECT_EQ(doneInside, 0);
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 1);
}

TEST_F(Start, LooksOnceItselfAndThenEveryTenTicks)
{
    tracePasses(set);
    ASSERT_EQ(set.start(), 0);
    EXPECT_EQ(passes(), 1);
    int ticks = 0;
    for (; passes() == 1 && ticks < 2 * kPassTicks; ++ticks) {
        set.grantTicks(1);
    }
    EXPECT_GE(ticks, kPassTicks);
    EXPECT_LE(ticks, kPassTicks + 1) << "one more when the loop waited already as the timer came";
    set.grantTicks(kPassTicks - 1);
    EXPECT_EQ(passes(), 2);
    set.grantTicks(1);
    EXPECT_EQ(passes(), 3);
    set.grantTicks(3 * kPassTicks);
    EXPECT_EQ(passes(), 6);
}

TEST_F(Start, KeepsTellingOfAMissingWirelessTableOnEachLook)
{
    tracePasses(set);
    ASSERT_EQ(set.start(), 0);
    set.forget();
    linkPass(set);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, "GetInterfacesFromFile", kNoWireless);
    linkPass(set);
    EXPECT_EQ(passes(), 2);
}

TEST_F(Start, ForgetsACallbackInstalledBefore)
{
    set.cable("eth0").plug();
    set.recordCallbacks();
    ASSERT_EQ(Movo_NET_Glue_Init(), 0);
    set.settle();
    EXPECT_CALLBACKS(set, {});
    EXPECT_EQ(NotifyApp(sim::IPCHANGED, nullptr), 0);
    EXPECT_CALLBACKS(set, {});
}

TEST_F(Start, WaitsForTheLoop)
{
    set.holdLoopThread(); // until the product waits for it
    ASSERT_EQ(set.start(), 0);
    EXPECT_EQ(int_IsEventLoopInitDone(), 1);
    tracePasses(set);
    linkPass(set);
    set.grantTicks(1);
    EXPECT_EQ(passes(), 1);
}

TEST_F(Start, IsNotFooledByAWaitThatEndsForNoReason)
{
    set.holdLoopThread();
    const int fault = set.fail({.call = sim::Call::CondWait, .nth = 1, .times = 3});
    ASSERT_EQ(set.start(), 0);
    EXPECT_EQ(set.hits(fault), 3);
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 1);
}

TEST_F(Start, CountsMoreUsers)
{
    ASSERT_EQ(set.start(), 0);
    set.forget();
    tracePasses(set);
    EXPECT_EQ(Movo_NET_Glue_Init(), 0);
    EXPECT_EQ(textsOf(set, kInit).size(), 1U) << "it only enters";
    EXPECT_EQ(passes(), 0);
    EXPECT_EQ(set.liveThreads(), 1);

    EXPECT_EQ(Movo_NET_Glue_Exit(), 0);
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 1);
    EXPECT_EQ(set.liveThreads(), 1);
    EXPECT_EQ(timesLogged(set, "deinit\n"), 0);
    linkPass(set);
    set.grantTicks(1);
    EXPECT_EQ(passes(), 1);

    EXPECT_EQ(Movo_NET_Glue_Exit(), 0);
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
    EXPECT_EQ(set.liveThreads(), 0);
    EXPECT_EQ(timesLogged(set, "deinit\n"), 1);
}

TEST_F(Start, KeepsTheCallbackWhenAnotherUserComes)
{
    ASSERT_EQ(set.start(), 0);
    EXPECT_EQ(Movo_NET_Glue_Init(), 0);
    EXPECT_EQ(NotifyApp(sim::IPCHANGED, nullptr), 0);
    EXPECT_CALLBACKS(set, {{sim::IPCHANGED, ""}});
}

TEST_F(Start, LogsUnderTheGluesCategory)
{
    movoglue_net_debug = kest_debug_category_new("TEST_CATEGORY", 0, "");
    ASSERT_EQ(set.start(), 0);
    for (const sim::LogLine& line : set.log()) {
        EXPECT_EQ(line.category, "TEST_CATEGORY") << line;
    }
}

/** The glue cannot make the client's pipe known to a loop that is not there yet. */
TEST_F(Start, TriesTheFirstActivationAgainWhenTheLoopWasLate)
{
    constexpr const char* kPass = "OnLinkStatusEventRev";
    set.cable("eth0").plug();
    set.holdLoopThread();
    ASSERT_EQ(set.start(), 0);
    EXPECT_EQ(textsOf(set, kPass), (std::vector<std::string>{
                                       "link:interface available, start to active iface eth0\n",
                                       "link:activate eth0 failed\n",
                                   }));
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, "movo_net_fl_common", "ConfigIP", "can not addevent\n");
    const MovoNetIface_t* eth0 = FindInterface("eth0");
    ASSERT_NE(eth0, nullptr);
    EXPECT_EQ(eth0->isActived, 0);
    EXPECT_EQ(eth0->isAvailable, 0);
    EXPECT_EQ(eth0->isEnabled, 0);
    EXPECT_CALLBACKS(set, {});
    EXPECT_RAN_IN_ORDER(set, {"netcfg eth0 up", "ifconfig eth0 0.0.0.0"});
    EXPECT_EQ(set.commands().back().text, "ifconfig eth0 0.0.0.0") << "neither chmod nor the client";

    set.forget();
    linkPass(set);
    set.grantTicks(1);
    EXPECT_EQ(textsOf(set, kPass),
              (std::vector<std::string>{"link:interface available, start to active iface eth0\n"}));
    EXPECT_CALLBACKS(set, {{sim::IFFOUND, "eth0"}});
    EXPECT_EQ(eth0->isEnabled, 1);
    EXPECT_EQ(eth0->isActived, 1);
    EXPECT_EQ(set.dhcp("eth0").launches(), 1);
    EXPECT_TRUE(set.dhcp("eth0").running());
}

/** The first activation of eth0, in which one step of starting the client fails. */
class FailedActivation : public testing::TestWithParam<sim::Fault> {};

TEST_P(FailedActivation, IsTriedAgainByTheNextPass)
{
    sim::Set set;
    set.cable("eth0").plug();
    set.fail(GetParam());
    ASSERT_EQ(set.start(), 0);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, "OnLinkStatusEventRev", "link:activate eth0 failed\n");
    EXPECT_FALSE(set.dhcp("eth0").running());
    EXPECT_CALLBACKS(set, {});

    linkPass(set);
    EXPECT_TRUE(set.dhcp("eth0").running());
    EXPECT_CALLBACKS(set, {{sim::IFFOUND, "eth0"}});
    set.dhcp("eth0").leases();
    EXPECT_EQ(FindInterface("eth0")->isConnected, 1);
}

INSTANTIATE_TEST_SUITE_P(Steps, FailedActivation,
                         testing::Values(sim::Fault{.call = sim::Call::Mkfifo, .nth = 1, .error = EROFS},
                                         sim::Fault{.call = sim::Call::System, .on = "chmod", .nth = 1},
                                         sim::Fault{.call = sim::Call::System, .on = "export", .nth = 1}));

TEST_F(Start, RecoversALostFirstActivationWhenTheCableComesAgain)
{
    set.cable("eth0").plug();
    set.holdLoopThread();
    ASSERT_EQ(set.start(), 0);
    linkPass(set);
    set.grantTicks(1);
    set.cable("eth0").pull();
    linkPass(set);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, "movo_net_fl_eventloop", "int_removeEvent", "handle = 0\n");
    set.cable("eth0").plug();
    linkPass(set);
    EXPECT_TRUE(set.dhcp("eth0").running());
    set.dhcp("eth0").leases();
    EXPECT_EQ(FindInterface("eth0")->isConnected, 1);
}

TEST_F(Start, LosesNothingWithAStaticAddress)
{
    set.cable("eth0").plug();
    set.holdLoopThread();
    set.onCommand("bdconf -p").does([] {}); // eth0 is being listed
    bool changed = false;
    set.onCommand("netcfg eth0 up").does([&] {
        MovoNetIface_t* eth0 = FindInterface("eth0");
        eth0->ipMode = _MOVO_NET_IPMODE_STATIC_;
        changed = true;
    });
    ASSERT_EQ(set.start(), 0);
    EXPECT_TRUE(changed);
    EXPECT_EQ(timesLogged(set, "link:activate eth0 failed\n"), 0);
    EXPECT_EQ(set.callbacks().back(), (sim::Called{sim::IFFOUND, "eth0"}));
}

/** Deactivation passes over what is not active, and nothing else chooses an interface for the default route then. */
TEST(RevivedInterface, KeepsItsRouteWhenItIsRemoved)
{
    const std::vector<std::string> route{"10.0.2.2 dev eth0"};
    const sim::Lease other{"10.0.3.15", "255.255.255.0", "10.0.3.2", "10.0.3.3", "other"};
    sim::Set set;
    set.addIface("eth1");
    set.cable("eth0").plug();
    set.cable("eth1").plug();
    ASSERT_EQ(set.start(), 0);
    set.dhcp("eth1").leases(other);
    set.dhcp("eth0").loses();
    ASSERT_EQ(Movo_NET_DisableIface(0, "eth0"), 0);
    set.grantTicks(10); // the retry
    set.dhcp("eth0").leases();
    const MovoNetIface_t* eth0 = FindInterface("eth0");
    ASSERT_EQ(eth0->isConnected, 1);
    ASSERT_EQ(eth0->isActived, 0);
    ASSERT_EQ(set.defaultRoutes(), route);

    set.forget();
    set.cable("eth0").pull();
    linkPass(set);
    EXPECT_CALLBACKS(set, {{sim::IFREMOVED, "eth0"}});
    EXPECT_EQ(eth0->isConnected, 0);
    EXPECT_TRUE(set.dhcp("eth0").running());
    EXPECT_EQ(set.defaultRoutes(), route);
    set.dhcp("eth1").leases(other);
    EXPECT_EQ(set.defaultRoutes(), std::vector<std::string>{"10.0.3.2 dev eth1"}) << "the next choice mends it";
}
} // namespace
