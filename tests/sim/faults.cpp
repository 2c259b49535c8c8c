#include "sim/sim.h"
#include "sim/world.h"

#include <iterator>

namespace sim {
namespace {
/** In the order of the enumeration. */
constexpr const char* kNames[] = {"open",
                                  "close",
                                  "read",
                                  "write",
                                  "lseek",
                                  "fsync",
                                  "mkfifo",
                                  "unlink",
                                  "rename",
                                  "access",
                                  "stat",
                                  "chmod",
                                  "sync",
                                  "fopen",
                                  "fclose",
                                  "popen",
                                  "system",
                                  "kill",
                                  "socket",
                                  "ioctl",
                                  "send",
                                  "recv",
                                  "if_indextoname",
                                  "select",
                                  "sleep",
                                  "pthread_create",
                                  "pthread_join",
                                  "pthread_mutexattr_init",
                                  "pthread_mutexattr_settype",
                                  "pthread_mutex_init",
                                  "pthread_mutex_lock",
                                  "pthread_mutex_trylock",
                                  "pthread_cond_wait",
                                  "pthread_cond_signal",
                                  "malloc",
                                  "calloc",
                                  "strdup",
                                  "vasprintf",
                                  "getifaddrs",
                                  "inotify_init1",
                                  "inotify_add_watch",
                                  "timer_create"};
static_assert(std::size(kNames) == static_cast<std::size_t>(Call::TimerCreate) + 1);

bool liesIn(const void* inner, const Fault& fault)
{
    const auto* begin = static_cast<const char*>(fault.object);
    const auto* address = static_cast<const char*>(inner);
    return address >= begin && address < begin + fault.size;
}

bool matches(const Fault& fault, Call call, const Subject& subject, ThreadKind kind)
{
    return fault.call == call && subject.name.starts_with(fault.on) &&
           (fault.code == 0 || fault.code == subject.code) &&
           (fault.object == nullptr || liesIn(subject.object, fault)) &&
           (fault.thread == ThreadKind::Any || fault.thread == kind);
}
} // namespace

std::string describe(Call call, const std::string& subject)
{
    return std::string(kNames[static_cast<std::size_t>(call)]) + "(" + (subject.empty() ? "" : "\"" + subject + "\"") +
           ")";
}

std::ostream& operator<<(std::ostream& out, const Fault& fault)
{
    out << describe(fault.call, fault.on);
    return fault.nth != 0 ? out << " number " << fault.nth : out;
}

FaultRule* strikes(Call call, const Subject& subject, ThreadKind kind)
{
    for (FaultRule& rule : world().faults) {
        const Fault& fault = rule.fault;
        if (rule.cleared || !matches(fault, call, subject, kind)) {
            continue;
        }
        ++rule.matched;
        if (fault.nth == 0 || (rule.matched >= fault.nth && rule.matched < fault.nth + fault.times)) {
            ++rule.struck;
            return &rule;
        }
    }
    return nullptr;
}

int Set::fail(const Fault& fault)
{
    const Hold hold;
    world().faults.push_back({fault});
    return static_cast<int>(world().faults.size()) - 1;
}

int Set::hits(int fault) const
{
    const Hold hold;
    return world().faults.at(static_cast<std::size_t>(fault)).struck;
}

void Set::clearFaults()
{
    const Hold hold;
    for (FaultRule& rule : world().faults) {
        if (!rule.cleared && rule.struck == 0 && !rule.fault.mayMiss) {
            world().problems.push_back("no call ran into the fault of " + describe(rule.fault.call, rule.fault.on));
        }
        rule.cleared = true;
    }
}
} // namespace sim
