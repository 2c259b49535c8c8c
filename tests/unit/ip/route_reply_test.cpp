#include "movo_net_fl_common/route.h"
#include "tools.h"

#include <linux/rtnetlink.h>

using ip::address;
using ip::Lines;
using ip::told;
using sim::doneMessage;
using sim::netlinkMessage;
using sim::routeMessage;

// The kernel's answer in every shape, right or wrong. A reading that would wait for more than there is fails the test.

namespace {
using Datagrams = std::vector<std::string>;

constexpr std::uint16_t kSinglePart = 0;
constexpr std::size_t kBuffer = 8192;

const Lines kBroken{"ERROR movo_net_fl_common readNlSock: Error in recieved packet\n",
                    "ERROR movo_net_fl_common GetDefaultGateway: Read From Socket Failed\n"};

class Reply : public testing::Test {
protected:
    Reply() { set.addIface("wlan0"); }
    ~Reply() override { EXPECT_EQ(set.openDescriptors(), Lines{}); }

    int count(const Datagrams& datagrams, const char* ifname = nullptr)
    {
        set.forget();
        set.answerDump(datagrams);
        gateway = 7;
        return GetDefaultGateway(&gateway, ifname);
    }

    void expectBroken(const Datagrams& datagrams)
    {
        EXPECT_EQ(count(datagrams), 0);
        EXPECT_EQ(gateway, 0U);
        EXPECT_EQ(told(set), kBroken);
    }

    std::string route(const std::string& via = "10.0.2.2", const sim::MessageHead& head = {})
    {
        return routeMessage({.ifname = "eth0", .gateway = via}, head);
    }

    /** `count` IPv6 routes of 116 bytes each, as the kernel lists prefixes that a router advertises. */
    static std::string prefixes(std::size_t count)
    {
        const std::string body = std::string("\x0a\x40\0\0\xfe\2\0\1\0\0\0\0", 12) + std::string(88, '\0');
        std::string messages;
        while (count-- > 0) {
            messages += netlinkMessage({}, body);
        }
        return messages;
    }

    /** A message of a type that nobody looks at, which fills `size` bytes. */
    static std::string filler(std::size_t size)
    {
        return netlinkMessage({.type = 16}, std::string(size - sizeof(nlmsghdr), 'x'));
    }

