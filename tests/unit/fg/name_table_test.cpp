#include "fg_test.h"

namespace {
constexpr const char* kFile = "/proc/net/table";
constexpr const char* kReader = "GetInterfacesFromFile";

std::string lineOf(const std::string& name)
{
    return name + ": 0 0 0\n";
}

std::string linesOf(int count)
{
    std::string lines;
    for (int number = 0; number < count; ++number) {
        lines += lineOf("if" + std::to_string(number));
    }
    return lines;
}

class NameTable : public testing::Test {
protected:
    sim::Set set;
    MovoNetIfnames_t names = {};

    std::vector<std::string> listed() const
    {
        std::vector<std::string> all;
        for (const auto& name : names) {
            if (name[0] == '\0') {
                break;
            }
            all.emplace_back(name);
        }
        return all;
    }
};

struct Table {
    const char* what;
    std::string contents;
    std::vector<std::string> names;
};
void PrintTo(const Table& table, std::ostream* out)
{
    *out << table.what;
}

class HostileTable : public NameTable, public testing::WithParamInterface<Table> {};

TEST_P(HostileTable, GivesTheNamesBeforeAColon)
{
    set.write(kFile, GetParam().contents);
    EXPECT_EQ(GetInterfacesFromFile(kFile, names), 0);
    EXPECT_EQ(listed(), GetParam().names);
    EXPECT_TRUE(set.log().empty());
}

using namespace std::string_literals;
INSTANTIATE_TEST_SUITE_P(
    Contents, HostileTable,
    testing::Values(
        Table{"nothing", "", {}}, Table{"headers alone", "Inter-|   Receive\n face |bytes\n", {}},
        Table{"headers and names", "Inter-| Receive\n face |bytes\n    lo: 1 2\n  eth0: 3 4\n", {"lo", "eth0"}},
        Table{"no blank after the colon", "eth0:123456\n", {"eth0"}},
        Table{"blanks inside and before the colon", " e t h 0 : 1\n", {"eth0"}},
        Table{"a tab is no blank", "eth\t0: 1\n", {"eth\t0"}},
        Table{"no newline at the end", "lo: 1\neth0: 1", {"lo", "eth0"}},
        Table{"empty lines", "\n\n\neth0: 1\n\n\nlo: 1\n\n", {"eth0", "lo"}},
        Table{"blank lines", "   \n \neth0: 1\n", {"eth0"}},
        Table{"a short line after a longer one without a colon", "abcdefgh\nlo: 1\n", {"lo"}},
        Table{"eight characters", "abcdefgh: 1\n", {"abcdefgh"}},
        Table{"nine characters", "abcdefghi: 1\neth0: 1\n", {"eth0"}},
        Table{"nine characters last", "eth0: 1\nabcdefghi: 1\n", {"eth0"}},
        Table{"eight characters and blanks", "  abcdefgh   : 1\n", {"abcdefgh"}},
        Table{"a line without a colon last", "eth0: 1\nwlan\n", {"eth0"}}, Table{"aliases", "eth0:1: 1\n", {"eth0"}},
        Table{"a name twice", "eth0: 1\neth0: 1\n", {"eth0", "eth0"}},
        Table{"a zero byte ends its line", "et\0h0: 1\neth1: 1\n"s, {"eth1"}},
        Table{"bytes above 127", "\xff\xfe\x80: 1\n", {"\xff\xfe\x80"}},
        Table{"shell characters", ";reboot;: 1\n", {";reboot;"}},
        Table{"a long line without a colon", std::string(5000, 'x') + "\neth0: 1\n", {"eth0"}},
        Table{"a long rest", "eth0: " + std::string(5000, '1') + "\nlo: 1\n", {"eth0", "lo"}},
        Table{"a line that fills the buffer", "eth0:" + std::string(250, ' ') + "\nlo: 1\n", {"eth0", "lo"}},
        Table{"ten names", linesOf(10), {"if0", "if1", "if2", "if3", "if4", "if5", "if6", "if7", "if8", "if9"}}));

TEST_F(NameTable, KeepsTakingThePiecesOfALongLineForLines)
{
    set.write(kFile, "eth0: " + std::string(249, ' ') + "bogus: 1\n"); // 255 characters, then the rest
    EXPECT_EQ(GetInterfacesFromFile(kFile, names), 0);
    EXPECT_EQ(listed(), (std::vector<std::string>{"eth0", "bogus"}));
}

TEST_F(NameTable, KeepsCountingANamelessLineWhichEndsTheList)
{
    set.write(kFile, "lo: 1\n : 1\neth0: 1\n");
    EXPECT_EQ(GetInterfacesFromFile(kFile, names), 0);
    EXPECT_EQ(listed(), (std::vector<std::string>{"lo"}));
    EXPECT_STREQ(names[2], "eth0");
}

class ElevenLines : public NameTable, public testing::WithParamInterface<const char*> {};

TEST_P(ElevenLines, KeepTenNamesWhateverTheNextLineIs)
{
    set.write(kFile, linesOf(10) + GetParam() + "tail: 1\n");
    EXPECT_EQ(GetInterfacesFromFile(kFile, names), 0);
    EXPECT_EQ(listed().size(), 10U);
    EXPECT_EQ(listed().back(), "if9");
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, kReader, "ifname count > 10\n");
    EXPECT_EQ(timesLogged(set, "ifname count > 10\n"), 1);
}
INSTANTIATE_TEST_SUITE_P(Next, ElevenLines, testing::Values("eth0: 1\n", "\n", "no colon\n", "abcdefghijk: 1\n"));

