#include "movo_net_fl_common/route.h"
#include "tools.h"

#include <filesystem>

using ip::address;
using ip::Lines;
using ip::record;
using ip::told;

// What the DHCP client tells of a lease: /etc/dhcpc/dhcpcd-IF.info.

namespace {
constexpr const char* kInfo = "/etc/dhcpc/dhcpcd-eth0.info";
constexpr const char* kResolver = "/etc/resolv.conf";
constexpr const char* kOld = "nameserver 1.1.1.1\n";

class Lease : public testing::Test {
protected:
    Lease() { set.write(kResolver, kOld); }
    ~Lease() override { EXPECT_EQ(set.openDescriptors(), Lines{}); }

    /** The resolver file that is written from these contents. */
    std::string resolver(const std::string& contents)
    {
        set.write(kInfo, contents);
        set.write(kResolver, kOld);
        set.forget();
        EXPECT_EQ(SetDNSDhcp(&eth0), 0) << contents;
        return set.read(kResolver);
    }

    void expectNoServers(const std::string& contents)
    {
        set.write(kInfo, contents);
        set.forget();
        EXPECT_EQ(SetDNSDhcp(&eth0), 1) << contents;
        EXPECT_EQ(told(set), Lines{"ERROR movo_net_fl_common SetDNSDhcp: dns not found\n"}) << contents;
        EXPECT_EQ(set.read(kResolver), kOld);
    }

