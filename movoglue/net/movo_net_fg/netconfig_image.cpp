#include "movo_net_fg/netconfig_image.h"

#include "support/shared.h"

#include <algorithm>
#include <cstring>

namespace movonet {
namespace {
/** Whether a field is taken from the file or starts anew. */
enum class OnLoad { Kept, Cleared };
using enum OnLoad;

class ImageWriter {
public:
    explicit ImageWriter(RecordImage to) : m_to(to) {}

    void text(std::size_t offset, const char (&field)[9], OnLoad /*onLoad*/)
    {
        std::memcpy(m_to.data() + offset, field, sizeof(field));
    }
    /** An integer of any size, lowest byte first. */
    template <typename Integer>
    void le(std::size_t offset, const Integer& field, OnLoad /*onLoad*/)
    {
        const auto value = static_cast<std::uint64_t>(get(field));
        for (std::size_t byte = 0; byte < sizeof(field); ++byte) {
            m_to[offset + byte] = static_cast<std::uint8_t>(value >> (8 * byte));
        }
    }
    /** An address, in the order in which memory has it. */
    template <typename Address>
    void bytes(std::size_t offset, const Address& field, OnLoad /*onLoad*/)
    {
        const Address value = get(field);
        std::memcpy(m_to.data() + offset, &value, sizeof(value));
    }

private:
    RecordImage m_to;
};

class ImageReader {
public:
    explicit ImageReader(ConstRecordImage from) : m_from(from) {}

    void text(std::size_t offset, char (&field)[9], OnLoad onLoad)
    {
        if (onLoad == Kept) {
            std::memcpy(field, m_from.data() + offset, sizeof(field) - 1); // the file may have no end mark
        }
    }
    template <typename Integer>
    void le(std::size_t offset, Integer& field, OnLoad onLoad)
    {
        if (onLoad == Kept) {
            std::uint64_t value = 0;
            for (std::size_t byte = sizeof(field); byte > 0; --byte) {
                value = value << 8 | m_from[offset + byte - 1];
            }
            field = static_cast<Integer>(value);
        }
    }
    template <typename Address>
    void bytes(std::size_t offset, Address& field, OnLoad onLoad)
    {
        if (onLoad == Kept) {
            std::memcpy(&field, m_from.data() + offset, sizeof(field));
        }
    }

private:
    ConstRecordImage m_from;
};

/** The layout of a record. Bytes 9 to 11 are padding, 100 to 263 handlers and pointers that mean nothing in a file. */
template <typename Image, typename Iface>
void walkFields(Image image, Iface& iface)
{
    image.text(0, iface.name, Kept);
    image.le(12, iface.type, Kept);
    image.le(16, iface.ipMode, Kept);
    image.le(20, iface.isEnabled, Cleared);
    image.le(21, iface.isAvailable, Cleared);
    image.le(22, iface.isActived, Cleared);
    image.le(23, iface.isConnected, Cleared);
    image.le(24, iface.priority, Cleared);
    image.le(28, iface.ipStatus, Cleared);
    image.bytes(32, iface.macaddr, Cleared);
    image.bytes(40, iface.ipv4, Cleared);
    image.bytes(44, iface.maskv4, Cleared);
    image.bytes(48, iface.gwv4, Cleared);
    image.bytes(52, iface.dns1v4, Cleared);
    image.bytes(56, iface.dns2v4, Cleared);
    image.le(60, iface.thoughput, Cleared);
    image.bytes(64, iface.sipv4, Kept);
    image.bytes(68, iface.smaskv4, Kept);
    image.bytes(72, iface.sgwv4, Kept);
    image.bytes(76, iface.sdns1v4, Kept);
    image.bytes(80, iface.sdns2v4, Kept);
    image.le(84, iface.dhcpcfd, Cleared);
    image.le(88, iface.dhcpcEventHandle, Cleared);
    image.le(92, iface.dhcpDownCount, Kept);
    image.le(96, iface.dhcpDownHandle, Kept);
}
} // namespace

void encodeCheck(std::uint32_t from, CheckImage to)
{
    for (std::size_t byte = 0; byte < kCheckSize; ++byte) {
        to[byte] = static_cast<std::uint8_t>(from >> (8 * byte));
    }
}

std::uint32_t decodeCheck(ConstCheckImage from)
{
    std::uint32_t value = 0;
    for (std::size_t byte = kCheckSize; byte > 0; --byte) {
        value = value << 8 | from[byte - 1];
    }
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
