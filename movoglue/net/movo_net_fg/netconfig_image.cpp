#include "movo_net_fg/netconfig_image.h"

#include "support/image.h"

#include <algorithm>

namespace movonet {
namespace {
using enum OnLoad;

/** The offset of a field in the file, where every machine's record has it too. */
template <std::size_t inFile, std::size_t inRecord>
consteval std::size_t offset()
{
    static_assert(inFile == inRecord);
    return inFile;
}
#define MOVO_FIELD(inFile, field) offset<inFile, offsetof(MovoNetIface_t, field)>(), iface.field

// The rest of the 264 bytes: handlers and pointers, in the record of 32-bit ARM.
static_assert(sizeof(void*) != 4 || offsetof(MovoNetIface_t, funcs) == 100);
static_assert(sizeof(void*) != 4 || offsetof(MovoNetIface_t, priv) == 256);
static_assert(sizeof(void*) != 4 || offsetof(MovoNetIface_t, next) == 260);
static_assert(sizeof(void*) != 4 || sizeof(MovoNetIface_t) == kRecordSize);

/** The layout of a record. Bytes 9 to 11 are padding, 100 to 263 handlers and pointers that mean nothing in a file. */
template <typename Image, typename Iface>
void walkFields(Image image, Iface& iface)
{
    image.text(MOVO_FIELD(0, name), Kept);
    image.le(MOVO_FIELD(12, type), Kept);
    image.le(MOVO_FIELD(16, ipMode), Kept);
    image.le(MOVO_FIELD(20, isEnabled), Cleared);
    image.le(MOVO_FIELD(21, isAvailable), Cleared);
    image.le(MOVO_FIELD(22, isActived), Cleared);
    image.le(MOVO_FIELD(23, isConnected), Cleared);
    image.le(MOVO_FIELD(24, priority), Cleared);
    image.le(MOVO_FIELD(28, ipStatus), Cleared);
    image.bytes(MOVO_FIELD(32, macaddr), Cleared);
    image.bytes(MOVO_FIELD(40, ipv4), Cleared);
    image.bytes(MOVO_FIELD(44, maskv4), Cleared);
    image.bytes(MOVO_FIELD(48, gwv4), Cleared);
    image.bytes(MOVO_FIELD(52, dns1v4), Cleared);
    image.bytes(MOVO_FIELD(56, dns2v4), Cleared);
    image.le(MOVO_FIELD(60, thoughput), Cleared);
    image.bytes(MOVO_FIELD(64, sipv4), Kept);
    image.bytes(MOVO_FIELD(68, smaskv4), Kept);
    image.bytes(MOVO_FIELD(72, sgwv4), Kept);
    image.bytes(MOVO_FIELD(76, sdns1v4), Kept);
    image.bytes(MOVO_FIELD(80, sdns2v4), Kept);
    image.le(MOVO_FIELD(84, dhcpcfd), Cleared);
    image.le(MOVO_FIELD(88, dhcpcEventHandle), Cleared);
    image.le(MOVO_FIELD(92, dhcpDownCount), Kept);
    image.le(MOVO_FIELD(96, dhcpDownHandle), Kept);
}
} // namespace

void encodeCheck(std::uint32_t from, CheckImage to)
{
    ImageWriter(to).le(0, from);
}

std::uint32_t decodeCheck(ConstCheckImage from)
{
    std::uint32_t value = 0;
    ImageReader(from).le(0, value);
    return value;
}

void encodeRecord(const MovoNetIface_t& from, RecordImage to)
{
    std::ranges::fill(to, std::uint8_t{0});
    walkFields(ImageWriter(to), from);
}

void decodeRecord(ConstRecordImage from, MovoNetIface_t& to)
{
    to = {};
    walkFields(ImageReader(from), to);
    to.dhcpcfd = kNoFd;
}
} // namespace movonet
