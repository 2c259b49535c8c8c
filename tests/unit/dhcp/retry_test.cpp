#include "bench.h"

#include <csignal>

using namespace dhcp;

namespace {
/** Whether the retry comes with the last of so many ticks. */
testing::AssertionResult retriesAfter(Bench& bench, int ticks)
{
    const int before = bench.set.dhcp("eth0").launches();
    const auto retries = [&] { return bench.set.dhcp("eth0").launches() - before; };
    bench.set.grantTicks(ticks - 1);
    if (retries() != 0) {
        return testing::AssertionFailure() << "sooner";
    }
    bench.set.grantTicks(1);
    return retries() == 1 ? testing::AssertionSuccess() : testing::AssertionFailure() << "later";
}

struct Retry {
    int count;
    int ticks;
};

class Schedule : public testing::TestWithParam<Retry> {};

TEST_P(Schedule, StartsTheClientAfterExactlySoManyTicks)
{
    Bench bench;
    bench.iface.dhcpDownCount = GetParam().count;
    EXPECT_EQ(AddDhcpDownEvent(&bench.iface), 0);
    EXPECT_EQ(said(bench.set),
              Lines{"INFO AddDhcpDownEvent: add dhcp down event, count is " + std::to_string(GetParam().count) + "\n"});
    EXPECT_EQ(bench.iface.dhcpDownCount, GetParam().count + 1);
    bench.nextPass();
    EXPECT_TRUE(retriesAfter(bench, GetParam().ticks));
    EXPECT_EQ(bench.iface.dhcpDownHandle, 0);
    EXPECT_EQ(bench.iface.dhcpDownCount, GetParam().count + 1);
}

INSTANTIATE_TEST_SUITE_P(Counts, Schedule,
                         testing::Values(Retry{0, 10}, Retry{1, 200}, Retry{2, 3000}, Retry{3, 6000}, Retry{4, 6000},
                                         Retry{5, 6000}));

class NoRetry : public testing::TestWithParam<int> {};

TEST_P(NoRetry, IsLeftAfterSix)
{
    Bench bench;
    bench.iface.dhcpDownCount = GetParam();
    EXPECT_EQ(AddDhcpDownEvent(&bench.iface), 1);
    EXPECT_EQ(told(bench.set),
              Lines{"ERROR movo_net_fl_common AddDhcpDownEvent: dhcp down too many times, stop trying\n"});
    EXPECT_EQ(bench.iface.dhcpDownCount, GetParam());
    EXPECT_EQ(bench.iface.dhcpDownHandle, 0);
}

INSTANTIATE_TEST_SUITE_P(Counts, NoRetry, testing::Values(6, 7, 2147483647));

class WrongCount : public testing::TestWithParam<int> {};

TEST_P(WrongCount, IsResetAndNothingScheduledThisTime)
{
    Bench bench;
    bench.iface.dhcpDownCount = GetParam();
    EXPECT_EQ(AddDhcpDownEvent(&bench.iface), 1);
    EXPECT_EQ(told(bench.set),
              Lines{"ERROR movo_net_fl_common AddDhcpDownEvent: dhcp down count incorrect, reset to 0\n"});
    EXPECT_EQ(bench.iface.dhcpDownCount, 0);
    EXPECT_EQ(bench.iface.dhcpDownHandle, 0);
    EXPECT_EQ(AddDhcpDownEvent(&bench.iface), 0);
}

INSTANTIATE_TEST_SUITE_P(Counts, WrongCount, testing::Values(-1, -2147483647 - 1));

TEST(Retry, ReplacesOneThatIsScheduled)
{
    Bench bench;
    EXPECT_EQ(AddDhcpDownEvent(&bench.iface), 0);
    const int first = bench.iface.dhcpDownHandle;
    bench.nextPass();
    bench.set.grantTicks(5);
    EXPECT_EQ(AddDhcpDownEvent(&bench.iface), 0);
    EXPECT_NE(bench.iface.dhcpDownHandle, first);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, "movo_net_fl_eventloop", "int_removeEvent",
                  "handle = " + std::to_string(first) + "\n");
    bench.nextPass();
    EXPECT_TRUE(retriesAfter(bench, 200));
}

TEST(Retry, IsTakenAwayWhenNoneIsLeft)
{
    Bench bench;
    EXPECT_EQ(AddDhcpDownEvent(&bench.iface), 0);
    bench.iface.dhcpDownCount = 6;
    EXPECT_EQ(AddDhcpDownEvent(&bench.iface), 1);
    EXPECT_EQ(bench.iface.dhcpDownHandle, 0);
    bench.set.grantTicks(20);
    EXPECT_EQ(bench.set.dhcp("eth0").launches(), 0);
}

TEST(Retry, WithoutMemoryIsNotCounted)
{
    Bench bench;
    bench.iface.dhcpDownCount = 2;
    bench.set.fail({.call = sim::Call::Malloc, .error = ENOMEM});
    EXPECT_EQ(AddDhcpDownEvent(&bench.iface), 1);
    EXPECT_EQ(said(bench.set), Lines{"ERROR AddDhcpDownEvent: cannot add dhcp down event\n"});
    EXPECT_EQ(bench.iface.dhcpDownCount, 2);
    EXPECT_EQ(bench.iface.dhcpDownHandle, 0);
}

TEST(Retry, HappensOnce)
{
    Bench bench;
    EXPECT_EQ(AddDhcpDownEvent(&bench.iface), 0);
    bench.set.grantTicks(100);
    EXPECT_EQ(bench.set.dhcp("eth0").launches(), 1);
}

