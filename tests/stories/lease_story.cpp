#include "sim/sim.h"

using namespace sim;

namespace {
class OnlineSet : public testing::Test {
protected:
    void SetUp() override
    {
        set.cable("eth0").plug();
        ASSERT_EQ(set.start(), 0);
        set.dhcp("eth0").leases();
        set.forget();
    }

    Set set;
};
} // namespace

TEST_F(OnlineSet, LostAndRecoveredByTheSameClient)
{
    set.dhcp("eth0").loses();
    EXPECT_CALLBACKS(set, {{IFDISCONNECTED, "eth0"}});
    EXPECT_TRUE(set.dhcp("eth0").running());
    set.dhcp("eth0").leases();
    EXPECT_CALLBACKS(set, {{IPCHANGED, "eth0"}, {DHCP_SUCCESS, "eth0"}});

    // The retry that was waiting finds everything in order.
    set.grantTicks(20);
    EXPECT_EQ(set.dhcp("eth0").launches(), 1);
}

TEST_F(OnlineSet, NeverComesBack)
{
    const DhcpClient client = set.dhcp("eth0");
    for (const int ticks : {10, 200, 3000, 6000, 6000, 6000}) {
        set.dhcp("eth0").says("down");
        const int launches = client.launches();
        set.grantTicks(ticks - 1);
        EXPECT_EQ(client.launches(), launches) << "before " << ticks;
        set.grantTicks();
        EXPECT_EQ(client.launches(), launches + 1) << "after " << ticks;
    }
    EXPECT_NOT_LOGGED(set, KEST_LEVEL_ERROR, "movo_net_fl_common", "AddDhcpDownEvent",
                      "dhcp down too many times, stop trying\n");
    set.dhcp("eth0").says("down");
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, "movo_net_fl_common", "AddDhcpDownEvent",
                  "dhcp down too many times, stop trying\n");
    const int launches = client.launches();
    set.grantTicks(12000);
    EXPECT_EQ(client.launches(), launches);
}
