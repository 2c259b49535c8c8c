#include "bench.h"

using namespace dhcp;

// The configuration file brings back the number of a retry timer of an earlier process. In this process the number is
// that of some other event, which must stay.

namespace {
int s_fired;

RETURN_TYPE count(int /*fd*/, void* /*data*/, kest_bool /*isTimeout*/)
{
    ++s_fired;
    return 0;
}

const Lines notFound(int handle)
{
    return {"INFO movo_net_fl_eventloop int_removeEvent: handle = " + std::to_string(handle) + "\n",
            "INFO movo_net_fl_eventloop int_removeEvent: event not found in main list\n",
            "ERROR movo_net_fl_eventloop int_removeEvent: event not found\n"};
}

TEST(StoredRetry, IsNotTheTimerOfSomebodyElse)
{
    Bench bench;
    int handle = 0;
    ASSERT_EQ(int_addEvent({-1, 1, &bench.iface, count}, &handle), 0);
    bench.set.grantTicks(1);
    bench.set.forget();
    bench.iface.dhcpDownHandle = handle;
    EXPECT_EQ(AddDhcpDownEvent(&bench.iface), 0);
    const Lines lines = told(bench.set);
    ASSERT_GE(lines.size(), 3U);
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + 3), notFound(handle));
    bench.set.grantTicks(2);
    EXPECT_EQ(s_fired, 2);
}

TEST(StoredRetry, IsNotATimerThatIsNotLiveYet)
{
    Bench bench;
    bench.set.grantTicks(1);
    bench.set.background([&bench] {
        int handle = 0;
        EXPECT_EQ(int_addEvent({-1, 1, &bench.iface, count}, &handle), 0);
        bench.iface.dhcpDownHandle = handle;
        EXPECT_EQ(AddDhcpDownEvent(&bench.iface), 0);
    });
    bench.set.joinBackground();
    bench.set.grantTicks(3);
    EXPECT_GT(s_fired, 0);
}

TEST(StoredRetry, IsNotThePipeOfItsOwnRecord)
{
    Bench bench;
    bench.launch();
    bench.iface.dhcpDownHandle = bench.iface.dhcpcEventHandle;
    EXPECT_EQ(AddDhcpDownEvent(&bench.iface), 0);
    bench.set.forget();
    bench.hear("rubbish");
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, "movo_net_fl_common", "OnDhcpEventRev", "unknown message: rubbish\n");
}

TEST(StoredRetry, IsNotTheRetryOfAnotherInterface)
{
    Bench bench;
    MovoNetIface_t& other = bench.add("eth1", _MOVO_NET_IFACE_ETHER_);
    ASSERT_EQ(AddDhcpDownEvent(&other), 0);
    bench.iface.dhcpDownHandle = other.dhcpDownHandle;
    EXPECT_EQ(AddDhcpDownEvent(&bench.iface), 0);
    bench.set.grantTicks(11);
    EXPECT_EQ(bench.set.dhcp("eth0").launches(), 1);
    EXPECT_EQ(bench.set.dhcp("eth1").launches(), 1);
}

TEST(StoredRetry, ThatNobodyHasIsUnknown)
{
    Bench bench;
    bench.iface.dhcpDownHandle = 4711;
    bench.iface.dhcpDownCount = 6; // as stored: no retry at all
    EXPECT_EQ(AddDhcpDownEvent(&bench.iface), 1);
    EXPECT_EQ(only(told(bench.set), {"INFO movo_net_fl_eventloop", "ERROR movo_net_fl_eventloop"}), notFound(4711));
    EXPECT_EQ(bench.iface.dhcpDownHandle, 0);
}

TEST(StoredRetry, KeepsTheStoredCount)
{
    Bench bench;
    bench.iface.dhcpDownCount = 6;
    EXPECT_EQ(int_Movo_Net_Init(&bench.iface), 0);
    bench.launch();
    bench.hear("down");
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, "movo_net_fl_common", "AddDhcpDownEvent",
                  "dhcp down too many times, stop trying\n");
}

TEST(RetryHandler, WithoutATimerRemovesNone)
{
    Bench bench;
    int handle = 0;
    ASSERT_EQ(int_addEvent({-1, 1, &bench.iface, count}, &handle), 0);
    bench.iface.isConnected = 1;
    EXPECT_EQ(OnDhcpDown(-1, &bench.iface, 1), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, "movo_net_fl_eventloop", "int_removeEvent", "handle = 0\n");
    bench.set.grantTicks(2);
    EXPECT_EQ(s_fired, 1);
}
} // namespace
