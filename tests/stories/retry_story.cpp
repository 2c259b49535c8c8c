#include "sim/sim.h"

#include <csignal>
#include <movo_net.h>

using namespace sim;

namespace {
/** A set whose eth0 has its cable in and whose client runs. */
class Retries : public testing::Test {
protected:
    void SetUp() override
    {
        set.cable("eth0").plug();
        ASSERT_EQ(set.start(), 0);
        EXPECT_CALLBACKS(set, {{IFFOUND, "eth0"}});
    }

    /** The client gives up: it says so and ends. */
    void clientGivesUp()
    {
        set.dhcp("eth0").loses();
        set.dhcp("eth0").process().dies();
    }
    /** The next client is launched with the last of so many ticks. */
    void expectRetryAfter(int ticks)
    {
        const int launches = client.launches();
        set.grantTicks(ticks - 1);
        EXPECT_EQ(client.launches(), launches) << "sooner than " << ticks;
        set.grantTicks(1);
        EXPECT_EQ(client.launches(), launches + 1) << "later than " << ticks;
    }

    Set set;
    const DhcpClient client = set.dhcp("eth0");
};

TEST_F(Retries, GoOnUntilTheAddressIsThereAgain)
{
    set.dhcp("eth0").leases();
    EXPECT_CALLBACKS(set, {{IPCHANGED, "eth0"}, {DHCP_SUCCESS, "eth0"}});
    EXPECT_EQ(set.defaultRoutes(), std::vector<std::string>{"10.0.2.2 dev eth0"});

    clientGivesUp();
    EXPECT_CALLBACKS(set, {{IFDISCONNECTED, "eth0"}});
    EXPECT_EQ(set.defaultRoutes(), std::vector<std::string>{});
    expectRetryAfter(10);
    clientGivesUp();
    expectRetryAfter(200);
    clientGivesUp();
    expectRetryAfter(3000);
    EXPECT_CALLBACKS(set, {{IFDISCONNECTED, "eth0"}, {IFDISCONNECTED, "eth0"}});

    set.dhcp("eth0").leases({.address = "10.0.2.99"});
    EXPECT_CALLBACKS(set, {{IPCHANGED, "eth0"}, {DHCP_SUCCESS, "eth0"}});
    EXPECT_EQ(set.defaultRoutes(), std::vector<std::string>{"10.0.2.2 dev eth0"});

    // The address that came starts the schedule anew.
    clientGivesUp();
    expectRetryAfter(10);
}

TEST_F(Retries, StopAfterTheSixthOfAServerThatNeverAnswers)
{
    for (const int ticks : {10, 200, 3000, 6000, 6000, 6000}) {
        clientGivesUp();
        EXPECT_CALLBACKS(set, {{IFDISCONNECTED, "eth0"}});
        expectRetryAfter(ticks);
    }
    set.forget();
    clientGivesUp();
    EXPECT_CALLBACKS(set, {{IFDISCONNECTED, "eth0"}});
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, "movo_net_fl_common", "AddDhcpDownEvent",
                  "dhcp down too many times, stop trying\n");
    const int launches = client.launches();
    set.grantTicks(6001);
    EXPECT_EQ(client.launches(), launches);

    // Only the cable helps: pulled and returned, the interface starts over, with the count as it was.
    set.cable("eth0").pull();
    set.grantTicks(10);
    set.cable("eth0").plug();
    set.grantTicks(10);
    EXPECT_EQ(client.launches(), launches + 1);
    EXPECT_TRUE(client.running());
}

TEST_F(Retries, ThatAreUsedUpLeaveOneStartToEachDisableAndEnable)
{
    for (const int ticks : {10, 200, 3000, 6000, 6000, 6000}) {
        clientGivesUp();
        expectRetryAfter(ticks);
    }
    clientGivesUp();
    const int launches = client.launches();
    EXPECT_EQ(Movo_NET_ConfigIPMode(0, "eth0", _MOVO_NET_IPMODE_DHCP_), 0); // the mode that it has
    set.grantTicks(10);
    EXPECT_EQ(client.launches(), launches);

    for (int more = 1; more <= 2; ++more) {
        EXPECT_EQ(Movo_NET_DisableIface(0, "eth0"), 0);
        EXPECT_EQ(Movo_NET_EnableIface(0, "eth0"), 0);
        EXPECT_EQ(client.launches(), launches + more);
        clientGivesUp();
        set.grantTicks(6001);
        EXPECT_EQ(client.launches(), launches + more);
    }
}

