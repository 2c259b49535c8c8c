#include "movo_net_fg/fg.h"
#include "movo_net_fl_eventloop/eventloop.h"
#include "sim/sim.h"

#include <gtest/gtest-spi.h>

using movonet::ScopedLock;

namespace {
/** Takes both, the first for longer, while a set lives; it tells at its end. */
void takeInOrder(movonet::Mutex& outer, movonet::Mutex& inner)
{
    const sim::Set set;
    const ScopedLock first(outer);
    const ScopedLock second(inner);
    EXPECT_TRUE(first && second);
}

TEST(LockOrder, LetsTheLoopsLockComeFirst)
{
    takeInOrder(movonet::eventListLock, movonet::ifaceListLock);
}

TEST(LockOrder, LetsTheRestBeTakenInAnyOrderBelowTheLoopsLock)
{
    const sim::Set set;
    const ScopedLock gate(movonet::eventListLock);
    {
        const ScopedLock list(movonet::ifaceListLock);
        const ScopedLock callback(movonet::callbackListLock);
        const ScopedLock again(movonet::eventListLock);
        EXPECT_TRUE(again);
    }
    const ScopedLock callback(movonet::callbackListLock);
    const ScopedLock list(movonet::ifaceListLock);
    EXPECT_TRUE(callback && list);
}

TEST(LockOrder, TellsOfALoopsLockThatComesLater)
{
    EXPECT_NONFATAL_FAILURE(takeInOrder(movonet::ifaceListLock, movonet::eventListLock),
                            "the event loop's lock was asked for with another one in hand");
}

TEST(LockOrder, TellsOfItAlsoAfterAnotherLockWasGivenBack)
{
    EXPECT_NONFATAL_FAILURE(
        {
            const sim::Set set;
            const ScopedLock list(movonet::ifaceListLock);
            {
                const ScopedLock callback(movonet::callbackListLock);
            }
            const ScopedLock gate(movonet::eventListLock);
        },
        "the event loop's lock was asked for with another one in hand");
}

TEST(LockOrder, ForgetsWhatWasGivenBack)
{
    const sim::Set set;
    {
        const ScopedLock list(movonet::ifaceListLock);
    }
    const ScopedLock gate(movonet::eventListLock);
    EXPECT_TRUE(gate);
}
} // namespace
