#include "fg_test.h"

#include "movo_net_fl_eventloop/eventloop.h"

namespace {
bool isBriefly(const sim::Set& set, const char* text)
{
    return bool(set.logged(KEST_LEVEL_ERROR, kFg, kInit, text));
}

/** Each user that came is counted, started or not: so many exits stop the glue, one less does not. */
void expectUsers(sim::Set& set, int users)
{
    for (int user = 1; user < users; ++user) {
        EXPECT_EQ(set.stop(), 0);
        EXPECT_EQ(Movo_NET_IsInitializationDone(0), 1);
    }
    EXPECT_EQ(set.stop(), 0);
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
    EXPECT_EQ(set.liveThreads(), 0);
}

class StartFailure : public testing::Test {
protected:
    sim::Set set;

    StartFailure() { set.cable("eth0").plug(); }

    /** The next start does it all, as if nothing had been. */
    void expectRetryToWork(int users)
    {
        set.forget();
        ASSERT_EQ(set.start(), 0);
        EXPECT_EQ(textsOf(set, kInit).size(), 2U);
        EXPECT_TRUE(set.dhcp("eth0").running());
        EXPECT_CALLBACKS(set, {{sim::IFFOUND, "eth0"}});
        EXPECT_EQ(set.liveThreads(), 1);
        EXPECT_EQ(Movo_NET_IsInitializationDone(0), 1);
        expectUsers(set, users);
    }
};

class LockFailure : public StartFailure, public testing::WithParamInterface<sim::Fault> {};

TEST_P(LockFailure, IsToldAndTheNextStartWorks)
{
    set.fail(GetParam());
    EXPECT_EQ(Movo_NET_Glue_Init(), 1);
    EXPECT_TRUE(isBriefly(set, "init mutex failed\n"));
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
    EXPECT_EQ(set.liveThreads(), 0);
    EXPECT_TRUE(listedInterfaces().empty());
    expectRetryToWork(2);
}
INSTANTIATE_TEST_SUITE_P(Steps, LockFailure,
                         testing::Values(sim::Fault{.call = sim::Call::MutexAttrInit, .nth = 1},
                                         sim::Fault{.call = sim::Call::MutexAttrSetType, .nth = 2},
                                         sim::Fault{.call = sim::Call::MutexInit, .nth = 1},
                                         sim::Fault{.call = sim::Call::MutexInit, .nth = 2},
                                         sim::Fault{.call = sim::Call::MutexInit, .nth = 3}));

TEST_F(StartFailure, OfTheThreadIsToldAndTheNextStartWorks)
{
    set.fail({.call = sim::Call::ThreadCreate, .nth = 1, .error = EAGAIN});
    EXPECT_EQ(Movo_NET_Glue_Init(), 1);
    EXPECT_TRUE(isBriefly(set, "creating thread failed.\n"));
    EXPECT_TRUE(textsOf(set, "LoadNetConfig").empty()) << "nothing is loaded without it";
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
    expectRetryToWork(2);
}

TEST_F(StartFailure, OfSeveralStartsIsCountedEachTime)
{
    set.fail({.call = sim::Call::ThreadCreate, .nth = 1, .times = 3, .error = EAGAIN});
    for (int count = 0; count < 3; ++count) {
        EXPECT_EQ(Movo_NET_Glue_Init(), 1);
    }
    expectRetryToWork(4);
}

TEST_F(StartFailure, OfTheFirstLookLeavesTheLoopForTheNextStart)
{
    set.fail(lockFault(movonet::ifaceListLock, sim::ThreadKind::Test));
    EXPECT_EQ(Movo_NET_Glue_Init(), 1);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, "OnLinkStatusEventRev", "lock mutex failed\n");
    EXPECT_TRUE(isBriefly(set, "initialize network interfaces failed.\n"));
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
    set.settle();
    EXPECT_EQ(set.liveThreads(), 1);
    set.clearFaults();
    expectRetryToWork(2);
}

TEST_F(StartFailure, OfTheFirstLookLeavesTheLoopAlsoWhenItsEndIsWaitedFor)
{
    set.fail(lockFault(movonet::ifaceListLock, sim::ThreadKind::Test));
    EXPECT_EQ(Movo_NET_Glue_Init(), 1);
    set.clearFaults();
    set.background([] { WaitForChild2Exit(); });
    set.settle();
    ASSERT_EQ(set.liveThreads(), 2);

    ASSERT_EQ(set.start(), 0);
    EXPECT_EQ(set.liveThreads(), 2) << "the loop and who waits for it";
    expectUsers(set, 2);
}

