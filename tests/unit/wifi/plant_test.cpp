#include "bench.h"
#include "names.h"
#include "sim/plants.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace wifi;
using sim::Plant;

// What a local user may put in the place of the file of the last scan.

namespace {
const std::string kFalseTable = kTableHeader + "02:00:00:00:06:66\t2412\t-40\t[ESS]\tFalse\n";

struct Scanned : Bench {
    Scanned() { supplicant.replies["SCAN_RESULTS"] = {kTable}; }

    std::string first() { return wifi().esss_num == 1 ? wifi().esss[0].essid : ""; }
    /** Type and mode of the file of the last scan. */
    mode_t mode() const
    {
        struct stat status {};
        EXPECT_EQ(lstat(set.real(kScanFile).c_str(), &status), 0);
        return status.st_mode;
    }
};

class PlantedScanFile : public testing::TestWithParam<Plant> {};

TEST_P(PlantedScanFile, GivesWayToAFileOfOurOwn)
{
    Scanned bench;
    sim::plant(bench.set, kScanFile, GetParam(), "secret");
    EXPECT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 0);
    EXPECT_EQ(bench.first(), "Net");
    EXPECT_EQ(bench.set.read(kScanFile), kTable);
    EXPECT_EQ(bench.mode(), S_IFREG | 0644U);
    if (bench.set.exists(sim::kVictim)) {
        EXPECT_EQ(bench.set.read(sim::kVictim), "secret");
    }
    EXPECT_EQ(bench.set.exists(sim::kVictim), GetParam() == Plant::Link || GetParam() == Plant::HardLink);
    EXPECT_EQ(errors(bench.set), Lines{});
}

TEST_P(PlantedScanFile, IsNotReadInPlaceOfWhatWasWritten)
{
    Scanned bench;
    bench.set.write(kScanFile, ""); // the first look is at a file of our own
    bench.set.fail({.call = sim::Call::Open, .on = kScanFile, .nth = 2, .does = [&bench] {
                        sim::plant(bench.set, kScanFile, GetParam(), kFalseTable);
                    }});
    EXPECT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 1);
    EXPECT_EQ(errors(bench.set), Lines{"int_Movo_Net_Wpactrl_ScanResult: Could not open scan result file.\n"});
    EXPECT_EQ(bench.first(), "");
    EXPECT_CALLBACKS(bench.set, {});
    bench.wifi().lock.unlock();
}

INSTANTIATE_TEST_SUITE_P(Kinds, PlantedScanFile,
                         testing::Values(Plant::Link, Plant::DanglingLink, Plant::HardLink, Plant::Fifo,
                                         Plant::ForeignFile),
                         [](const auto& test) { return sim::nameOf(test.param); });

TEST(ScanFile, IsReadByEverybodyAndWrittenByNobodyElse)
{
    Scanned bench;
    for (const mode_t mask : {0U, 077U}) {
        const mode_t before = umask(mask);
        bench.set.remove(kScanFile);
        EXPECT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 0);
        (void)umask(before);
        EXPECT_EQ(bench.mode(), S_IFREG | 0644U) << mask;
    }
    EXPECT_EQ(chmod(bench.set.real(kScanFile).c_str(), 0666), 0); // as an older version made it
    bench.set.write(kScanFile, kTable + kTable);
    EXPECT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 0);
    EXPECT_EQ(bench.mode(), S_IFREG | 0644U);
    EXPECT_EQ(bench.set.read(kScanFile), kTable);
}
} // namespace
