#include "movo_net_fl_common/common.h"
#include "tools.h"

#include <cstring>
#include <linux/sockios.h>

using ip::Lines;
using ip::record;
using ip::told;

namespace {
using Bytes = std::vector<int>;

/** The value's bytes, lowest address first. */
Bytes bytesOf(std::int64_t value)
{
    std::uint8_t bytes[sizeof(value)];
    std::memcpy(bytes, &value, sizeof(value));
    return {std::begin(bytes), std::end(bytes)};
}

constexpr std::int64_t kAllOnes = -1;

TEST(MacAddress, ComesFromTheKernelFirstOctetFirst)
{
    sim::Set set;
    set.iface("eth0").setMac("52:54:00:ab:cd:ef");
    MovoNetIface_t iface = record("eth0");
    std::int64_t mac = kAllOnes;
    EXPECT_EQ(int_Movo_Net_GetMacAddr(&iface, &mac), 0);
    EXPECT_EQ(bytesOf(mac), (Bytes{0x52, 0x54, 0x00, 0xab, 0xcd, 0xef, 0xff, 0xff}));
    EXPECT_EQ(iface.macaddr, 0);
    EXPECT_EQ(told(set), Lines{"INFO movo_net_fl_common int_Movo_Net_GetMacAddr: "
                               "int_Movo_Net_GetMacAddr, eth0: 52:54:00:AB:CD:EF\n"});
    EXPECT_EQ(set.openDescriptors(), Lines{});
}

TEST(MacAddress, OfTheRecordIsRememberedWhenItIsTheOutput)
{
    sim::Set set;
    set.iface("eth0").setMac("52:54:00:ab:cd:ef");
    MovoNetIface_t iface = record("eth0");
    EXPECT_EQ(int_Movo_Net_GetMacAddr(&iface, &iface.macaddr), 0);
    set.iface("eth0").setMac("00:00:00:00:00:99");
    set.forget();

    std::int64_t mac = 0;
    EXPECT_EQ(int_Movo_Net_GetMacAddr(&iface, &mac), 0);
    EXPECT_EQ(bytesOf(mac), (Bytes{0x52, 0x54, 0x00, 0xab, 0xcd, 0xef, 0, 0}));
    EXPECT_EQ(told(set), Lines{});
}

TEST(MacAddress, OfTheRecordNeedsNoSocket)
{
    sim::Set set;
    set.fail({.call = sim::Call::Socket, .mayMiss = true});
    MovoNetIface_t iface = record("eth0");
    iface.macaddr = 0x060504030201;
    std::int64_t mac = kAllOnes;
    EXPECT_EQ(int_Movo_Net_GetMacAddr(&iface, &mac), 0);
    EXPECT_EQ(bytesOf(mac), (Bytes{1, 2, 3, 4, 5, 6, 0xff, 0xff}));
}

TEST(MacAddress, IsZeroAndSilentWhenTheKernelDoesNotTell)
{
    sim::Set set;
    set.fail({.call = sim::Call::Ioctl, .on = "eth0", .code = SIOCGIFHWADDR, .error = ENODEV});
    MovoNetIface_t iface = record("eth0");
    std::int64_t mac = kAllOnes;
    EXPECT_EQ(int_Movo_Net_GetMacAddr(&iface, &mac), 1);
    EXPECT_EQ(bytesOf(mac), (Bytes{0, 0, 0, 0, 0, 0, 0xff, 0xff}));
    EXPECT_EQ(told(set), Lines{});
    EXPECT_EQ(set.openDescriptors(), Lines{});
}

TEST(MacAddress, IsUntouchedWithoutASocket)
{
    sim::Set set;
    set.fail({.call = sim::Call::Socket, .on = "inet", .error = EMFILE});
    MovoNetIface_t iface = record("eth0");
    std::int64_t mac = kAllOnes;
    EXPECT_EQ(int_Movo_Net_GetMacAddr(&iface, &mac), 1);
    EXPECT_EQ(mac, kAllOnes);
    EXPECT_EQ(told(set), Lines{"ERROR movo_net_fl_common int_Movo_Net_GetMacAddr: Cannot get control socket\n"});
}

TEST(MacAddress, RefusesAnOutputThatIsNull)
{
    MovoNetIface_t iface = record("eth0");
    EXPECT_EQ(int_Movo_Net_GetMacAddr(&iface, nullptr), 5);
}
} // namespace
