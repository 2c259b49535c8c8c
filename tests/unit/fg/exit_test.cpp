#include "fake_iface.h"
#include "fg_test.h"

#include <list>

namespace {
constexpr const char* kExit = "Movo_NET_Glue_Exit";

class Exit : public testing::Test {
    std::list<FakeIface> m_ifaces;

protected:
    sim::Set set;

    FakeIface& list(const char* name)
    {
        FakeIface& iface = m_ifaces.emplace_back(name, kEther);
        iface.list();
        return iface;
    }
};

TEST_F(Exit, OfTheLastUserStopsTheGlue)
{
    ASSERT_EQ(set.start(), 0);
    set.forget();
    const auto before = set.clock();
    EXPECT_EQ(set.stop(), 0);
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, kFg, kExit, "s_iInitCount=1\n");
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, kFg, kExit, "deinit\n");
    EXPECT_EQ(textsOf(set, kExit), (std::vector<std::string>{"s_iInitCount=1\n", "deinit\n"}));
    EXPECT_EQ(set.clock() - before, 100);
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
    EXPECT_TRUE(listedInterfaces().empty());
    EXPECT_EQ(set.liveThreads(), 0);
}

TEST_F(Exit, OfAnotherUserOnlyCounts)
{
    ASSERT_EQ(set.start(), 0);
    ASSERT_EQ(Movo_NET_Glue_Init(), 0);
    ASSERT_EQ(Movo_NET_Glue_Init(), 0);
    set.forget();
    EXPECT_EQ(set.stop(), 0);
    EXPECT_EQ(set.stop(), 0);
    EXPECT_EQ(textsOf(set, kExit), (std::vector<std::string>{"s_iInitCount=3\n", "s_iInitCount=2\n"}));
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 1);
    EXPECT_EQ(set.liveThreads(), 1);
}

const sim::Set* s_set;
bool s_savedBefore;

RETURN_TYPE noteSaved(MovoNetIface_t* /*iface*/)
{
    s_savedBefore = s_set->exists("/data/tv/save/netconfig");
    return 0;
}

TEST_F(Exit, SavesTheConfigurationFirst)
{
    s_set = &set;
    list("fake0").record.funcs.DeInit = noteSaved;
    ASSERT_FALSE(set.exists("/data/tv/save/netconfig"));
    EXPECT_EQ(set.stop(), 0);
    EXPECT_TRUE(s_savedBefore);
    EXPECT_NE(set.read("/data/tv/save/netconfig").find("fake0"), std::string::npos);
}

std::string s_deInits;
std::int64_t s_lastDeInit;

RETURN_TYPE noteDeInit(MovoNetIface_t* iface)
{
    s_lastDeInit = s_set->clock();
    s_deInits += iface->name;
    s_deInits += FindInterface(iface->name) == nullptr ? " " : "(still listed) ";
    return 1; // does not matter
}

TEST_F(Exit, TakesEachInterfaceOffTheListBeforeItsEnd)
{
    for (const char* name : {"c0", "a0", "b0"}) {
        list(name).record.funcs.DeInit = noteDeInit;
    }
    list("none0").record.funcs.DeInit = nullptr;
    s_set = &set;
    const auto before = set.clock();
    EXPECT_EQ(set.stop(), 0);
    EXPECT_EQ(s_deInits, "c0 a0 b0 ");
    EXPECT_EQ(s_lastDeInit, before) << "and only then waits";
    EXPECT_TRUE(listedInterfaces().empty());
}

TEST_F(Exit, LeavesRecordsReadableForWhoeverHoldsOne)
{
    set.cable("eth0").plug();
    ASSERT_EQ(set.start(), 0);
    const MovoNetIface_t* eth0 = FindInterface("eth0");
    ASSERT_EQ(set.stop(), 0);
    EXPECT_STREQ(eth0->name, "eth0");
    EXPECT_EQ(eth0->isActived, 1);
}

TEST_F(Exit, KeepsWalkersOnTheirWay)
{
    for (const char* name : {"a0", "b0", "c0", "d0"}) {
        list(name);
    }
    const MovoNetIface_t* walker = FindInterface("b0");
    EXPECT_EQ(set.stop(), 0);
    std::string rest;
    for (; walker != nullptr; walker = movonet::nextInterface(walker)) {
        rest += walker->name;
    }
    EXPECT_EQ(rest, "b0c0d0");
}

TEST_F(Exit, KeepsTheDhcpClientAndItsPipe)
{
    set.cable("eth0").plug();
    ASSERT_EQ(set.start(), 0);
    set.dhcp("eth0").leases();
    const auto open = set.openDescriptors();
    ASSERT_FALSE(open.empty());
    set.forget();
    ASSERT_EQ(set.stop(), 0);
    EXPECT_TRUE(set.dhcp("eth0").running());
    EXPECT_EQ(set.openDescriptors(), open);
    EXPECT_TRUE(set.commands().empty());
    EXPECT_TRUE(set.signals().empty());
    EXPECT_EQ(set.iface("eth0").address(), "10.0.2.15");
}

TEST_F(Exit, StopsAtTheCallbackLock)
{
    ASSERT_EQ(set.start(), 0);
    set.failLock(movonet::callbackListLock, 1);
    EXPECT_EQ(set.stop(), 1);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, kExit, "lock mutex failed\n");
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
    EXPECT_EQ(listedInterfaces(), (std::vector<std::string>{"lo", "eth0"}));
    EXPECT_FALSE(set.exists("/data/tv/save/netconfig"));
    WaitForChild2Exit(); // the loop was told to end all the same
    EXPECT_EQ(set.liveThreads(), 0);
}

