#include "movo_net_fg/fg.h"
#include "unit/ip/tools.h"

#include <climits>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {
constexpr const char* kReport = "\n\e[0;34;41m ASSERT, Pid:";

/** Runs a call and compares what it prints; "" for nothing. */
class Resource : public testing::Test {
protected:
    template <typename Call>
    int run(Call call)
    {
        const sim::CapturedOutput output;
        testing::internal::CaptureStderr();
        const int result = call();
        backtrace = testing::internal::GetCapturedStderr();
        printed = output.text();
        return result;
    }

    int setTo(kest_sint32 clients, kest_sint32 appid = 77, kest_sint32 resource = PLFRes_netlink)
    {
        return run([&] { return Movo_NET_SetResourceAllocation(resource, clients, &appid); });
    }

    int add(kest_sint32 clients, kest_sint32 appid = 77, kest_sint32 resource = PLFRes_netlink)
    {
        return run([&] { return Movo_NET_SetClientResourceAllocation(resource, clients, &appid); });
    }

    void expectReport(const std::string& function, const std::string& expression) const
    {
        const std::string head = kReport + std::to_string(getpid()) + " File:movo_net_fg Line:";
        const std::string tail = " Routine:" + function + ", " + expression + " failed \e[0m \n";
        ASSERT_GT(printed.size(), head.size() + tail.size());
        EXPECT_EQ(printed.substr(0, head.size()), head);
        EXPECT_EQ(printed.substr(printed.size() - tail.size()), tail);
        const auto line = printed.substr(head.size(), printed.size() - head.size() - tail.size());
        EXPECT_EQ(line.find_first_not_of("0123456789"), std::string::npos) << line;
        EXPECT_NE(backtrace, "");
    }

    void expectSilence() const
    {
        EXPECT_EQ(printed, "");
        EXPECT_EQ(backtrace, "");
    }

    std::string printed;
    std::string backtrace;
};

TEST_F(Resource, StoresTheCountAndTheOneClient)
{
    EXPECT_EQ(setTo(1, 42), 0);
    EXPECT_EQ(m_nbrclients, 1);
    EXPECT_EQ(m_appid[0], 42);
    EXPECT_EQ(setTo(0, 43), 0);
    EXPECT_EQ(m_nbrclients, 0);
    EXPECT_EQ(m_appid[0], 42);
    EXPECT_EQ(setTo(-3, 44), 0);
    EXPECT_EQ(m_nbrclients, -3);
    EXPECT_EQ(m_appid[0], 42);
    expectSilence();
}

TEST_F(Resource, IsTheNetlinkOneOnly)
{
    for (const kest_sint32 other : {0, 1, 65535, 65537, -65536}) {
        EXPECT_EQ(setTo(1, 42, other), 1);
        expectReport("Movo_NET_SetResourceAllocation", "resid == PLFRes_netlink");
        EXPECT_EQ(add(1, 42, other), 1);
        expectReport("Movo_NET_SetClientResourceAllocation", "resid == PLFRes_netlink");
    }
    EXPECT_EQ(m_nbrclients, 0);
    EXPECT_EQ(PLFRes_netlink, 65536);
}

TEST_F(Resource, TakesOneClientAtTheMost)
{
    for (const kest_sint32 clients : {2, 3, INT_MAX}) {
        EXPECT_EQ(setTo(clients), 1);
        expectReport("Movo_NET_SetResourceAllocation", "nbrclients <= ((1))");
    }
    EXPECT_EQ(m_nbrclients, 0);
}

TEST_F(Resource, OfAnotherKindIsRefusedBeforeItsClientsAreCounted)
{
    EXPECT_EQ(setTo(9, 42, 1), 1);
    expectReport("Movo_NET_SetResourceAllocation", "resid == PLFRes_netlink");
    EXPECT_EQ(add(9, 42, 1), 1);
    expectReport("Movo_NET_SetClientResourceAllocation", "resid == PLFRes_netlink");
}

