#include "sim/sim.h"
#include "sim/world.h"

namespace sim {
namespace {
const char* nameOf(Call call)
{
    switch (call) {
    case Call::Open:
        return "open";
    case Call::Close:
        return "close";
    case Call::Read:
        return "read";
    case Call::Write:
        return "write";
    case Call::Lseek:
        return "lseek";
    case Call::Fsync:
        return "fsync";
    case Call::Mkfifo:
        return "mkfifo";
    case Call::Unlink:
        return "unlink";
    case Call::Rename:
        return "rename";
    case Call::Access:
        return "access";
    case Call::Stat:
        return "stat";
    case Call::Chmod:
        return "chmod";
    case Call::Sync:
        return "sync";
    case Call::Fopen:
        return "fopen";
    case Call::Fclose:
        return "fclose";
    case Call::Popen:
        return "popen";
    case Call::System:
        return "system";
    case Call::Kill:
        return "kill";
    case Call::Socket:
        return "socket";
    case Call::Ioctl:
        return "ioctl";
    case Call::Send:
        return "send";
    case Call::Recv:
        return "recv";
    case Call::IfIndexToName:
        return "if_indextoname";
    case Call::Select:
        return "select";
    case Call::Sleep:
        return "sleep";
    case Call::ThreadCreate:
        return "pthread_create";
    case Call::ThreadJoin:
        return "pthread_join";
    case Call::MutexAttrInit:
        return "pthread_mutexattr_init";
    case Call::MutexAttrSetType:
        return "pthread_mutexattr_settype";
    case Call::MutexInit:
        return "pthread_mutex_init";
    case Call::MutexLock:
        return "pthread_mutex_lock";
    case Call::MutexTryLock:
        return "pthread_mutex_trylock";
    case Call::CondWait:
        return "pthread_cond_wait";
    case Call::CondSignal:
        return "pthread_cond_signal";
    case Call::Malloc:
        return "malloc";
    case Call::Calloc:
        return "calloc";
    case Call::Strdup:
        return "strdup";
    case Call::Vasprintf:
        return "vasprintf";
    }
    return "?";
}

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
    return std::string(nameOf(call)) + "(" + (subject.empty() ? "" : "\"" + subject + "\"") + ")";
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
