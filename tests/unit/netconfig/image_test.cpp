#include "tools.h"

#include "movo_net_fg/netconfig_image.h"

#include <cstring>

using namespace netconfig;
using namespace movonet;

namespace {
constexpr std::size_t kFields = 100; // up to here the record's layout is the file's, on every machine

MovoNetIface_t ifaceOf(const std::string& bytes)
{
    MovoNetIface_t record{};
    std::memcpy(static_cast<void*>(&record), bytes.data(), bytes.size());
    return record;
}

std::string encoded(const MovoNetIface_t& record)
{
    std::array<std::uint8_t, kRecordSize> image;
    image.fill(0xee);
    encodeRecord(record, image);
    return std::string(image.begin(), image.end());
}

MovoNetIface_t decoded(const std::string& bytes)
{
    std::array<std::uint8_t, kRecordSize> image;
    std::memcpy(image.data(), bytes.data(), image.size());
    MovoNetIface_t record;
    std::memset(static_cast<void*>(&record), 0xee, sizeof(record));
    decodeRecord(image, record);
    return record;
}

/** A different byte at every place. */
std::string pattern()
{
    std::string bytes;
    for (std::size_t at = 0; at < kFields; ++at) {
        bytes += static_cast<char>(at + 1);
    }
    return bytes;
}

TEST(RecordImage, HasEveryFieldWhereTheRecordHasIt)
{
    std::string bytes = pattern();
    std::string expected = bytes;
    expected.replace(9, 3, 3, '\0'); // padding
    EXPECT_EQ(encoded(ifaceOf(bytes)), expected + std::string(kRecordSize - kFields, '\0'));
}

TEST(RecordImage, OperationsAndPointersAreZero)
{
    MovoNetIface_t record{};
    std::memset(static_cast<void*>(&record.funcs), 0xff, sizeof(record) - offsetof(MovoNetIface_t, funcs));
    EXPECT_EQ(encoded(record), std::string(kRecordSize, '\0'));
}

TEST(RecordImage, IntegersAreWrittenLowestByteFirst)
{
    MovoNetIface_t record{};
    record.type = static_cast<MovoNetIfaceType_e>(0x01020304);
    record.dhcpDownCount = -2;
    const std::string image = encoded(record);
    EXPECT_EQ(image.substr(12, 4), "\x04\x03\x02\x01");
    EXPECT_EQ(image.substr(92, 4), "\xfe\xff\xff\xff");
}

TEST(RecordImage, AddressesAreWrittenAsMemoryHasThem)
{
    MovoNetIface_t record{};
    std::memcpy(&record.sipv4, "\x7f\x00\x00\x01", 4);
    std::memcpy(&record.macaddr, "\x52\x54\x00\x12\x34\x56", 6);
    const std::string image = encoded(record);
    EXPECT_EQ(image.substr(64, 4), std::string("\x7f\x00\x00\x01", 4));
    EXPECT_EQ(image.substr(32, 8), std::string("\x52\x54\x00\x12\x34\x56\x00\x00", 8));
}

TEST(RecordImage, GivesBackWhatOutlastsARestartAndNothingElse)
{
    const std::string bytes = pattern() + std::string(kRecordSize - kFields, '\xff');
    const MovoNetIface_t record = decoded(bytes);
    const MovoNetIface_t source = ifaceOf(pattern());

    MovoNetIface_t expected{};
    std::memcpy(expected.name, source.name, 8); // the ninth byte is the end mark
    expected.type = source.type;
    expected.ipMode = source.ipMode;
    expected.sipv4 = source.sipv4;
    expected.smaskv4 = source.smaskv4;
    expected.sgwv4 = source.sgwv4;
    expected.sdns1v4 = source.sdns1v4;
    expected.sdns2v4 = source.sdns2v4;
    expected.dhcpcfd = -1;
    expected.dhcpDownCount = source.dhcpDownCount;
    expected.dhcpDownHandle = source.dhcpDownHandle;
    EXPECT_EQ(encoded(record), encoded(expected));
    EXPECT_EQ(std::memcmp(&record.funcs, &expected.funcs, sizeof(record.funcs)), 0);
    EXPECT_EQ(record.priv, nullptr);
    EXPECT_EQ(record.next, nullptr);
}

TEST(RecordImage, WhatIsReadIsWrittenAgain)
{
    for (const char* name : {"netconfig_3.hex", "netconfig_10.hex"}) {
        const std::string file = golden(name);
        for (std::size_t at = kCheckSize; at < file.size(); at += kRecordSize) {
            const std::string bytes = file.substr(at, kRecordSize);
            std::string again = encoded(decoded(bytes));
            EXPECT_EQ(again.substr(0, 20), bytes.substr(0, 20)) << name << " at " << at;
            EXPECT_EQ(again.substr(64, 20), bytes.substr(64, 20)) << name << " at " << at;
            EXPECT_EQ(again.substr(92, 8), bytes.substr(92, 8)) << name << " at " << at;
        }
    }
}

TEST(CheckImage, IsLowestByteFirst)
{
    std::array<std::uint8_t, kCheckSize> image{};
    encodeCheck(0x89abcdefU, image);
    EXPECT_EQ(image, (std::array<std::uint8_t, 4>{0xef, 0xcd, 0xab, 0x89}));
    EXPECT_EQ(decodeCheck(image), 0x89abcdefU);
}
} // namespace
