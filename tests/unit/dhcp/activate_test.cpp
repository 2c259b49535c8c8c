#include "bench.h"

#include "movo_net_fg/fg.h"

#include <linux/sockios.h>

using namespace dhcp;

namespace {
int s_canActive;
int s_asked;

int canActive(MovoNetIface_t* /*pIface*/)
{
    ++s_asked;
    return s_canActive;
}

struct Activation {
    const char* name;
    int canActive;
    kest_bool isActived;
    kest_uint8 linkType;
    RETURN_TYPE result;
    bool broughtUp;
};

void PrintTo(const Activation& row, std::ostream* out)
{
    *out << row.name;
}

class Activate : public testing::TestWithParam<Activation> {};

TEST_P(Activate, BringsUpWhatMayBe)
{
    const Activation& row = GetParam();
    Bench bench;
    bench.iface.funcs.CanActive = canActive;
    s_canActive = row.canActive;
    bench.iface.isActived = row.isActived;
    g_NetworkLinkType = row.linkType;
    EXPECT_EQ(int_Movo_Net_Active(&bench.iface, 1), row.result);
    EXPECT_EQ(s_asked, 1);
    EXPECT_EQ(static_cast<bool>(bench.set.ran("netcfg eth0 up")), row.broughtUp);
    EXPECT_EQ(bench.iface.isActived, row.isActived != 0 || row.broughtUp ? 1 : 0);
    EXPECT_EQ(said(bench.set).front(), "INFO int_Movo_Net_Active: int_Movo_Net_Active(1), if=eth0\n");
}

INSTANTIATE_TEST_SUITE_P(Rows, Activate,
                         testing::Values(Activation{"NoLink", 0, 0, 0, 1, false},
                                         Activation{"NoLinkThoughActive", 0, 1, 0, 1, false},
                                         Activation{"Link", 1, 0, 0, 0, true},
                                         Activation{"KeepsLinkThatCannotBeToldAsYes", -1, 0, 0, 0, true},
                                         Activation{"AnyOtherAnswerIsYes", 2, 0, 0, 0, true},
                                         Activation{"AlreadyActive", 1, 1, 0, 0, false},
                                         Activation{"KeptDownByTheLinkType", 1, 0, 1, 0, false},
                                         Activation{"NotKeptDownByAnotherLinkType", 1, 0, 2, 0, true},
                                         Activation{"NotKeptDownByTheLargestLinkType", 1, 0, 255, 0, true},
                                         Activation{"NoLinkWithTheLinkType", 0, 0, 1, 1, false}),
                         [](const auto& test) { return test.param.name; });

TEST(Deactivate, TakesAnActiveInterfaceDown)
{
    Bench bench;
    g_NetworkLinkType = 1;
    EXPECT_EQ(int_Movo_Net_Active(&bench.iface, 0), 0);
    EXPECT_EQ(bench.iface.isActived, 0);
    EXPECT_EQ(said(bench.set).front(), "INFO int_Movo_Net_Active: int_Movo_Net_Active(0), if=eth0\n");
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, "movo_net_fg", "ResetGwAndDns", "no connected interface\n");
}

TEST(Deactivate, GivesTheResultOfTakingItDown)
{
    Bench bench;
    bench.set.failLock(movonet::ifaceListLock);
    EXPECT_EQ(int_Movo_Net_Active(&bench.iface, 0), 1);
}

TEST(Deactivate, LeavesAnInactiveInterfaceAlone)
{
    Bench bench;
    bench.iface.isActived = 0;
    bench.iface.ipv4 = 1;
    EXPECT_EQ(int_Movo_Net_Active(&bench.iface, 0), 0);
    EXPECT_EQ(bench.iface.ipv4, 1U);
    EXPECT_EQ(told(bench.set), Lines{"INFO movo_net_fl_common int_Movo_Net_Active: int_Movo_Net_Active(0), if=eth0\n"});
}

/** A back end's end: what it saw, and what it says. */
MovoNetIface_t* s_ended;
kest_bool s_wasActive;

RETURN_TYPE endWith4(MovoNetIface_t* pIface)
{
    s_ended = pIface;
    s_wasActive = pIface->isActived;
    return 4;
}

TEST(DeInit, TakesTheInterfaceDownAndThenEndsItsBackEnd)
{
    Bench bench;
    bench.iface.funcs.DeInit = endWith4;
    bench.set.failLock(movonet::ifaceListLock); // taking it down gives 1
    EXPECT_EQ(int_Movo_Net_DeInit(&bench.iface), 5);
    EXPECT_EQ(s_ended, &bench.iface);
    EXPECT_EQ(s_wasActive, 0);
}

TEST(DeInit, OnlyEndsTheBackEndOfAnInactiveInterface)
{
    Bench bench;
    bench.iface.isActived = 0;
    bench.iface.funcs.DeInit = endWith4;
    EXPECT_EQ(int_Movo_Net_DeInit(&bench.iface), 4);
    EXPECT_EQ(told(bench.set), Lines{});
}

