#include "tools/movo_net_shell/text.h"

#include "fake_locale.h"
#include "tools/movo_net_shell/characters.h"

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

TEST(ShellWords, ABackslashAndTwoDigitsAreAByte)
{
    EXPECT_EQ(splitWords(R"(caf\xc3\xA9 "\xe9 a"\x20b \\xe9)"), Words({"caf\u00e9", "\xe9 a b", "\\xe9"}));
    EXPECT_EQ(splitWords(R"(\x4 \xg1 \x00 \x-1 \x)"), Words({"x4", "xg1", "x00", "x-1", "x"}));
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
    EXPECT_EQ(printable("\u6211\u5bb6 \U0001F3E0 e\u0301"), "\u6211\u5bb6 \U0001F3E0 e\u0301");
    EXPECT_EQ(printable("\U0001F469\u200D\U0001F467"), "\U0001F469\u200D\U0001F467") << "one picture of two";
}

TEST(ShellPrintable, ShowsTheBytesOfControlCharacters)
{
    EXPECT_EQ(printable(std::string_view("a\0\n\x1b\x7f", 5)), "a\\x00\\x0a\\x1b\\x7f");
    EXPECT_EQ(printable("\u0080[\u009b]\u00a0"), "\\xc2\\x80[\\xc2\\x9b]\u00a0");
    EXPECT_EQ(printable("\u2028\u202e\u2066"), "\\xe2\\x80\\xa8\\xe2\\x80\\xae\\xe2\\x81\\xa6");
}

TEST(ShellPrintable, ShowsTheBytesOfWhatIsNoCharacter)
{
    EXPECT_EQ(printable("caf\xe9"), "caf\\xe9");
    EXPECT_EQ(printable("\xe9t\xe9"), "\\xe9t\\xe9");
    EXPECT_EQ(printable("\x9b\xe6\x88"), "\\x9b\\xe6\\x88") << "alone, and cut";
    EXPECT_EQ(printable("\xc0\x8a\xc1\xbf\xe0\x82\x9b"), R"(\xc0\x8a\xc1\xbf\xe0\x82\x9b)") << "too long";
    EXPECT_EQ(printable("\xed\xa0\x80\xf4\x90\x80\x80\xf8"), R"(\xed\xa0\x80\xf4\x90\x80\x80\xf8)");
}

TEST(ShellPadded, CountsThePlacesOnATerminal)
{
    EXPECT_EQ(padded("ab", 4), "ab  ");
    EXPECT_EQ(padded("caf\u00e9", 6), "caf\u00e9  ");
    EXPECT_EQ(padded("\u6211\u5bb6", 6), "\u6211\u5bb6  ");
    EXPECT_EQ(padded("\uc9d1\uff21", 6), "\uc9d1\uff21  ");
    EXPECT_EQ(padded("\U0001F3E0", 4), "\U0001F3E0  ");
    EXPECT_EQ(padded("\U0001FAE8", 4), "\U0001FAE8  ") << "newer than the C library";
    EXPECT_EQ(padded("e\u0301", 2), "e\u0301 ") << "an accent of its own takes no place";
    EXPECT_EQ(padded("abc", 2), "abc ");
}

TEST(ShellPadded, CountsThemOnASystemWithoutLocalesToo)
{
    fake::removeLocales();
    EXPECT_EQ(padded("caf\u00e9", 6), "caf\u00e9  ");
    EXPECT_EQ(padded("\u6211\uc9d1\uff21\U0001F3E0\U00020000", 12), "\u6211\uc9d1\uff21\U0001F3E0\U00020000  ");
}

TEST(ShellTyped, IsReadAsItWas)
{
    for (const char* text : {"plain", "My Home Net", "say \"hi\" \\o/", "#1", "\u6211\u5bb6", "caf\xe9", "a\\xe9",
                             "\x1b", "\u009b1", " a  b ", "\xe6\x88"}) {
        EXPECT_EQ(splitWords(typed(text, false)), Words({text})) << typed(text, false);
        EXPECT_EQ(splitWords("\"" + typed(text, true) + "\""), Words({text})) << typed(text, true);
    }
    EXPECT_EQ(typed("My \u00e9\xe9", false), "My\\ \u00e9\\xe9");
    EXPECT_EQ(typed("My \"#", true), "My \\\"#");
}

TEST(ShellCharacters, AreTheSameWideAndNarrow)
{
    const std::string text = "a\u0080\u07ff\u0800\uffff\U00010000\U0010ffff";
    EXPECT_EQ(wide(text), L"a\u0080\u07ff\u0800\uffff\U00010000\U0010ffff");
    EXPECT_EQ(narrow(wide(text)), text);
}
