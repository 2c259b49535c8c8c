#include "bench.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <kest.h>
#include <pthread.h>

using namespace hostap;
using sim::Call;

// Starts beyond the eighth: no new watch, no new pipe.

namespace {
constexpr const char* kOpenPipe = "open(\"/tmp/softapnotify.pipe.bcm0\")";
constexpr const char* kInotify = "inotify_init1()";
constexpr int kWatches = 8;
constexpr int kDayMs = 86'400'000;

std::vector<sim::Called> devices(int watches)
{
    return std::vector<sim::Called>(static_cast<std::size_t>(watches), {sim::SOFTAPCONNECTED, "bcm0"});
}

/** Bytes of address space that this process has taken. */
std::uint64_t addressSpace()
{
    std::uint64_t total = 0;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        char* end = nullptr;
        const std::uint64_t from = std::strtoull(line.c_str(), &end, 16);
        total += std::strtoull(end + 1, nullptr, 16) - from;
    }
    return total;
}

struct SoftApYear : testing::Test {
    Bench bench;

    std::ptrdiff_t open(const char* call) const
    {
        const Lines all = bench.set.openDescriptors();
        return std::count(all.begin(), all.end(), call);
    }
    void startAndStop()
    {
        ASSERT_EQ(Movo_Net_WiFi_HostAP_Start(0), 0);
        bench.set.settle();
        ASSERT_EQ(Movo_Net_WiFi_HostAP_Status(0), 1);
        ASSERT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 0);
        bench.set.forget();
    }
    void startUntilEightWatch()
    {
        for (int count = 0; count < kWatches; ++count) {
            startAndStop();
        }
        bench.set.grantTicks(1); // the loop takes the pipes up
    }
    void expectThatAllIsHeard()
    {
        bench.set.grantTicks(1);
        bench.set.forget();
        bench.writeLeases(kPhoneLease);
        EXPECT_TRUE(bench.set.calledBack(devices(kWatches)));
        bench.say("up");
        EXPECT_CALLBACKS(bench.set, {{sim::SOFTAPSCAN, "bcm0"}});
    }
    void expectFlat(int starts, int everyMs)
    {
        constexpr std::uint64_t kTolerance = 16U << 20; // records of the test and of a sanitizer
        startUntilEightWatch();
        const Lines descriptors = bench.set.openDescriptors();
        const int threads = bench.set.liveThreads();
        const std::uint64_t space = addressSpace();
        for (int count = 0; count < starts && !HasFatalFailure(); ++count) {
            Kest_Util_Delay(everyMs);
            startAndStop();
        }
        EXPECT_EQ(bench.set.openDescriptors(), descriptors);
        EXPECT_EQ(bench.set.liveThreads(), threads);
        EXPECT_LT(addressSpace(), space + kTolerance);
        expectThatAllIsHeard();
    }
};

TEST_F(SoftApYear, OfDailyStartsTakesNoMoreThanEightStarts)
{
    expectFlat(365, kDayMs);
}

TEST_F(SoftApYear, OfAThousandStartsInAnHourTakesNoMoreThanEightStarts)
{
    expectFlat(1000, 3600);
}

TEST_F(SoftApYear, EightStartsHaveEightWatchesAndTheNinthUsesThem)
{
    for (int start = 1; start <= kWatches + 2; ++start) {
        startAndStop();
        EXPECT_EQ(bench.set.watch(kLeases).watchers(), std::min(start, kWatches));
        EXPECT_EQ(bench.set.liveThreads(), 1 + std::min(start, kWatches));
    }
    EXPECT_EQ(open(kOpenPipe), kWatches);
    EXPECT_EQ(open(kInotify), kWatches);
    expectThatAllIsHeard();
}

TEST_F(SoftApYear, AWatchHasASmallStack)
{
    std::size_t size = 0;
    bench.set.onCallback([&size](MovoNetCBReason_e, void*) {
        pthread_attr_t attributes;
        ASSERT_EQ(pthread_getattr_np(pthread_self(), &attributes), 0);
        EXPECT_EQ(pthread_attr_getstacksize(&attributes, &size), 0);
        EXPECT_EQ(pthread_attr_destroy(&attributes), 0);
    });
    bench.start();
    bench.writeLeases(kPhoneLease);
    EXPECT_GE(size, 128U * 1024) << "an application's callback runs on it";
    EXPECT_LE(size, 512U * 1024);
}