TEST(DeInit, NeedsNoBackEnd)
{
    Bench bench;
    bench.iface.funcs.DeInit = nullptr;
    EXPECT_EQ(int_Movo_Net_DeInit(&bench.iface), 0);
    EXPECT_EQ(bench.iface.isActived, 0);
    EXPECT_EQ(int_Movo_Net_DeInit(&bench.iface), 0);
}

TEST(IfUp, BringsTheInterfaceUpAndStartsTheClient)
{
    Bench bench;
    bench.iface.isActived = 0;
    bench.set.iface("eth0").setUp(false).setMac("52:54:00:ab:cd:ef");
    EXPECT_EQ(ifup(&bench.iface), 0);
    EXPECT_TRUE(bench.set.iface("eth0").up());
    EXPECT_EQ(bench.iface.isActived, 1);
    EXPECT_EQ(bench.iface.macaddr, 0xefcdab005452);
    EXPECT_EQ(ran(bench.set),
              (Lines{"netcfg eth0 up", "ifconfig eth0 0.0.0.0", "chmod 777 /tmp/dhcpnotify.pipe.eth0", kLaunch}));
    const Lines lines = said(bench.set);
    ASSERT_GE(lines.size(), 3U);
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + 3),
              (Lines{"INFO ifup: if=eth0\n",
                     "INFO int_Movo_Net_GetMacAddr: int_Movo_Net_GetMacAddr, eth0: 52:54:00:AB:CD:EF\n",
                     "INFO ConfigIP: if=eth0\n"}));
}

TEST(IfUp, RestartsAClientThatRuns)
{
    Bench bench;
    bench.launch();
    const int first = bench.set.dhcp("eth0").pid();
    EXPECT_EQ(ifup(&bench.iface), 0);
    EXPECT_EQ(sent(bench.set), (std::vector<sim::Signal>{{first, SIGHUP, 0}}));
    EXPECT_EQ(bench.set.dhcp("eth0").launches(), 2);
}

class IfUpRefused : public testing::TestWithParam<int> {};

TEST_P(IfUpRefused, FailsAndChangesNothing)
{
    Bench bench;
    bench.iface.isActived = 0;
    bench.set.onCommand("netcfg eth0 up").fails(GetParam());
    EXPECT_EQ(ifup(&bench.iface), 1);
    EXPECT_EQ(bench.iface.isActived, 0);
    EXPECT_EQ(bench.iface.macaddr, 0);
    EXPECT_EQ(ran(bench.set), Lines{"netcfg eth0 up"});
    EXPECT_EQ(told(bench.set), (Lines{"INFO movo_net_fl_common ifup: if=eth0\n",
                                      "ERROR movo_net_fl_common ifup: ifup, ifup eth0 failed\n"}));
}

INSTANTIATE_TEST_SUITE_P(Statuses, IfUpRefused, testing::Values(256, 127 * 256, 9, -1));

TEST(IfUp, GoesOnWithoutTheMac)
{
    Bench bench;
    bench.set.fail({.call = sim::Call::Ioctl, .on = "eth0", .code = SIOCGIFHWADDR, .error = ENODEV});
    bench.iface.macaddr = 0;
    EXPECT_EQ(ifup(&bench.iface), 0);
    EXPECT_EQ(bench.iface.macaddr, 0);
    EXPECT_TRUE(bench.set.dhcp("eth0").running());
}

TEST(IfUp, KeepsTheMacThatTheRecordHas)
{
    Bench bench;
    bench.iface.macaddr = 0x060504030201;
    EXPECT_EQ(ifup(&bench.iface), 0);
    EXPECT_EQ(bench.iface.macaddr, 0x060504030201);
}

TEST(IfUp, KeepsTheInterfaceActiveWhenTheClientCannotBeStarted)
{
    Bench bench;
    bench.iface.isActived = 0;
    bench.set.fail({.call = sim::Call::Mkfifo, .error = EROFS});
    EXPECT_EQ(ifup(&bench.iface), 1);
    EXPECT_EQ(bench.iface.isActived, 1);
}

TEST(IfconfigUp, RunsTheCommand)
{
    sim::Set set;
    EXPECT_EQ(ifconfig_up("eth0"), 0);
    EXPECT_EQ(ran(set), Lines{"netcfg eth0 up"});
    EXPECT_EQ(told(set), Lines{"INFO movo_net_fl_common ifconfig_up: ifconfig up interface, ifname=eth0\n"});
}

TEST(IfconfigUp, RefusesNoName)
{
    sim::Set set;
    EXPECT_EQ(ifconfig_up(nullptr), 5);
    EXPECT_EQ(ifconfig_up(""), 5);
    EXPECT_EQ(ran(set), Lines{});
    EXPECT_EQ(told(set), Lines{});
}

TEST(IfconfigUp, FailsWithTheCommand)
{
    sim::Set set;
    EXPECT_EQ(ifconfig_up("eth9"), 1);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, "movo_net_fl_common", "ifconfig_up", "ifconfig_up, ifconfig eth9 up failed\n");
}

TEST(IfconfigUp, CutsACommandOfMoreThan128Characters)
{
    sim::Set set;
    EXPECT_EQ(ifconfig_up(std::string(200, 'x').c_str()), 1);
    EXPECT_EQ(ran(set), Lines{"netcfg " + std::string(121, 'x')});
}
} // namespace
