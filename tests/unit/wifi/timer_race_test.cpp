#include "bench.h"

#include "movo_net_fl_eventloop/eventloop.h"

#include <gtest/gtest.h>
#include <sched.h>

using namespace wifi;
using namespace movonet;

// A handler and an application that arm a link's timer at once: who comes first waits for the handler with the timer
// that it replaces, and finds the handler's when it comes back. One that stayed would fire for ever.

namespace {
struct Race {
    const char* name;
    RETURN_TYPE (*arm)(Wpactrl_t*, int);
    kest_bool first; ///< The timer that is there is the one of an activation's own connection.
};
void PrintTo(const Race& race, std::ostream* out)
{
    *out << race.name;
}

class TimerRace : public testing::TestWithParam<Race> {
protected:
    /** On a thread of its own, until it waits for the handlers with the timer in hand. */
    void armElsewhere()
    {
        bench.set.forget();
        bench.set.background([this] { EXPECT_EQ(GetParam().arm(&bench.link(), 300), 0); });
        while (!bench.set.logged(KEST_LEVEL_INFO, "movo_net_fl_eventloop", "int_removeEvent", "handle = 1\n")) {
            (void)sched_yield();
        }
    }

    Bench bench;
};
} // namespace

TEST_P(TimerRace, LeavesOneTimer)
{
    s_bFirstConnect = GetParam().first;
    ASSERT_EQ(GetParam().arm(&bench.link(), 300), 0);
    s_bFirstConnect = 0;
    {
        const LoopGate gate; // as a handler
        armElsewhere();
        EXPECT_EQ(GetParam().arm(&bench.link(), 300), 0);
    }
    bench.set.joinBackground();
    const Wpactrl_t& w = bench.link();
    EXPECT_EQ(w.firstConnectHandle, 0);
    EXPECT_EQ(int_removeEvent(w.connectTimerEventHandle + w.scanTimerEventHandle), 0);
    bench.set.forget();
    bench.set.grantTicks(700);
    EXPECT_TRUE(bench.set.log().empty()) << bench.set.log().front();
    EXPECT_CALLBACKS(bench.set, {});
}
INSTANTIATE_TEST_SUITE_P(Timers, TimerRace,
                         testing::Values(Race{"Scan", Wpactrl_Add_ScanEvent, 0},
                                         Race{"Connect", Wpactrl_Add_ConnectEvent, 0},
                                         Race{"FirstConnect", Wpactrl_Add_ConnectEvent, 1}),
                         [](const auto& each) { return each.param.name; });
