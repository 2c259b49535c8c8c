#include "walk.h"

#include "movo_net_fg/fg.h"
#include "movo_net_fl_common/dhcp.h"
#include "movo_net_fl_eventloop/eventloop.h"

#include <algorithm>
#include <arpa/inet.h>
#include <mutex>

/** Of the sanitizers' allocator; without them memory is not looked at. */
extern "C" std::size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));

using namespace movonet;

namespace wifi {
namespace {
struct Registration {
    RETURN_TYPE (*handler)(int, void*, kest_bool);
    void* data;
};
std::mutex s_lock;
std::map<int, Registration> s_registered; // by handle

void forgetRegistration(int handle)
{
    const std::lock_guard guard(s_lock);
    s_registered.erase(handle);
}

std::string addressText(std::uint32_t address)
{
    char text[INET_ADDRSTRLEN] = "";
    return inet_ntop(AF_INET, &address, text, sizeof(text));
}

bool isConnected(const MovoNetIface_t& iface)
{
    return load(iface.isConnected) && iface.type != _MOVO_NET_IFACE_LO_ &&
           load(iface.ipStatus) != _MOVO_NET_IPSTATUS_DHCP_AUTOIP_;
}

/**
 * The interface that must have the default route; NULL when there is none, and while a new configuration is under way
 * or was cut short by a callback: the record keeps its old address then, or takes one that the interface could not, and
 * counts as connected.
 */
const MovoNetIface_t* bestConnected(Television& television)
{
    const MovoNetIface_t* best = highestPriority(isConnected);
    if (best == nullptr || load(best->gwv4) == 0 || !load(best->isActived)) {
        return nullptr;
    }
    const sim::Iface kernel = television.set.iface(best->name);
    return kernel.up() && kernel.address() == addressText(load(best->ipv4)) ? best : nullptr;
}

// Each tells what does not hold; empty when it does.

std::string state(Television& television)
{
    const WpactrlConnectStatus_e status = load(television.link().connectStatus);
    const bool agrees = television.supplicant.attempts.agreesWith(status);
    return agrees ? "" : "the state " + std::to_string(status) + " is not what the commands and callbacks make of it";
}

std::string activation(Television& television)
{
    const bool active = load(television.mlan0().isActived) != kFalse;
    return active && load(television.link().ctrl_conn) == nullptr ? "it is active without its supplicant" : "";
}

std::string timers(Television& /*television*/)
{
    for (const auto& [event, count] : liveTimers()) {
        if (count > 1) {
            return std::to_string(count) + " registrations of one kind";
        }
    }
    return "";
}

std::string route(Television& television)
{
    const MovoNetIface_t* best = bestConnected(television);
    if (best == nullptr) {
        return "";
    }
    const std::string wanted = addressText(load(best->gwv4)) + " dev " + best->name;
    const Lines routes = television.set.defaultRoutes();
    return routes == Lines{wanted} ? "" : "the default route is not " + wanted;
}

std::string resolver(Television& television)
{
    const MovoNetIface_t* best = bestConnected(television);
    if (best == nullptr) {
        return "";
    }
    const std::string wanted = "nameserver " + addressText(load(best->dns1v4)) + "\n";
    const bool found = television.set.read("/etc/resolv.conf").starts_with(wanted);
    return found ? "" : "the resolver does not begin with " + wanted;
}

std::string routing(Television& television)
{
    const std::string broken = route(television);
    return broken.empty() ? resolver(television) : broken;
}

using Ifaces = std::vector<const MovoNetIface_t*>;

/** The interfaces that a retry has brought back: connected, but not active. */
Ifaces revived()
{
    Ifaces ifaces;
    for (const MovoNetIface_t* iface = firstInterface(); iface != nullptr; iface = nextInterface(iface)) {
        if (load(iface->isConnected) && !load(iface->isActived)) {
            ifaces.push_back(iface);
        }
    }
    return ifaces;
}

bool isRemoved(const MovoNetIface_t* iface)
{
    return !load(iface->isConnected) && !load(iface->isActived) && !load(iface->isAvailable);
}

std::string locks(Television& television)
{
    const int held = television.set.heldLocks();
    return held == 0 ? "" : std::to_string(held) + " locks are held";
}

std::string descriptors(Television& television)
{
    constexpr std::size_t kMost = 3; // a DHCP pipe for each interface, and what reads the board's MAC address
    const Lines open = television.set.openDescriptors();
    if (open.size() > kMost || television.supplicant.connections() > 2) {
        return std::to_string(open.size()) + " descriptors and " + std::to_string(television.supplicant.connections()) +
               " connections are open";
    }
    return "";
}

std::string problems(Television& television)
{
    const Lines all = television.set.problems();
    return all.empty() ? "" : all.front();
}

using Check = std::string (*)(Television& television);

/** Bytes that are allocated once the records of the test are forgotten. */
std::size_t allocated(Television& television)
{
    television.set.forget();
    television.supplicant.commands = {};
    television.supplicant.opened = {};
    return &__sanitizer_get_current_allocated_bytes != nullptr ? __sanitizer_get_current_allocated_bytes() : 0;
}
} // namespace

Timers liveTimers()
{
    const std::lock_guard guard(s_lock);
    Timers timers;
    for (const auto& [handle, registration] : s_registered) {
        ++timers[{reinterpret_cast<void*>(registration.handler), registration.data}];
    }
    return timers;
}

namespace {
/** A television that walks. */
class Walker {
public:
    explicit Walker(unsigned seed) : m_television(seed)
    {
        m_television.startWith({{"Home", "[WPA2-PSK-CCMP][WPS][ESS]"}, {"Open", "[ESS]"}, {"Wep", "[WEP][ESS]"}});
        m_television.supplicant.replies["WPS_PIN any"] = {"12345670"};
        m_television.supplicant.replies["WPS_PIN any 12345670"] = {"12345670"};
    }