TEST_F(Retries, LeaveTheWorkToTheLinkPassWhenTheCableIsOut)
{
    set.dhcp("eth0").leases();
    set.grantTicks(5);
    clientGivesUp();
    set.cable("eth0").pull();
    set.grantTicks(5); // the pass sees it before the retry
    const int launches = client.launches();
    set.grantTicks(200);
    EXPECT_EQ(client.launches(), launches);
    EXPECT_CALLBACKS(set, {{IPCHANGED, "eth0"}, {DHCP_SUCCESS, "eth0"}, {IFDISCONNECTED, "eth0"}, {IFREMOVED, "eth0"}});

    set.cable("eth0").plug();
    set.grantTicks(10);
    EXPECT_EQ(client.launches(), launches + 1);
    set.dhcp("eth0").leases();
    EXPECT_CALLBACKS(set, {{IFFOUND, "eth0"}, {IPCHANGED, "eth0"}, {DHCP_SUCCESS, "eth0"}});
}

TEST_F(Retries, OfAnInterfaceWithAnAddressAreNotNeeded)
{
    set.dhcp("eth0").leases();
    const int pid = client.pid();
    set.dhcp("eth0").loses();
    set.grantTicks(5);
    set.dhcp("eth0").leases();
    set.grantTicks(100);
    EXPECT_EQ(client.pid(), pid);
    EXPECT_TRUE(client.running());
}

TEST_F(Retries, KeepComingForAnInterfaceThatWasDisabled)
{
    set.dhcp("eth0").leases();
    set.dhcp("eth0").loses();
    EXPECT_EQ(Movo_NET_DisableIface(0, "eth0"), 0);
    const int launches = client.launches();
    EXPECT_FALSE(client.running());
    expectRetryAfter(10);
    EXPECT_EQ(client.launches(), launches + 1);
    set.dhcp("eth0").leases();
    EXPECT_EQ(Movo_NET_IsActivedIface(0, "eth0"), 0);
    kest_bool connected = 0;
    EXPECT_EQ(Movo_NET_IsConnected(0, "eth0", &connected), 0);
    EXPECT_EQ(connected, 1);
}

TEST_F(Retries, RestartAClientThatIgnoresTheHangUp)
{
    set.dhcp("eth0").leases();
    set.dhcp("eth0").ignoresHangup();
    const int stubborn = client.pid();
    set.dhcp("eth0").loses();
    set.grantTicks(9);
    const auto before = set.clock();
    set.grantTicks(1);
    EXPECT_EQ(set.clock() - before, 100 + 2010);
    EXPECT_FALSE(set.process(stubborn).alive());
    EXPECT_NE(client.pid(), stubborn);
    EXPECT_TRUE(client.running());
}

TEST_F(Retries, OfAServerThatAppearsLate)
{
    clientGivesUp();
    expectRetryAfter(10);
    clientGivesUp();
    set.grantTicks(100);
    EXPECT_CALLBACKS(set, {{IFDISCONNECTED, "eth0"}, {IFDISCONNECTED, "eth0"}});
    expectRetryAfter(100);
    set.dhcp("eth0").leases();
    EXPECT_CALLBACKS(set, {{IPCHANGED, "eth0"}, {DHCP_SUCCESS, "eth0"}});
}

TEST(AutoIp, AddressOfTheClientTakesNoDefaultRoute)
{
    Set set;
    set.cable("eth0").plug();
    ASSERT_EQ(set.start(), 0);
    set.forget();
    set.dhcp("eth0").leases({.address = "169.254.3.4", .mask = "255.255.0.0", .gateway = ""});
    MovoNetIPStatus_e status{};
    EXPECT_EQ(Movo_NET_GetIPStatus(0, "eth0", &status), 0);
    EXPECT_EQ(status, _MOVO_NET_IPSTATUS_DHCP_AUTOIP_);
    EXPECT_CALLBACKS(set, {{IPCHANGED, "eth0"}, {DHCP_SUCCESS, "eth0"}});
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, "movo_net_fg", "ResetGwAndDns", "no connected interface\n");

    set.dhcp("eth0").leases(); // a server has come
    EXPECT_EQ(Movo_NET_GetIPStatus(0, "eth0", &status), 0);
    EXPECT_EQ(status, _MOVO_NET_IPSTATUS_DHCP_GOT_);
    EXPECT_EQ(set.defaultRoutes(), std::vector<std::string>{"10.0.2.2 dev eth0"});
}
} // namespace