    sim::Set set;
    MovoNetIface_t eth0 = record("eth0");
};

TEST_F(Lease, GivesServersAndDomain)
{
    EXPECT_EQ(resolver("IPADDR=10.0.2.15\nDOMAIN='lan'\nDNS=8.8.8.8,8.8.4.4\n"),
              "nameserver 8.8.8.8\nnameserver 8.8.4.4\nsearch lan\n");
    EXPECT_EQ(told(set), Lines{"INFO movo_net_fl_common SetDNSDhcp: domain: lan'\n, dns: 8.8.8.8,8.8.4.4\n\n"});
}

TEST_F(Lease, WithoutADomainStillSearches)
{
    EXPECT_EQ(resolver("DNS=8.8.8.8,8.8.4.4\n"), "nameserver 8.8.8.8\nnameserver 8.8.4.4\nsearch \n");
    EXPECT_EQ(told(set), Lines{"INFO movo_net_fl_common SetDNSDhcp: domain: , dns: 8.8.8.8,8.8.4.4\n\n"});
}

TEST_F(Lease, OfAutoIpIsReadToo)
{
    eth0.ipMode = _MOVO_NET_IPMODE_AUTOIP_;
    EXPECT_EQ(resolver("DNS=8.8.8.8\n"), "nameserver 8.8.8.8\nsearch \n");
}

TEST_F(Lease, OfAnotherModeIsNotRead)
{
    set.write(kInfo, "DNS=8.8.8.8\n");
    for (const int mode : {2, 3, 4, -1}) {
        set.forget();
        eth0.ipMode = static_cast<MovoNetIPMode_e>(mode);
        EXPECT_EQ(SetDNSDhcp(&eth0), 1) << mode;
        EXPECT_EQ(told(set), Lines{"ERROR movo_net_fl_common SetDNSDhcp: not configured by dhcpcd\n"}) << mode;
    }
    EXPECT_EQ(set.read(kResolver), kOld);
}

TEST_F(Lease, IsTheInterfacesOwn)
{
    set.write("/etc/dhcpc/dhcpcd-longname.info", "DNS=9.9.9.9\n");
    MovoNetIface_t other = record("longname");
    EXPECT_EQ(SetDNSDhcp(&other), 0);
    EXPECT_EQ(set.read(kResolver), "nameserver 9.9.9.9\nsearch \n");
}

TEST_F(Lease, NeedsNoLineEnd)
{
    EXPECT_EQ(resolver("DNS=8.8.8.8"), "nameserver 8.8.8.8\nsearch \n");
    EXPECT_EQ(resolver("DNS=8.8.8.8\nDOMAIN='lan"), "nameserver 8.8.8.8\nsearch lan\n");
}

TEST_F(Lease, SkipsServersThatAreNoDottedQuads)
{
    EXPECT_EQ(resolver("DNS=8.8.8.8,\n"), "nameserver 8.8.8.8\nsearch \n");
    EXPECT_EQ(resolver("DNS=,8.8.8.8,,8.8.4.4"), "nameserver 8.8.8.8\nnameserver 8.8.4.4\nsearch \n");
    EXPECT_EQ(resolver("DNS=fe80::1,8.8.8.8,evil.example,8.8.4,8.8.4.256,8.8.4.4 x,8.8.4.4\n"),
              "nameserver 8.8.8.8\nnameserver 8.8.4.4\nsearch \n");
    EXPECT_EQ(resolver("DNS=8.8.8.8\roptions debug,255.255.255.2551,255.255.255.255\nDOMAIN='lan'\n"),
              "nameserver 255.255.255.255\nsearch lan\n");
}

TEST_F(Lease, WhoseServersAreNoDottedQuadsHasNone)
{
    expectNoServers("DNS=\n");
    expectNoServers("DNS=,,\n");
    expectNoServers("DNS=fe80::1,localhost\nDOMAIN='lan'\n");
    expectNoServers("DNSSERVERS=8.8.8.8\n");
    expectNoServers("DNS=" + std::string(251, '1') + "\n");
}

TEST_F(Lease, CutsTheDomainAtItsFirstQuote)
{
    EXPECT_EQ(resolver("DOMAIN='a.b'c'd'\nDNS=8.8.8.8\n"), "nameserver 8.8.8.8\nsearch a.b\n");
    EXPECT_EQ(resolver("DOMAIN=''\nDNS=8.8.8.8\n"), "nameserver 8.8.8.8\nsearch \n");
    EXPECT_EQ(resolver("DOMAIN='two words'\nDNS=8.8.8.8\n"), "nameserver 8.8.8.8\nsearch two words\n");
}

TEST_F(Lease, TakesTheDomainFromItsNinthCharacterQuotedOrNot)
{
    EXPECT_EQ(resolver("DOMAIN=lan.x\nDNS=8.8.8.8\n"), "nameserver 8.8.8.8\nsearch an.x\n");
    EXPECT_EQ(resolver("DOMAINNAME='lan'\nDNS=8.8.8.8\n"), "nameserver 8.8.8.8\nsearch ME=\n");
}

TEST_F(Lease, TakesTheServersFromTheFifthCharacter)
{
    EXPECT_EQ(resolver("DNSX8.8.8.8\n"), "nameserver 8.8.8.8\nsearch \n");
    EXPECT_EQ(resolver("DNS==8.8.8.8,8.8.4.4\n"), "nameserver 8.8.4.4\nsearch \n");
}

TEST_F(Lease, KnowsKeysAtTheBeginningOfALineOnly)
{
    expectNoServers(" DNS=8.8.8.8\nXDNS=8.8.8.8\ndns=8.8.8.8\nDN\nD\n");
    EXPECT_EQ(resolver("DNS=8.8.8.8\n DOMAIN='lan'\n"), "nameserver 8.8.8.8\nsearch \n");
}

TEST_F(Lease, OfShortLinesTakesNothingFromTheLinesBefore)
{
    const std::string longLine = "HOSTNAME=0123456789abcdef\n";
    expectNoServers(longLine + "DNS\n");
    expectNoServers(longLine + "DNS");
    EXPECT_EQ(resolver(longLine + "DOMAIN\nDNS=8.8.8.8\n"), "nameserver 8.8.8.8\nsearch \n");
    EXPECT_EQ(resolver(longLine + "DOMAIN=\nDNS=8.8.8.8\n"), "nameserver 8.8.8.8\nsearch \n");
    EXPECT_EQ(resolver("DNS=8.8.8.8\n" + longLine + "DOMAIN"), "nameserver 8.8.8.8\nsearch \n");
}

TEST_F(Lease, IsReadUntilBothAreThere)
{
    EXPECT_EQ(resolver("DNS=1.1.1.1\nDNS=2.2.2.2\nDOMAIN='a'\nDNS=3.3.3.3\nDOMAIN='b'\n"),
              "nameserver 2.2.2.2\nsearch a\n");
    EXPECT_EQ(resolver("DOMAIN='a'\nDOMAIN='b'\nDNS=1.1.1.1\nDNS=2.2.2.2\n"), "nameserver 1.1.1.1\nsearch b\n");
}

TEST_F(Lease, WithoutServersLeavesTheResolverAlone)
{
    expectNoServers("");
    expectNoServers("\n\n");
    expectNoServers("DOMAIN='lan'\nGATEWAY=10.0.2.2\n");
    expectNoServers("DNS=");
}

TEST_F(Lease, OfALineThatIsJustShortEnoughIsWhole)
{
    const std::string commas(255 - 4 - 8 - 1, ',');
    EXPECT_EQ(resolver("DNS=" + commas + "2.2.2.22\n"), "nameserver 2.2.2.22\nsearch \n");
    EXPECT_EQ(resolver("DNS=," + commas + "2.2.2.22\nDOMAIN='lan'\n"), "nameserver 2.2.2.22\nsearch lan\n");
}

TEST_F(Lease, ReadsALongerLineInPiecesThatAreLines)
{
    const std::string commas(255 - 4 - 7, ',');
    EXPECT_EQ(resolver("DNS=" + commas + "2.2.2.22\n"), "nameserver 2.2.2.2\nsearch \n");
    EXPECT_EQ(resolver(std::string(255, 'x') + "DNS=8.8.8.8\n"), "nameserver 8.8.8.8\nsearch \n");
    const std::string domain(255 - 8, 'd');
    EXPECT_EQ(resolver("DOMAIN='" + domain + "rest'\nDNS=8.8.8.8\n"), "nameserver 8.8.8.8\nsearch " + domain + "\n");
}

TEST_F(Lease, OfBinaryBytesHasNoServers)
{
    std::string bytes;
    for (int at = 0; at < 5000; ++at) {
        bytes += static_cast<char>(at * 91 + 1);
    }
    expectNoServers(bytes);
    expectNoServers(std::string(5000, '\0'));
    EXPECT_EQ(resolver(bytes + "\nDNS=8.8.8.8\n"), "nameserver 8.8.8.8\nsearch \n");
}

TEST_F(Lease, ThatIsMissingIsTold)
{
    EXPECT_EQ(SetDNSDhcp(&eth0), 1);
    EXPECT_EQ(told(set), Lines{"ERROR movo_net_fl_common SetDNSDhcp: cannot open /etc/dhcpc/dhcpcd-eth0.info\n"});
    EXPECT_EQ(set.read(kResolver), kOld);
}

TEST_F(Lease, ThatIsAFolderHasNoServers)
{
    std::filesystem::create_directories(set.real(kInfo));
    EXPECT_EQ(SetDNSDhcp(&eth0), 1);
    EXPECT_EQ(told(set), Lines{"ERROR movo_net_fl_common SetDNSDhcp: dns not found\n"});
}

TEST_F(Lease, ThatCannotBeWrittenToTheResolverIsTold)
{
    set.write(kInfo, "DNS=8.8.8.8\n");
    set.fail({.call = sim::Call::Fopen, .on = kResolver, .error = EROFS});
    EXPECT_EQ(SetDNSDhcp(&eth0), 1);
    EXPECT_EQ(told(set), (Lines{"INFO movo_net_fl_common SetDNSDhcp: domain: , dns: 8.8.8.8\n\n",
                                "ERROR movo_net_fl_common SetDNSDhcp: cannot open /etc/resolv.conf\n"}));
    EXPECT_EQ(set.read(kResolver), kOld);
}

// --- The gateway ---

class LeaseGateway : public Lease {
protected:
    int read(const std::string& contents)
    {
        set.write(kInfo, contents);
        set.forget();
        gateway = 7;
        return GetDefaultGatewayDHCP(&gateway, "eth0");
    }

