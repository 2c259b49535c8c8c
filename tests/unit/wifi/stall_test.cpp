#include "names.h"
#include "television.h"

#include "movo_net_fg/fg.h"
#include "movo_net_fl_common/dhcp.h"
#include "movo_net_fl_eventloop/eventloop.h"
#include "sim/world.h"
#include "support/shared.h"
#include "unit/fg/every_call.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <movo_net.h>
#include <set>
#include <sstream>

// How long each public call and each handler waits when all it asks is as slow as it can be. The table in
// docs/concurrency.md holds what is found here: whoever adds a wait sees its row fail.

using namespace wifi;
using namespace movonet;

namespace {
using sim::Call;
using sim::ThreadKind;

constexpr int kExchangeMs = 15000;

/** Where a wait would hold up others. */
struct NamedLock {
    const char* name;
    const Mutex* lock;
};

/** A television that has joined a network and has its lease; its DHCP client does not end by itself. */
struct Slow {
    Television television;
    sim::Set& set = television.set;

    Slow()
    {
        set.cable("eth0").plug();
        set.dhcp(kIf).ignoresHangup();
        set.dhcp("eth0").ignoresHangup();
    }

    void start()
    {
        television.startWith({Network{}});
        EXPECT_EQ(Movo_NET_WifiSetKey(0, kIf, "Net", "correct horse", 13), 0);
    }
    void tryToJoin()
    {
        start();
        EXPECT_EQ(Movo_NET_WifiConnectEss(0, kIf, "Net"), 0);
    }
    void join()
    {
        tryToJoin();
        television.hears({kConnected});
        set.dhcp(kIf).leases();
    }

    /** What threads of that kind wait for meanwhile, as a row of the table. */
    std::string measure(const std::string& name, ThreadKind kind, const std::function<void()>& action)
    {
        m_kind = kind;
        slowSupplicant();
        slowMachine();
        const int attached = television.supplicant.attached + television.supplicant.detached;
        const std::int64_t before = set.waited(kind);
        action();
        set.settle();
        const std::int64_t pauses = set.waited(kind) - before - std::int64_t{m_exchanges} * kExchangeMs;
        m_exchanges += television.supplicant.attached + television.supplicant.detached - attached;
        m_kind = ThreadKind::Any;
        return "| " + name + " | " + seconds(std::int64_t{m_exchanges} * kExchangeMs + pauses) + " | " + parts(pauses) +
               " | " + list(m_held) + " | " + list(m_taken) + " |";
    }

private:
    std::vector<NamedLock> locks()
    {
        std::vector<NamedLock> all{
            {"eventListLock", &eventListLock}, {"updateIfListLock", &updateIfListLock},
            {"ifaceListLock", &ifaceListLock}, {"callbackListLock", &callbackListLock},
            {"essListLock", &essListLock},     {"essTableLock", &essTableLock},
        };
        if (firstInterface() != nullptr && FindInterface(kIf) != nullptr) {
            all.push_back({"Wpactrl_t.lock", &television.link().lock});
            all.push_back({"MovoNetWifi_t.lock", &wifi_iface(&television.mlan0())->lock});
        }
        return all;
    }

    void note(int& count)
    {
        ++count;
        for (const NamedLock& each : m_locks) {
            if (set.holds(*each.lock)) {
                m_held.insert(each.name);
            }
        }
    }

    /** Each exchange takes its longest, and what is tried again when the supplicant is busy is refused once. */
    void slowSupplicant()
    {
        television.supplicant.onCommand = [this](const std::string& command) {
            if (sim::selfKind() != m_kind) {
                return;
            }
            note(m_exchanges);
            set.spend(kExchangeMs);
            const bool isQuestion =
                command == "ADD_NETWORK" || command == "SCAN_RESULTS" || command.starts_with("WPS_PIN any");
            m_busy = !m_busy && !isQuestion;
            if (m_busy) {
                television.supplicant.nextReplies.emplace_front("FAIL-BUSY\n");
            }
        };
    }

    void slowMachine()
    {
        m_locks = locks();
        for (const auto& [call, count] : {std::pair{Call::System, &m_commands},
                                          {Call::Popen, &m_commands},
                                          {Call::Sync, &m_disks},
                                          {Call::Fsync, &m_disks},
                                          {Call::Sleep, &m_pauses}}) {
            set.fail({.call = call, .thread = m_kind, .does = [this, to = count] { note(*to); }, .mayMiss = true});
        }
        for (const NamedLock& each : m_locks) {
            set.fail({.call = Call::MutexLock,
                      .object = each.lock,
                      .size = sizeof(*each.lock),
                      .thread = m_kind,
                      .does = [this, name = each.name] { m_taken.insert(name); },
                      .mayMiss = true});
        }
    }

    static std::string seconds(std::int64_t ms)
    {
        std::ostringstream text;
        text << static_cast<double>(ms) / 1000 << " s";
        return text.str();
    }

