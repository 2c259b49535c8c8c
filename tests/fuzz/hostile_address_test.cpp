#include "hostile.h"
#include "movo_net_fl_common/route.h"
#include "movo_net_fl_ether/ether.h"
#include "movo_net_internal.h"
#include "sim/sim.h"
#include "support/text.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>

using fuzz::Hostile;

// Files and commands that hold anything at all.

namespace {
constexpr int kAddressRounds = 120;
constexpr const char* kResolver = "/etc/resolv.conf";
constexpr const char* kInfo = "/etc/dhcpc/dhcpcd-eth0.info";

MovoNetIface_t eth0()
{
    MovoNetIface_t iface{};
    movonet::copyText(iface.name, "eth0");
    iface.dhcpcfd = movonet::kNoFd;
    return iface;
}

/** The first two servers, as long as no word is longer than is read in one piece. */
std::vector<std::uint32_t> serversIn(const std::string& contents)
{
    std::istringstream in(contents);
    std::vector<std::uint32_t> servers;
    for (std::string key, value; servers.size() < 2 && in >> key;) {
        value.clear();
        in >> value;
        std::uint32_t server = 0;
        if (key == "nameserver" && movonet::parseDottedQuad(value.c_str(), server)) {
            servers.push_back(server);
        }
    }
    return servers;
}

std::vector<std::uint32_t> serversRead()
{
    unsigned int dns[] = {7, 7};
    const int result = GetDNS(&dns[0], &dns[1]);
    EXPECT_EQ(result, dns[0] == 7 ? 1 : 0);
    std::vector<std::uint32_t> servers;
    std::ranges::copy_if(dns, std::back_inserter(servers), [](unsigned int server) { return server != 7; });
    return servers;
}

TEST(HostileResolver, OfRandomBytesNamesNobody)
{
    sim::Set set;
    Hostile hostile(1);
    for (int round = 0; round < kAddressRounds; ++round) {
        set.write(kResolver, hostile.bytes(hostile.upTo(2000)));
        EXPECT_TRUE(serversRead().empty());
    }
}

TEST(HostileResolver, OfAnyWordsNamesTheFirstTwoPairs)
{
    sim::Set set;
    Hostile hostile(2);
    const std::vector<std::string> words = {"nameserver ", "nameserver\t", "8.8.8.8\n", "8.8.4.4 ",
                                            "fe80::1 ",    "search ",      "lan ",      "8.8\r\n",
                                            "# ",          "\n",           " ",         "8"};
    std::size_t found = 0;
    for (int round = 0; round < kAddressRounds; ++round) {
        const std::string contents = hostile.words(words, 18); // too few for a word that is read in pieces
        set.write(kResolver, contents);
        const auto servers = serversRead();
        EXPECT_EQ(servers, serversIn(contents)) << contents;
        found += servers.size();
    }
    EXPECT_GT(found, 0U);
}

void expectResolverLines(const std::string& written)
{
    static const std::regex whole("(nameserver [0-9]+(\\.[0-9]+){3}\n)+search [^\n]*\n");
    EXPECT_TRUE(std::regex_match(written, whole)) << written;
}

TEST(HostileLease, WritesAResolverOfWholeLinesOrNone)
{
    sim::Set set;
    Hostile hostile(3);
    const std::vector<std::string> words = {
        "DNS=",   "DOMAIN='", "8.8.8.8", ",", "'", "\n",       "\n",
        "DOMAIN", "DNS",      "lan",     "=", " ", "GATEWAY=", std::string(100, 'x')};
    MovoNetIface_t iface = eth0();
    int written = 0;
    for (int round = 0; round < kAddressRounds; ++round) {
        set.write(kInfo,
                  hostile.upTo(1) == 0 ? hostile.words(words, 60) : hostile.spoiled("DOMAIN='lan'\nDNS=8.8.8.8\n"));
        set.write(kResolver, "");
        const bool done = SetDNSDhcp(&iface) == 0;
        written += done ? 1 : 0;
        const std::string resolver = set.read(kResolver);
        if (done && resolver.find('\0') == std::string::npos) {
            expectResolverLines(resolver);
        } else {
            EXPECT_EQ(resolver, "");
        }
    }
    EXPECT_GT(written, 0);
    EXPECT_LT(written, kAddressRounds);
}

TEST(HostileLease, OfRandomBytesIsReadWithinItsBounds)
{
    sim::Set set;
    Hostile hostile(4);
    MovoNetIface_t iface = eth0();
    for (int round = 0; round < kAddressRounds; ++round) {
        const std::string bytes = hostile.bytes(hostile.upTo(1000));
        set.write(kInfo, (round % 2 == 0 ? "DNS=" : "GATEWAY=") + bytes);
        set.write(kResolver, "");
        EXPECT_EQ(SetDNSDhcp(&iface), 1) << "no dotted quad";
        EXPECT_EQ(set.read(kResolver), "");
        unsigned int gateway = 7;
        EXPECT_EQ(GetDefaultGatewayDHCP(&gateway, "eth0"), 1);
        EXPECT_EQ(gateway, 0U);
    }
}

TEST(HostileBoard, ProgramsAWholeAddressOrNone)
{
    sim::Set set;
    Hostile hostile(5);
    const std::vector<std::string> words = {
        "mac", "mac=", "00", "1", "aB", ":", ":", ":", "\n", " ", "-", "\r", std::string(50, 'f')};
    const std::regex command("netcfg eth0 down; netcfg eth0 hwprefix ([0-9A-F]{2}:){5}[0-9A-F]{2}");
    std::size_t programmed = 0;
    for (int round = 0; round < kAddressRounds; ++round) {
        set.boardPrints(hostile.upTo(1) == 0 ? "mac=" + hostile.words(words, 30)
                                             : hostile.spoiled("mac=00:11:22:33:44:55\n"));
        set.forget();
        MovoNetIface_t iface = eth0();
        const sim::CapturedOutput output;
        EXPECT_EQ(int_Movo_Net_InitEther(&iface), 0);
        const auto commands = set.commands();
        ASSERT_LE(commands.size(), 2U);
        if (commands.size() == 2) {
            ++programmed;
            EXPECT_TRUE(std::regex_match(commands[1].text, command)) << commands[1].text;
        }
    }
    EXPECT_GT(programmed, 0U);
    EXPECT_LT(programmed, static_cast<std::size_t>(kAddressRounds));
}
} // namespace
