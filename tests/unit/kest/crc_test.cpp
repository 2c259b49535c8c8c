#include "kest_libc.h"

#include "kest.h"

#include <algorithm>
#include <random>
#include <zlib.h>

namespace {

class Crc : public KestTest {
protected:
    static std::string noise(size_t length)
    {
        std::mt19937 random(static_cast<unsigned>(length));
        std::string bytes(length, '\0');
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
        return bytes;
    }
    static kest_uint32 ofZlib(const std::string& bytes)
    {
        return static_cast<kest_uint32>(
            crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size())));
    }
    static kest_uint32 ours(kest_uint32 previous, const std::string& bytes, size_t from, size_t to)
    {
        return Kest_Util_CRC32(previous, bytes.data() + from, static_cast<kest_sint32>(to - from));
    }
};

TEST_F(Crc, KnownValue)
{
    EXPECT_EQ(Kest_Util_CRC32(0, "123456789", 9), 0xCBF43926U);
}

TEST_F(Crc, EqualsZlibForEveryLengthUpToOneThousand)
{
    for (size_t length = 0; length <= 1000; ++length) {
        const std::string bytes = noise(length);
        ASSERT_EQ(ours(0, bytes, 0, length), ofZlib(bytes)) << "length " << length;
    }
}

TEST_F(Crc, EqualsZlibWhenContinuedInTwoPiecesCutAnywhere)
{
    const std::string bytes = noise(432);
    for (size_t cut = 0; cut <= bytes.size(); ++cut) {
        const kest_uint32 first = ours(0, bytes, 0, cut);
        ASSERT_EQ(ours(first, bytes, cut, bytes.size()), ofZlib(bytes)) << "cut at " << cut;
    }
}

TEST_F(Crc, EqualsZlibWhenContinuedInManyPiecesOfUnequalLength)
{
    const std::string bytes = noise(100'000);
    kest_uint32 crc = 0;
    size_t from = 0;
    for (size_t piece = 1; from < bytes.size(); piece = piece * 3 % 1009) {
        const size_t to = std::min(from + piece, bytes.size());
        crc = ours(crc, bytes, from, to);
        from = to;
    }
    EXPECT_EQ(crc, ofZlib(bytes));
}

TEST_F(Crc, NothingToAddKeepsTheRunningValue)
{
    EXPECT_EQ(Kest_Util_CRC32(0, nullptr, 0), 0U);
    EXPECT_EQ(Kest_Util_CRC32(0xCBF43926U, nullptr, 0), 0xCBF43926U);
    EXPECT_EQ(Kest_Util_CRC32(0xCBF43926U, "x", -1), 0xCBF43926U);
}

} // namespace