TEST_F(Exit, StopsAtTheListLock)
{
    ASSERT_EQ(set.start(), 0);
    set.fail(lockFault(movonet::ifaceListLock, sim::ThreadKind::Test));
    EXPECT_EQ(set.stop(), 1);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, kExit, "lock mutex failed\n");
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
    WaitForChild2Exit();
    EXPECT_EQ(set.liveThreads(), 0);
}

TEST_F(Exit, WithoutAStartStopsWhatIsNotThere)
{
    const auto before = set.clock();
    EXPECT_EQ(set.stop(), 0);
    EXPECT_EQ(textsOf(set, kExit), (std::vector<std::string>{"s_iInitCount=0\n", "deinit\n"}));
    EXPECT_EQ(set.clock() - before, 100);
    EXPECT_EQ(set.stop(), 1);
    EXPECT_EQ(textsOf(set, kExit), (std::vector<std::string>{"s_iInitCount=0\n", "deinit\n", "s_iInitCount=-1\n",
                                                             "deinit\n", "lock mutex failed\n"}));
}

TEST_F(Exit, BeforeAStartKeepsItFromEverBeingDone)
{
    ASSERT_EQ(set.stop(), 0);
    (void)Movo_NET_Glue_Init();
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
    WaitForChild2Exit();
    EXPECT_EQ(set.liveThreads(), 0);
}

TEST_F(Exit, AfterTheStopFails)
{
    ASSERT_EQ(set.start(), 0);
    ASSERT_EQ(set.stop(), 0);
    set.forget();
    EXPECT_EQ(set.stop(), 1);
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, kFg, kExit, "s_iInitCount=0\n");
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, kExit, "lock mutex failed\n");
}

TEST_F(Exit, AfterAFailedStartStopsTheLoopThatItLeft)
{
    set.fail(lockFault(movonet::ifaceListLock, sim::ThreadKind::Test));
    ASSERT_EQ(Movo_NET_Glue_Init(), 1);
    set.clearFaults();
    ASSERT_EQ(set.liveThreads(), 1);
    EXPECT_EQ(set.stop(), 0);
    EXPECT_EQ(set.liveThreads(), 0);
}

TEST_F(Exit, AfterAStartWithoutThreadEnds)
{
    set.fail({.call = sim::Call::ThreadCreate, .nth = 1, .error = EAGAIN});
    ASSERT_EQ(Movo_NET_Glue_Init(), 1);
    EXPECT_EQ(set.stop(), 0);
    EXPECT_EQ(set.liveThreads(), 0);
}

TEST_F(Exit, LeavesAGlueThatNeverGetsDoneAgain)
{
    set.cable("eth0").plug();
    ASSERT_EQ(set.start(), 0);
    ASSERT_EQ(set.stop(), 0);
    for (int round = 0; round < 3; ++round) {
        (void)Movo_NET_Glue_Init();
        EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
        WaitForChild2Exit();
        EXPECT_EQ(set.liveThreads(), 0) << "its loop ends at once";
        EXPECT_EQ(set.stop(), 0);
        EXPECT_TRUE(listedInterfaces().empty());
    }
}

/** The record is made anew, and with it the board's address is programmed. */
TEST_F(Exit, KeepsTakingTheLinkDownAtAStartAfterIt)
{
    set.cable("eth0").plug();
    ASSERT_EQ(set.start(), 0);
    ASSERT_EQ(set.stop(), 0);
    set.forget();
    (void)Movo_NET_Glue_Init();
    EXPECT_RAN(set, "netcfg eth0 down; netcfg eth0 hwprefix 02:00:00:00:00:01");
    EXPECT_FALSE(set.iface("eth0").up());
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
    EXPECT_EQ(set.stop(), 0);
}

TEST_F(Exit, LeavesCallsRefusedAndHarmless)
{
    ASSERT_EQ(set.start(), 0);
    MovoNetIface_t* eth0 = FindInterface("eth0");
    ASSERT_EQ(set.stop(), 0);
    set.forget();
    EXPECT_EQ(FindInterface("eth0"), nullptr);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, "FindInterface", "lock mutex failed\n");
    EXPECT_EQ(NotifyApp(sim::IPCHANGED, eth0), 1);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, "NotifyApp", "lock mutex failed\n");
    EXPECT_EQ(ResetGwAndDns(), 1);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, "ResetGwAndDns", "lock mutex failed\n");
    EXPECT_EQ(CreateConfigIPThread(eth0), 0);
    set.settle();
    EXPECT_EQ(OnLinkStatusEventRev(-1, nullptr, 1), 0) << "takes it for a running pass";
}

TEST_F(Exit, LetsWhoWaitsForTheLoopGo)
{
    WaitForChild2Exit(); // there is none yet
    ASSERT_EQ(set.start(), 0);
    for (int waiter = 0; waiter < 3; ++waiter) {
        set.background([] { WaitForChild2Exit(); });
    }
    set.settle();
    EXPECT_EQ(set.liveThreads(), 4);
    EXPECT_EQ(set.stop(), 0);
    set.joinBackground();
    EXPECT_EQ(set.liveThreads(), 0);
    WaitForChild2Exit();
}
} // namespace