    std::string parts(std::int64_t pauses) const
    {
        std::string text;
        const auto add = [&text](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
        const auto count = [&add](int number, const char* what) {
            if (number > 0) {
                add(std::to_string(number) + " " + what + (number > 1 ? "s" : ""));
            }
        };
        count(m_exchanges, "exchange");
        if (pauses > 0) {
            add(seconds(pauses) + " of pauses");
        }
        count(m_commands, "command");
        count(m_disks, "disk");
        return text.empty() ? "–" : text;
    }

    static std::string list(const std::set<std::string>& names)
    {
        std::string text;
        for (const std::string& name : names) {
            text += (text.empty() ? "" : ", ") + name;
        }
        return text.empty() ? "–" : text;
    }

    ThreadKind m_kind = ThreadKind::Any;
    std::vector<NamedLock> m_locks;
    int m_exchanges = 0;
    int m_commands = 0;
    int m_disks = 0;
    int m_pauses = 0;
    bool m_busy = false;
    std::set<std::string> m_held;
    std::set<std::string> m_taken;
};

struct Row {
    std::string name;
    void (Slow::*prepare)();
    ThreadKind kind;
    /** What is done before the waits count. */
    std::function<void(Slow&)> before;
    std::function<void(Slow&)> action;
};
void PrintTo(const Row& row, std::ostream* out)
{
    *out << row.name;
}

void nothing(Slow&) {}

void takeDown(Slow&)
{
    EXPECT_EQ(Movo_NET_DisableIface(0, kIf), 0);
}

std::vector<Row> calls()
{
    std::vector<Row> rows;
    for (const PublicCall& each : everyCall()) {
        const bool enables = std::string(each.name) == "Movo_NET_EnableIface";
        rows.push_back({each.name, &Slow::join, ThreadKind::Test, enables ? takeDown : nothing,
                        [call = each.call](Slow& slow) { call(slow.set, kIf); }});
    }
    rows.push_back(
        {"Movo_NET_Glue_Init", nullptr, ThreadKind::Test, nothing, [](Slow& slow) { EXPECT_EQ(slow.set.start(), 0); }});
    rows.push_back({"Movo_NET_Glue_Exit", &Slow::join, ThreadKind::Test, nothing,
                    [](Slow& slow) { EXPECT_EQ(slow.set.stop(), 0); }});
    return rows;
}

/** A handler that a test calls in the loop's stead. */
Row direct(const char* name, void (Slow::*prepare)(), std::function<void(Slow&)> before,
           RETURN_TYPE (*handler)(int, void*, kest_bool))
{
    return {name, prepare, ThreadKind::Test, std::move(before), [handler](Slow& slow) {
                const LoopGate gate;
                (void)handler(kNoFd, &slow.television.mlan0(), kTrue);
            }};
}

/** A handler that the loop calls, for a message of the supplicant. */
Row heard(const char* name, void (Slow::*prepare)(), std::function<void(Slow&)> before, const char* message)
{
    return {name, prepare, ThreadKind::Loop, std::move(before),
            [message](Slow& slow) { slow.television.hears({message}); }};
}

void scan(Slow&)
{
    EXPECT_EQ(Movo_NET_WifiScanEsss(0, kIf), 0);
}

std::vector<Row> handlers()
{
    const auto loseLease = [](Slow& slow) { slow.set.dhcp(kIf).loses(); };
    return {
        heard("`OnWpactrlEventRev`, connected", &Slow::tryToJoin, nothing, kConnected),
        heard("`OnWpactrlEventRev`, disconnected", &Slow::join, nothing, kDisconnected),
        heard("`OnWpactrlEventRev`, handshake failed", &Slow::tryToJoin, nothing, kHandshake),
        heard("`OnWpactrlEventRev`, scan results", &Slow::join, scan, kResults),
        direct("`OnConnectTimeoutEventRev`", &Slow::tryToJoin, nothing, OnConnectTimeoutEventRev),
        direct("`OnScanTimeoutEventRev`", &Slow::join, scan, OnScanTimeoutEventRev),
        {"`OnDhcpEventRev`, new", &Slow::join, ThreadKind::Loop, nothing,
         [](Slow& slow) { slow.set.dhcp(kIf).leases({.address = "10.0.2.16"}); }},
        {"`OnDhcpEventRev`, down", &Slow::join, ThreadKind::Loop, nothing, loseLease},
        direct("`OnDhcpDown`", &Slow::join, loseLease, OnDhcpDown),
        {"configuration thread, static", &Slow::join, ThreadKind::Product, nothing,
         [](Slow&) { EXPECT_EQ(Movo_NET_ConfigIPMode(0, kIf, _MOVO_NET_IPMODE_STATIC_), 0); }},
        {"configuration thread, DHCP", &Slow::join, ThreadKind::Product,
         [](Slow& slow) {
             EXPECT_EQ(Movo_NET_ConfigIPMode(0, kIf, _MOVO_NET_IPMODE_STATIC_), 0);
             slow.set.settle();
         },
         [](Slow&) { EXPECT_EQ(Movo_NET_ConfigIPMode(0, kIf, _MOVO_NET_IPMODE_DHCP_), 0); }},
    };
}

/** The table's row of that name. */
std::string documented(const std::string& name)
{
    std::ifstream file(DOCUMENTS_FOLDER "/concurrency.md");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("| " + name + " |")) {
            return line;
        }
    }
    return "no row";
}

class StallTable : public testing::TestWithParam<Row> {};

TEST_P(StallTable, HasTheLongestWait)
{
    const Row& row = GetParam();
    Slow slow;
    slow.television.supplicant.attempts.lookAway();
    if (row.prepare != nullptr) {
        (slow.*row.prepare)();
    }
    row.before(slow);
    EXPECT_EQ(documented(row.name), slow.measure(row.name, row.kind, [&] { row.action(slow); }));
}
INSTANTIATE_TEST_SUITE_P(Calls, StallTable, testing::ValuesIn(calls()));
INSTANTIATE_TEST_SUITE_P(Handlers, StallTable, testing::ValuesIn(handlers()));

TEST(StallTableRows, AreThereForEveryPublicCall)
{
    for (const std::string& name : declaredCalls()) {
        EXPECT_TRUE(name == "WaitForChild2Exit" || documented(name) != "no row") << name;
    }
}
} // namespace
