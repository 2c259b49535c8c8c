#include "kest.h"

#include <array>

static constexpr kest_uint32 kReflectedPolynomial = 0xEDB88320U;

static consteval std::array<kest_uint32, 256> makeTable()
{
    std::array<kest_uint32, 256> table{};
    for (kest_uint32 byte = 0; byte < table.size(); ++byte) {
        kest_uint32 remainder = byte;
        for (int bit = 0; bit < 8; ++bit) {
            remainder = (remainder >> 1) ^ ((remainder & 1U) != 0 ? kReflectedPolynomial : 0U);
        }
        table[byte] = remainder;
    }
    return table;
}

static constexpr std::array<kest_uint32, 256> kTable = makeTable();

kest_uint32 Kest_Util_CRC32(kest_uint32 previous, const void* buffer, kest_sint32 length)
{
    const auto* bytes = static_cast<const kest_uint8*>(buffer);
    kest_uint32 crc = ~previous;
    for (kest_sint32 i = 0; i < length; ++i) {
        crc = (crc >> 8) ^ kTable[(crc ^ bytes[i]) & 0xFFU];
    }
    return ~crc;
}
