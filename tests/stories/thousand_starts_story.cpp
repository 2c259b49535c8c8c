#include "sim/sim.h"

using namespace sim;

namespace {
constexpr unsigned kStartsOfABatch = seeds(250);

void bootAndLease(unsigned seed)
{
    Set set(seed);
    set.cable("eth0").plug();
    ASSERT_EQ(set.start(), 0);
    EXPECT_TRUE(set.dhcp("eth0").running());
    EXPECT_CALLBACKS(set, {{IFFOUND, "eth0"}});
    set.dhcp("eth0").leases();
    EXPECT_CALLBACKS(set, {{IPCHANGED, "eth0"}, {DHCP_SUCCESS, "eth0"}});
}
} // namespace

class ThousandStarts : public testing::TestWithParam<unsigned> {};

TEST_P(ThousandStarts, AlwaysEndWithTheClientStarted)
{
    for (unsigned start = 1; start <= kStartsOfABatch; ++start) {
        const unsigned seed = GetParam() * kStartsOfABatch + start;
        ASSERT_EQ(forkedRun([seed] { bootAndLease(seed); }), 0) << "seed " << seed;
    }
}

INSTANTIATE_TEST_SUITE_P(Batch, ThousandStarts, testing::Range(0U, 4U));
