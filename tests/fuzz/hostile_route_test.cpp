#include "hostile.h"
#include "movo_net_fl_common/route.h"
#include "sim/sim.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <linux/rtnetlink.h>
#include <memory>
#include <sys/socket.h>

using fuzz::Hostile;

namespace {
constexpr int kRouteRounds = 2000;

std::string goodRoute()
{
    return sim::routeMessage({.ifname = "eth0", .gateway = "10.0.2.2", .source = "10.0.2.15"});
}

/** A message of hostile bytes whose head is right, in memory of exactly its size. */
struct Message {
    explicit Message(std::string content) : text(std::move(content)), exact(new char[text.size()])
    {
        const auto length = static_cast<std::uint32_t>(text.size());
        std::memcpy(text.data(), &length, sizeof(length));
        text.copy(exact.get(), text.size());
    }
    nlmsghdr* head() { return reinterpret_cast<nlmsghdr*>(exact.get()); }

    std::string text;
    std::unique_ptr<char[]> exact;
};

/** Nothing but a route of the main table's own family may be taken for one. */
void expectHonest(Message& message)
{
    route_info route{};
    unsigned int gateway = 7;
    const int result = parseRoutesGetDefGw(message.head(), &route, &gateway, nullptr);
    EXPECT_LT(strnlen(route.ifName, sizeof(route.ifName)), sizeof(route.ifName));
    if (result == 0) {
        EXPECT_EQ(gateway, 7U);
        return;
    }
    ASSERT_GE(message.text.size(), 28U);
    EXPECT_EQ(message.text[16], AF_INET);
    EXPECT_EQ(message.text[20], static_cast<char>(RT_TABLE_MAIN));
    EXPECT_EQ(route.dstAddr, 0U);
    EXPECT_EQ(gateway, route.gateWay);
}

TEST(HostileRoute, OfRandomBytesIsReadWithinItsBounds)
{
    sim::Set set;
    Hostile hostile(1);
    for (int round = 0; round < kRouteRounds; ++round) {
        Message message(hostile.bytes(sizeof(nlmsghdr) + hostile.upTo(80)));
        expectHonest(message);
    }
}

TEST(HostileRoute, OfRandomAttributesIsReadWithinItsBounds)
{
    sim::Set set;
    Hostile hostile(2);
    const std::string head = goodRoute().substr(0, 28);
    for (int round = 0; round < kRouteRounds; ++round) {
        Message message(head + hostile.bytes(hostile.upTo(60)));
        expectHonest(message);
    }
}

TEST(HostileRoute, OfSpoiledBytesIsReadWithinItsBounds)
{
    sim::Set set;
    Hostile hostile(3);
    int taken = 0;
    for (int round = 0; round < kRouteRounds; ++round) {
        std::string spoiled = hostile.spoiled(goodRoute());
        spoiled.resize(std::max(spoiled.size(), sizeof(nlmsghdr)));
        Message message(spoiled);
        expectHonest(message);
        route_info route{};
        unsigned int gateway = 0;
        taken += parseRoutesGetDefGw(message.head(), &route, &gateway, nullptr);
    }
    EXPECT_GT(taken, 0);
    EXPECT_LT(taken, kRouteRounds);
}

/** What a dump of these datagrams, spoiled, gives. The end is good, so that the reading need not wait. */
int countIn(sim::Set& set, std::vector<std::string> datagrams)
{
    datagrams.push_back(sim::doneMessage());
    datagrams.push_back(sim::doneMessage());
    set.forget();
    set.answerDump(std::move(datagrams));
    unsigned int gateway = 7;
    const int count = GetDefaultGateway(&gateway, nullptr);
    EXPECT_GE(count, 0);
    EXPECT_TRUE(count > 0 || gateway == 0);
    const auto log = set.log();
    EXPECT_TRUE(log.empty() || (log.size() == 2 && count == 0 && log[0].text == "Error in recieved packet\n" &&
                                log[1].text == "Read From Socket Failed\n"));
    return count;
}

TEST(HostileDump, OfSpoiledDatagramsIsCountedOrRefused)
{
    sim::Set set;
    Hostile hostile(4);
    const std::string datagram = goodRoute() + goodRoute() + goodRoute();
    int refused = 0;
    int counted = 0;
    for (int round = 0; round < kRouteRounds; ++round) {
        const int count = countIn(set, {hostile.spoiled(datagram), hostile.spoiled(datagram)});
        EXPECT_LE(count, 6);
        refused += set.log().empty() ? 0 : 1;
        counted += count > 0 ? 1 : 0;
    }
    EXPECT_GT(refused, 0);
    EXPECT_GT(counted, 0);
    EXPECT_TRUE(set.openDescriptors().empty());
}

TEST(HostileDump, OfRandomDatagramsIsCountedOrRefused)
{
    sim::Set set;
    Hostile hostile(5);
    for (int round = 0; round < kRouteRounds; ++round) {
        (void)countIn(set, {hostile.bytes(hostile.upTo(200)), hostile.bytes(hostile.upTo(200))});
    }
}

TEST(HostileDump, OfAnySizeFitsTheBufferOrIsRefused)
{
    sim::Set set;
    Hostile hostile(6);
    for (int round = 0; round < kRouteRounds / 10; ++round) {
        std::vector<std::string> datagrams;
        for (std::size_t count = hostile.upTo(5); count > 0; --count) {
            std::string datagram;
            for (std::size_t routes = hostile.upTo(80); routes > 0; --routes) {
                datagram += goodRoute();
            }
            datagrams.push_back(datagram + hostile.bytes(hostile.upTo(30)));
        }
        EXPECT_LE(countIn(set, datagrams), 8192 / static_cast<int>(goodRoute().size()));
    }
}
} // namespace
