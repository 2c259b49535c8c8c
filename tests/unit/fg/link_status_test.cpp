#include "fake_iface.h"
#include "fg_test.h"

#include "movo_net_fl_eventloop/eventloop.h"

#include <list>

namespace {
constexpr const char* kPass = "OnLinkStatusEventRev";
constexpr auto kWifi = _MOVO_NET_IFACE_WIFI_;
constexpr auto kLo = _MOVO_NET_IFACE_LO_;

/** Link passes on the test's thread, over interfaces of the test's making. */
class LinkPass : public testing::Test {
    std::list<FakeIface> m_ifaces;

protected:
    sim::Set set;

    LinkPass()
    {
        set.recordCallbacks();
        present("");
    }

    FakeIface& list(const char* name, MovoNetIfaceType_e type = kEther)
    {
        FakeIface& iface = m_ifaces.emplace_back(name, type);
        iface.list();
        return iface;
    }
    void present(const std::string& table) { set.write("/proc/net/dev", table); }
    static RETURN_TYPE pass()
    {
        const movonet::LoopGate gate;
        return OnLinkStatusEventRev(-1, nullptr, 1);
    }
    bool toldOf(const char* text) const { return bool(set.logged(KEST_LEVEL_ERROR, kFg, kPass, text)); }
};

struct Row {
    MovoNetIfaceType_e type;
    bool present;
    int can;
    bool available;
    const char* calls; ///< Of the back end.
    bool availableAfter;
};
void PrintTo(const Row& row, std::ostream* out)
{
    *out << (row.type == kEther  ? "wired"
             : row.type == kWifi ? "wireless"
                                 : "loopback")
         << (row.present ? ", listed" : ", not listed") << ", can " << row.can
         << (row.available ? ", available" : ", not available");
}

class LinkRule : public LinkPass, public testing::WithParamInterface<Row> {};

TEST_P(LinkRule, Holds)
{
    const Row& row = GetParam();
    FakeIface& iface = list("if0", row.type);
    iface.can = row.can;
    iface.record.isAvailable = row.available;
    present(row.present ? "if0: 0\n" : "if1x: 0\n");
    set.fail({.call = sim::Call::Calloc, .mayMiss = true}); // nothing else is listed

    EXPECT_EQ(pass(), 0);
    EXPECT_EQ(iface.calls, row.calls);
    EXPECT_EQ(iface.record.isAvailable, row.availableAfter);
    EXPECT_EQ(iface.asked, row.type == kLo ? 0 : 1);
    EXPECT_EQ(toldOf("link:interface available, start to active iface if0\n"), iface.calls == "+");
    EXPECT_EQ(toldOf("link:interface removed if0\n"), iface.calls == "-");
    if (iface.calls == "+") {
        EXPECT_CALLBACKS(set, {{sim::IFFOUND, "if0"}});
    } else if (iface.calls == "-") {
        EXPECT_CALLBACKS(set, {{sim::IFREMOVED, "if0"}});
    } else {
        EXPECT_CALLBACKS(set, {});
    }
}
INSTANTIATE_TEST_SUITE_P(Wired, LinkRule,
                         testing::Values(Row{kEther, true, 1, false, "+", true}, Row{kEther, true, 1, true, "", true},
                                         Row{kEther, true, 0, false, "", false}, Row{kEther, true, 0, true, "-", false},
                                         Row{kEther, true, -1, false, "", false},
                                         Row{kEther, true, -1, true, "-", false},
                                         Row{kEther, true, 2, false, "", false}, Row{kEther, true, 2, true, "-", false},
                                         Row{kEther, false, 1, false, "", false}, Row{kEther, false, 1, true, "", true},
                                         Row{kEther, false, 0, false, "", false},
                                         Row{kEther, false, 0, true, "-", false},
                                         Row{kEther, false, -1, true, "-", false}));
INSTANTIATE_TEST_SUITE_P(Wireless, LinkRule,
                         testing::Values(Row{kWifi, true, 1, false, "+", true}, Row{kWifi, true, 1, true, "", true},
                                         Row{kWifi, true, 0, false, "", false}, Row{kWifi, true, 0, true, "", true},
                                         Row{kWifi, true, -1, true, "", true}, Row{kWifi, true, 2, false, "", false},
                                         Row{kWifi, false, 1, false, "", false}, Row{kWifi, false, 1, true, "-", false},
                                         Row{kWifi, false, 0, false, "", false},
                                         Row{kWifi, false, 0, true, "-", false}));
INSTANTIATE_TEST_SUITE_P(Loopback, LinkRule,
                         testing::Values(Row{kLo, true, 1, false, "", false}, Row{kLo, true, 0, true, "", true},
                                         Row{kLo, false, 1, true, "", true}));

TEST_F(LinkPass, EnablesWhatItActivatesEvenIfItWasDisabled)
{
    FakeIface& iface = list("if0");
    present("if0: 0\n");
    iface.onActive = [&] {
        EXPECT_EQ(iface.record.isAvailable, 1);
        EXPECT_EQ(iface.record.isEnabled, 0);
        EXPECT_TRUE(toldOf("link:interface available, start to active iface if0\n"));
        EXPECT_TRUE(set.callbacks().empty());
    };
    set.onCallback([&](MovoNetCBReason_e, void* param) {
        EXPECT_EQ(param, &iface.record);
        EXPECT_EQ(iface.record.isEnabled, 1);
    });
    EXPECT_EQ(pass(), 0);
    EXPECT_EQ(set.callbacks().size(), 1U);
}

TEST_F(LinkPass, TriesAgainAfterAFailedActivation)
{
    FakeIface& iface = list("if0");
    present("if0: 0\n");
    iface.result = 1;
    EXPECT_EQ(pass(), 0);
    EXPECT_TRUE(toldOf("link:activate if0 failed\n"));
    EXPECT_EQ(iface.record.isAvailable, 0);
    EXPECT_EQ(iface.record.isEnabled, 0);
    EXPECT_CALLBACKS(set, {});

    iface.result = 0;
    EXPECT_EQ(pass(), 0);
    EXPECT_EQ(iface.calls, "++");
    EXPECT_EQ(iface.record.isAvailable, 1);
    EXPECT_CALLBACKS(set, {{sim::IFFOUND, "if0"}});
}

TEST_F(LinkPass, MakesInactiveOnlyWhatAFailedActivationMadeActive)
{
    for (const kest_bool before : {movonet::kFalse, movonet::kTrue}) {
        FakeIface& iface = list(before != 0 ? "if1" : "if0");
        present(std::string(iface.record.name) + ": 0\n");
        iface.result = 1;
        iface.record.isActived = before;
        iface.onActive = [&] { movonet::store(iface.record.isActived, movonet::kTrue); };
        EXPECT_EQ(pass(), 0);
        EXPECT_EQ(iface.record.isAvailable, 0);
        EXPECT_EQ(iface.record.isActived, before);
    }
}

TEST_F(LinkPass, TellsOfARemovalBeforeItDeactivates)
{
    FakeIface& iface = list("if0");
    iface.record.isAvailable = iface.record.isConnected = iface.record.isEnabled = 1;
    iface.can = 0;
    set.onCallback([&](MovoNetCBReason_e, void* param) {
        EXPECT_EQ(param, &iface.record);
        EXPECT_EQ(iface.record.isAvailable, 0);
        EXPECT_EQ(iface.record.isConnected, 0);
        EXPECT_EQ(iface.calls, "");
        EXPECT_TRUE(toldOf("link:interface removed if0\n"));
    });
    EXPECT_EQ(pass(), 0);
    EXPECT_EQ(iface.calls, "-");
    EXPECT_EQ(iface.record.isEnabled, 1);
    EXPECT_FALSE(toldOf("link:deactivate if0 failed\n"));
}

TEST_F(LinkPass, TellsOfAFailedDeactivation)
{
    FakeIface& iface = list("if0");
    iface.record.isAvailable = 1;
    iface.can = 0;
    iface.result = 3;
    EXPECT_EQ(pass(), 0);
    EXPECT_TRUE(toldOf("link:deactivate if0 failed\n"));
    EXPECT_EQ(iface.record.isAvailable, 0);
}

TEST_F(LinkPass, KeepsRemovedInterfacesAndActivatesThemWhenTheyReturn)
{
    FakeIface& iface = list("if0");
    present("if0: 0\n");
    for (const int can : {1, 0, 1, 0}) {
        iface.can = can;
        EXPECT_EQ(pass(), 0);
    }
    EXPECT_EQ(iface.calls, "+-+-");
    EXPECT_EQ(listedInterfaces(), (std::vector<std::string>{"if0"}));
    EXPECT_CALLBACKS(set,
                     {{sim::IFFOUND, "if0"}, {sim::IFREMOVED, "if0"}, {sim::IFFOUND, "if0"}, {sim::IFREMOVED, "if0"}});
}

TEST_F(LinkPass, GoesInListOrderWhateverThePriorities)
{
    FakeIface& first = list("if2");
    FakeIface& gone = list("if1");
    FakeIface& last = list("if0");
    first.record.priority = 1;
    last.record.priority = 9;
    gone.record.isAvailable = 1;
    gone.can = 0;
    present("if0: 0\nif1: 0\nif2: 0\n");
    EXPECT_EQ(pass(), 0);
    EXPECT_CALLBACKS(set, {{sim::IFFOUND, "if2"}, {sim::IFREMOVED, "if1"}, {sim::IFFOUND, "if0"}});
}

TEST_F(LinkPass, TakesARecordWithoutOperationsForOneThatCannot)
{
    FakeIface& broken = list("if0");
    FakeIface& sound = list("if1");
    broken.record.funcs = {};
    present("if0: 0\nif1: 0\n");
    EXPECT_EQ(pass(), 0);
    EXPECT_EQ(broken.record.isAvailable, 0);
    EXPECT_EQ(sound.calls, "+");
}

TEST_F(LinkPass, ListsWhatIsNewFirst)
{
    present("eth0: 0\n");
    set.cable("eth0").plug();
    set.startLoop();
    EXPECT_EQ(pass(), 0);
    EXPECT_EQ(listedInterfaces(), (std::vector<std::string>{"eth0"}));
    EXPECT_RAN(set, "netcfg eth0 up");
}

TEST_F(LinkPass, FailsWhenTheListCannotBeLockedAndFreesTheWayForTheNext)
{
    FakeIface& iface = list("if0");
    present("if0: 0\n");
    set.fail(lockFault(movonet::ifaceListLock, sim::ThreadKind::Any, 2)); // after the search for if0
    EXPECT_EQ(pass(), 1);
    EXPECT_TRUE(toldOf("lock mutex failed\n"));
    EXPECT_EQ(iface.asked, 0);
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
    EXPECT_EQ(pass(), 0);
    EXPECT_EQ(iface.calls, "+");
    EXPECT_EQ(timesLogged(set, "still processing\n"), 0);
}

TEST_F(LinkPass, LeavesItsLocksFree)
{
    list("if0");
    EXPECT_EQ(pass(), 0);
    set.background([] {
        for (movonet::Mutex* lock : {&movonet::updateIfListLock, &movonet::ifaceListLock, &movonet::callbackListLock}) {
            ASSERT_TRUE(lock->tryLock());
            lock->unlock();
        }
    });
    set.joinBackground();
}

TEST_F(LinkPass, SkipsItselfWhileAnotherRuns)
{
    FakeIface& iface = list("if0");
    present("if0: 0\n");
    iface.onActive = [&] {
        set.forget();
        set.background([] { EXPECT_EQ(OnLinkStatusEventRev(-1, nullptr, 1), 0); });
        set.joinBackground();
        EXPECT_EQ(pass(), 0) << "on the same thread";
        EXPECT_EQ(timesLogged(set, "still processing\n"), 2);
        EXPECT_LOGGED(set, KEST_LEVEL_INFO, kFg, kPass, "still processing\n");
    };
    EXPECT_EQ(pass(), 0);
    EXPECT_EQ(iface.asked, 1);
    EXPECT_EQ(iface.calls, "+");
}

TEST_F(LinkPass, ReportsTheGlueDone)
{
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
    EXPECT_EQ(pass(), 0);
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 1);
}

