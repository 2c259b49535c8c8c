/** What the tests of the module movo_net_fg share. */
#pragma once

#include "movo_net_fg/fg.h"
#include "sim/sim.h"

#include <algorithm>
#include <string>
#include <vector>

inline constexpr const char* kFg = "movo_net_fg";
inline constexpr const char* kInit = "Movo_NET_Glue_Init";
inline constexpr auto kEther = _MOVO_NET_IFACE_ETHER_;
inline constexpr int kPassTicks = 10;

/** The listed interfaces, in order. */
inline std::vector<std::string> listedInterfaces()
{
    std::vector<std::string> names;
    for (const MovoNetIface_t* iface = movonet::firstInterface(); iface != nullptr;
         iface = movonet::nextInterface(iface)) {
        names.emplace_back(iface->name);
    }
    return names;
}

/** How often this text was logged. */
inline int timesLogged(const sim::Set& set, const std::string& text)
{
    const auto lines = set.log();
    return static_cast<int>(std::ranges::count(lines, text, &sim::LogLine::text));
}

/** The texts that a function logged, in order. */
inline std::vector<std::string> textsOf(const sim::Set& set, const std::string& function)
{
    std::vector<std::string> texts;
    for (const sim::LogLine& line : set.log()) {
        if (line.function == function) {
            texts.push_back(line.text);
        }
    }
    return texts;
}

/** A fault of taking `lock` on one kind of thread only. */
template <typename Lock>
sim::Fault lockFault(const Lock& lock, sim::ThreadKind thread, int nth = 0)
{
    return {.call = sim::Call::MutexLock,
            .object = &lock,
            .size = sizeof(lock),
            .thread = thread,
            .nth = nth,
            .error = EINVAL};
}

/** One more link pass, by the loop's timer. */
inline void linkPass(sim::Set& set)
{
    set.grantTicks(kPassTicks);
}

inline constexpr const char* kNoWireless = "cannot open /proc/net/wireless for read\n";

/** From now on each link pass leaves a trace, which `passesSeen` counts. */
inline void tracePasses(sim::Set& set)
{
    set.remove("/proc/net/wireless");
}
inline int passesSeen(const sim::Set& set)
{
    return timesLogged(set, kNoWireless);
}

/** The next tick is a link pass. */
inline void letPassBeDue(sim::Set& set)
{
    tracePasses(set);
    const int before = passesSeen(set);
    for (int tick = 0; passesSeen(set) == before && tick < 2 * kPassTicks; ++tick) {
        set.grantTicks(1);
    }
    set.grantTicks(kPassTicks - 1);
}
