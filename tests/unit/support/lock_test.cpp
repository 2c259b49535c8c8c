#include "support/lock.h"

#include "sim/sim.h"
#include "support/atomic.h"

#include <atomic>

using movonet::Mutex;
using movonet::ScopedLock;

namespace movonet {
void PrintTo(Mutex::Kind kind, std::ostream* out)
{
    *out << (kind == Mutex::Kind::Plain ? "plain" : "recursive");
}
} // namespace movonet

namespace {
/** Tells whether another thread could take it, and gives it back. */
bool isFree(sim::Set& set, Mutex& mutex)
{
    bool taken = false;
    set.background([&] {
        taken = mutex.tryLock();
        if (taken) {
            mutex.unlock();
        }
    });
    set.joinBackground();
    return taken;
}

class Lock : public testing::TestWithParam<Mutex::Kind> {
protected:
    sim::Set set;
    Mutex mutex{GetParam()};
};

TEST_P(Lock, WorksWithoutBeingCreated)
{
    EXPECT_TRUE(mutex.lock());
    EXPECT_FALSE(isFree(set, mutex));
    mutex.unlock();
    EXPECT_TRUE(isFree(set, mutex));
}

TEST_P(Lock, HoldsForAScope)
{
    {
        const ScopedLock lock(mutex);
        EXPECT_TRUE(lock);
        EXPECT_FALSE(isFree(set, mutex));
    }
    EXPECT_TRUE(isFree(set, mutex));
}

TEST_P(Lock, EndsEarlyAndOnlyOnce)
{
    ScopedLock lock(mutex);
    lock.unlock();
    EXPECT_FALSE(lock);
    EXPECT_TRUE(isFree(set, mutex));
    ASSERT_TRUE(mutex.lock());
    lock.unlock();
    EXPECT_FALSE(isFree(set, mutex)) << "that one is not its own";
    mutex.unlock();
}

TEST_P(Lock, FailsOnceRetired)
{
    ASSERT_TRUE(mutex.create());
    mutex.retire();
    EXPECT_FALSE(mutex.lock());
    EXPECT_FALSE(mutex.tryLock());
    const ScopedLock lock(mutex);
    EXPECT_FALSE(lock);
}

TEST_P(Lock, FailsWhenRetiredBeforeItsFirstUse)
{
    mutex.retire();
    EXPECT_FALSE(mutex.lock());
}

TEST_P(Lock, ComesBackWhenCreatedAgain)
{
    ASSERT_TRUE(mutex.create());
    mutex.retire();
    ASSERT_TRUE(mutex.create());
    EXPECT_TRUE(mutex.lock());
    mutex.unlock();
}

TEST_P(Lock, IsReleasedByItsHolderAlthoughRetired)
{
    {
        const ScopedLock lock(mutex);
        ASSERT_TRUE(lock);
        mutex.retire();
    }
    ASSERT_TRUE(mutex.create());
    EXPECT_TRUE(isFree(set, mutex));
}

TEST_P(Lock, StaysHeldWhenCreatedAgain)
{
    const ScopedLock lock(mutex);
    ASSERT_TRUE(lock);
    ASSERT_TRUE(mutex.create());
    EXPECT_FALSE(isFree(set, mutex)) << "it is not made anew under its holder";
}

TEST_P(Lock, IsMadeOnce)
{
    ASSERT_TRUE(mutex.create());
    set.fail({.call = sim::Call::MutexInit, .mayMiss = true});
    EXPECT_TRUE(mutex.create());
    mutex.retire();
    EXPECT_TRUE(mutex.create());
    EXPECT_TRUE(mutex.lock());
    mutex.unlock();
}

TEST_P(Lock, IsMadeOnceByManyThreads)
{
    int counter = 0;
    for (int thread = 0; thread < 4; ++thread) {
        set.background([&] {
            for (int count = 0; count < 200; ++count) {
                const ScopedLock lock(mutex);
                counter += lock ? 1 : 0;
            }
        });
    }
    set.joinBackground();
    EXPECT_EQ(counter, 800);
}

TEST_P(Lock, TellsThatItCannotBeTaken)
{
    set.fail({.call = sim::Call::MutexLock, .object = &mutex, .size = sizeof(mutex), .nth = 1, .error = EINVAL});
    EXPECT_FALSE(mutex.lock());
    EXPECT_TRUE(mutex.lock());
    mutex.unlock();
}

TEST_P(Lock, TriesWithoutWaiting)
{
    ASSERT_TRUE(mutex.lock());
    set.background([this] { EXPECT_FALSE(mutex.tryLock()); });
    set.joinBackground();
    mutex.unlock();
    EXPECT_TRUE(mutex.tryLock());
    mutex.unlock();
}
INSTANTIATE_TEST_SUITE_P(Kinds, Lock, testing::Values(Mutex::Kind::Plain, Mutex::Kind::Recursive));

TEST(RecursiveLock, IsTakenAgainByItsHolder)
{
    sim::Set set;
    Mutex mutex{Mutex::Kind::Recursive};
    const ScopedLock outer(mutex);
    {
        const ScopedLock inner(mutex);
        EXPECT_TRUE(inner);
        EXPECT_TRUE(mutex.tryLock());
        mutex.unlock();
    }
    EXPECT_FALSE(isFree(set, mutex));
}

TEST(PlainLock, IsNotTakenAgainByItsHolder)
{
    const sim::Set set;
    Mutex mutex{Mutex::Kind::Plain};
    ASSERT_TRUE(mutex.lock());
    EXPECT_FALSE(mutex.tryLock());
    mutex.unlock();
}

class UnmadeLock : public testing::TestWithParam<sim::Fault> {};

TEST_P(UnmadeLock, CannotBeTakenUntilItIsMade)
{
    sim::Set set;
    Mutex mutex{Mutex::Kind::Recursive};
    set.fail(GetParam());
    EXPECT_FALSE(mutex.create());
    EXPECT_FALSE(mutex.lock());
    EXPECT_FALSE(mutex.tryLock());
    EXPECT_TRUE(mutex.lock());
    mutex.unlock();
    EXPECT_TRUE(mutex.create());
}
INSTANTIATE_TEST_SUITE_P(Steps, UnmadeLock,
                         testing::Values(sim::Fault{.call = sim::Call::MutexAttrInit, .nth = 1, .times = 3},
                                         sim::Fault{.call = sim::Call::MutexAttrSetType, .nth = 1, .times = 3},
                                         sim::Fault{.call = sim::Call::MutexInit, .nth = 1, .times = 3}));

TEST(SharedField, IsReadWrittenAndTaken)
{
    int field = 1;
    EXPECT_EQ(movonet::load(field), 1);
    movonet::store(field, 2);
    EXPECT_EQ(movonet::exchange(field, 3), 2);
    EXPECT_EQ(field, 3);
}

TEST(SharedField, IsTakenByOneOfMany)
{
    sim::Set set(1);
    int descriptor = 5;
    std::atomic<int> takers{0};
    for (int thread = 0; thread < 8; ++thread) {
        set.background([&] { takers += movonet::exchange(descriptor, -1) == 5 ? 1 : 0; });
    }
    set.joinBackground();
    EXPECT_EQ(takers, 1);
}

TEST(SharedField, ShowsWhatWasWrittenBeforeIt)
{
    sim::Set set;
    int payload = 0;
    int* published = nullptr;
    set.background([&] {
        payload = 42;
        movonet::store(published, &payload);
    });
    set.background([&] {
        int* seen = nullptr;
        while ((seen = movonet::load(published)) == nullptr) {
        }
        EXPECT_EQ(*seen, 42);
    });
    set.joinBackground();
}

TEST(SharedField, MacAddressIsNeverTorn)
{
    sim::Set set;
    alignas(8) std::int64_t address = 0;
    std::atomic<bool> done{false};
    set.background([&] {
        for (int count = 0; count < 20000; ++count) {
            movonet::store(address, count % 2 == 0 ? std::int64_t{0} : std::int64_t{-1});
        }
        done = true;
    });
    bool torn = false;
    while (!done) {
        const std::int64_t seen = movonet::load(address);
        torn = torn || (seen != 0 && seen != -1);
    }
    set.joinBackground();
    EXPECT_FALSE(torn);
}
} // namespace