TEST_F(LinkPass, DoesNotReportAStoppingGlueDone)
{
    movonet::store(movonet::s_bThreadTerminating, kest_bool{1});
    EXPECT_EQ(pass(), 0);
    EXPECT_EQ(Movo_NET_IsInitializationDone(0), 0);
}

TEST_F(LinkPass, GoesOnWhenTheApplicationCannotBeCalled)
{
    FakeIface& first = list("if0");
    FakeIface& second = list("if1");
    present("if0: 0\nif1: 0\n");
    set.failLock(movonet::callbackListLock, 1);
    EXPECT_EQ(pass(), 0);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, "NotifyApp", "lock mutex failed\n");
    EXPECT_EQ(first.calls + second.calls, "++");
    EXPECT_CALLBACKS(set, {{sim::IFFOUND, "if1"}});
}

TEST(FindInterface, ComparesWholeNames)
{
    FakeIface first("eth0", kEther);
    FakeIface second("eth1", kEther);
    FakeIface twin("eth1", kWifi);
    const sim::Set set;
    EXPECT_EQ(FindInterface("eth0"), nullptr);
    for (FakeIface* iface : {&first, &second, &twin}) {
        iface->list();
    }
    EXPECT_EQ(FindInterface("eth0"), &first.record);
    EXPECT_EQ(FindInterface("eth1"), &second.record) << "the first of two";
    for (const char* name : {"", "eth", "eth00", "ETH0", "eth0 "}) {
        EXPECT_EQ(FindInterface(name), nullptr) << name;
    }
    EXPECT_EQ(FindInterface(nullptr), nullptr);
    EXPECT_TRUE(set.log().empty());
}

TEST(FindInterface, FindsNothingWithoutTheLock)
{
    FakeIface iface("eth0", kEther);
    sim::Set set;
    iface.list();
    set.failLock(movonet::ifaceListLock, 1);
    EXPECT_EQ(FindInterface("eth0"), nullptr);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, kFg, "FindInterface", "lock mutex failed\n");
    EXPECT_EQ(FindInterface("eth0"), &iface.record);
}
} // namespace
