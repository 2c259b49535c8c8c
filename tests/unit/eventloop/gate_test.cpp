/** The gate that holds the loop's handlers off while other locks are held. */
#include "movo_net_fl_eventloop/eventloop.h"

#include <gtest/gtest.h>
#include <thread>

using movonet::eventListLock;
using movonet::LoopGate;

namespace {
/** Whether another thread finds the loop's lock taken. */
bool isHeld()
{
    bool held = false;
    std::thread([&] {
        held = !eventListLock.tryLock();
        if (!held) {
            eventListLock.unlock();
        }
    }).join();
    return held;
}
} // namespace

TEST(LoopGate, HoldsTheLoopOffFromTheOutermostOneToItsEnd)
{
    {
        const LoopGate outer;
        EXPECT_TRUE(isHeld());
        {
            const LoopGate inner;
            EXPECT_TRUE(isHeld());
        }
        EXPECT_TRUE(isHeld());
    }
    EXPECT_FALSE(isHeld());
}

TEST(LoopGate, OfAThreadWhoseOutermostFoundNoLoopStaysOpenForALoopThatAppears)
{
    eventListLock.retire();
    {
        const LoopGate outer;
        ASSERT_TRUE(eventListLock.create());
        const LoopGate inner;
        EXPECT_FALSE(isHeld());
    }
    const LoopGate next;
    EXPECT_TRUE(isHeld());
}
