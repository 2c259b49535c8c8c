#include "fg_test.h"

#include <atomic>
#include <sched.h>

namespace {
constexpr const char* kInstall = "Movo_NET_InstallCallback";
constexpr const char* kUnInstall = "Movo_NET_UnInstallCallback";
constexpr const char* kNotDone = "Movo_net init is not done, calling movo_net func may fail\n";

/** What a callback was given. */
struct Seen {
    std::vector<MovoNetCBReason_e> reasons = {};
    void* param = nullptr;
    std::function<void()> action = {};
};

void remember(MovoNetCBReason_e reason, void* context, void* param)
{
    auto* seen = static_cast<Seen*>(context);
    seen->reasons.push_back(reason);
    seen->param = param;
    if (seen->action) {
        seen->action();
    }
}

class Callback : public testing::Test {
protected:
    sim::Set set;
    Seen seen;

    static RETURN_TYPE install(Seen& into)
    {
        int id = -1;
        return Movo_NET_InstallCallback(0, remember, &into, &id);
    }
    static RETURN_TYPE notify(MovoNetCBReason_e reason = sim::IPCHANGED, void* param = nullptr)
    {
        return NotifyApp(reason, param);
    }
};

TEST_F(Callback, GetsReasonContextAndParameter)
{
    int parameter = 0;
    ASSERT_EQ(install(seen), 0);
    EXPECT_EQ(notify(sim::DHCP_FAILED, &parameter), 0);
    EXPECT_EQ(seen.reasons, (std::vector<MovoNetCBReason_e>{sim::DHCP_FAILED}));
    EXPECT_EQ(seen.param, &parameter);
}

TEST_F(Callback, IsToldOfBeforeItIsCalled)
{
    ASSERT_EQ(install(seen), 0);
    set.forget();
    char text[64];
    (void)std::snprintf(text, sizeof(text), "reason=17, calling callback: %p\n", reinterpret_cast<void*>(remember));
    seen.action = [&] { EXPECT_LOGGED(set, KEST_LEVEL_INFO, kFg, "NotifyApp", text); };
    EXPECT_EQ(notify(sim::DHCP_FAILED), 0);
    EXPECT_EQ(seen.reasons.size(), 1U);
    EXPECT_EQ(set.log().size(), 1U);
}

TEST_F(Callback, WithoutOneNobodyIsCalled)
{
    EXPECT_EQ(notify(), 0);
    EXPECT_TRUE(set.log().empty());
}

TEST_F(Callback, CannotBeCalledWithoutTheLock)
{
    ASSERT_EQ(install(seen), 0);
    set.failLock(movonet::callbackListLock, 1);
    EXPECT_EQ(notify(), 1);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, "NotifyApp", "lock mutex failed\n");
    EXPECT_TRUE(seen.reasons.empty());
}

TEST_F(Callback, InstallsBeforeTheStartWithAWarning)
{
    int id = -1;
    EXPECT_EQ(Movo_NET_InstallCallback(12, remember, &seen, &id), 0);
    EXPECT_EQ(id, 0);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, kInstall, kNotDone);
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, kFg, kInstall, "enter\n");
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, kFg, kInstall, "out\n");
    EXPECT_EQ(textsOf(set, kInstall), (std::vector<std::string>{kNotDone, "enter\n", "out\n"}));
}

TEST_F(Callback, InstallsWithoutAWarningOnceStarted)
{
    ASSERT_EQ(set.start(), 0);
    set.forget();
    int id = -1;
    EXPECT_EQ(Movo_NET_InstallCallback(0, remember, &seen, &id), 0);
    EXPECT_EQ(id, 0);
    EXPECT_EQ(textsOf(set, kInstall), (std::vector<std::string>{"enter\n", "out\n"}));
}

TEST_F(Callback, NeedsAPlaceForItsId)
{
    EXPECT_EQ(Movo_NET_InstallCallback(0, remember, &seen, nullptr), 5);
    EXPECT_EQ(textsOf(set, kInstall), (std::vector<std::string>{kNotDone}));
    EXPECT_EQ(notify(), 0);
    EXPECT_TRUE(seen.reasons.empty());
}

TEST_F(Callback, InstallsNothingWithoutTheLock)
{
    int id = -1;
    set.failLock(movonet::callbackListLock, 1);
    EXPECT_EQ(Movo_NET_InstallCallback(0, remember, &seen, &id), 1);
    EXPECT_EQ(id, -1);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, kInstall, "lock mutex failed\n");
    EXPECT_EQ(textsOf(set, kInstall), (std::vector<std::string>{kNotDone, "enter\n", "lock mutex failed\n"}));
    EXPECT_EQ(notify(), 0);
    EXPECT_TRUE(seen.reasons.empty());
}

TEST_F(Callback, ReplacesTheOneBefore)
{
    Seen second;
    ASSERT_EQ(install(seen), 0);
    int id = -1;
    EXPECT_EQ(Movo_NET_InstallCallback(0, remember, &second, &id), 0);
    EXPECT_EQ(id, 0);
    EXPECT_EQ(notify(), 0);
    EXPECT_TRUE(seen.reasons.empty());
    EXPECT_EQ(second.reasons.size(), 1U);
}