TEST_F(StartFailure, OfTheTimerIsTold)
{
    set.cable("eth0").pull(); // no client asks for an event before
    set.fail(lockFault(movonet::eventListTodoLock, sim::ThreadKind::Test, 1));
    EXPECT_EQ(Movo_NET_Glue_Init(), 1);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, "movo_net_fl_eventloop", "int_addEvent", "lock mutex failed\n");
    EXPECT_TRUE(isBriefly(set, "install event failed.\n"));
}

TEST_F(StartFailure, KeepsAnsweringAfterAFailureOfTheTimer)
{
    set.cable("eth0").pull();
    set.fail(lockFault(movonet::eventListTodoLock, sim::ThreadKind::Test, 1));
    EXPECT_EQ(Movo_NET_Glue_Init(), 1);
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 1);
    EXPECT_EQ(Movo_NET_Glue_Init(), 0) << "it counts as started";
    set.remove("/proc/net/wireless");
    set.forget();
    set.grantTicks(5 * kPassTicks);
    EXPECT_TRUE(set.log().empty()) << "nobody looks at the links";
    expectUsers(set, 2);
}

class LoopFailure : public StartFailure, public testing::WithParamInterface<sim::Fault> {};

TEST_P(LoopFailure, EndsTheWaitForTheLoop)
{
    set.cable("eth0").pull();
    set.fail(GetParam());
    EXPECT_EQ(Movo_NET_Glue_Init(), 1);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, "movo_net_fl_eventloop", "int_eventLoopThread", "init mutex failed\n");
    EXPECT_TRUE(isBriefly(set, "install event failed.\n"));
    EXPECT_EQ(int_IsEventLoopInitDone(), 0);
    WaitForChild2Exit();
    EXPECT_EQ(set.liveThreads(), 0);
    EXPECT_EQ(set.stop(), 0);
}

/** The first look fails, too, or else the glue would count as started. */
TEST_P(LoopFailure, IsOverForTheNextStart)
{
    set.fail(GetParam());
    set.fail(lockFault(movonet::ifaceListLock, sim::ThreadKind::Test));
    EXPECT_EQ(Movo_NET_Glue_Init(), 1);
    set.settle();
    EXPECT_EQ(int_IsEventLoopInitDone(), 0);
    EXPECT_EQ(set.liveThreads(), 0);
    set.clearFaults();
    expectRetryToWork(2);
}

TEST_P(LoopFailure, IsOverForTheNextStartAlsoWhenItsEndWasWaitedFor)
{
    set.fail(GetParam());
    set.fail(lockFault(movonet::ifaceListLock, sim::ThreadKind::Test));
    EXPECT_EQ(Movo_NET_Glue_Init(), 1);
    WaitForChild2Exit();
    EXPECT_EQ(set.liveThreads(), 0);
    set.clearFaults();

    set.cable("eth0").pull(); // its client could not be watched yet
    set.holdLoopThread();     // it begins when it is waited for
    ASSERT_EQ(set.start(), 0);
    EXPECT_EQ(int_IsEventLoopInitDone(), 1);
    expectUsers(set, 2);
}

INSTANTIATE_TEST_SUITE_P(Locks, LoopFailure,
                         testing::Values(sim::Fault{.call = sim::Call::MutexInit,
                                                    .object = &movonet::eventListLock,
                                                    .size = sizeof(movonet::eventListLock)},
                                         sim::Fault{.call = sim::Call::MutexInit,
                                                    .object = &movonet::eventListTodoLock,
                                                    .size = sizeof(movonet::eventListTodoLock)},
                                         sim::Fault{.call = sim::Call::MutexAttrInit,
                                                    .thread = sim::ThreadKind::Loop}));

TEST_F(StartFailure, OfTheConfigurationFileDoesNotMatter)
{
    set.write("/data/tv/save/netconfig", "rubbish");
    ASSERT_EQ(set.start(), 0);
    EXPECT_TRUE(set.dhcp("eth0").running());
}
} // namespace
