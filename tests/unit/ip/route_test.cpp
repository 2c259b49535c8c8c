#include "movo_net_fl_common/route.h"
#include "tools.h"

#include <linux/rtnetlink.h>
#include <sys/socket.h>

using ip::address;
using ip::Lines;
using ip::told;
using sim::Route;

namespace {
constexpr std::uint32_t kBefore = 0x01010101;

struct Found {
    int result;
    std::uint32_t gateway;

    bool operator==(const Found&) const = default;
};

void PrintTo(const Found& found, std::ostream* out)
{
    *out << "result " << found.result << ", gateway " << std::hex << found.gateway;
}

/** What the product finds out, over a value that was there before. */
Found look(const char* ifname)
{
    unsigned int gateway = kBefore;
    const int result = GetDefaultGateway(&gateway, ifname);
    return {result, gateway};
}

/** lo, eth0 and wlan0. */
class DefaultRoute : public testing::Test {
protected:
    DefaultRoute() { set.addIface("wlan0"); }
    ~DefaultRoute() override { EXPECT_EQ(set.openDescriptors(), Lines{}); }

    sim::Set set;
};

TEST_F(DefaultRoute, NoneCountsZeroAndClearsTheOutput)
{
    EXPECT_EQ(look(nullptr), (Found{0, 0}));
    EXPECT_EQ(look("eth0"), (Found{0, 0}));
    EXPECT_EQ(told(set), Lines{});
}

TEST_F(DefaultRoute, OneIsFoundWithAndWithoutItsName)
{
    set.addDefaultRoute("eth0", "10.0.2.2");
    EXPECT_EQ(look(nullptr), (Found{1, address("10.0.2.2")}));
    EXPECT_EQ(look("eth0"), (Found{1, address("10.0.2.2")}));
}

TEST_F(DefaultRoute, OfSeveralTheLastOneListedCounts)
{
    set.addDefaultRoute("eth0", "10.0.2.2");
    set.addDefaultRoute("wlan0", "192.168.1.1");
    EXPECT_EQ(look(nullptr), (Found{2, address("192.168.1.1")}));
    set.addDefaultRoute("eth0", "10.0.2.3");
    EXPECT_EQ(look(nullptr), (Found{3, address("10.0.2.3")}));
}

TEST_F(DefaultRoute, OfANameIsTheFirstOneThroughIt)
{
    set.addDefaultRoute("wlan0", "192.168.1.1");
    set.addDefaultRoute("eth0", "10.0.2.2");
    set.addDefaultRoute("eth0", "10.0.2.3");
    EXPECT_EQ(look("eth0"), (Found{1, address("10.0.2.2")}));
}

TEST_F(DefaultRoute, OfAnotherInterfaceIsNotOurs)
{
    set.addDefaultRoute("eth0", "10.0.2.2");
    EXPECT_EQ(look("wlan0"), (Found{0, 0}));
    EXPECT_EQ(look("eth"), (Found{0, 0}));
    EXPECT_EQ(look("eth00"), (Found{0, 0}));
    EXPECT_EQ(look(""), (Found{0, 0}));
}

TEST_F(DefaultRoute, WithoutAGatewayIsOneToo)
{
    set.addRoute({.ifname = "eth0"});
    EXPECT_EQ(look(nullptr), (Found{1, 0}));
    EXPECT_EQ(look("eth0"), (Found{1, 0}));
}

TEST_F(DefaultRoute, WrittenAsDestinationZeroIsOneToo)
{
    set.addRoute({.ifname = "eth0", .gateway = "10.0.2.2", .destination = "0.0.0.0"});
    EXPECT_EQ(look(nullptr), (Found{1, address("10.0.2.2")}));
}

TEST_F(DefaultRoute, IsNotTheWayToANetwork)
{
    set.addRoute({.ifname = "eth0", .gateway = "10.0.2.9", .destination = "10.9.0.0", .prefix = 16});
    set.addRoute({.ifname = "eth0", .destination = "10.0.2.0", .prefix = 24, .source = "10.0.2.15"});
    EXPECT_EQ(look(nullptr), (Found{0, 0}));
    EXPECT_EQ(look("eth0"), (Found{0, 0}));
}

TEST_F(DefaultRoute, IsLookedForInTheMainTableOnly)
{
    for (const int table : {0, 1, 100, 253, 255}) {
        set.addRoute({.ifname = "eth0", .gateway = "10.0.2.9", .table = table});
    }
    EXPECT_EQ(look(nullptr), (Found{0, 0}));
    set.addDefaultRoute("eth0", "10.0.2.2");
    set.addRoute({.ifname = "eth0", .gateway = "10.0.2.9", .table = 252});
    EXPECT_EQ(look(nullptr), (Found{1, address("10.0.2.2")}));
}

TEST_F(DefaultRoute, IsLookedForInTheFirstInternetFamilyOnly)
{
    set.addRoute({.ifname = "eth0", .gateway = "fe80::1", .family = AF_INET6});
    EXPECT_EQ(look(nullptr), (Found{0, 0}));
    EXPECT_EQ(look("eth0"), (Found{0, 0}));
}

TEST_F(DefaultRoute, IsFoundAmongManyDatagrams)
{
    for (int network = 0; network < 100; ++network) {
        const std::string destination = "10." + std::to_string(network) + ".0.0";
        set.addRoute({.ifname = "eth0", .gateway = "10.0.2.9", .destination = destination, .prefix = 16});
    }
    set.addDefaultRoute("wlan0", "192.168.1.1");
    EXPECT_EQ(look(nullptr), (Found{1, address("192.168.1.1")}));
    EXPECT_EQ(look("wlan0"), (Found{1, address("192.168.1.1")}));
}

TEST_F(DefaultRoute, OfAnInterfaceThatIsGoneHasNoName)
{
    set.addDefaultRoute("eth0", "10.0.2.2");
    set.fail({.call = sim::Call::IfIndexToName, .nth = 1, .error = ENXIO});
    EXPECT_EQ(look("eth0"), (Found{0, 0}));
    EXPECT_EQ(look("eth0"), (Found{1, address("10.0.2.2")}));
}

TEST_F(DefaultRoute, IsAskedForWithTheseBytes)
{
    (void)look(nullptr);
    const auto requests = set.netlinkRequests();
    ASSERT_EQ(requests.size(), 1U);
    const std::string& request = requests[0];
    ASSERT_EQ(request.size(), 28U);
    nlmsghdr header;
    request.copy(reinterpret_cast<char*>(&header), sizeof(header));
    EXPECT_EQ(header.nlmsg_len, 28U);
    EXPECT_EQ(header.nlmsg_type, 26);
    EXPECT_EQ(header.nlmsg_flags, 0x0301);
    EXPECT_EQ(header.nlmsg_seq, 0U);
    EXPECT_EQ(header.nlmsg_pid, static_cast<unsigned>(getpid()));
    EXPECT_EQ(request.substr(16), std::string(12, '\0'));
}

TEST_F(DefaultRoute, WithoutASocketIsNone)
{
    set.addDefaultRoute("eth0", "10.0.2.2");
    set.fail({.call = sim::Call::Socket, .on = "netlink", .error = EMFILE});
    EXPECT_EQ(look(nullptr), (Found{0, 0}));
    EXPECT_EQ(told(set), Lines{"ERROR movo_net_fl_common GetDefaultGateway: create socket failed\n"});
}

TEST_F(DefaultRoute, IsNoneWhenItCannotBeAskedFor)
{
    set.addDefaultRoute("eth0", "10.0.2.2");
    set.fail({.call = sim::Call::Send, .on = "netlink", .error = ENOBUFS});
    EXPECT_EQ(look(nullptr), (Found{0, 0}));
    EXPECT_EQ(told(set), Lines{"ERROR movo_net_fl_common GetDefaultGateway: Write To Socket Failed\n"});
}

TEST_F(DefaultRoute, IsNoneWhenTheAnswerCannotBeRead)
{
    set.addDefaultRoute("eth0", "10.0.2.2");
    set.fail({.call = sim::Call::Recv, .on = "netlink", .error = EINTR});
    EXPECT_EQ(look("eth0"), (Found{0, 0}));
    EXPECT_EQ(told(set), (Lines{"ERROR movo_net_fl_common readNlSock: recv failed\n",
                                "ERROR movo_net_fl_common GetDefaultGateway: Read From Socket Failed\n"}));
}

TEST_F(DefaultRoute, OfTheFirstDatagramIsForgottenWhenALaterOneFails)
{
    set.addDefaultRoute("eth0", "10.0.2.2");
    set.fail({.call = sim::Call::Recv, .on = "netlink", .nth = 2, .error = ENOBUFS});
    EXPECT_EQ(look(nullptr), (Found{0, 0}));
}

// --- Changing it ---

class RouteChange : public DefaultRoute {
protected:
    RouteChange()
    {
        for (const char* ifname : {"eth0", "wlan0"}) {
            set.iface(ifname).setUp(true).setAddress("10.0.2.15");
        }
    }
};

TEST_F(RouteChange, DeletesOneAtATimeWhateverItsDevice)
{
    set.addDefaultRoute("eth0", "10.0.2.2");
    set.addDefaultRoute("wlan0", "10.0.2.3");
    EXPECT_EQ(DelDefaultGateway(nullptr), 0);
    EXPECT_EQ(set.defaultRoutes(), Lines{"10.0.2.3 dev wlan0"});
    EXPECT_EQ(DelDefaultGateway(nullptr), 0);
    EXPECT_EQ(set.defaultRoutes(), Lines{});
}

TEST_F(RouteChange, DeletesTheOneThroughAName)
{
    set.addDefaultRoute("eth0", "10.0.2.2");
    set.addDefaultRoute("wlan0", "10.0.2.3");
    std::string name = "wlan0";
    EXPECT_EQ(DelDefaultGateway(name.data()), 0);
    EXPECT_EQ(set.defaultRoutes(), Lines{"10.0.2.2 dev eth0"});
    EXPECT_EQ(DelDefaultGateway(name.data()), 1);
}

TEST_F(RouteChange, IsSilentWhenThereIsNothingToDelete)
{
    EXPECT_EQ(DelDefaultGateway(nullptr), 1);
    EXPECT_EQ(told(set), Lines{});
}

TEST_F(RouteChange, TellsWhenThereIsNoSocketForADeletion)
{
    set.addDefaultRoute("eth0", "10.0.2.2");
    set.fail({.call = sim::Call::Socket, .on = "inet", .error = EMFILE});
    EXPECT_EQ(DelDefaultGateway(nullptr), 1);
    EXPECT_EQ(told(set), Lines{"ERROR movo_net_fl_common DelDefaultGateway: Del default gateway failed!\n"});
}

TEST_F(RouteChange, DeletesAsManyAsItIsToldThenAddsTheNewOne)
{
    for (const char* gateway : {"10.0.2.7", "10.0.2.8", "10.0.2.9"}) {
        set.addDefaultRoute("wlan0", gateway);
    }
    EXPECT_EQ(SetDefaultGateway("eth0", address("10.0.2.2"), 2), 0);
    EXPECT_EQ(set.defaultRoutes(), (Lines{"10.0.2.2 dev eth0", "10.0.2.9 dev wlan0"}));
    EXPECT_EQ(ip::ran(set), Lines{"route add default gw 10.0.2.2 dev eth0"});
    EXPECT_EQ(told(set), Lines{});
}

TEST_F(RouteChange, GoesOnWhenADeletionFails)
{
    EXPECT_EQ(SetDefaultGateway("eth0", address("10.0.2.2"), 3), 0);
    EXPECT_EQ(set.defaultRoutes(), Lines{"10.0.2.2 dev eth0"});
}

TEST_F(RouteChange, DeletesNothingForACountOfZeroOrLess)
{
    set.addDefaultRoute("wlan0", "10.0.2.9");
    EXPECT_EQ(SetDefaultGateway("eth0", address("10.0.2.2"), 0), 0);
    EXPECT_EQ(SetDefaultGateway("eth0", address("10.0.2.4"), -1), 0);
    EXPECT_EQ(set.defaultRoutes().size(), 3U);
}

TEST_F(RouteChange, WritesTheLongestCommandWhole)
{
    set.addIface("longname").setUp(true).setAddress("255.255.255.254");
    EXPECT_EQ(SetDefaultGateway("longname", address("255.255.255.255"), 0), 0);
    EXPECT_EQ(ip::ran(set), Lines{"route add default gw 255.255.255.255 dev longname"});
}

TEST_F(RouteChange, FailsWhenTheCommandDoes)
{
    set.onCommand("route add").fails(7 << 8);
    EXPECT_EQ(SetDefaultGateway("eth0", address("10.0.2.2"), 0), 1);
    EXPECT_EQ(told(set), Lines{"ERROR movo_net_fl_common SetDefaultGateway: set gateway failed\n"});
}

TEST_F(RouteChange, FailsWithoutAShell)
{
    set.fail({.call = sim::Call::System, .on = "route", .error = ENOMEM});
    EXPECT_EQ(SetDefaultGateway("eth0", address("10.0.2.2"), 0), 1);
    EXPECT_EQ(told(set), Lines{"ERROR movo_net_fl_common SetDefaultGateway: set gateway failed\n"});
}
} // namespace