TEST_F(Resource, AddsClientsUpToOne)
{
    EXPECT_EQ(add(1, 42), 0);
    EXPECT_EQ(m_nbrclients, 1);
    EXPECT_EQ(m_appid[0], 42);
    EXPECT_EQ(add(0, 43), 0);
    EXPECT_EQ(m_appid[0], 42);
    expectSilence();
    EXPECT_EQ(add(1, 44), 1);
    expectReport("Movo_NET_SetClientResourceAllocation", "nbrallocatedclients + nbrclients <= ((1))");
    EXPECT_EQ(m_nbrclients, 1);
    EXPECT_EQ(m_appid[0], 42);
    EXPECT_EQ(add(-1, 45), 0);
    EXPECT_EQ(m_nbrclients, 0);
    EXPECT_EQ(m_appid[0], 42);
}

TEST_F(Resource, WritesNoClientInFrontOfItsPlace)
{
    EXPECT_EQ(setTo(-3), 0);
    EXPECT_EQ(add(2, 42), 0);
    EXPECT_EQ(m_nbrclients, -1);
    EXPECT_EQ(m_appid[0], 0);
    EXPECT_EQ(add(2, 42), 0);
    EXPECT_EQ(m_nbrclients, 1);
    EXPECT_EQ(m_appid[0], 0);
}

TEST_F(Resource, CountsWithoutOverflow)
{
    EXPECT_EQ(setTo(1), 0);
    EXPECT_EQ(add(INT_MAX), 1);
    expectReport("Movo_NET_SetClientResourceAllocation", "nbrallocatedclients + nbrclients <= ((1))");
    EXPECT_EQ(setTo(INT_MIN), 0);
    EXPECT_EQ(add(INT_MIN), 0);
    EXPECT_EQ(m_nbrclients, INT_MIN);
    EXPECT_EQ(add(INT_MAX), 0);
    EXPECT_EQ(m_nbrclients, -1);
    EXPECT_EQ(m_appid[0], 77);
}

TEST_F(Resource, NeedsNoClient)
{
    EXPECT_EQ(run([] { return Movo_NET_SetResourceAllocation(PLFRes_netlink, 1, nullptr); }), 0);
    EXPECT_EQ(m_nbrclients, 1);
    EXPECT_EQ(setTo(0), 0);
    EXPECT_EQ(run([] { return Movo_NET_SetClientResourceAllocation(PLFRes_netlink, 1, nullptr); }), 0);
    EXPECT_EQ(m_nbrclients, 1);
    EXPECT_EQ(m_appid[0], 0);
}

// --- The small calls beside it ---

TEST(Limits, AreTenInterfacesAndFiftyNetworks)
{
    int value = 0;
    EXPECT_EQ(Movo_NET_GetMaxNumOfIfacesSupported(0, &value), 0);
    EXPECT_EQ(value, 10);
    EXPECT_EQ(Movo_NET_GetMaxNumOfWifiEssSupported(0, &value), 0);
    EXPECT_EQ(value, 50);
}

TEST(Limits, RefuseAnOutputThatIsNull)
{
    EXPECT_EQ(Movo_NET_GetMaxNumOfIfacesSupported(0, nullptr), 5);
    EXPECT_EQ(Movo_NET_GetMaxNumOfWifiEssSupported(0, nullptr), 5);
}

TEST(VirginMode, KeepsBeingTrueAndResettingNothing)
{
    EXPECT_EQ(Movo_NET_IsNetworkModeVirgin(0), 1);
    EXPECT_EQ(Movo_NET_SetNetworkToModeVirgin(0), 0);
    EXPECT_EQ(Movo_NET_IsNetworkModeVirgin(7), 1);
}

TEST(VirginMode, SavesTheSettingsAndKeepsSucceedingWhenItCannot)
{
    sim::Set set;
    (void)ip::listed(ip::record("eth0", _MOVO_NET_IPMODE_STATIC_), 0);
    EXPECT_EQ(Movo_NET_SetNetworkToModeVirgin(0), 0);
    EXPECT_EQ(set.read("/data/tv/save/netconfig").size(), 264U + 4U);

    set.fail({.call = sim::Call::Open, .on = "/data/tv/save/netconfig", .error = EROFS});
    EXPECT_EQ(Movo_NET_SetNetworkToModeVirgin(0), 0);
    EXPECT_EQ(set.read("/data/tv/save/netconfig").size(), 264U + 4U);
}
} // namespace