    sim::Set set;
    unsigned int gateway = 0;
};

TEST_F(Reply, EndsWithADoneMessageOfItsOwn)
{
    EXPECT_EQ(count({route(), doneMessage()}), 1);
    EXPECT_EQ(gateway, address("10.0.2.2"));
}

TEST_F(Reply, IsEmptyWhenDoneComesAlone)
{
    EXPECT_EQ(count({doneMessage()}), 0);
    EXPECT_EQ(told(set), Lines{});
}

TEST_F(Reply, EndsWithADoneMessageBehindTheLastRoutes)
{
    EXPECT_EQ(count({route() + route("10.0.2.3") + doneMessage()}), 2);
    EXPECT_EQ(gateway, address("10.0.2.3"));
    EXPECT_EQ(count({route(), route("10.0.2.3") + doneMessage()}), 2);
}

TEST_F(Reply, HoldsNothingBehindTheDoneMessage)
{
    EXPECT_EQ(count({doneMessage() + route()}), 0);
    EXPECT_EQ(count({route() + doneMessage() + route("10.0.2.3")}), 1);
    EXPECT_EQ(gateway, address("10.0.2.2"));
}

TEST_F(Reply, OfOnePartNeedsNoDoneMessage)
{
    EXPECT_EQ(count({route("10.0.2.2", {.flags = kSinglePart})}), 1);
    EXPECT_EQ(gateway, address("10.0.2.2"));
}

TEST_F(Reply, IsOfOnePartWhenTheFirstMessageOfADatagramSaysSo)
{
    EXPECT_EQ(count({route(), route("10.0.2.3", {.flags = kSinglePart}) + route("10.0.2.4")}), 3);
    EXPECT_EQ(gateway, address("10.0.2.4"));
}

// The request carries 0, so the number that is waited for never comes; but it would end the reading.
TEST_F(Reply, KeepsEndingWithASequenceOfOneFromThisProcess)
{
    EXPECT_EQ(count({route("10.0.2.2", {.sequence = 1})}), 1);
    EXPECT_EQ(count({route("10.0.2.2", {.sequence = 1, .port = 1}), doneMessage()}), 1);
    EXPECT_EQ(count({route("10.0.2.2", {.sequence = 2}), route("10.0.2.3"), doneMessage()}), 2);
}

TEST_F(Reply, WithOtherMessagesBetweenCountsTheRoutes)
{
    EXPECT_EQ(count({filler(16) + route() + filler(17) + route("10.0.2.3"), filler(400), doneMessage()}), 2);
    EXPECT_EQ(gateway, address("10.0.2.3"));
}

TEST_F(Reply, ThatIsAnErrorIsRefused)
{
    expectBroken({netlinkMessage({.type = NLMSG_ERROR, .flags = 0}, std::string(20, '\0'))});
    expectBroken({route(), netlinkMessage({.type = NLMSG_ERROR}, std::string(20, '\0'))});
}

TEST_F(Reply, ShorterThanAHeaderIsRefused)
{
    expectBroken({""});
    expectBroken({route().substr(0, 1)});
    expectBroken({route().substr(0, 15)});
    expectBroken({route(), doneMessage().substr(0, 15)});
}

TEST_F(Reply, ThatClaimsLessThanAHeaderIsRefused)
{
    const int size = static_cast<int>(route().size());
    expectBroken({route("10.0.2.2", {.lengthChange = -size})});
    expectBroken({route("10.0.2.2", {.lengthChange = 15 - size})});
    expectBroken({netlinkMessage({.type = NLMSG_DONE, .lengthChange = -5}, std::string(4, '\0'))});
}

TEST_F(Reply, ThatClaimsMoreThanCameIsRefused)
{
    expectBroken({route("10.0.2.2", {.lengthChange = 1})});
    expectBroken({route("10.0.2.2", {.lengthChange = 0x7fff0000})});
    expectBroken({route("10.0.2.2", {.lengthChange = -1000})});
    expectBroken({route().substr(0, 40)});
}

TEST_F(Reply, OfAHeaderAloneHoldsNoRoute)
{
    EXPECT_EQ(count({netlinkMessage({}, ""), doneMessage()}), 0);
    EXPECT_EQ(count({netlinkMessage({}, std::string("\2\0\0\0\376\0\0\0", 8)), doneMessage()}), 0);
    EXPECT_EQ(told(set), Lines{});
}

TEST_F(Reply, OfARouteWithoutAttributesIsADefaultRouteToNowhere)
{
    const std::string bare("\2\0\0\0\376\0\0\0\0\0\0\0", 12);
    EXPECT_EQ(count({netlinkMessage({}, bare), doneMessage()}), 1);
    EXPECT_EQ(gateway, 0U);
    EXPECT_EQ(count({netlinkMessage({}, bare), doneMessage()}, "eth0"), 0);
}

TEST_F(Reply, IsReadUpToAMessageThatLies)
{
    EXPECT_EQ(count({route() + route("10.0.2.3", {.lengthChange = 1}), doneMessage()}), 1);
    EXPECT_EQ(count({route() + route("10.0.2.3", {.lengthChange = -100}) + route("10.0.2.4"), doneMessage()}), 1);
    EXPECT_EQ(count({route() + std::string(15, '\1'), doneMessage()}), 1);
    EXPECT_EQ(told(set), Lines{});
}

TEST_F(Reply, FillsTheBufferToTheLastByte)
{
    const std::string last = route() + doneMessage();
    EXPECT_EQ(count({filler(kBuffer - last.size()), last}), 1);
    EXPECT_EQ(told(set), Lines{});
}

TEST_F(Reply, ThatLeavesNoRoomForItsEndIsRefused)
{
    expectBroken({filler(kBuffer - route().size()) + route(), doneMessage()});
    expectBroken({filler(kBuffer / 2), filler(kBuffer / 2), route(), doneMessage()});
}

TEST_F(Reply, LargerThanTheBufferIsRefused)
{
    expectBroken({filler(kBuffer + 4), doneMessage()});
    expectBroken({filler(kBuffer - 8), route(), doneMessage()});
}

TEST_F(Reply, CutInItsLastDatagramIsRefusedWithoutWaitingForMore)
{
    expectBroken({filler(kBuffer - 60) + route() + doneMessage()});
}

TEST_F(Reply, WithAnyNumberOfIpv6RoutesCountsTheOthers)
{
    EXPECT_EQ(count({route(), prefixes(32), prefixes(38), doneMessage()}), 1);
    EXPECT_EQ(gateway, address("10.0.2.2"));

    Datagrams datagrams{route()};
    for (int sent = 0; sent < 500; sent += 70) {
        datagrams.push_back(prefixes(70)); // as large as the kernel makes a datagram for a buffer of 8192 bytes
    }
    datagrams.push_back(prefixes(2) + route("10.0.2.3") + prefixes(2));
    datagrams.push_back(doneMessage());
    EXPECT_EQ(count(datagrams), 2);
    EXPECT_EQ(gateway, address("10.0.2.3"));
    EXPECT_EQ(count(datagrams, "eth0"), 1);
    EXPECT_EQ(told(set), Lines{});
}

TEST_F(Reply, OfIpv6RoutesAloneIsEmpty)
{
    EXPECT_EQ(count({prefixes(70), prefixes(70), prefixes(3) + doneMessage()}), 0);
    EXPECT_EQ(gateway, 0U);
    EXPECT_EQ(told(set), Lines{});
}

TEST_F(Reply, BehindIpv6RoutesIsJudgedAsWithoutThem)
{
    expectBroken({prefixes(70), netlinkMessage({.type = NLMSG_ERROR, .flags = 0}, std::string(20, '\0'))});
    expectBroken({prefixes(70), route().substr(0, 15)});
    expectBroken({prefixes(70), filler(kBuffer - 8), route(), doneMessage()});
    EXPECT_EQ(count({prefixes(1) + route("10.0.2.2", {.lengthChange = 1}), doneMessage()}), 0);
    EXPECT_EQ(count({prefixes(70), filler(kBuffer - route().size() - 20), route() + doneMessage()}), 1);
}

TEST_F(Reply, OfARouteThatDoesNotFillItsLastWordIsReadAsFarAsItGoes)
{
    const std::string odd = netlinkMessage({}, std::string("\2\0\0\0\376\0\0\0\0\0\0\0\1", 13)).substr(0, 29);
    EXPECT_EQ(count({odd, doneMessage()}), 1);
    EXPECT_EQ(told(set), Lines{});
}
} // namespace