TEST(Retry, RestartsAClientThatRuns)
{
    Bench bench;
    bench.lease();
    const int pid = bench.set.dhcp("eth0").pid();
    bench.hear("down");
    bench.set.grantTicks(10);
    EXPECT_EQ(sent(bench.set), (std::vector<sim::Signal>{{pid, SIGHUP, 0}}));
    EXPECT_EQ(bench.set.dhcp("eth0").launches(), 2);
    EXPECT_EQ(bench.iface.ipStatus, _MOVO_NET_IPSTATUS_DHCP_ACQUIRING_);
}

TEST(Retry, ThatFindsAnAddressStartsTheCountAnew)
{
    Bench bench;
    EXPECT_EQ(AddDhcpDownEvent(&bench.iface), 0);
    bench.iface.isConnected = 1;
    bench.iface.dhcpDownCount = 4;
    bench.set.grantTicks(11);
    EXPECT_EQ(bench.iface.dhcpDownCount, 0);
    EXPECT_EQ(bench.iface.dhcpDownHandle, 0);
    EXPECT_EQ(ran(bench.set), Lines{});
}

TEST(Retry, ThatCannotStartTheClientIsFollowedByTheNext)
{
    Bench bench;
    const auto attempts = [&] { return only(ran(bench.set), {"export"}).size(); };
    bench.set.fail({.call = sim::Call::System, .on = "export", .nth = 1, .times = 2});
    EXPECT_EQ(AddDhcpDownEvent(&bench.iface), 0);
    bench.nextPass();
    std::size_t expected = 0;
    for (const int ticks : {10, 200, 3000}) {
        bench.set.grantTicks(ticks - 1);
        EXPECT_EQ(attempts(), expected);
        bench.set.grantTicks(1);
        EXPECT_EQ(attempts(), ++expected);
    }
    EXPECT_TRUE(bench.set.dhcp("eth0").running());
    EXPECT_EQ(bench.iface.dhcpDownCount, 3) << "one that starts the client is not followed by another";
    EXPECT_EQ(bench.iface.dhcpDownHandle, 0);
}

TEST(Retry, OfTheLastRowThatCannotStartTheClientIsTheLast)
{
    Bench bench;
    bench.iface.dhcpDownCount = 6;
    bench.set.fail({.call = sim::Call::Mkfifo, .error = EROFS});
    EXPECT_EQ(OnDhcpDown(-1, &bench.iface, 1), 1);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, "movo_net_fl_common", "AddDhcpDownEvent",
                  "dhcp down too many times, stop trying\n");
    EXPECT_EQ(bench.iface.dhcpDownHandle, 0);
}

TEST(Retry, WithoutACableIsTheLast)
{
    Bench bench;
    EXPECT_EQ(AddDhcpDownEvent(&bench.iface), 0);
    bench.set.cable("eth0").pull();
    bench.set.grantTicks(100);
    EXPECT_EQ(ran(bench.set), Lines{});
    EXPECT_EQ(bench.iface.dhcpDownHandle, 0);
    EXPECT_EQ(bench.iface.dhcpDownCount, 1);
}

TEST(Retry, NeedsALinkThatCanBeTold)
{
    Bench bench;
    EXPECT_EQ(AddDhcpDownEvent(&bench.iface), 0);
    bench.set.cable("eth0").withoutMii(); // -1 is enough for an activation, not for this
    bench.set.grantTicks(20);
    EXPECT_EQ(bench.iface.dhcpDownHandle, 0);
    EXPECT_EQ(ran(bench.set), Lines{});
}

TEST(Retry, KeepsStartingTheClientOfADeactivatedInterface)
{
    Bench bench;
    bench.lease();
    bench.hear("down");
    EXPECT_EQ(ifdown(&bench.iface), 0);
    bench.set.grantTicks(10);
    EXPECT_EQ(bench.iface.isActived, 0);
    EXPECT_EQ(bench.set.dhcp("eth0").launches(), 2);
}

TEST(RetryHandler, GivesTheResultOfItsStart)
{
    Bench bench;
    EXPECT_EQ(OnDhcpDown(-1, &bench.iface, 1), 0);
    bench.set.onCommand("chmod").fails();
    EXPECT_EQ(OnDhcpDown(-1, &bench.iface, 1), 1);
    bench.set.cable("eth0").pull();
    EXPECT_EQ(OnDhcpDown(-1, &bench.iface, 1), 1);
    bench.iface.isConnected = 1;
    EXPECT_EQ(OnDhcpDown(-1, &bench.iface, 1), 0);
    bench.iface.isConnected = 0;
    bench.iface.type = _MOVO_NET_IFACE_LO_;
    EXPECT_EQ(OnDhcpDown(-1, &bench.iface, 1), 1);
    bench.iface.type = static_cast<MovoNetIfaceType_e>(3);
    EXPECT_EQ(OnDhcpDown(-1, &bench.iface, 1), 1);
}

TEST(RetryHandler, StartsTheConnectionOfAWirelessInterfaceAnew)
{
    Bench bench(_MOVO_NET_IFACE_WIFI_);
    wifiFake.resetResult = 4;
    EXPECT_EQ(OnDhcpDown(-1, &bench.iface, 1), 4);
    EXPECT_EQ(wifiFake.resets, 1);
    EXPECT_EQ(wifiFake.asked, &bench.iface);
    EXPECT_EQ(ran(bench.set), Lines{});
}

TEST(RetryHandler, StaticInterfacesAreConfiguredToo)
{
    Bench bench;
    bench.setStatic();
    EXPECT_EQ(OnDhcpDown(-1, &bench.iface, 1), 0);
    EXPECT_EQ(bench.set.iface("eth0").address(), "192.168.1.20");
}
} // namespace
