/** Joins a network, and knows the way back to the one that this takes away. */
#ifndef MOVO_NET_SHELL_JOIN_H
#define MOVO_NET_SHELL_JOIN_H

#include "command.h"
#include "keys.h"

#include <optional>
#include <string>

namespace shell {
/** A network with the key that joins it. */
struct Network {
    std::string ifname;
    std::string name;
    std::optional<std::string> key; // none: the key of the table is left as it is
    KeyKind kind = KeyKind::Unknown;
};

/** The network with the key that was typed, set or remembered. */
Network networkOf(const std::string& name, Arguments typedKey);

/** Why the network cannot be joined with its key, before anything is lost; empty when it may. */
std::string obstacleOf(const Network& network);

/** Gives it its key and joins it, noting the joined network. */
RETURN_TYPE join(const Network& network);

/** Reads what the last scan found, which forgets the keys that were set. */
RETURN_TYPE readScan(const std::string& ifname);

/** The network that the last join has taken away; nothing when there was none, or one is joined again. */
std::optional<Network> leftNetwork();

/** What a person at the prompt does next after a callback about the last join; empty for others. */
std::string remarkOn(const Arrival& arrival);

/** `wifi join NAME [KEY]` and `wifi back`. */
Outcome joinNetwork(Console& console, Arguments arguments);
Outcome joinLeftNetwork(Console& console, Arguments arguments);
} // namespace shell

#endif