    unsigned int gateway = 7;
};

TEST_F(LeaseGateway, IsTheFirstOne)
{
    EXPECT_EQ(read("DNS=8.8.8.8\nGATEWAY=10.0.2.2\nGATEWAY=10.0.2.3\n"), 0);
    EXPECT_EQ(gateway, address("10.0.2.2"));
    EXPECT_EQ(told(set), Lines{"INFO movo_net_fl_common GetDefaultGatewayDHCP: gateway: 10.0.2.2\n"});
    EXPECT_EQ(read("GATEWAY=10.0.2.2"), 0);
    EXPECT_EQ(gateway, address("10.0.2.2"));
}

TEST_F(LeaseGateway, MissingIsTold)
{
    for (const char* contents : {"", "DNS=8.8.8.8\n", " GATEWAY=10.0.2.2\n", "GATEWA=10.0.2.2\n", "XGATEWAY=1.1.1.1"}) {
        EXPECT_EQ(read(contents), 1) << contents;
        EXPECT_EQ(gateway, 0U);
        EXPECT_EQ(told(set), Lines{"ERROR movo_net_fl_common GetDefaultGatewayDHCP: gateway not found\n"}) << contents;
    }
}

TEST_F(LeaseGateway, ThatIsNoDottedQuadIsToldAndEndsTheReading)
{
    for (const char* contents :
         {"GATEWAY=10.0.2\nGATEWAY=10.0.2.3\n", "GATEWAY='10.0.2.2'\n", "GATEWAY=10.0.2.2,10.0.2.3\n", "GATEWAY=\n",
          "HOSTNAME=10.0.2.2.10.0.2.2\nGATEWAY\n", "GATEWAYS=10.0.2.2\n", "GATEWAY=fe80::1\n"}) {
        EXPECT_EQ(read(contents), 1) << contents;
        EXPECT_EQ(gateway, 0U);
        EXPECT_EQ(told(set), Lines{"ERROR movo_net_fl_common GetDefaultGatewayDHCP: error in dhcpcd info file\n"})
            << contents;
    }
}

TEST_F(LeaseGateway, OfAMissingFileIsTold)
{
    gateway = 7;
    EXPECT_EQ(GetDefaultGatewayDHCP(&gateway, "wlan0"), 1);
    EXPECT_EQ(gateway, 0U);
    EXPECT_EQ(told(set),
              Lines{"ERROR movo_net_fl_common GetDefaultGatewayDHCP: cannot open /etc/dhcpc/dhcpcd-wlan0.info\n"});
}
} // namespace
