#include "tools.h"

#include <climits>

using namespace api;
using sim::Call;

// The interface that is chosen among several, and the priority that decides.

namespace {
struct Candidate {
    const char* name;
    MovoNetIfaceType_e type;
    int actived;
    int priority;
};

struct Choice {
    const char* what;
    std::vector<Candidate> list;
    int chosen;
};

void PrintTo(const Choice& choice, std::ostream* out)
{
    *out << choice.what;
}

constexpr auto kLo = _MOVO_NET_IFACE_LO_;
constexpr auto kEther = _MOVO_NET_IFACE_ETHER_;
constexpr auto kWifi = _MOVO_NET_IFACE_WIFI_;

const std::vector<Choice> kChoices{
    {"NoInterface", {}, -1},
    {"NoneIsUp", {{"lo", kLo, 0, 0}, {"eth0", kEther, 0, 9}}, -1},
    {"LoopbackDoesNotCount", {{"lo", kLo, 1, 9}}, -1},
    {"TheOnlyOne", {{"lo", kLo, 1, 9}, {"eth0", kEther, 1, 0}}, 1},
    {"TheHighestAtTheEnd", {{"eth0", kEther, 1, 1}, {"eth1", kEther, 1, 2}, {"wlan0", kWifi, 1, 3}}, 2},
    {"TheHighestInTheMiddle", {{"eth0", kEther, 1, 1}, {"wlan0", kWifi, 1, 3}, {"eth1", kEther, 1, 2}}, 1},
    {"TheEarliestOfEquals", {{"lo", kLo, 0, 0}, {"wlan0", kWifi, 1, 2}, {"eth0", kEther, 1, 2}}, 1},
    {"AHigherOneThatIsDownDoesNotCount", {{"eth0", kEther, 1, 1}, {"eth1", kEther, 0, 2}}, 0},
    {"NegativeOnesToo", {{"eth0", kEther, 1, INT_MIN}, {"eth1", kEther, 1, -1}}, 1},
    {"TheLowestOfAllWhenAlone", {{"eth0", kEther, 1, INT_MIN}}, 0},
};

class ActivedIface : public testing::TestWithParam<Choice> {
protected:
    ActivedIface()
    {
        for (const Candidate& candidate : GetParam().list) {
            MovoNetIface_t& iface = layer.add(candidate.name, candidate.type);
            iface.isActived = candidate.actived != 0;
            iface.priority = candidate.priority;
        }
    }

    Layer layer;
};

TEST_P(ActivedIface, HasThisPosition)
{
    int position = 99;
    EXPECT_EQ(Movo_NET_GetActivedIface(0, &position), 0);
    EXPECT_EQ(position, GetParam().chosen);
    EXPECT_EQ(said(layer.set), Lines{});
}

TEST_P(ActivedIface, HasThisTypeAndNeedsNoLock)
{
    layer.set.fail({.call = Call::MutexLock,
                    .object = &movonet::ifaceListLock,
                    .size = sizeof(movonet::ifaceListLock),
                    .mayMiss = true});
    auto type = static_cast<MovoNetIfaceType_e>(99);
    if (GetParam().chosen < 0) {
        EXPECT_EQ(Movo_NET_GetActivedIfaceType(0, &type), 1);
        EXPECT_EQ(type, 99);
        EXPECT_EQ(said(layer.set), Lines{"ERROR Movo_NET_GetActivedIfaceType: no actived iface found\n"});
        return;
    }
    EXPECT_EQ(Movo_NET_GetActivedIfaceType(0, &type), 0);
    EXPECT_EQ(type, GetParam().list[static_cast<std::size_t>(GetParam().chosen)].type);
    EXPECT_EQ(said(layer.set), Lines{});
}

INSTANTIATE_TEST_SUITE_P(Choices, ActivedIface, testing::ValuesIn(kChoices),
                         [](const auto& row) { return row.param.what; });

/** A television whose two wired interfaces both have a lease. */
class TwoCables : public testing::Test {
protected:
    TwoCables()
    {
        set.addIface("eth1");
        set.cable("eth0").plug();
        set.cable("eth1").plug();
        EXPECT_EQ(set.start(), 0);
        set.dhcp("eth0").leases();
        set.dhcp("eth1").leases({.address = "10.1.0.15", .gateway = "10.1.0.2", .dns = "10.1.0.3"});
        set.forget();
    }

