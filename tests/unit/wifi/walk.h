/** Random walks of a television with Wi-Fi: whatever happens in whatever order, some things always hold. */
#ifndef UNIT_WIFI_WALK_H
#define UNIT_WIFI_WALK_H

#include "television.h"

#include <span>

namespace wifi {
/** One thing that happens; the number says which of its kinds. */
struct Step {
    std::size_t action;
    int number;
};
using Trace = std::vector<Step>;

/** Who does something: an application on any thread, the world, or the world when nothing else happens. */
enum class Actor { Application, World, WorldAlone };

/** What may happen, at any time: where it cannot, nothing does. */
struct Action {
    const char* name;
    Actor actor;
    int weight;  ///< How often, against the others.
    int numbers; ///< How many kinds.
    void (*run)(Television& television, int number);
};
std::span<const Action> allActions();

/** The steps of a seed. */
Trace randomTrace(unsigned seed, int steps);

/** A trace as a line of text, like "join:1 connected:0", and back; nothing for a text that is none. */
std::string textOf(const Trace& trace);
std::optional<Trace> parseTrace(const std::string& text);

/** What a walk has seen. */
struct Walked {
    int steps = 0;
    std::map<End, int> ends;
    int resets = 0;
};

/** Walks; the first thing that does not hold ends it and fails the test. */
Walked walk(const Trace& trace);

/**
 * The same, but what an application does happens on a thread of its own together with what the world does next; threads
 * dawdle as `seed`, above 0, says. The state of the connection is not looked at: the watcher cannot tell what came
 * first.
 */
Walked walkTogether(const Trace& trace, unsigned seed);

/** The registrations with the event loop that live, by handler and data; the loop's own list is not to be seen. */
using Timers = std::map<std::pair<void*, void*>, int>;
Timers liveTimers();

/** A trace that fails as well, made as short as a few hundred tries make it. */
Trace shortened(const Trace& trace, const std::function<bool(const Trace&)>& fails);
} // namespace wifi

#endif
