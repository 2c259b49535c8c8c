#include "tools.h"

#include <climits>
#include <cstring>
#include <linux/sockios.h>
#include <sys/ioctl.h>

using namespace api;
using sim::Call;

// Which interfaces there are, by position and by name.

namespace {
class ListOf : public testing::TestWithParam<int> {};

TEST_P(ListOf, InterfacesIsCountedAndNamedByPosition)
{
    Layer layer;
    for (int number = 0; number < GetParam(); ++number) {
        const auto type = number == 0 ? _MOVO_NET_IFACE_LO_ : _MOVO_NET_IFACE_ETHER_;
        layer.add("if" + std::to_string(number), type);
    }
    int count = -1;
    EXPECT_EQ(Movo_NET_GetNumOfIfaces(0, &count), 0);
    EXPECT_EQ(count, GetParam());
    char name[9];
    for (int number = 0; number < GetParam(); ++number) {
        EXPECT_EQ(Movo_NET_GetIfaceName(0, number, 8, name), 0);
        EXPECT_EQ(name, "if" + std::to_string(number));
    }
    EXPECT_EQ(said(layer.set), Lines{});
    EXPECT_EQ(Movo_NET_GetIfaceName(0, GetParam(), 8, name), 1);
    EXPECT_EQ(said(layer.set),
              Lines{"ERROR Movo_NET_GetIfaceName: interface not found: " + std::to_string(GetParam()) + "\n"});
    EXPECT_EQ(Movo_NET_GetIfaceName(0, INT_MAX, 8, name), 1);
}

INSTANTIATE_TEST_SUITE_P(Lengths, ListOf, testing::Values(0, 1, 10, 11, 12));

TEST(GetNumOfIfaces, CountsWhatWasFound)
{
    Television television;
    int count = 0;
    EXPECT_EQ(Movo_NET_GetNumOfIfaces(0, &count), 0);
    EXPECT_EQ(count, 2) << "lo and eth0";
    television.set.addIface("eth1");
    television.set.grantTicks(10);
    EXPECT_EQ(Movo_NET_GetNumOfIfaces(0, &count), 0);
    EXPECT_EQ(count, 3);
    television.set.iface("eth1").unplugDevice();
    television.set.grantTicks(10);
    EXPECT_EQ(Movo_NET_GetNumOfIfaces(0, &count), 0);
    EXPECT_EQ(count, 3) << "it may come back";
}

class NameBuffer : public testing::Test {
protected:
    NameBuffer() { std::memset(bytes, 'Z', sizeof(bytes)); }

    std::string text() const { return std::string(bytes, sizeof(bytes)); }

