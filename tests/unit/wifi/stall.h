/** A television on which everything takes its longest, and the table of the longest waits. */
#ifndef UNIT_WIFI_STALL_H
#define UNIT_WIFI_STALL_H

#include "names.h"
#include "television.h"

#include <atomic>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace movonet {
class Mutex;
}

namespace wifi {
/** Where a wait would hold up others. */
struct NamedLock {
    const char* name;
    const movonet::Mutex* lock;
};

/** A television that has joined a network and has its lease; its DHCP client does not end by itself. */
struct Slow {
    Slow();
    Slow(const Slow&) = delete;
    Slow& operator=(const Slow&) = delete;

    void start();
    void tryToJoin();
    void join();

    /** What threads of that kind wait for meanwhile, as a row of the table. */
    std::string measure(const std::string& name, sim::ThreadKind kind, const std::function<void()>& action);

    Television television;
    sim::Set& set = television.set;

private:
    std::vector<NamedLock> locks();
    void note(int& count);
    void take(const char* name);
    void slowSupplicant();
    void slowMachine();
    std::string parts(std::int64_t pauses) const;

    std::atomic<sim::ThreadKind> m_kind = sim::ThreadKind::Any;
    std::mutex m_mutex; ///< Guards all that follows: more than one thread may be of the kind.
    std::vector<NamedLock> m_locks;
    int m_exchanges = 0;
    int m_commands = 0;
    int m_disks = 0;
    int m_pauses = 0;
    bool m_busy = false;
    std::set<std::string> m_held;
    std::set<std::string> m_taken;
};

/** The row of docs/concurrency.md that begins so, without what follows the name; "no row". */
std::string documented(const std::string& beginning);
} // namespace wifi

#endif