    sim::Set set;
};

TEST_F(TwoCables, SetIfacePriorityMovesRouteAndResolver)
{
    ASSERT_EQ(set.defaultRoutes(), Lines{"10.0.2.2 dev eth0"}) << "both have 2, the earlier one wins";
    EXPECT_EQ(Movo_NET_SetIfacePriority(0, "eth1", 3), 0);
    EXPECT_EQ(said(set, "Movo_NET_SetIfacePriority"), Lines{"INFO set eth1 priority to 3\n"});
    EXPECT_EQ(set.defaultRoutes(), Lines{"10.1.0.2 dev eth1"});
    EXPECT_EQ(set.read("/etc/resolv.conf"), "nameserver 10.1.0.3\nsearch lan\n");
    EXPECT_EQ(Movo_NET_SetIfacePriority(0, "eth1", -3), 0);
    EXPECT_EQ(set.defaultRoutes(), Lines{"10.0.2.2 dev eth0"});
    EXPECT_CALLBACKS(set, {});
}

TEST_F(TwoCables, SetIfacePrioritySavesFirst)
{
    set.fail({.call = Call::System, .on = "route add default"});
    EXPECT_EQ(Movo_NET_SetIfacePriority(0, "eth1", 0x01020304), 1) << "the result of the re-selection";
    EXPECT_EQ(set.read(kConfiguration).substr(4 + 264 * 2 + 24, 4), "\x04\x03\x02\x01");
    int priority = 0;
    EXPECT_EQ(Movo_NET_GetIfacePriority(0, "eth1", &priority), 0);
    EXPECT_EQ(priority, 0x01020304);
}

TEST_F(TwoCables, SetIfacePriorityDoesNotMindThatNothingCouldBeSaved)
{
    set.fail({.call = Call::Open, .on = kConfiguration, .error = EROFS});
    EXPECT_EQ(Movo_NET_SetIfacePriority(0, "eth1", 3), 0);
    EXPECT_EQ(set.defaultRoutes(), Lines{"10.1.0.2 dev eth1"});
}

TEST_F(TwoCables, ANewLeaseTakesThePriorityAway)
{
    EXPECT_EQ(Movo_NET_SetIfacePriority(0, "eth1", 7), 0);
    set.dhcp("eth1").leases({.address = "10.1.0.16", .gateway = "10.1.0.2", .dns = "10.1.0.3"});
    int priority = 0;
    EXPECT_EQ(Movo_NET_GetIfacePriority(0, "eth1", &priority), 0);
    EXPECT_EQ(priority, 2);
}

TEST(SetIfacePriority, WithoutAConnectionIsStored)
{
    Layer layer;
    const MovoNetIface_t& eth0 = layer.add("eth0");
    for (const int priority : {INT_MIN, -1, 0, 1, INT_MAX}) {
        EXPECT_EQ(Movo_NET_SetIfacePriority(0, "eth0", priority), 0);
        EXPECT_EQ(eth0.priority, priority);
    }
    EXPECT_LOGGED(layer.set, KEST_LEVEL_INFO, "movo_net_fg", "ResetGwAndDns", "no connected interface\n");
}

TEST(SetIfacePriority, IsNotRestored)
{
    Television television;
    EXPECT_EQ(Movo_NET_SetIfacePriority(0, "eth0", 9), 0);
    EXPECT_EQ(LoadNetConfig(), 0);
    EXPECT_EQ(television.eth0().priority, 0);
    EXPECT_EQ(television.eth0().isEnabled, 0);
}
} // namespace
