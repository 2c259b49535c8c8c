#include "bench.h"
#include "names.h"

#include <atomic>
#include <gtest/gtest.h>
#include <sched.h>

// Threads that meet at the table of networks: what one replaces while another is half way.

using namespace wifi;
using namespace movonet;

namespace {
/** Runs once, after the next look-up of a name, on the thread that looked it up. */
std::function<void()> s_afterLookUp;
} // namespace

extern "C" {
int __real_get_essid_index(MovoNetWifi_t* wifi, const char* essid);

int __wrap_get_essid_index(MovoNetWifi_t* wifi, const char* essid)
{
    const int index = __real_get_essid_index(wifi, essid);
    if (const auto action = std::exchange(s_afterLookUp, nullptr)) {
        action();
    }
    return index;
}
}

namespace {
/** A bench whose network "Net" is gone from the table as soon as it was looked up. */
struct Replaced : Bench {
    Replaced()
    {
        list("Net", _MOVO_NET_WIFI_SECURITY_WPA2_PSK_, _MOVO_NET_WIFI_ENCRYP_AES_);
        s_afterLookUp = [this] {
            MovNetWifiEssItem_t others[MOVO_NET_MAX_ESSS] = {};
            std::strcpy(others[0].essid, "Other");
            publishEsss(wifi(), others, 1);
        };
    }
    ~Replaced()
    {
        EXPECT_STREQ(wifi().esss[0].essid, "Other");
        EXPECT_STREQ(wifi().esss[0].Key, "");
        EXPECT_EQ(wifi().esss[0].priority, 0);
        EXPECT_EQ(errors(set), Lines{});
    }
    Replaced(const Replaced&) = delete;
    Replaced& operator=(const Replaced&) = delete;
};
} // namespace

TEST(ReplacedTable, TakesNoKeyForANetworkThatIsGone)
{
    Replaced bench;
    EXPECT_EQ(int_Movo_NET_WifiSetKey(&bench.iface, "Net", "a key", 5), 1);
}

TEST(ReplacedTable, TakesNoPriorityForANetworkThatIsGone)
{
    Replaced bench;
    EXPECT_EQ(int_Movo_NET_WifiSetPriorityEss(&bench.iface, "Net", 7), 1);
}

TEST(ResultFile, IsNotEmptiedByAnotherUpdateBeforeItIsRead)
{
    Bench bench;
    bench.supplicant.replies["SCAN_RESULTS"] = {kTable};
    {
        const ScopedLock table(bench.wifi().lock); // where the first update waits with its results in the file
        bench.set.background([&bench] { EXPECT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 0); });
        while (!bench.set.exists(kScanFile) || bench.set.read(kScanFile) != kTable) {
            (void)sched_yield();
        }
        bench.set.fail({.call = sim::Call::Write, .on = kScanFile, .nth = 1, .error = ENOSPC});
        const sim::CapturedOutput output;
        EXPECT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 1);
        EXPECT_EQ(bench.set.read(kScanFile), "");
    }
    bench.set.joinBackground();
    ASSERT_EQ(bench.wifi().esss_num, 1);
    EXPECT_STREQ(bench.wifi().esss[0].essid, "Net");
    EXPECT_CALLBACKS(bench.set, {{sim::WIFIESSSUPDATED, "mlan0"}});
}

TEST(ResultFile, IsNotEmptiedBetweenItsWritingAndItsReading)
{
    Bench bench;
    bench.supplicant.replies["SCAN_RESULTS"] = {kTable};
    bench.set.write(kScanFile, "");
    std::atomic<bool> begun = false;
    bench.set.onLog([&](const sim::LogLine& line) { begun = begun || line.text == "reply: " + kTable + "\n"; });
    bench.set.fail({.call = sim::Call::Write, .on = kScanFile, .nth = 2, .error = ENOSPC});
    bench.set.fail({.call = sim::Call::Open, .on = kScanFile, .nth = 2, .does = [&] { // the first update's second look
                        begun = false;
                        bench.set.background([&] { EXPECT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 1); });
                        for (int yields = 0; !begun || yields < 1000; ++yields) {
                            (void)sched_yield(); // the other one goes as far as it can
                        }
                        EXPECT_EQ(bench.set.read(kScanFile), kTable);
                    }});
    {
        const sim::CapturedOutput output;
        EXPECT_EQ(int_Movo_Net_Wpactrl_ScanResult(&bench.iface), 0);
        bench.set.joinBackground();
    }
    EXPECT_EQ(bench.wifi().esss_num, 1);
    EXPECT_EQ(bench.set.read(kScanFile), "");
}
