#include "movo_net_fl_common/route.h"
#include "tools.h"

#include <linux/rtnetlink.h>
#include <memory>
#include <sys/socket.h>

using ip::address;
using sim::netlinkMessage;
using sim::routeAttribute;
using sim::routeMessage;

// One route message at a time, in memory of exactly its size: reading one byte too many is seen by the sanitizer.

namespace {
const std::string kMainTable("\2\0\0\0\376\0\0\0\0\0\0\0", 12);
const std::string kGateway("\12\0\2\2", 4);
const std::string kDestination("\12\11\0\0", 4);

class RouteMessage : public testing::Test {
protected:
    int parse(const std::string& message, const char* ifname = nullptr)
    {
        const std::unique_ptr<char[]> exact(new char[message.size()]);
        message.copy(exact.get(), message.size());
        route = {};
        gateway = 7;
        return parseRoutesGetDefGw(reinterpret_cast<nlmsghdr*>(exact.get()), &route, &gateway, ifname);
    }

    /** A message of the main table with these attributes, without padding at its end. */
    int parseAttributes(const std::string& attributes)
    {
        const std::string body = kMainTable + attributes;
        return parse(netlinkMessage({}, body).substr(0, sizeof(nlmsghdr) + body.size()));
    }

    sim::Set set;
    route_info route{};
    unsigned int gateway = 0;
};

TEST_F(RouteMessage, FillsTheRouteFromItsFourAttributes)
{
    const auto message = routeMessage(
        {.ifname = "eth0", .gateway = "10.0.2.2", .destination = "10.9.0.0", .prefix = 16, .source = "10.0.2.15"});
    EXPECT_EQ(parse(message), 0);
    EXPECT_EQ(route.dstAddr, address("10.9.0.0"));
    EXPECT_EQ(route.srcAddr, address("10.0.2.15"));
    EXPECT_EQ(route.gateWay, address("10.0.2.2"));
    EXPECT_STREQ(route.ifName, "eth0");
    EXPECT_EQ(gateway, 7U);
}

TEST_F(RouteMessage, GivesTheGatewayOfADefaultRoute)
{
    EXPECT_EQ(parse(routeMessage({.ifname = "eth0", .gateway = "10.0.2.2"})), 1);
    EXPECT_EQ(gateway, address("10.0.2.2"));
    EXPECT_EQ(parse(routeMessage({.ifname = "eth0", .gateway = "10.0.2.2"}), "eth0"), 1);
    EXPECT_EQ(gateway, address("10.0.2.2"));
    EXPECT_EQ(parse(routeMessage({.ifname = "eth0", .gateway = "10.0.2.2"}), "lo"), 0);
    EXPECT_EQ(gateway, 7U);
}

TEST_F(RouteMessage, OfAnotherTableOrFamilyIsNotLookedAt)
{
    EXPECT_EQ(parse(routeMessage({.ifname = "eth0", .gateway = "10.0.2.2", .table = 253})), 0);
    EXPECT_EQ(route.gateWay, 0U);
    EXPECT_EQ(parse(routeMessage({.ifname = "eth0", .gateway = "fe80::1", .family = AF_INET6})), 0);
    EXPECT_EQ(route.gateWay, 0U);
    EXPECT_EQ(gateway, 7U);
}

TEST_F(RouteMessage, ShorterThanARouteIsNone)
{
    for (std::size_t size = 0; size < kMainTable.size(); ++size) {
        const auto message = netlinkMessage({}, kMainTable.substr(0, size)).substr(0, sizeof(nlmsghdr) + size);
        EXPECT_EQ(parse(message), 0) << size;
    }
    EXPECT_EQ(parse(netlinkMessage({}, kMainTable)), 1);
}

TEST_F(RouteMessage, SkipsAttributesThatNobodyWants)
{
    std::string attributes;
    for (const int type : {0, 2, 3, 6, 8, 9, 15, 99, 0xffff}) {
        attributes += routeAttribute(static_cast<std::uint16_t>(type), "abcdefghijkl");
    }
    EXPECT_EQ(parseAttributes(attributes + routeAttribute(RTA_GATEWAY, kGateway)), 1);
    EXPECT_EQ(gateway, address("10.0.2.2"));
}

TEST_F(RouteMessage, TakesTheLastOfTwoGateways)
{
    EXPECT_EQ(parseAttributes(routeAttribute(RTA_GATEWAY, kGateway) + routeAttribute(RTA_GATEWAY, kDestination)), 1);
    EXPECT_EQ(gateway, address("10.9.0.0"));
}

TEST_F(RouteMessage, TakesFourBytesOfALongerPayload)
{
    EXPECT_EQ(parseAttributes(routeAttribute(RTA_GATEWAY, kGateway + "more")), 1);
    EXPECT_EQ(gateway, address("10.0.2.2"));
}

TEST_F(RouteMessage, TakesNothingFromAShorterPayload)
{
    for (std::size_t size = 0; size < 4; ++size) {
        EXPECT_EQ(parseAttributes(routeAttribute(RTA_DST, kDestination.substr(0, size)) +
                                  routeAttribute(RTA_GATEWAY, kGateway)),
                  1)
            << size;
        EXPECT_EQ(route.dstAddr, 0U);
        EXPECT_EQ(gateway, address("10.0.2.2"));
    }
}

TEST_F(RouteMessage, EndsBeforeAnAttributeWhoseLengthLies)
{
    const std::string gatewayFirst = routeAttribute(RTA_GATEWAY, kGateway);
    for (const int length : {0, 1, 2, 3, 9, 100, 0x7fff, 0xffff}) {
        const auto liar = routeAttribute(RTA_DST, kDestination, length - 8);
        EXPECT_EQ(parseAttributes(gatewayFirst + liar), 1) << length;
        EXPECT_EQ(route.dstAddr, 0U) << length;
        EXPECT_EQ(gateway, address("10.0.2.2")) << length;
    }
}

TEST_F(RouteMessage, EndsBeforeAnAttributeThatIsNotAllThere)
{
    const std::string gatewayFirst = routeAttribute(RTA_GATEWAY, kGateway);
    const std::string destination = routeAttribute(RTA_DST, kDestination);
    for (std::size_t size = 0; size < destination.size(); ++size) {
        EXPECT_EQ(parseAttributes(gatewayFirst + destination.substr(0, size)), 1) << size;
        EXPECT_EQ(route.dstAddr, 0U) << size;
    }
    EXPECT_EQ(parseAttributes(gatewayFirst + destination), 0);
}

TEST_F(RouteMessage, FindsWhatFollowsAnUnalignedAttribute)
{
    for (const char* payload : {"abcde", "abcdef", "abcdefg"}) {
        EXPECT_EQ(parseAttributes(routeAttribute(RTA_METRICS, payload) + routeAttribute(RTA_GATEWAY, kGateway)), 1);
        EXPECT_EQ(gateway, address("10.0.2.2")) << payload;
    }
}

TEST_F(RouteMessage, MayEndInAnUnalignedAttribute)
{
    const std::string odd = routeAttribute(RTA_METRICS, "abcde").substr(0, 9);
    EXPECT_EQ(parseAttributes(routeAttribute(RTA_GATEWAY, kGateway) + odd), 1);
    EXPECT_EQ(gateway, address("10.0.2.2"));
}

TEST_F(RouteMessage, HasNoNameForAnUnknownInterface)
{
    EXPECT_EQ(parseAttributes(routeAttribute(RTA_OIF, std::string("\377\377\377\377", 4))), 1);
    EXPECT_STREQ(route.ifName, "");
    EXPECT_EQ(parseAttributes(routeAttribute(RTA_OIF, std::string(4, '\0'))), 1);
    EXPECT_STREQ(route.ifName, "");
}
} // namespace
