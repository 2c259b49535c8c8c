#include "sim/sim.h"

#include <csignal>

using namespace sim;

TEST(Cable, PulledAndReturned)
{
    Set set;
    set.cable("eth0").plug();
    ASSERT_EQ(set.start(), 0);
    set.dhcp("eth0").leases();
    const int firstClient = set.dhcp("eth0").pid();
    EXPECT_CALLBACKS(set, {{IFFOUND, "eth0"}, {IPCHANGED, "eth0"}, {DHCP_SUCCESS, "eth0"}});

    set.cable("eth0").pull();
    set.grantTicks(10);
    EXPECT_CALLBACKS(set, {{IFREMOVED, "eth0"}});
    EXPECT_FALSE(set.dhcp("eth0").running());
    EXPECT_EQ(set.iface("eth0").address(), "0.0.0.0");
    EXPECT_TRUE(set.defaultRoutes().empty());
    EXPECT_FALSE(set.exists("/tmp/dhcpnotify.pipe.eth0"));

    set.cable("eth0").plug();
    set.grantTicks(10);
    EXPECT_CALLBACKS(set, {{IFFOUND, "eth0"}});
    EXPECT_TRUE(set.dhcp("eth0").running());
    EXPECT_NE(set.dhcp("eth0").pid(), firstClient);
    set.dhcp("eth0").leases({.address = "10.0.2.77"});
    EXPECT_CALLBACKS(set, {{IPCHANGED, "eth0"}, {DHCP_SUCCESS, "eth0"}});
    EXPECT_EQ(set.iface("eth0").address(), "10.0.2.77");
    EXPECT_EQ(set.defaultRoutes(), std::vector<std::string>{"10.0.2.2 dev eth0"});
}

TEST(Cable, PulledUnderAClientThatIgnoresHangup)
{
    Set set;
    set.cable("eth0").plug();
    set.dhcp("eth0").ignoresHangup();
    ASSERT_EQ(set.start(), 0);
    set.dhcp("eth0").leases();
    const std::string client = std::to_string(set.dhcp("eth0").pid());

    set.cable("eth0").pull();
    set.grantTicks(9);
    const auto before = set.clock();
    set.grantTicks();
    EXPECT_EQ(set.clock() - before, 100 + 2010);
    EXPECT_RAN_IN_ORDER(set, {"kill -9 " + client,
                              "rm /tmp/dhcp/dhcpcd-eth0.cache /tmp/dhcp/dhcpcd-eth0.info /tmp/dhcp/dhcpcd-eth0.pid"});
    EXPECT_FALSE(set.dhcp("eth0").running());
}

TEST(Cable, OfTheBetterOfTwo)
{
    Set set;
    set.addIface("eth1");
    set.cable("eth0").plug();
    set.cable("eth1").plug();
    ASSERT_EQ(set.start(), 0);
    set.dhcp("eth1").leases({.address = "10.1.0.9", .gateway = "10.1.0.1"});
    EXPECT_EQ(set.defaultRoutes(), std::vector<std::string>{"10.1.0.1 dev eth1"});

    // Of two that are equal the one found first has the default route.
    set.dhcp("eth0").leases();
    EXPECT_EQ(set.defaultRoutes().front(), "10.0.2.2 dev eth0");

    set.cable("eth0").pull();
    set.grantTicks(10);
    EXPECT_EQ(set.defaultRoutes(), std::vector<std::string>{"10.1.0.1 dev eth1"});
}