TEST_F(Callback, NullCallsNobody)
{
    ASSERT_EQ(install(seen), 0);
    int id = -1;
    EXPECT_EQ(Movo_NET_InstallCallback(0, nullptr, &seen, &id), 0);
    EXPECT_EQ(notify(), 0);
    EXPECT_TRUE(seen.reasons.empty());
}

class CallbackId : public Callback, public testing::WithParamInterface<int> {};

TEST_P(CallbackId, DoesNotMatterWhenItIsTakenAway)
{
    ASSERT_EQ(install(seen), 0);
    set.forget();
    EXPECT_EQ(Movo_NET_UnInstallCallback(0, GetParam()), 0);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, kUnInstall, "s_bIsInitDone=false\n");
    EXPECT_EQ(notify(), 0);
    EXPECT_TRUE(seen.reasons.empty());
}
INSTANTIATE_TEST_SUITE_P(Ids, CallbackId, testing::Values(0, 1, -1, 2147483647));

TEST_F(Callback, IsTakenAwayWithoutAWordOnceStarted)
{
    ASSERT_EQ(set.start(), 0);
    set.forget();
    EXPECT_EQ(Movo_NET_UnInstallCallback(0, 0), 0);
    EXPECT_TRUE(textsOf(set, kUnInstall).empty());
}

TEST_F(Callback, StaysWhenItCannotBeTakenAway)
{
    ASSERT_EQ(install(seen), 0);
    set.failLock(movonet::callbackListLock, 1);
    EXPECT_EQ(Movo_NET_UnInstallCallback(0, 0), 1);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, kUnInstall, "lock mutex failed\n");
    EXPECT_EQ(notify(), 0);
    EXPECT_EQ(seen.reasons.size(), 1U);
}

TEST_F(Callback, MayTakeItselfAway)
{
    ASSERT_EQ(install(seen), 0);
    seen.action = [] { EXPECT_EQ(Movo_NET_UnInstallCallback(0, 0), 0); };
    EXPECT_EQ(notify(), 0);
    EXPECT_EQ(notify(), 0);
    EXPECT_EQ(seen.reasons.size(), 1U);
}

TEST_F(Callback, MayReplaceItself)
{
    Seen second;
    ASSERT_EQ(install(seen), 0);
    seen.action = [&] { EXPECT_EQ(install(second), 0); };
    EXPECT_EQ(notify(), 0);
    EXPECT_EQ(notify(), 0);
    EXPECT_EQ(seen.reasons.size(), 1U);
    EXPECT_EQ(second.reasons.size(), 1U);
}

TEST_F(Callback, MayCauseAnother)
{
    ASSERT_EQ(install(seen), 0);
    seen.action = [&] {
        if (seen.reasons.size() == 1) {
            EXPECT_EQ(notify(sim::IFREMOVED), 0);
        }
    };
    EXPECT_EQ(notify(sim::IFFOUND), 0);
    EXPECT_EQ(seen.reasons, (std::vector<MovoNetCBReason_e>{sim::IFFOUND, sim::IFREMOVED}));
}

TEST_F(Callback, RunsUnderItsLock)
{
    ASSERT_EQ(install(seen), 0);
    seen.action = [&] {
        set.background([] { EXPECT_FALSE(movonet::callbackListLock.tryLock()); });
        set.joinBackground();
    };
    EXPECT_EQ(notify(), 0);
    EXPECT_EQ(seen.reasons.size(), 1U);
}

TEST_F(Callback, NeverOverlapsAnother)
{
    std::atomic<int> inside{0};
    std::atomic<int> calls{0};
    std::atomic<bool> overlap{false};
    ASSERT_EQ(install(seen), 0);
    seen.action = [&] {
        overlap = overlap || inside.fetch_add(1) != 0;
        (void)sched_yield();
        inside.fetch_sub(1);
        ++calls;
    };
    for (int thread = 0; thread < 4; ++thread) {
        set.background([] {
            for (int count = 0; count < 50; ++count) {
                EXPECT_EQ(notify(), 0);
            }
        });
    }
    set.joinBackground();
    EXPECT_EQ(calls, 200);
    EXPECT_FALSE(overlap);
}

TEST_F(Callback, IsNotRunningAnyMoreWhenItWasTakenAway)
{
    std::atomic<bool> inside{false};
    std::atomic<bool> takenAway{false};
    bool takenAwayWhileInside = true;
    ASSERT_EQ(install(seen), 0);
    seen.action = [&] {
        inside = true;
        inside.notify_all();
        while (!set.logged(KEST_LEVEL_ERROR, kFg, kUnInstall, "s_bIsInitDone=false\n")) {
            (void)sched_yield(); // the other stands right before the lock
        }
        for (int yields = 0; yields < 200; ++yields) {
            (void)sched_yield();
        }
        takenAwayWhileInside = takenAway;
    };
    set.background([] { EXPECT_EQ(notify(), 0); });
    inside.wait(false);
    EXPECT_EQ(Movo_NET_UnInstallCallback(0, 0), 0);
    takenAway = true;
    set.joinBackground();
    EXPECT_FALSE(takenAwayWhileInside);
}

TEST_F(Callback, IsRefusedAfterTheStop)
{
    ASSERT_EQ(set.start(), 0);
    ASSERT_EQ(set.stop(), 0);
    EXPECT_EQ(install(seen), 1);
    EXPECT_EQ(Movo_NET_UnInstallCallback(0, 0), 1);
    EXPECT_EQ(notify(), 1);
}
} // namespace