TEST_F(NameTable, NeverHoldsMoreThanTenNames)
{
    set.write(kFile, linesOf(500));
    EXPECT_EQ(GetInterfacesFromFile(kFile, names), 0);
    EXPECT_EQ(listed().size(), 10U);
}

TEST_F(NameTable, StaysAsItWasWithoutTheFile)
{
    set.write(kFile, linesOf(2));
    ASSERT_EQ(GetInterfacesFromFile(kFile, names), 0);
    set.remove(kFile);
    EXPECT_EQ(GetInterfacesFromFile(kFile, names), 1);
    EXPECT_EQ(listed(), (std::vector<std::string>{"if0", "if1"}));
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, kReader, "cannot open /proc/net/table for read\n");
}

TEST_F(NameTable, StaysAsItWasWhenTheFileMayNotBeRead)
{
    set.write(kFile, linesOf(2));
    ASSERT_EQ(GetInterfacesFromFile(kFile, names), 0);
    set.fail({.call = sim::Call::Fopen, .on = kFile, .error = EACCES});
    EXPECT_EQ(GetInterfacesFromFile(kFile, names), 1);
    EXPECT_EQ(listed().size(), 2U);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, kReader, "cannot open /proc/net/table for read\n");
}

TEST_F(NameTable, IsShorterAfterAShorterFile)
{
    set.write(kFile, linesOf(5));
    ASSERT_EQ(GetInterfacesFromFile(kFile, names), 0);
    set.write(kFile, linesOf(1));
    ASSERT_EQ(GetInterfacesFromFile(kFile, names), 0);
    EXPECT_EQ(listed(), (std::vector<std::string>{"if0"}));
}

TEST_F(NameTable, ClosesItsFile)
{
    set.write(kFile, linesOf(12));
    ASSERT_EQ(GetInterfacesFromFile(kFile, names), 0);
    EXPECT_TRUE(set.openDescriptors().empty());
}

TEST_F(NameTable, IsSearchedForWholeNames)
{
    set.write(kFile, linesOf(10));
    ASSERT_EQ(GetInterfacesFromFile(kFile, names), 0);
    EXPECT_EQ(FindInterfaceName(names, "if0"), 1);
    EXPECT_EQ(FindInterfaceName(names, "if9"), 1);
    EXPECT_EQ(FindInterfaceName(names, "if"), 0);
    EXPECT_EQ(FindInterfaceName(names, "if00"), 0);
    EXPECT_EQ(FindInterfaceName(names, "IF0"), 0);
    EXPECT_EQ(FindInterfaceName(names, ""), 0);
}

TEST_F(NameTable, IsSearchedUpToItsEnd)
{
    set.write(kFile, linesOf(3));
    ASSERT_EQ(GetInterfacesFromFile(kFile, names), 0);
    set.write(kFile, linesOf(1));
    ASSERT_EQ(GetInterfacesFromFile(kFile, names), 0);
    EXPECT_EQ(FindInterfaceName(names, "if2"), 0) << "left over beyond the end";
}
} // namespace
