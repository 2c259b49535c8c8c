#include "sim/sim.h"

#include <movo_net_core.h>

using namespace sim;

TEST(Boot, CableInClientStartedAddressInUse)
{
    Set set;
    set.cable("eth0").plug();
    ASSERT_EQ(set.start(), 0);

    EXPECT_RAN_IN_ORDER(set, {"bdconf -p", "netcfg eth0 down; netcfg eth0 hwprefix 02:00:00:00:00:01", "netcfg eth0 up",
                              "ifconfig eth0 0.0.0.0", "chmod 777 /tmp/dhcpnotify.pipe.eth0"});
    EXPECT_TRUE(set.dhcp("eth0").running());
    EXPECT_CALLBACKS(set, {{IFFOUND, "eth0"}});

    set.dhcp("eth0").leases({.address = "10.0.2.15", .gateway = "10.0.2.2", .dns = "10.0.2.3,8.8.8.8"});
    EXPECT_CALLBACKS(set, {{IPCHANGED, "eth0"}, {DHCP_SUCCESS, "eth0"}});
    EXPECT_EQ(set.defaultRoutes(), std::vector<std::string>{"10.0.2.2 dev eth0"});
    EXPECT_EQ(set.read("/etc/resolv.conf"), "nameserver 10.0.2.3\nnameserver 8.8.8.8\nsearch lan\n");
    EXPECT_TRUE(set.exists("/tmp/NotifyNtpclient"));
}
