#include "sim/sim.h"

#include <movo_net.h>

using namespace sim;

namespace {
constexpr const char* kModule = "movo_net_fg";
}

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

TEST(Boot, WithoutACableNothingIsStarted)
{
    Set set;
    ASSERT_EQ(set.start(), 0);
    set.grantTicks(30);
    EXPECT_NOT_RAN(set, "netcfg eth0 up");
    EXPECT_CALLBACKS(set, {});
}

TEST(Boot, TheCableComesLater)
{
    Set set;
    ASSERT_EQ(set.start(), 0);
    set.cable("eth0").plug();
    set.grantTicks(9);
    EXPECT_NOT_RAN(set, "netcfg eth0 up");
    set.grantTicks();
    EXPECT_RAN(set, "netcfg eth0 up");
    set.dhcp("eth0").leases();
    EXPECT_CALLBACKS(set, {{IFFOUND, "eth0"}, {IPCHANGED, "eth0"}, {DHCP_SUCCESS, "eth0"}});
}

// A loop that begins later than the first interface is up refuses its notify pipe. The start does not wait for the
// loop, but the next look tries again.
TEST(Boot, LosesOneSecondToALateLoop)
{
    Set set;
    set.holdLoopThread();
    set.cable("eth0").plug();
    ASSERT_EQ(set.start(), 0);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, "movo_net_fl_common", "ConfigIP", "can not addevent\n");
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kModule, "OnLinkStatusEventRev", "link:activate eth0 failed\n");
    EXPECT_CALLBACKS(set, {});

    set.grantTicks(10);
    EXPECT_CALLBACKS(set, {{IFFOUND, "eth0"}});
    EXPECT_TRUE(set.dhcp("eth0").running());
    set.dhcp("eth0").leases();
    EXPECT_CALLBACKS(set, {{IPCHANGED, "eth0"}, {DHCP_SUCCESS, "eth0"}});
}

// A callback can be installed when the start has returned; what it has missed is the state of the interfaces.
TEST(Boot, IsSeenInTheStateByWhoInstallsTheCallbackAfterIt)
{
    std::vector<MovoNetCBReason_e> heard;
    Set set;
    set.cable("eth0").plug();
    ASSERT_EQ(Movo_NET_Glue_Init(), 0);
    int id = -1;
    const auto hear = [](MovoNetCBReason_e reason, void* context, void*) {
        static_cast<std::vector<MovoNetCBReason_e>*>(context)->push_back(reason);
    };
    ASSERT_EQ(Movo_NET_InstallCallback(0, hear, &heard, &id), 0);
    EXPECT_EQ(Movo_NET_IsActivedIface(0, "eth0"), 1);
    set.settle();
    EXPECT_EQ(heard, std::vector<MovoNetCBReason_e>{}) << "IFFOUND came before";

    set.dhcp("eth0").leases();
    EXPECT_EQ(heard, (std::vector<MovoNetCBReason_e>{IPCHANGED, DHCP_SUCCESS}));
    kest_bool connected = 0;
    EXPECT_EQ(Movo_NET_IsConnected(0, "eth0", &connected), 0);
    EXPECT_EQ(connected, 1);
}
