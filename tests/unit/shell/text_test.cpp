#include "tools/movo_net_shell/text.h"

#include <arpa/inet.h>
#include <cstring>
#include <gtest/gtest.h>

using namespace shell;
using Words = std::vector<std::string>;

TEST(ShellWords, AreSplitAtBlanks)
{
    EXPECT_EQ(splitWords(""), Words());
    EXPECT_EQ(splitWords(" \t\r"), Words());
    EXPECT_EQ(splitWords("a"), Words({"a"}));
    EXPECT_EQ(splitWords("  a \t bc  "), Words({"a", "bc"}));
}

TEST(ShellWords, QuotesKeepBlanks)
{
    EXPECT_EQ(splitWords("\"a b\" c\"d e\"f"), Words({"a b", "cd ef"}));
    EXPECT_EQ(splitWords("\"\""), Words({""}));
    EXPECT_EQ(splitWords("\"# a\""), Words({"# a"}));
}

TEST(ShellWords, ABackslashKeepsTheNextCharacter)
{
    EXPECT_EQ(splitWords(R"(a\ b \"c \\ \#)"), Words({"a b", "\"c", "\\", "#"}));
    EXPECT_EQ(splitWords(R"("a\"b")"), Words({"a\"b"}));
}

TEST(ShellWords, AnOpenQuoteIsNoLine)
{
    EXPECT_EQ(splitWords("a \"b"), std::nullopt);
    EXPECT_EQ(splitWords("a\\"), std::nullopt);
}

TEST(ShellNumbers, AreWholeWords)
{
    EXPECT_EQ(parseInt("0"), 0);
    EXPECT_EQ(parseInt("-2147483648"), -2147483648);
    EXPECT_EQ(parseInt("2147483647"), 2147483647);
    for (const char* text : {"", "-", "1x", " 1", "1 ", "+1", "0x1", "2147483648", "1.0"}) {
        EXPECT_EQ(parseInt(text), std::nullopt) << text;
    }
}

TEST(ShellSeconds, MayHaveAFraction)
{
    using namespace std::chrono_literals;
    EXPECT_EQ(parseSeconds("0"), 0ms);
    EXPECT_EQ(parseSeconds("2"), 2000ms);
    EXPECT_EQ(parseSeconds("0.25"), 250ms);
    EXPECT_EQ(parseSeconds("31536000"), 31536000000ms);
    for (const char* text : {"", "s", "1s", "-0.1", "31536001", "inf", "nan"}) {
        EXPECT_EQ(parseSeconds(text), std::nullopt) << text;
    }
}

TEST(ShellAddresses, AreDottedQuadsInNetworkOrder)
{
    EXPECT_EQ(parseAddress("1.2.3.4"), htonl(0x01020304));
    EXPECT_EQ(addressText(htonl(0x01020304)), "1.2.3.4");
    EXPECT_EQ(addressText(0xFFFFFFFF), "255.255.255.255");
    for (const char* text : {"", "1.2.3", "1.2.3.4.5", "1.2.3.256", "1.2.3.4 ", "a.b.c.d", "::1"}) {
        EXPECT_EQ(parseAddress(text), std::nullopt) << text;
    }
}

TEST(ShellMac, IsTheSixLowestAddressedBytes)
{
    constexpr unsigned char kBytes[8] = {0x02, 0x4d, 0x4f, 0x56, 0x4f, 0xff, 0x77, 0x88};
    long long address = 0;
    std::memcpy(&address, kBytes, sizeof(address));
    EXPECT_EQ(macText(address), "02:4d:4f:56:4f:ff");
}

TEST(ShellPrintable, LeavesLettersOfEveryLanguage)
{
    EXPECT_EQ(printable("Caf\u00e9 ~"), "Caf\u00e9 ~");
    EXPECT_EQ(printable(std::string_view("a\0\n\x1b\x7f", 5)), "a\\x00\\x0a\\x1b\\x7f");
}
