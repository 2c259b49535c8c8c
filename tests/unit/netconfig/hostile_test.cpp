#include "tools.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

using namespace netconfig;

// Files whose check value is right and whose contents are not what a television writes.

namespace {
std::string recordOf(const std::string& name, std::uint8_t type = 1)
{
    std::string bytes(kRecord, '\0');
    bytes.replace(0, name.size(), name);
    bytes[12] = static_cast<char>(type);
    return bytes;
}

void load(sim::Set& set, const std::string& records)
{
    set.write(kFile, fileOf(records));
    ASSERT_EQ(LoadNetConfig(), 0);
}

/** What only a running interface has is as in a new record. */
void expectFresh(const MovoNetIface_t& iface)
{
    EXPECT_EQ(iface.isEnabled, 0);
    EXPECT_EQ(iface.isAvailable, 0);
    EXPECT_EQ(iface.isActived, 0);
    EXPECT_EQ(iface.isConnected, 0);
    EXPECT_EQ(iface.priority, 0);
    EXPECT_EQ(iface.ipStatus, _MOVO_NET_IPSTATUS_NONE_);
    EXPECT_EQ(iface.macaddr, 0);
    EXPECT_EQ(iface.ipv4 | iface.maskv4 | iface.gwv4 | iface.dns1v4 | iface.dns2v4, 0U);
    EXPECT_EQ(iface.thoughput, 0U);
    EXPECT_EQ(iface.dhcpcfd, -1);
    EXPECT_EQ(iface.dhcpcEventHandle, 0);
    EXPECT_EQ(iface.priv, nullptr);
}

TEST(HostileConfiguration, AllOnes)
{
    sim::Set set;
    load(set, std::string(kRecord, '\xff'));
    const MovoNetIface_t& iface = *records().at(0);
    EXPECT_EQ(std::string(iface.name), std::string(8, '\xff'));
    EXPECT_EQ(iface.type, -1);
    EXPECT_EQ(iface.ipMode, -1);
    EXPECT_EQ(iface.dhcpDownCount, -1);
    EXPECT_EQ(iface.dhcpDownHandle, -1);
    expectFresh(iface);
    EXPECT_EQ(said(set, "LoadNetConfig").back(), "INFO int_Movo_Net_Init failed: " + std::string(8, '\xff') + "\n");
}

TEST(HostileConfiguration, NameWithoutEndIsCutToEightCharacters)
{
    sim::Set set;
    load(set, recordOf("abcdefghijkl"));
    EXPECT_STREQ(records().at(0)->name, "abcdefgh");
    EXPECT_EQ(FindInterface("abcdefgh"), records().at(0));
    EXPECT_EQ(FindInterface("abcdefghi"), nullptr);
}

TEST(HostileConfiguration, UnknownTypesStayInTheListWithoutABackEnd)
{
    sim::Set set;
    load(set, recordOf("one", 3) + recordOf("two", 0xff));
    EXPECT_EQ(listed().size(), 2U);
    EXPECT_EQ(said(set, "LoadNetConfig").at(2), "INFO int_Movo_Net_Init failed: two\n");
    EXPECT_EQ(said(set, "LoadNetConfig").at(4), "INFO int_Movo_Net_Init failed: one\n");
    for (const MovoNetIface_t* iface : records()) {
        expectFresh(*iface);
        EXPECT_EQ(iface->funcs.Init, nullptr);
    }
}

TEST(HostileConfiguration, RecordWhoseInitialisationFailsEarlyHasNothingOfTheFileInItsOperations)
{
    sim::Set set;
    ASSERT_EQ(setenv("DHCP_NOTIFY_PIPE_DIR", std::string(256, 'x').c_str(), 1), 0);
    std::string bytes(kRecord, '\xff');
    bytes.replace(0, 20, recordOf("eth0").substr(0, 20));
    load(set, recordOf("eth1") + bytes);
    ASSERT_EQ(unsetenv("DHCP_NOTIFY_PIPE_DIR"), 0);

    const MovoNetIface_t& first = *records().at(0); // the file's last record is the list's first
    EXPECT_EQ(said(set, "LoadNetConfig").at(2), "INFO int_Movo_Net_Init failed: eth0\n");
    expectFresh(first);
    const MovoNetIfaceFunc_t none{};
    EXPECT_EQ(std::memcmp(&first.funcs, &none, sizeof(none)), 0);
    EXPECT_NE(records().at(1)->funcs.Active, nullptr) << "the second one accepts the long name";

    set.addIface("eth1");
    set.cable("eth0").plug();
    EXPECT_EQ(OnLinkStatusEventRev(-1, nullptr, 1), 0);
    EXPECT_EQ(first.isAvailable, 0) << "it cannot be activated";
}

TEST(HostileConfiguration, TheTelevisionRunsOn)
{
    sim::Set set;
    set.cable("eth0").plug();
    set.write(kFile, fileOf(std::string(kRecord, '\xff') + std::string(kRecord, '\0') + recordOf("\xff\x80\x01", 1) +
                            recordOf("../../x", 1) + recordOf("a;b`c$d", 2) + recordOf("bcm0", 1) +
                            recordOf("%s%n%s", 1) + recordOf("lo", 1) + recordOf("sit0", 2)));
    ASSERT_EQ(set.start(), 0);
    EXPECT_CALLBACKS(set, {{sim::IFFOUND, "eth0"}});
    set.dhcp("eth0").leases();
    set.grantTicks(30);
    EXPECT_CALLBACKS(set, {{sim::IPCHANGED, "eth0"}, {sim::DHCP_SUCCESS, "eth0"}});
    EXPECT_EQ(listed().size(), 10U) << "nine of the file, and eth0; the file's lo is the machine's";
    EXPECT_EQ(set.stop(), 0);
    EXPECT_EQ(set.read(kFile).size(), 4 + 10 * kRecord);
}

TEST(HostileConfiguration, TwoRecordsOfOneNameAreBothKept)
{
    sim::Set set;
    load(set, recordOf("eth0") + recordOf("eth0"));
    EXPECT_EQ(listed().size(), 2U);
    EXPECT_EQ(FindInterface("eth0"), records().at(0));
}

TEST(StoredConfiguration, KeepsTheStoredTypeOfAnInterface)
{
    sim::Set set;
    set.addIface("wlan0").wireless();
    set.write(kFile, fileOf(recordOf("wlan0", 1)));
    ASSERT_EQ(set.start(), 0);
    EXPECT_EQ(FindInterface("wlan0")->type, _MOVO_NET_IFACE_ETHER_);
}

TEST(StoredConfiguration, InterfaceThatIsGoneStaysAndIsNeverAvailable)
{
    sim::Set set;
    set.write(kFile, fileOf(recordOf("usb7")));
    ASSERT_EQ(set.start(), 0);
    set.grantTicks(30);
    ASSERT_NE(FindInterface("usb7"), nullptr);
    EXPECT_EQ(FindInterface("usb7")->isAvailable, 0);
    EXPECT_NOT_LOGGED(set, KEST_LEVEL_INFO, "movo_net_fg", "UpdateInterfaces", "new interface usb7\n");
}

TEST(StoredConfiguration, RetryTimerOfAnEarlierProcessRemovesNoEventOfThisOne)
{
    sim::Set set;
    set.cable("eth0").plug();
    std::string bytes = recordOf("eth0");
    bytes[96] = 2; // the number that the look at the links gets, after the client's pipe
    set.write(kFile, fileOf(bytes));
    ASSERT_EQ(set.start(), 0);
    set.dhcp("eth0").leases();
    set.dhcp("eth0").loses();
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, "movo_net_fl_common", "AddDhcpDownEvent", "add dhcp down event, count is 0\n");
    set.cable("eth0").pull();
    set.grantTicks(10);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, "movo_net_fg", "OnLinkStatusEventRev", "link:interface removed eth0\n");
}

TEST(StoredConfiguration, KeepsTheNumberOfRetriesAcrossARestart)
{
    sim::Set set;
    set.cable("eth0").plug();
    std::string bytes = recordOf("eth0");
    bytes[92] = 6;
    set.write(kFile, fileOf(bytes));
    ASSERT_EQ(set.start(), 0);
    EXPECT_EQ(FindInterface("eth0")->dhcpDownCount, 6);
    set.dhcp("eth0").says("down");
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, "movo_net_fl_common", "AddDhcpDownEvent",
                  "dhcp down too many times, stop trying\n");
}
} // namespace
