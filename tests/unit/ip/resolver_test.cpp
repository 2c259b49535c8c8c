#include "movo_net_fl_common/route.h"
#include "tools.h"

#include <cctype>
#include <filesystem>

using ip::address;
using ip::Lines;
using ip::told;

namespace {
constexpr const char* kFile = "/etc/resolv.conf";
constexpr std::uint32_t kBefore = 0x01010101;
const std::string kNotAnAddress = "ERROR movo_net_fl_common GetDNS: error in /etc/resolv.conf\n";

class Resolver : public testing::Test {
protected:
    ~Resolver() override { EXPECT_EQ(set.openDescriptors(), Lines{}); }

    /** Reads a file of these contents. */
    int servers(const std::string& contents)
    {
        set.write(kFile, contents);
        set.forget();
        dns1 = kBefore;
        dns2 = kBefore;
        return GetDNS(&dns1, &dns2);
    }

    void expectTwo(const std::string& contents, const std::string& first, const std::string& second)
    {
        EXPECT_EQ(servers(contents), 0) << contents;
        EXPECT_EQ(dns1, address(first)) << contents;
        EXPECT_EQ(dns2, address(second)) << contents;
    }

    void expectOne(const std::string& contents, const std::string& server)
    {
        EXPECT_EQ(servers(contents), 0) << contents;
        EXPECT_EQ(dns1, address(server)) << contents;
        EXPECT_EQ(dns2, kBefore) << contents;
    }

    void expectNone(const std::string& contents)
    {
        EXPECT_EQ(servers(contents), 1) << contents;
        EXPECT_EQ(dns1, kBefore) << contents;
        EXPECT_EQ(dns2, kBefore) << contents;
    }

