#include "walk.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

// Whatever people, the air, the supplicant, the cable and the DHCP server do in whatever order: the state of the
// connection follows its table, each attempt to join ends once, there is one timer of a kind at the most, default route
// and resolver are the best connected interface's, and no lock, descriptor or memory is kept.
//
// WalkTogether has applications at it on a thread of their own.
//
// A seed that fails is made short and told as a line that WIFI_WALK in the environment plays again:
//
//     WIFI_WALK="join:1 event:0 ticks:7" build/dev/tests/unit/walk_tests --gtest_filter='Seeds/Walk.*/0'

using namespace wifi;

namespace {
constexpr int kSteps = 2000;
constexpr unsigned kSeeds = sim::seeds(50);
constexpr unsigned kSeedsTogether = 10;

/** What a walk in a child of this process has seen: how far it came, and whether all held. */
struct Report {
    int steps;
    bool broken;
};

using Walking = std::function<Walked(const Trace&)>;

Report walkInChild(const Walking& walking, const Trace& trace, bool loud)
{
    void* shared = mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    auto* steps = static_cast<int*>(shared);
    const int failed = sim::forkedRun([&] {
        if (!loud) {
            const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
            (void)dup2(nowhere, STDOUT_FILENO);
            (void)dup2(nowhere, STDERR_FILENO);
        }
        *steps = walking(trace).steps;
    });
    const Report report{*steps, failed != 0};
    (void)munmap(shared, sizeof(int));
    return report;
}

void walkOrShorten(const Walking& walking, unsigned seed)
{
    if (const char* again = std::getenv("WIFI_WALK"); again != nullptr) {
        const auto trace = parseTrace(again);
        ASSERT_TRUE(trace) << "no trace: " << again;
        (void)walking(*trace);
        return;
    }
    Trace trace = randomTrace(seed, kSteps);
    const Report report = walkInChild(walking, trace, false);
    if (report.broken) {
        if (report.steps > 0) {
            trace.resize(static_cast<std::size_t>(report.steps));
        }
        trace = shortened(trace, [&](const Trace& each) { return walkInChild(walking, each, false).broken; });
        (void)walkInChild(walking, trace, true);
        FAIL() << "seed " << seed << ", play it again with\nWIFI_WALK=\"" << textOf(trace) << "\"";
    }
}

class Walk : public testing::TestWithParam<unsigned> {};

TEST_P(Walk, HoldsWhatAlwaysHolds)
{
    walkOrShorten(walk, GetParam());
}
INSTANTIATE_TEST_SUITE_P(Seeds, Walk, testing::Range(1U, kSeeds + 1U));

class WalkTogether : public testing::TestWithParam<unsigned> {};

TEST_P(WalkTogether, HoldsWhatAlwaysHolds)
{
    walkOrShorten([](const Trace& trace) { return walkTogether(trace, GetParam()); }, GetParam());
}
INSTANTIATE_TEST_SUITE_P(Seeds, WalkTogether, testing::Range(1U, kSeedsTogether + 1U));

TEST(AWalk, MeetsEveryEndOfAnAttempt)
{
    const Walked walked = walk(randomTrace(1, kSteps));
    EXPECT_EQ(walked.steps, kSteps);
    for (const End end : {End::Connected, End::BadKey, End::TimeOut, End::Replaced, End::Left}) {
        EXPECT_GT(walked.ends.count(end), 0U) << static_cast<int>(end);
    }
    EXPECT_GT(walked.resets, 0);
}

/** A retry brings the disabled eth0 back, and the pass that removes it leaves its route in place. */
TEST(AWalk, KeepsTheRouteOfARevivedInterfaceThatIsRemoved)
{
    const auto trace = parseTrace("mode:1 cable:0 dhcp:5 react:7 dhcp:1 iface:1 cable:0 join:0 event:6 dhcp:3 cable:1");
    ASSERT_TRUE(trace);
    EXPECT_EQ(walk(*trace).steps, static_cast<int>(trace->size()));
}

TEST(WalkTrace, ReadsWhatItWrites)
{
    const Trace trace = randomTrace(7, 100);
    const auto read = parseTrace(textOf(trace));
    ASSERT_TRUE(read);
    EXPECT_EQ(textOf(*read), textOf(trace));
    for (const char* wrong : {"dance:1", "join", "join:9", "join:x -"}) {
        EXPECT_FALSE(parseTrace(wrong)) << wrong;
    }
}

TEST(WalkTrace, IsShortenedToWhatFails)
{
    const auto fails = [](const Trace& trace) {
        return std::ranges::count_if(trace, [](const Step& step) { return step.action == 0; }) >= 2;
    };
    const Trace shortest = shortened(randomTrace(3, 200), fails);
    EXPECT_EQ(shortest.size(), 2U);
    EXPECT_TRUE(fails(shortest));
}
} // namespace