/** A list that was removed and made anew has no watch until a start. */
TEST_F(SoftApYear, TheNinthStartFollowsAListThatWasMadeAnew)
{
    startUntilEightWatch();
    bench.set.remove(kLeases);
    bench.set.watch(kLeases).gone();
    bench.set.write(kLeases, "");
    EXPECT_EQ(bench.set.watch(kLeases).watchers(), 0);
    startAndStop();
    EXPECT_EQ(bench.set.watch(kLeases).watchers(), 1);
    bench.writeLeases(kPhoneLease);
    EXPECT_TRUE(bench.set.calledBack(devices(1)));
}

TEST_F(SoftApYear, OneOfManyStartsWaitsForAListThatIsNotThereYet)
{
    startUntilEightWatch();
    const int threads = bench.set.liveThreads();
    bench.set.remove(kLeases);
    bench.set.watch(kLeases).gone();
    bench.set.holdSleeps(5000);
    for (int count = 0; count < 20; ++count) {
        startAndStop();
        EXPECT_EQ(bench.set.liveThreads(), threads + 1);
    }
    EXPECT_TRUE(bench.set.wake());
    EXPECT_EQ(bench.set.liveThreads(), threads + 1);
    bench.set.write(kLeases, "");
    EXPECT_TRUE(bench.set.wake());
    EXPECT_EQ(bench.set.watch(kLeases).watchers(), 1);
    EXPECT_EQ(bench.set.liveThreads(), threads);
    bench.set.remove(kLeases);
    bench.set.watch(kLeases).gone();
    startAndStop();
    EXPECT_EQ(bench.set.liveThreads(), threads + 1) << "a later start waits again";
}

// --- A watch that could not be set up leaves its place ---

TEST_F(SoftApYear, FailedWatchesLeaveTheirPlaces)
{
    (void)bench.set.fail({.call = Call::ThreadCreate, .nth = 2, .error = EAGAIN}); // the first start's watch
    startAndStop();
    bench.set.clearFaults();
    for (int count = 0; count < 2 * kWatches; ++count) {
        (void)bench.set.fail({.call = count % 2 == 0 ? Call::Mkfifo : Call::InotifyInit, .error = EMFILE});
        startAndStop();
        bench.set.clearFaults();
    }
    EXPECT_EQ(bench.set.liveThreads(), 1);
    startUntilEightWatch();
    EXPECT_EQ(bench.set.watch(kLeases).watchers(), kWatches);
    EXPECT_EQ(open(kInotify), kWatches);
    EXPECT_EQ(open(kOpenPipe), kWatches) << "the pipes of watches that failed are used";
    expectThatAllIsHeard();
}

// --- A start while another one looks for a name ---

TEST_F(SoftApYear, StartsDuringANameSearchMakeOneWatch)
{
    bench.set.addIface("bcm0");
    bench.set.holdSleeps(1000);
    bench.set.onCommand(kGetName).prints("\n").times(3); // all wait for a name
    for (int count = 0; count < 3; ++count) {
        EXPECT_EQ(Movo_Net_WiFi_HostAP_Start(0), 0);
        bench.set.settle();
    }
    while (bench.set.wake()) {
    }
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Status(0), 1);
    EXPECT_EQ(bench.set.watch(kLeases).watchers(), 1);
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 0);
    bench.set.holdSleeps(0);
    startAndStop();
    EXPECT_EQ(bench.set.watch(kLeases).watchers(), 2) << "a start of its own has a watch of its own";
}

TEST_F(SoftApYear, AStartDuringTheNameSearchOfOneThatFailsMakesTheWatch)
{
    bench.set.holdSleeps(1000);
    bench.set.onCommand(kGetName).prints("\n").times(2);
    bench.set.onCommand(kCreate).fails().times(1);
    for (int count = 0; count < 2; ++count) {
        EXPECT_EQ(Movo_Net_WiFi_HostAP_Start(0), 0);
        bench.set.settle();
    }
    while (bench.set.wake()) {
    }
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Status(0), 1);
    EXPECT_EQ(bench.set.watch(kLeases).watchers(), 1);
}
} // namespace
