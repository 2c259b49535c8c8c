#include "support/text.h"

#include "sim/sim.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <string>

using namespace movonet;

namespace {
TEST(FixedText, HoldsWhatFits)
{
    const FixedText<6> text("%s%d", "abc", 12);
    EXPECT_STREQ(text.c_str(), "abc12");
    EXPECT_TRUE(text.fits());
}

TEST(FixedText, CutsAndTellsSo)
{
    const FixedText<6> text("%s%d", "abc", 123);
    EXPECT_STREQ(text.c_str(), "abc12");
    EXPECT_FALSE(text.fits());
}

TEST(FixedText, MayBeEmpty)
{
    const FixedText<1> text("%s", "");
    EXPECT_STREQ(text.c_str(), "");
    EXPECT_TRUE(text.fits());
    EXPECT_FALSE(FixedText<1>("%s", "a").fits());
}

TEST(FixedText, DoesNotFitWhenItCannotBeFormatted)
{
    const FixedText<8> text("%lc", static_cast<wint_t>(0x110000));
    EXPECT_FALSE(text.fits());
}

TEST(HeapText, HoldsAnyLength)
{
    const std::string longText(100000, 'x');
    EXPECT_EQ(HeapText("%s.%s", longText.c_str(), "eth0").c_str(), longText + ".eth0");
    EXPECT_STREQ(HeapText("%s", "").c_str(), "");
}

TEST(HeapText, IsEmptyWithoutMemory)
{
    sim::Set set;
    set.fail({.call = sim::Call::Vasprintf});
    EXPECT_STREQ(HeapText("%s", "text").c_str(), "");
}

TEST(CopiedText, IsCutAndAlwaysEnded)
{
    char to[4];
    copyText(to, "abcdef");
    EXPECT_STREQ(to, "abc");
    copyText(to, "abc");
    EXPECT_STREQ(to, "abc");
    copyText(to, "");
    EXPECT_STREQ(to, "");
}

TEST(CopiedText, ClearsWhatWasThere)
{
    char to[6] = {'1', '2', '3', '4', '5', '6'};
    copyText(to, "ab");
    EXPECT_EQ(std::string(to, sizeof(to)), std::string("ab\0\0\0\0", 6));
}

TEST(Octets, ComeFirstOctetFirst)
{
    EXPECT_EQ(octets(htonl(0x01020304)), (std::array<int, 4>{1, 2, 3, 4}));
    EXPECT_EQ(octets(htonl(0xfffefd80)), (std::array<int, 4>{255, 254, 253, 128}));
}

TEST(DottedQuadText, HoldsTheLongestAddress)
{
    EXPECT_STREQ(DottedQuad(0xffffffff).c_str(), "255.255.255.255");
    EXPECT_STREQ(DottedQuad(0).c_str(), "0.0.0.0");
    EXPECT_STREQ(DottedQuad(htonl(0x0a000203)).c_str(), "10.0.2.3");
}

TEST(DottedQuadParsing, TakesExactlyFourDecimalParts)
{
    std::uint32_t address = 0;
    EXPECT_TRUE(parseDottedQuad("10.0.2.3", address));
    EXPECT_EQ(address, htonl(0x0a000203));
    EXPECT_TRUE(parseDottedQuad("255.255.255.255", address));
    EXPECT_TRUE(parseDottedQuad("0.0.0.0", address));
    EXPECT_EQ(address, 0U);
}

TEST(DottedQuadParsing, RefusesEverythingElseAndLeavesTheAddress)
{
    for (const char* text :
         {"", " ", "1", "8.8", "8.8.8", "8.8.8.8.8", "256.1.1.1", "1.1.1.-1", "1.1.1.1 ", " 1.1.1.1", "1..1.1",
          ".1.1.1.1", "1.1.1.1.", "0x1.1.1.1", "1.1.1.1\n", "01.1.1.1", "a.b.c.d", "::1"}) {
        std::uint32_t address = 7;
        EXPECT_FALSE(parseDottedQuad(text, address)) << text;
        EXPECT_EQ(address, 7U);
    }
}
} // namespace