    sim::Set set;
    unsigned int dns1 = 0;
    unsigned int dns2 = 0;
};

TEST_F(Resolver, HasItsFirstTwoServers)
{
    expectTwo("nameserver 8.8.8.8\nnameserver 8.8.4.4\n", "8.8.8.8", "8.8.4.4");
    expectTwo("nameserver 8.8.8.8\nnameserver 8.8.4.4\nnameserver 1.1.1.1\n", "8.8.8.8", "8.8.4.4");
    expectTwo("search lan\nnameserver 8.8.8.8\nnameserver 0.0.0.0\n", "8.8.8.8", "0.0.0.0");
    EXPECT_EQ(told(set), Lines{});
}

TEST_F(Resolver, LooksAtNothingBehindTheSecondServer)
{
    expectTwo("nameserver 8.8.8.8\nnameserver 8.8.4.4\nnameserver nonsense\n", "8.8.8.8", "8.8.4.4");
    EXPECT_EQ(told(set), Lines{});
}

TEST_F(Resolver, WithOneServerLeavesTheSecondAsItWas)
{
    expectOne("nameserver 8.8.8.8\n", "8.8.8.8");
    expectOne("nameserver 8.8.8.8\nsearch lan\n", "8.8.8.8");
}

TEST_F(Resolver, WithoutServersLeavesBothAsTheyWere)
{
    expectNone("");
    expectNone("\n\n \t\n");
    expectNone("search lan\n");
    expectNone("search");
    EXPECT_EQ(told(set), Lines{});
}

TEST_F(Resolver, NeedsNoLineEndAtItsEnd)
{
    expectOne("nameserver 8.8.8.8", "8.8.8.8");
    expectTwo("nameserver 8.8.8.8\nnameserver 8.8.4.4", "8.8.8.8", "8.8.4.4");
}

TEST_F(Resolver, IsWordsBetweenAnyBlanks)
{
    expectTwo("\t nameserver\t 8.8.8.8 \r\n\n nameserver\n8.8.4.4\n", "8.8.8.8", "8.8.4.4");
}

TEST_F(Resolver, SkipsAServerThatIsNoDottedQuad)
{
    for (const char* server : {"fe80::1", "8.8", "8.8.8", "8.8.8.8.8", "8.8.8.256", "0x8.8.8.8", "dns.lan", "8.8.8.8,",
                               "8.8.8.", "-1.8.8.8"}) {
        expectOne("nameserver " + std::string(server) + "\nnameserver 8.8.4.4\n", "8.8.4.4");
        EXPECT_EQ(told(set), Lines{kNotAnAddress}) << server;
    }
}

TEST_F(Resolver, TellsOfEachServerThatIsNone)
{
    expectNone("nameserver fe80::1\nnameserver fe80::2\n");
    EXPECT_EQ(told(set), (Lines{kNotAnAddress, kNotAnAddress}));
}

TEST_F(Resolver, ThatEndsAfterTheKeyHasNoServerThere)
{
    expectNone("nameserver");
    EXPECT_EQ(told(set), Lines{kNotAnAddress});
    expectOne("nameserver 8.8.8.8\nnameserver\n", "8.8.8.8");
    EXPECT_EQ(told(set), Lines{kNotAnAddress});
}

TEST_F(Resolver, KeepsReadingPairsWhenALineHasThreeWords)
{
    expectNone("options timeout:1 attempts:1\nnameserver 8.8.8.8\nnameserver 8.8.4.4\n");
    EXPECT_EQ(told(set), Lines{});
    expectNone("# by hand\nnameserver 8.8.8.8\n");
    expectOne("# made by hand\nnameserver 8.8.8.8\n", "8.8.8.8");
    expectOne("options timeout:1 attempts:1\nsearch lan home\nnameserver 8.8.8.8\n", "8.8.8.8");
}

TEST_F(Resolver, TakesTheKeyToTheLetter)
{
    expectNone("Nameserver 8.8.8.8\nnameservers 8.8.8.8\nnameserve 8.8.8.8\nnameserver=8.8.8.8 x\n");
    EXPECT_EQ(told(set), Lines{});
}

// The longest words that are kept whole: 31 characters of the first, 19 of the second.
TEST_F(Resolver, SkipsTheRestOfALongerWord)
{
    const std::string full(31, 'k');
    for (const std::string& line : {full + " " + std::string(19, 'v'), full + "k v", "search " + std::string(20, 'v'),
                                    "search " + std::string(19 + 31, 'v')}) {
        expectOne(line + "\nnameserver 8.8.8.8\n", "8.8.8.8");
    }
    expectNone(full + "k\nnameserver 8.8.8.8\n"); // the second word of the pair is missing
    expectNone("nameserver" + full + " 8.8.8.8\n");
    EXPECT_EQ(told(set), Lines{});
}

TEST_F(Resolver, WithALongIpv6ServerFirstHasTheOneAfterIt)
{
    expectOne("nameserver 2001:db8:85a3:0:0:8a2e:370:7334\nnameserver 8.8.8.8\n", "8.8.8.8");
    EXPECT_EQ(told(set), Lines{kNotAnAddress});
    expectTwo("nameserver fe80::1ff:fe23:4567:890a%eth0\nnameserver 8.8.8.8\nnameserver 2001:db8::1234:5678:9abc\n"
              "nameserver 8.8.4.4\n",
              "8.8.8.8", "8.8.4.4");
    EXPECT_EQ(told(set), (Lines{kNotAnAddress, kNotAnAddress}));
}

TEST_F(Resolver, OfOneEndlessWordHasNoServers)
{
    expectNone(std::string(100000, 'x'));
    expectNone("nameserver " + std::string(100000, '8'));
}

TEST_F(Resolver, OfBinaryBytesHasNoServers)
{
    std::string bytes;
    for (int at = 0; bytes.size() < 5000; ++at) {
        if (const int byte = (at * 37) % 256; std::isspace(byte) == 0) {
            bytes += static_cast<char>(byte);
        }
    }
    expectNone(bytes);
    expectOne(bytes + " " + bytes + "\nnameserver 8.8.8.8\n" + bytes, "8.8.8.8");
}

TEST_F(Resolver, ThatIsMissingIsTold)
{
    set.remove(kFile);
    EXPECT_EQ(GetDNS(&dns1, &dns2), 1);
    EXPECT_EQ(told(set), (Lines{"ERROR movo_net_fl_common GetDNS: cannot open /etc/resolv.conf\n",
                                "ERROR movo_net_fl_common GetDNS: errno=2, No such file or directory\n"}));
}

TEST_F(Resolver, ThatMayNotBeReadIsTold)
{
    set.write(kFile, "nameserver 8.8.8.8\n");
    set.fail({.call = sim::Call::Fopen, .on = kFile, .error = EACCES});
    EXPECT_EQ(GetDNS(&dns1, &dns2), 1);
    EXPECT_EQ(told(set), (Lines{"ERROR movo_net_fl_common GetDNS: cannot open /etc/resolv.conf\n",
                                "ERROR movo_net_fl_common GetDNS: errno=13, Permission denied\n"}));
}

TEST_F(Resolver, ThatIsAFolderHasNoServers)
{
    set.remove(kFile);
    std::filesystem::create_directories(set.real(kFile));
    EXPECT_EQ(GetDNS(&dns1, &dns2), 1);
    EXPECT_EQ(told(set), Lines{});
}

// --- Writing both servers ---

TEST_F(Resolver, IsWrittenWithBothServersAndNothingElse)
{
    set.write(kFile, "search lan\nnameserver 1.1.1.1\nnameserver 1.0.0.1\noptions rotate\n");
    EXPECT_EQ(SetDNS(address("8.8.8.8"), address("255.255.255.255")), 0);
    EXPECT_EQ(set.read(kFile), "nameserver 8.8.8.8\nnameserver 255.255.255.255\n");
    EXPECT_EQ(told(set), Lines{});
}

TEST_F(Resolver, IsMadeWhenThereWasNone)
{
    set.write(kFile, "");
    set.remove(kFile);
    EXPECT_EQ(SetDNS(address("8.8.8.8"), 0), 0);
    EXPECT_EQ(set.read(kFile), "nameserver 8.8.8.8\nnameserver 0.0.0.0\n");
}

TEST_F(Resolver, KeepsNamingServersThatAreZero)
{
    set.write(kFile, "x");
    EXPECT_EQ(SetDNS(0, 0), 0);
    EXPECT_EQ(set.read(kFile), "nameserver 0.0.0.0\nnameserver 0.0.0.0\n");
    EXPECT_EQ(GetDNS(&dns1, &dns2), 0);
    EXPECT_EQ(dns1, 0U);
    EXPECT_EQ(dns2, 0U);
}

TEST_F(Resolver, ThatMayNotBeWrittenIsTold)
{
    set.write(kFile, "nameserver 1.1.1.1\n");
    set.fail({.call = sim::Call::Fopen, .on = kFile, .error = EROFS});
    EXPECT_EQ(SetDNS(address("8.8.8.8"), 0), 1);
    EXPECT_EQ(told(set), Lines{"ERROR movo_net_fl_common SetDNS: cannot open /etc/resolv.conf\n"});
    EXPECT_EQ(set.read(kFile), "nameserver 1.1.1.1\n");
}
} // namespace
