#include "tools.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <kest.h>
#include <unistd.h>

using namespace netconfig;
using sim::Call;

namespace {
std::string checkText(const std::string& file)
{
    kest_uint32 check = 0;
    std::memcpy(&check, file.data(), sizeof(check));
    return std::to_string(static_cast<long>(check));
}

/** The file is refused with this message, deleted and closed; the list stays as it was. */
void expectRefused(sim::Set& set, const std::string& contents, const std::string& message)
{
    set.write(kFile, contents);
    set.forget();
    EXPECT_EQ(LoadNetConfig(), 1);
    EXPECT_EQ(said(set, "LoadNetConfig").back(), "ERROR " + message);
    EXPECT_FALSE(set.exists(kFile));
    EXPECT_EQ(set.openDescriptors(), std::vector<std::string>{});
    EXPECT_EQ(listed(), Configuration{});
}

TEST(LoadNetConfig, NoFileLeavesAllAsItIs)
{
    sim::Set set;
    list(Settings{"eth0", 1});
    EXPECT_EQ(LoadNetConfig(), 1);
    EXPECT_EQ(said(set, "LoadNetConfig"), Lines{"ERROR cannot open /data/tv/save/netconfig for read\n"});
    EXPECT_FALSE(set.exists(kFile));
    EXPECT_EQ(listed().size(), 1U);
}

TEST(LoadNetConfig, FileThatCannotBeOpenedStays)
{
    sim::Set set;
    set.write(kFile, golden("netconfig_1.hex"));
    set.fail({.call = Call::Open, .on = kFile, .error = EACCES});
    EXPECT_EQ(LoadNetConfig(), 1);
    EXPECT_EQ(said(set, "LoadNetConfig"), Lines{"ERROR cannot open /data/tv/save/netconfig for read\n"});
    EXPECT_TRUE(set.exists(kFile));
}

TEST(LoadNetConfig, KeepsDescriptorZeroAFailure)
{
    sim::Set set;
    set.write(kFile, golden("netconfig_1.hex"));
    const int input = dup(STDIN_FILENO);
    ASSERT_EQ(close(STDIN_FILENO), 0);
    EXPECT_EQ(LoadNetConfig(), 1);
    EXPECT_EQ(said(set, "LoadNetConfig"), Lines{"ERROR cannot open /data/tv/save/netconfig for read\n"});
    EXPECT_EQ(set.openDescriptors(), Lines{"open(\"/data/tv/save/netconfig\")"})
        << "0 stays open, so the next is not 0";
    EXPECT_EQ(fcntl(0, F_GETFL) & O_ACCMODE, O_RDWR);
    EXPECT_EQ(LoadNetConfig(), 0);
    EXPECT_EQ(dup2(input, STDIN_FILENO), STDIN_FILENO);
    EXPECT_EQ(close(input), 0);
}

TEST(LoadNetConfig, OneRecord)
{
    sim::Set set;
    const std::string file = golden("netconfig_1.hex");
    set.write(kFile, file);
    EXPECT_EQ(LoadNetConfig(), 0);
    EXPECT_EQ(listed(), goldenConfiguration(1));
    EXPECT_EQ(said(set, "LoadNetConfig"),
              (Lines{"INFO read crc=" + checkText(file) + "\n", "INFO int_Movo_Net_Init eth0, type=1\n"}));
    EXPECT_EQ(set.read(kFile), file);
    EXPECT_EQ(set.openDescriptors(), Lines{"popen(\"bdconf -p\")"}) << "the board's stream alone";
}

TEST(LoadNetConfig, KeepsReversingTheOrderOfTheFile)
{
    sim::Set set;
    set.write(kFile, golden("netconfig_3.hex"));
    EXPECT_EQ(LoadNetConfig(), 0);
    EXPECT_EQ(listed(), reversed(goldenConfiguration(3)));
    Lines lines = said(set, "LoadNetConfig");
    std::erase_if(lines, [](const std::string& line) { return line.find(", type=") == std::string::npos; });
    EXPECT_EQ(lines, (Lines{"INFO int_Movo_Net_Init wlan0abc, type=2\n", "INFO int_Movo_Net_Init eth0, type=1\n",
                            "INFO int_Movo_Net_Init lo, type=0\n"}))
        << "initialised from the new head on";
}

TEST(LoadNetConfig, TenRecordsAreTheMost)
{
    sim::Set set;
    set.write(kFile, golden("netconfig_10.hex"));
    EXPECT_EQ(LoadNetConfig(), 0);
    EXPECT_EQ(listed(), reversed(goldenConfiguration(10)));
}

TEST(LoadNetConfig, KeepsRefusingElevenRecords)
{
    sim::Set set;
    expectRefused(set, golden("netconfig_11.hex"), "netconfig file is broken\n");
    EXPECT_EQ(said(set, "LoadNetConfig").size(), 1U);
}

TEST(LoadNetConfig, EverySizeUpTo3000)
{
    sim::Set set;
    for (std::size_t size = 0; size <= 3000; ++size) {
        const std::string contents = size < 4 ? std::string(size, '\0') : fileOf(std::string(size - 4, '\0'));
        const bool loads = size > 4 && size <= 2644 && (size - 4) % kRecord == 0;
        set.write(kFile, contents);
        set.forget();
        ASSERT_EQ(LoadNetConfig(), loads ? 0 : 1) << size;
        ASSERT_EQ(set.exists(kFile), loads) << size;
        if (loads) {
            ASSERT_EQ(listed().size(), (size - 4) / kRecord);
        } else {
            ASSERT_EQ(said(set, "LoadNetConfig"), Lines{"ERROR netconfig file is broken\n"}) << size;
        }
    }
}

TEST(LoadNetConfig, AFlippedByteAnywhereIsFound)
{
    sim::Set set;
    const std::string whole = golden("netconfig_3.hex");
    for (const char flip : {'\x01', '\x80', '\xff'}) {
        for (std::size_t offset = 0; offset < whole.size(); ++offset) {
            std::string broken = whole;
            broken[offset] = static_cast<char>(broken[offset] ^ flip);
            expectRefused(set, broken, "file crc check failed\n");
            ASSERT_FALSE(HasFailure()) << "byte " << offset;
        }
    }
}

TEST(LoadNetConfig, TheComputedCheckValueIsToldAlsoWhenItIsNotTheStoredOne)
{
    sim::Set set;
    const std::string whole = golden("netconfig_1.hex");
    std::string broken = whole;
    broken[0] = static_cast<char>(~broken[0]);
    expectRefused(set, broken, "file crc check failed\n");
    EXPECT_EQ(said(set, "LoadNetConfig"),
              (Lines{"INFO read crc=" + checkText(whole) + "\n", "ERROR file crc check failed\n"}));
}

TEST(LoadNetConfig, SizeThatCannotBeToldIsBroken)
{
    sim::Set set;
    set.fail({.call = Call::Lseek, .on = kFile, .nth = 1});
    expectRefused(set, golden("netconfig_1.hex"), "netconfig file is broken\n");
}

struct ShortRead {
    int nth;
    int bytes; ///< -1: an error
    const char* message;
};

void PrintTo(const ShortRead& read, std::ostream* out)
{
    *out << "read " << read.nth << " gives " << read.bytes;
}

class LoadShort : public testing::TestWithParam<ShortRead> {};

TEST_P(LoadShort, IsRefused)
{
    sim::Set set;
    set.fail({.call = Call::Read, .on = kFile, .nth = GetParam().nth, .bytes = GetParam().bytes});
    expectRefused(set, golden("netconfig_3.hex"), GetParam().message);
    EXPECT_EQ(said(set, "LoadNetConfig").size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Reads, LoadShort,
                         testing::Values(ShortRead{1, -1, "cannot read crc value\n"},
                                         ShortRead{1, 0, "cannot read crc value\n"},
                                         ShortRead{1, 3, "cannot read crc value\n"},
                                         ShortRead{2, -1, "cannot read ifaces from netconfig file\n"},
                                         ShortRead{2, 0, "cannot read ifaces from netconfig file\n"},
                                         ShortRead{2, 791, "cannot read ifaces from netconfig file\n"}));

TEST(LoadNetConfig, WithoutMemoryTakesTheRecordsThatItHas)
{
    sim::Set set;
    set.write(kFile, golden("netconfig_3.hex"));
    set.fail({.call = Call::Calloc, .nth = 3, .error = ENOMEM});
    EXPECT_EQ(LoadNetConfig(), 0);
    Configuration first = goldenConfiguration(3);
    first.pop_back();
    EXPECT_EQ(listed(), reversed(first));
    EXPECT_EQ(said(set, "LoadNetConfig").at(1), "ERROR out of memory\n");
}

TEST(LoadNetConfig, WithoutAnyMemoryTheListIsEmpty)
{
    sim::Set set;
    list(Settings{"old", 1});
    set.write(kFile, golden("netconfig_3.hex"));
    set.fail({.call = Call::Calloc, .nth = 1, .times = 1, .error = ENOMEM});
    EXPECT_EQ(LoadNetConfig(), 0);
    EXPECT_EQ(listed(), Configuration{});
}

TEST(LoadNetConfig, LockThatCannotBeTakenDropsTheNewRecords)
{
    sim::Set set;
    MovoNetIface_t& old = list(Settings{"old", 1});
    set.write(kFile, golden("netconfig_3.hex"));
    set.failLock(movonet::ifaceListLock);
    EXPECT_EQ(LoadNetConfig(), 1);
    EXPECT_EQ(said(set, "LoadNetConfig").back(), "ERROR lock mutex failed\n");
    EXPECT_EQ(records(), std::vector<MovoNetIface_t*>{&old});
    EXPECT_TRUE(set.exists(kFile)) << "the file is good";
}

int s_deInits;

TEST(LoadNetConfig, ReplacesTheListWithoutEndingItsBackEnds)
{
    sim::Set set;
    MovoNetIface_t& old = list(Settings{"old", 1});
    old.funcs.DeInit = [](MovoNetIface_t*) -> RETURN_TYPE { return ++s_deInits; };
    set.write(kFile, golden("netconfig_1.hex"));
    EXPECT_EQ(LoadNetConfig(), 0);
    EXPECT_EQ(listed(), goldenConfiguration(1));
    EXPECT_EQ(s_deInits, 0);
    EXPECT_STREQ(old.name, "old") << "whoever still holds it may read it";
}
} // namespace
