#include "fg_test.h"

#include "movo_net_fl_eventloop/eventloop.h"

#include <atomic>
#include <sched.h>

namespace {
bool othersWait(const sim::Set& set)
{
    return bool(set.logged(KEST_LEVEL_INFO, kFg, kInit, "initializing\n"));
}

/** Starts the glue on a second thread and comes back when that one waits for the first. */
void startAgainMeanwhile(sim::Set& set, RETURN_TYPE& result)
{
    set.background([&result] { result = Movo_NET_Glue_Init(); });
    while (!othersWait(set)) {
        (void)sched_yield();
    }
}

class TwoStarts : public testing::Test {
protected:
    sim::Set set;
    RETURN_TYPE second = -1;

    TwoStarts() { set.cable("eth0").plug(); }
};

TEST_F(TwoStarts, SecondWaitsForTheFirst)
{
    bool returnedEarly = true;
    set.onCommand("netcfg eth0 up").does([this, &returnedEarly] {
        startAgainMeanwhile(set, second);
        for (int yields = 0; yields < 200; ++yields) {
            (void)sched_yield();
        }
        returnedEarly = second != -1;
    });
    const auto before = set.clock();
    ASSERT_EQ(set.start(), 0);
    set.joinBackground();
    EXPECT_FALSE(returnedEarly);
    EXPECT_EQ(second, 0);
    EXPECT_EQ(timesLogged(set, "initializing\n"), 1);
    EXPECT_EQ(timesLogged(set, "init\n"), 1);
    EXPECT_EQ(set.liveThreads(), 1);
    EXPECT_GE(set.clock() - before, 10) << "it polls";
    EXPECT_EQ((set.clock() - before) % 10, 0);

    EXPECT_EQ(set.stop(), 0);
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 1) << "two users";
    EXPECT_EQ(set.stop(), 0);
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
}

TEST_F(TwoStarts, SecondFailsWithTheFirst)
{
    set.onCommand("bdconf -p").does([this] {
        startAgainMeanwhile(set, second);
        set.fail(lockFault(movonet::ifaceListLock, sim::ThreadKind::Test));
    });
    EXPECT_EQ(Movo_NET_Glue_Init(), 1);
    set.clearFaults();
    set.joinBackground();
    EXPECT_EQ(second, 1);
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
}

TEST_F(TwoStarts, SecondSucceedsWhenTheFirstFailedAfterItsLook)
{
    set.onCommand("netcfg eth0 up").does([this] {
        startAgainMeanwhile(set, second);
        set.onCommand("chmod").does([this] { // the pipe's event was added, that of the links comes next
            set.fail(lockFault(movonet::eventListTodoLock, sim::ThreadKind::Test, 1));
        });
    });
    EXPECT_EQ(Movo_NET_Glue_Init(), 1);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, kInit, "install event failed.\n");
    set.joinBackground();
    EXPECT_EQ(second, 0);
}

class ManyStarts : public testing::TestWithParam<unsigned> {};

TEST_P(ManyStarts, AtOnceAreOneStart)
{
    constexpr int kUsers = 6;
    sim::Set set(GetParam());
    set.cable("eth0").plug();
    std::atomic<int> started{0};
    for (int user = 0; user < kUsers; ++user) {
        set.background([&] { started += Movo_NET_Glue_Init() == 0 ? 1 : 0; });
    }
    set.joinBackground();
    set.settle();
    EXPECT_EQ(started, kUsers);
    EXPECT_EQ(timesLogged(set, "init\n"), 1);
    EXPECT_EQ(set.liveThreads(), 1);
    EXPECT_EQ(listedInterfaces(), (std::vector<std::string>{"lo", "eth0"}));
    EXPECT_EQ(set.dhcp("eth0").launches(), 1);
    for (int user = 0; user < kUsers; ++user) {
        EXPECT_EQ(Movo_NET_IsInitializationDone(0), 1);
        EXPECT_EQ(set.stop(), 0);
    }
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
    EXPECT_EQ(set.liveThreads(), 0);
}

TEST_P(ManyStarts, AndStopsAtOnceEndInOrder)
{
    sim::Set set(GetParam());
    set.cable("eth0").plug();
    for (int user = 0; user < 4; ++user) {
        set.background([] {
            (void)Movo_NET_Glue_Init();
            (void)Movo_NET_Glue_Exit();
        });
        set.background([] { WaitForChild2Exit(); });
    }
    set.joinBackground();
    WaitForChild2Exit();
    EXPECT_EQ(set.liveThreads(), 0);
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
}
INSTANTIATE_TEST_SUITE_P(Seeds, ManyStarts, testing::Range(1U, 11U));
} // namespace