    Layer layer;
    char bytes[8];
};

TEST_F(NameBuffer, KeepsWritingOneByteMoreThanTheLength)
{
    layer.add("eth0");
    EXPECT_EQ(Movo_NET_GetIfaceName(0, 0, 4, bytes), 0);
    EXPECT_EQ(text(), std::string("eth0\0ZZZ", 8));
}

TEST_F(NameBuffer, TooSmall)
{
    layer.add("eth0");
    for (const int length : {3, 0, -1, INT_MIN}) {
        layer.set.forget();
        EXPECT_EQ(Movo_NET_GetIfaceName(0, 0, length, bytes), 3) << length;
        EXPECT_EQ(said(layer.set), Lines{"ERROR Movo_NET_GetIfaceName: buffer too small\n"});
    }
    EXPECT_EQ(text(), "ZZZZZZZZ");
}

TEST_F(NameBuffer, TakesAnyGreaterLength)
{
    layer.add("eth0");
    EXPECT_EQ(Movo_NET_GetIfaceName(0, 0, INT_MAX, bytes), 0);
    EXPECT_EQ(text(), std::string("eth0\0ZZZ", 8));
}

TEST_F(NameBuffer, KeepsNegativePositionsOfAListNoError)
{
    layer.add("eth0");
    for (const int position : {-1, INT_MIN}) {
        EXPECT_EQ(Movo_NET_GetIfaceName(0, position, 8, bytes), 0);
        EXPECT_EQ(Movo_NET_GetIfaceName(0, position, 0, bytes), 0) << "the length does not count then";
    }
    EXPECT_EQ(text(), "ZZZZZZZZ");
    EXPECT_EQ(said(layer.set), Lines{});
}

TEST_F(NameBuffer, NegativePositionOfAnEmptyList)
{
    EXPECT_EQ(Movo_NET_GetIfaceName(0, -1, 8, bytes), 1);
    EXPECT_EQ(text(), "ZZZZZZZZ");
    EXPECT_EQ(said(layer.set), Lines{"ERROR Movo_NET_GetIfaceName: interface not found: -1\n"});
}

TEST(GetIfaceType, TellsEachType)
{
    Layer layer;
    layer.add("lo", _MOVO_NET_IFACE_LO_);
    layer.add("eth0", _MOVO_NET_IFACE_ETHER_);
    layer.add("wlan0", _MOVO_NET_IFACE_WIFI_);
    MovoNetIfaceType_e type = _MOVO_NET_IFACE_WIFI_;
    EXPECT_EQ(Movo_NET_GetIfaceType(0, "lo", &type), 0);
    EXPECT_EQ(type, _MOVO_NET_IFACE_LO_);
    EXPECT_EQ(Movo_NET_GetIfaceType(0, "eth0", &type), 0);
    EXPECT_EQ(type, _MOVO_NET_IFACE_ETHER_);
    EXPECT_EQ(Movo_NET_GetIfaceType(7, "wlan0", &type), 0);
    EXPECT_EQ(type, _MOVO_NET_IFACE_WIFI_);
}

/** The eight bytes of the caller's number. */
std::string bytesOf(long long number)
{
    std::string bytes(sizeof(number), '\0');
    std::memcpy(bytes.data(), &number, sizeof(number));
    return bytes;
}

TEST(GetIfaceMacAddress, IsTheRecordsWhenItHasOne)
{
    Layer layer;
    MovoNetIface_t& eth0 = layer.add("eth0");
    std::memcpy(&eth0.macaddr, "\x02\x03\x04\x05\x06\x07", 6);
    long long mac = -1;
    EXPECT_EQ(Movo_NET_GetIfaceMacAddress(0, "eth0", &mac), 0);
    EXPECT_EQ(bytesOf(mac), "\x02\x03\x04\x05\x06\x07\xff\xff") << "the last two bytes are the caller's";
}

TEST(GetIfaceMacAddress, IsElseTheKernels)
{
    Layer layer;
    const MovoNetIface_t& eth0 = layer.add("eth0");
    layer.set.iface("eth0").setMac("52:54:00:aa:bb:cc");
    long long mac = 0;
    EXPECT_EQ(Movo_NET_GetIfaceMacAddress(0, "eth0", &mac), 0);
    EXPECT_EQ(bytesOf(mac), std::string("\x52\x54\x00\xaa\xbb\xcc\x00\x00", 8));
    EXPECT_EQ(eth0.macaddr, 0) << "the record does not learn it";
}

TEST(GetIfaceMacAddress, IsZeroWhenTheKernelDoesNotTell)
{
    Layer layer;
    layer.add("eth0");
    layer.set.fail({.call = Call::Ioctl, .code = SIOCGIFHWADDR, .error = ENODEV});
    long long mac = -1;
    EXPECT_EQ(Movo_NET_GetIfaceMacAddress(0, "eth0", &mac), 1);
    EXPECT_EQ(bytesOf(mac), std::string("\0\0\0\0\0\0\xff\xff", 8));
}

TEST(GetIfaceMacAddress, IsUntouchedWithoutASocket)
{
    Layer layer;
    layer.add("eth0");
    layer.set.fail({.call = Call::Socket, .error = EMFILE});
    long long mac = 0x1122334455667788;
    EXPECT_EQ(Movo_NET_GetIfaceMacAddress(0, "eth0", &mac), 1);
    EXPECT_EQ(mac, 0x1122334455667788);
}

TEST(GetIfaceMacAddress, OfABackEndWithoutThatOperationFails)
{
    Layer layer;
    layer.add("eth0").funcs.GetMacAddr = nullptr;
    long long mac = 7;
    EXPECT_EQ(Movo_NET_GetIfaceMacAddress(0, "eth0", &mac), 1);
    EXPECT_EQ(mac, 7);
    EXPECT_EQ(said(layer.set), Lines{});
}

TEST(GetIfaceThroughput, KeepsFailingAlthoughItWritesZero)
{
    Layer layer;
    layer.add("eth0").thoughput = 54;
    int throughput = 7;
    EXPECT_EQ(Movo_NET_GetIfaceThroughput(0, "eth0", &throughput), 1);
    EXPECT_EQ(throughput, 0);
}

TEST(GetIfaceThroughput, IsWhatTheBackEndSays)
{
    Layer layer;
    layer.add("eth0").funcs.GetIfaceThroughput = [](MovoNetIface_t* iface, std::int32_t* out) -> RETURN_TYPE {
        *out = iface->name[3] == '0' ? 100 : -1;
        return 6;
    };
    int throughput = 7;
    EXPECT_EQ(Movo_NET_GetIfaceThroughput(0, "eth0", &throughput), 6);
    EXPECT_EQ(throughput, 100);
}
} // namespace
