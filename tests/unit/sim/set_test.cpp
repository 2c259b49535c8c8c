#include "sim/calls.h"
#include "sim/sim.h"
#include "sim/world.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <sched.h>
#include <unistd.h>

using namespace sim;

TEST(Set, ThereIsOnePerProcess)
{
    const auto second = [] {
        const Set one;
        const Set two;
    };
    EXPECT_EXIT(second(), testing::ExitedWithCode(1), "one television per process");
}

TEST(Set, TellsOfAWedge)
{
    const auto wedge = [] {
        (void)setenv("SIM_PATIENCE", "3", 1);
        Set set;
        static pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
        (void)pthread_mutex_lock(&mutex);
        set.background([] { (void)sim_pthread_mutex_lock(&mutex); });
        set.settle();
    };
    EXPECT_DEATH(wedge(),
                 "waited too long for the product to become quiet(.|\n)*running, latest call pthread_mutex_lock");
}

TEST(Set, TellsOfAWedgeInsideTheProduct)
{
#ifdef SIM_THREAD_SANITIZER
    GTEST_SKIP() << "the thread sanitizer delivers no signal to a thread that waits for a mutex";
#endif
    const auto wedge = [] {
        (void)setenv("SIM_PATIENCE", "3", 1);
        const Set set;
        pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
        (void)pthread_mutex_lock(&mutex);
        (void)sim_pthread_mutex_lock(&mutex);
    };
    EXPECT_DEATH(wedge(), "test, running, latest call pthread_mutex_lock");
}

TEST(Set, RunsInAForkedChild)
{
    EXPECT_EQ(forkedRun([] { const Set set; }), 0);
    EXPECT_EQ(forkedRun([] { std::abort(); }), -1);
    CapturedOutput hidden;
    EXPECT_EQ(forkedRun([] { ADD_FAILURE() << "on purpose"; }), 1);
    EXPECT_NE(hidden.text().find("on purpose"), std::string::npos);
}

TEST(Set, CapturesStandardOutput)
{
    std::string text;
    {
        const CapturedOutput output;
        (void)std::printf("one\n");
        text = output.text();
    }
    EXPECT_EQ(text, "one\n");
}

TEST(Set, RecordsTheLogInsteadOfShowingIt)
{
    Set set;
    kest_debug_log(nullptr, KEST_LEVEL_WARNING, "module", "function", 7, "%d of %s\n", 3, "three");
    ASSERT_EQ(set.log().size(), 1U);
    EXPECT_EQ(set.log()[0].category, "DEFAULT");
    EXPECT_LOGGED(set, KEST_LEVEL_WARNING, "module", "function", "3 of three\n");
    EXPECT_NOT_LOGGED(set, KEST_LEVEL_ERROR, "module", "function", "3 of three\n");
    EXPECT_NOT_LOGGED(set, KEST_LEVEL_WARNING, "module", "function", "3 of three");
    set.forget();
    EXPECT_TRUE(set.log().empty());
}

TEST(Set, LetsTheTestActAtALineOfTheLog)
{
    Set set;
    std::vector<std::string> texts;
    set.onLog([&](const LogLine& line) {
        texts.push_back(line.text);
        EXPECT_EQ(set.log().back().text, line.text) << "it is recorded, and nothing is locked";
        errno = ENOMSG;
    });
    errno = 0;
    kest_debug_log(nullptr, KEST_LEVEL_INFO, "module", "function", 1, "line %d\n", 1);
    EXPECT_EQ(errno, 0);
    set.onLog(nullptr);
    kest_debug_log(nullptr, KEST_LEVEL_INFO, "module", "function", 2, "line %d\n", 2);
    EXPECT_EQ(texts, std::vector<std::string>{"line 1\n"});
}

TEST(Set, KeepsErrnoWhereCallsSucceed)
{
    const Set set;
    errno = ENXIO;
    (void)sim_access("/etc", F_OK);
    void* memory = sim_malloc(1);
    EXPECT_EQ(errno, ENXIO);
    std::free(memory);
}

TEST(Set, AWaiterForAConditionCountsAsQuiet)
{
    Set set;
    static pthread_mutex_t s_mutex = PTHREAD_MUTEX_INITIALIZER;
    static pthread_cond_t s_condition = PTHREAD_COND_INITIALIZER;
    static bool s_go = false;
    static std::atomic<bool> s_done{false};
    set.background([] {
        (void)sim_pthread_mutex_lock(&s_mutex);
        while (!s_go) {
            (void)sim_pthread_cond_wait(&s_condition, &s_mutex);
        }
        (void)pthread_mutex_unlock(&s_mutex);
        s_done = true;
    });
    set.settle();
    EXPECT_FALSE(s_done);
    (void)sim_pthread_mutex_lock(&s_mutex);
    s_go = true;
    (void)sim_pthread_cond_signal(&s_condition);
    (void)pthread_mutex_unlock(&s_mutex);
    set.settle();
    EXPECT_TRUE(s_done);
}

#ifdef SIM_THREAD_SANITIZER
TEST(Set, DoesNotHideARaceFromTheThreadSanitizer)
{
    // The second thread comes after the first one for sure; nothing but the set's calls could count as their order.
    const auto race = [] {
        Set set;
        static int s_shared;
        static std::atomic<bool> s_written{false};
        set.background([] {
            ++s_shared;
            (void)sim_access("/etc", 0);
            s_written.store(true, std::memory_order_relaxed);
        });
        set.background([] {
            while (!s_written.load(std::memory_order_relaxed)) {
                (void)sched_yield();
            }
            (void)sim_access("/etc", 0);
            ++s_shared;
        });
        set.joinBackground();
        EXPECT_EQ(s_shared, 2);
    };
    constexpr int kReported = 66;
    EXPECT_EXIT((race(), std::exit(0)), testing::ExitedWithCode(kReported), "data race");
    EXPECT_EQ(forkedRun(race), kReported);
}
#endif

TEST(Set, LetsTheTestLookAtWhatASettledThreadDid)
{
    Set set;
    static int s_plain; // the thread sanitizer would complain
    set.background([] {
        s_plain = 1;
        fd_set none;
        FD_ZERO(&none);
        timeval tick{0, 100000};
        (void)sim_select(0, &none, nullptr, nullptr, &tick);
        ++s_plain;
    });
    set.settle();
    EXPECT_EQ(s_plain, 1);
    s_plain = 7;
    set.grantTicks();
    EXPECT_EQ(s_plain, 8);
}
