#include "tools.h"

#include "sim/flash.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

using namespace netconfig;
using sim::Call;

namespace {
constexpr const char* kOld = "the configuration before";

MovoNetIface_t withAddresses(const std::string& name, const std::array<std::uint8_t, 20>& addresses)
{
    MovoNetIface_t record{};
    name.copy(record.name, sizeof(record.name) - 1);
    std::memcpy(&record.sipv4, addresses.data(), addresses.size());
    record.dhcpcfd = -1;
    return record;
}

/** The records of the golden files, with all that a running television has in them. */
void listGoldenOne()
{
    MovoNetIface_t eth0 =
        withAddresses("eth0", {192, 168, 1, 20, 255, 255, 255, 0, 192, 168, 1, 1, 192, 168, 1, 2, 192, 168, 1, 3});
    std::memcpy(&eth0.ipv4, &eth0.sipv4, 20);
    std::memcpy(&eth0.macaddr, "\x52\x54\x00\x12\x34\x56", 6);
    eth0.type = _MOVO_NET_IFACE_ETHER_;
    eth0.ipMode = _MOVO_NET_IPMODE_STATIC_;
    eth0.isEnabled = eth0.isAvailable = eth0.isActived = eth0.isConnected = 1;
    eth0.priority = 2;
    eth0.ipStatus = _MOVO_NET_IPSTATUS_STATIC_;
    eth0.funcs.CanActive = [](MovoNetIface_t*) { return 1; };
    eth0.priv = &eth0;
    list(eth0);
}

void listGoldenThree()
{
    MovoNetIface_t lo = withAddresses("lo", {127, 0, 0, 1, 255});
    lo.ipMode = _MOVO_NET_IPMODE_STATIC_;
    MovoNetIface_t eth0 = withAddresses("eth0", {10, 0, 2, 15, 255, 255, 255, 0, 10, 0, 2, 2, 10, 0, 2, 3, 0, 0, 0, 0});
    std::memcpy(&eth0.ipv4, &eth0.sipv4, 20);
    std::memcpy(&eth0.macaddr, "\x02\x00\x00\x00\x00\x01", 6);
    eth0.type = _MOVO_NET_IFACE_ETHER_;
    eth0.isEnabled = eth0.isAvailable = eth0.isActived = eth0.isConnected = 1;
    eth0.priority = 2;
    eth0.ipStatus = _MOVO_NET_IPSTATUS_DHCP_GOT_;
    eth0.dhcpcfd = 9;
    eth0.dhcpcEventHandle = 4;
    eth0.dhcpDownCount = 3;
    eth0.dhcpDownHandle = 7;
    MovoNetIface_t wlan =
        withAddresses("wlan0abc", {172, 16, 254, 1, 255, 240, 0, 0, 172, 16, 0, 1, 8, 8, 8, 8, 8, 8, 4, 4});
    wlan.type = _MOVO_NET_IFACE_WIFI_;
    wlan.ipMode = _MOVO_NET_IPMODE_DNSONLY_;
    wlan.isEnabled = 1;
    wlan.priority = -5;
    wlan.ipStatus = _MOVO_NET_IPSTATUS_DHCP_RELEASED_;
    wlan.thoughput = 0x12345678;
    wlan.dhcpDownCount = -2;
    wlan.dhcpDownHandle = 258;
    list(lo);
    list(eth0);
    list(wlan);
}

void listMany(int records)
{
    for (const Settings& settings : goldenConfiguration(records)) {
        list(settings);
    }
}

/** Nothing was saved, the earlier configuration is still there, and no lock or descriptor is left. */
void expectUnsaved(sim::Set& set, const Lines& messages)
{
    set.write(kFile, kOld);
    EXPECT_EQ(SaveNetConfig(), 1);
    EXPECT_EQ(said(set, "SaveNetConfig"), messages);
    EXPECT_EQ(set.read(kFile), kOld);
    EXPECT_FALSE(set.exists(kTemporary));
    EXPECT_EQ(set.openDescriptors(), Lines{});
    set.clearFaults();
    if (!records().empty()) {
        EXPECT_EQ(SaveNetConfig(), 0);
    }
}

struct Golden {
    const char* file;
    std::function<void()> list;
};

void PrintTo(const Golden& golden, std::ostream* out)
{
    *out << golden.file;
}

class SaveGolden : public testing::TestWithParam<Golden> {};

TEST_P(SaveGolden, ByteForByte)
{
    sim::Set set;
    GetParam().list();
    EXPECT_EQ(SaveNetConfig(), 0);
    EXPECT_EQ(set.read(kFile), golden(GetParam().file));
    EXPECT_FALSE(set.exists(kTemporary));
    EXPECT_EQ(set.openDescriptors(), Lines{});
}

INSTANTIATE_TEST_SUITE_P(Files, SaveGolden,
                         testing::Values(Golden{"netconfig_1.hex", listGoldenOne},
                                         Golden{"netconfig_3.hex", listGoldenThree},
                                         Golden{"netconfig_10.hex", [] { listMany(10); }},
                                         Golden{"netconfig_11.hex", [] { listMany(11); }}));

TEST(SaveNetConfig, KeepsLeavingOutTheTwelfthInterface)
{
    sim::Set set;
    listMany(12);
    EXPECT_EQ(SaveNetConfig(), 0);
    EXPECT_EQ(set.read(kFile), golden("netconfig_11.hex"));
}

TEST(SaveNetConfig, WithoutInterfacesWritesNothing)
{
    sim::Set set;
    expectUnsaved(set, {"ERROR no saved interfaces\n"});
}

TEST(SaveNetConfig, Steps)
{
    sim::Set set;
    listGoldenOne();
    const sim::Flash flash(set, kFolder);
    EXPECT_EQ(SaveNetConfig(), 0);
    EXPECT_EQ(flash.calls(),
              (Lines{"open netconfig.tmp", "lseek netconfig.tmp", "write netconfig.tmp", "write netconfig.tmp",
                     "fsync netconfig.tmp", "close netconfig.tmp", "rename netconfig.tmp", "sync"}));
    EXPECT_EQ(said(set, "SaveNetConfig"), Lines{"INFO saved crc is " + std::to_string(0x48cafa30L) + "\n"});
}

TEST(SaveNetConfig, FileMayBeReadAndWrittenByAll)
{
    sim::Set set;
    listGoldenOne();
    const mode_t before = umask(0);
    EXPECT_EQ(SaveNetConfig(), 0);
    (void)umask(before);
    EXPECT_EQ(std::filesystem::status(set.real(kFile)).permissions(), std::filesystem::perms{0777});
}

TEST(SaveNetConfig, KeepsTheTailOfALongerTemporaryFile)
{
    sim::Set set;
    listGoldenOne();
    const std::string leftOver = golden("netconfig_3.hex");
    set.write(kTemporary, leftOver);
    EXPECT_EQ(SaveNetConfig(), 0);
    const std::string whole = golden("netconfig_1.hex");
    EXPECT_EQ(set.read(kFile), whole + leftOver.substr(whole.size()));
    EXPECT_EQ(LoadNetConfig(), 1);
    EXPECT_EQ(said(set, "LoadNetConfig").back(), "ERROR file crc check failed\n");
    EXPECT_FALSE(set.exists(kFile));
}

TEST(SaveNetConfig, ShorterTemporaryFileDoesNoHarm)
{
    sim::Set set;
    listGoldenThree();
    set.write(kTemporary, golden("netconfig_1.hex"));
    EXPECT_EQ(SaveNetConfig(), 0);
    EXPECT_EQ(set.read(kFile), golden("netconfig_3.hex"));
}

TEST(SaveNetConfig, TemporaryFileThatCannotBeOpened)
{
    sim::Set set;
    listGoldenOne();
    set.fail({.call = Call::Open, .on = kTemporary, .error = EROFS});
    expectUnsaved(set, {"ERROR cannot open /data/tv/save/netconfig.tmp for write\n"});
}

TEST(SaveNetConfig, KeepsDescriptorZeroAFailure)
{
    sim::Set set;
    listGoldenOne();
    const int input = dup(STDIN_FILENO);
    ASSERT_EQ(close(STDIN_FILENO), 0);
    EXPECT_EQ(SaveNetConfig(), 1);
    EXPECT_EQ(said(set, "SaveNetConfig"), Lines{"ERROR cannot open /data/tv/save/netconfig.tmp for write\n"});
    EXPECT_EQ(set.openDescriptors(), Lines{"open(\"/data/tv/save/netconfig.tmp\")"});
    EXPECT_EQ(fcntl(0, F_GETFL) & O_ACCMODE, O_RDWR);
    EXPECT_EQ(SaveNetConfig(), 0);
    EXPECT_EQ(dup2(input, STDIN_FILENO), STDIN_FILENO);
    EXPECT_EQ(close(input), 0);
}

struct ShortWrite {
    int nth;
    int bytes; ///< -1: an error
    const char* message;
};

void PrintTo(const ShortWrite& write, std::ostream* out)
{
    *out << "write " << write.nth << " takes " << write.bytes;
}

class SaveShort : public testing::TestWithParam<ShortWrite> {};

TEST_P(SaveShort, LeavesTheOldConfiguration)
{
    sim::Set set;
    listGoldenThree();
    set.fail(
        {.call = Call::Write, .on = kTemporary, .nth = GetParam().nth, .error = ENOSPC, .bytes = GetParam().bytes});
    expectUnsaved(set, {GetParam().message});
}

INSTANTIATE_TEST_SUITE_P(Writes, SaveShort,
                         testing::Values(ShortWrite{1, -1, "ERROR write crc value to file failed\n"},
                                         ShortWrite{1, 0, "ERROR write crc value to file failed\n"},
                                         ShortWrite{1, 3, "ERROR write crc value to file failed\n"},
                                         ShortWrite{2, -1, "ERROR write ifaces to file failed\n"},
                                         ShortWrite{2, 0, "ERROR write ifaces to file failed\n"},
                                         ShortWrite{2, 791, "ERROR write ifaces to file failed\n"}));

TEST(SaveNetConfig, ClosesBeforeItDeletes)
{
    sim::Set set;
    listGoldenOne();
    const sim::Flash flash(set, kFolder);
    set.fail({.call = Call::Write, .on = kTemporary, .nth = 1});
    EXPECT_EQ(SaveNetConfig(), 1);
    EXPECT_EQ(flash.calls(),
              (Lines{"open netconfig.tmp", "lseek netconfig.tmp", "close netconfig.tmp", "unlink netconfig.tmp"}));
}

TEST(SaveNetConfig, KeepsGoingWhenFsyncFails)
{
    sim::Set set;
    listGoldenOne();
    set.fail({.call = Call::Fsync, .error = EIO});
    EXPECT_EQ(SaveNetConfig(), 0);
    EXPECT_EQ(set.read(kFile), golden("netconfig_1.hex"));
}

TEST(SaveNetConfig, KeepsReportingSuccessWhenTheFileCannotBeRenamed)
{
    sim::Set set;
    listGoldenOne();
    set.write(kFile, kOld);
    set.fail({.call = Call::Rename, .on = kTemporary, .error = EACCES});
    EXPECT_EQ(SaveNetConfig(), 0);
    EXPECT_EQ(set.read(kFile), kOld);
    EXPECT_EQ(set.read(kTemporary), golden("netconfig_1.hex"));
}

TEST(SaveNetConfig, LockThatCannotBeTaken)
{
    sim::Set set;
    listGoldenOne();
    set.failLock(movonet::ifaceListLock);
    expectUnsaved(set, {"ERROR lock mutex failed\n"});
}
} // namespace
