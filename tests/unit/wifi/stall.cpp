#include "stall.h"

#include "movo_net_fg/fg.h"
#include "movo_net_fl_common/dhcp.h"
#include "movo_net_fl_eventloop/eventloop.h"
#include "sim/world.h"
#include "support/atomic.h"

#include <fstream>
#include <gtest/gtest.h>
#include <movo_net.h>
#include <sstream>

using namespace movonet;

namespace wifi {
namespace {
using sim::Call;
using sim::ThreadKind;

constexpr int kExchangeMs = 15000;

std::string seconds(std::int64_t ms)
{
    std::ostringstream text;
    text << static_cast<double>(ms) / 1000 << " s";
    return text.str();
}

std::string list(const std::set<std::string>& names)
{
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text.empty() ? "–" : text;
}
} // namespace

Slow::Slow()
{
    set.cable("eth0").plug();
    set.dhcp(kIf).ignoresHangup();
    set.dhcp("eth0").ignoresHangup();
}

void Slow::start()
{
    television.startWith({Network{}});
    EXPECT_EQ(Movo_NET_WifiSetKey(0, kIf, "Net", "correct horse", 13), 0);
}

void Slow::tryToJoin()
{
    start();
    EXPECT_EQ(Movo_NET_WifiConnectEss(0, kIf, "Net"), 0);
}

void Slow::join()
{
    tryToJoin();
    television.hears({kConnected});
    set.dhcp(kIf).leases();
}

std::string Slow::measure(const std::string& name, ThreadKind kind, const std::function<void()>& action)
{
    m_kind = kind;
    slowSupplicant();
    slowMachine();
    const int attached = television.supplicant.attached + television.supplicant.detached;
    const std::int64_t before = set.waited(kind);
    action();
    set.settle();
    m_kind = ThreadKind::Any;
    const std::scoped_lock lock(m_mutex);
    const std::int64_t pauses = set.waited(kind) - before - std::int64_t{m_exchanges} * kExchangeMs;
    m_exchanges += television.supplicant.attached + television.supplicant.detached - attached;
    return "| " + name + " | " + seconds(std::int64_t{m_exchanges} * kExchangeMs + pauses) + " | " + parts(pauses) +
           " | " + list(m_held) + " | " + list(m_taken) + " |";
}

std::vector<NamedLock> Slow::locks()
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

void Slow::note(int& count)
{
    const std::scoped_lock lock(m_mutex);
    ++count;
    for (const NamedLock& each : m_locks) {
        if (set.holds(*each.lock)) {
            m_held.insert(each.name);
        }
    }
}

void Slow::take(const char* name)
{
    const std::scoped_lock lock(m_mutex);
    m_taken.insert(name);
}

/** Each exchange takes its longest, and what is tried again when the supplicant is busy is refused once. */
void Slow::slowSupplicant()
{
    television.supplicant.onCommand = [this](const std::string& command) {
        if (sim::selfKind() != m_kind) {
            return;
        }
        note(m_exchanges);
        set.spend(kExchangeMs);
        const std::scoped_lock lock(m_mutex);
        const bool isQuestion =
            command == "ADD_NETWORK" || command == "SCAN_RESULTS" || command.starts_with("WPS_PIN any");
        m_busy = !m_busy && !isQuestion;
        if (m_busy) {
            television.supplicant.nextReplies.emplace_front("FAIL-BUSY\n");
        }
    };
}

void Slow::slowMachine()
{
    std::vector<NamedLock> found = locks(); // takes some of them
    const std::scoped_lock lock(m_mutex);
    m_locks = std::move(found);
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
                  .does = [this, name = each.name] { take(name); },
                  .mayMiss = true});
    }
}

std::string Slow::parts(std::int64_t pauses) const
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

std::string documented(const std::string& beginning)
{
    std::ifstream file(DOCUMENTS_FOLDER "/concurrency.md");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("| " + beginning)) {
            return line;
        }
    }
    return "no row";
}
} // namespace wifi