    Television& television() { return m_television; }
    void run(const Step& step) { allActions()[step.action].run(m_television, step.number); }
    void runInBackground(const Step& step)
    {
        m_television.set.background([this, step] { run(step); });
    }

    /** After a step: does all hold? `halfWay` is when to remember how much memory there is. */
    bool holds(bool halfWay, std::span<const Check> checks)
    {
        constexpr std::size_t kMostGrowth = 64U * 1024;
        m_television.set.joinBackground();
        m_television.set.settle();
        for (const Check check : checks) {
            if (const std::string broken = check(m_television); !broken.empty()) {
                ADD_FAILURE() << broken; // the log of this step is told with it
                return false;
            }
        }
        if (const std::string broken = brokenRouting(); !broken.empty()) {
            ADD_FAILURE() << broken;
            return false;
        }
        const std::size_t now = allocated(m_television);
        m_before = halfWay ? now : m_before;
        if (m_before != 0 && now > m_before + kMostGrowth) {
            ADD_FAILURE() << now - m_before << " more bytes are allocated than at half way";
            return false;
        }
        return true;
    }

    Walked walked(std::size_t steps) const
    {
        return {static_cast<int>(steps), m_television.supplicant.attempts.ends(),
                m_television.supplicant.attempts.resets()};
    }

private:
    /** The removal of a revived interface leaves its route in place until the best interface is chosen again. */
    std::string brokenRouting()
    {
        const std::string broken = routing(m_television);
        m_routeIsLeft = !broken.empty() && (m_routeIsLeft || std::ranges::any_of(m_revived, isRemoved));
        m_revived = revived();
        return m_routeIsLeft ? "" : broken;
    }

    Television m_television;
    std::size_t m_before = 0;
    Ifaces m_revived; ///< After the step before.
    bool m_routeIsLeft = false;
};

bool isBy(const Step& step, Actor actor)
{
    return allActions()[step.action].actor == actor;
}
} // namespace

Walked walk(const Trace& trace)
{
    static constexpr Check kChecks[] = {problems, state, activation, timers, locks, descriptors};
    Walker walker(0);
    std::size_t done = 0;
    for (bool sound = true; sound && done < trace.size();) {
        walker.run(trace[done]);
        ++done;
        sound = walker.holds(done == trace.size() / 2, kChecks);
    }
    return walker.walked(done);
}

Walked walkTogether(const Trace& trace, unsigned seed)
{
    static constexpr Check kChecks[] = {problems, timers, locks, descriptors};
    Walker walker(seed);
    walker.television().supplicant.attempts.lookAway();
    std::size_t done = 0;
    for (bool sound = true; sound && done < trace.size();) {
        const std::size_t before = done;
        if (isBy(trace[done], Actor::Application)) {
            walker.runInBackground(trace[done++]);
        }
        if (done == before || (done < trace.size() && isBy(trace[done], Actor::World))) {
            walker.run(trace[done++]);
        }
        sound = walker.holds(false, kChecks); // the set remembers every thread, so that memory grows
    }
    return walker.walked(done);
}

Trace shortened(const Trace& trace, const std::function<bool(const Trace&)>& fails)
{
    constexpr int kMostTries = 300;
    Trace shortest = trace;
    int tries = 0;
    for (std::size_t piece = shortest.size() / 2; piece > 0; piece /= 2) {
        for (std::size_t at = 0; at + piece <= shortest.size() && tries < kMostTries;) {
            Trace shorter = shortest;
            const auto begin = shorter.begin() + static_cast<std::ptrdiff_t>(at);
            shorter.erase(begin, begin + static_cast<std::ptrdiff_t>(piece));
            ++tries;
            if (fails(shorter)) {
                shortest = shorter;
            } else {
                at += piece;
            }
        }
    }
    return shortest;
}
} // namespace wifi

// The registrations pass through here on their way to the loop.

extern "C" {
RETURN_TYPE __real_int_addEvent(MovoNetEvent_t event, int* handle);
RETURN_TYPE __real_int_removeEvent(int handle);
RETURN_TYPE __real__ZN7movonet13removeEventOfEiPFiiPvhEPKv(int handle, RETURN_TYPE (*handler)(int, void*, kest_bool),
                                                           const void* data);

RETURN_TYPE __wrap_int_addEvent(MovoNetEvent_t event, int* handle)
{
    const RETURN_TYPE result = __real_int_addEvent(event, handle);
    if (result == kOk) {
        const std::lock_guard guard(wifi::s_lock);
        wifi::s_registered[*handle] = {event.OnEventRev, event.data};
    }
    return result;
}

RETURN_TYPE __wrap_int_removeEvent(int handle)
{
    const RETURN_TYPE result = __real_int_removeEvent(handle);
    if (result == kOk) {
        wifi::forgetRegistration(handle);
    }
    return result;
}

RETURN_TYPE __wrap__ZN7movonet13removeEventOfEiPFiiPvhEPKv(int handle, RETURN_TYPE (*handler)(int, void*, kest_bool),
                                                           const void* data)
{
    const RETURN_TYPE result = __real__ZN7movonet13removeEventOfEiPFiiPvhEPKv(handle, handler, data);
    if (result == kOk) {
        wifi::forgetRegistration(handle);
    }
    return result;
}
}
