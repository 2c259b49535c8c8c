/** Why a call did not go well, and what to do next. */
#ifndef MOVO_NET_SHELL_CAUSES_H
#define MOVO_NET_SHELL_CAUSES_H

#include "command.h"

#include <chrono>

namespace shell {
/** A command whose last result was no success. */
struct Failed {
    const Command& command;
    Arguments arguments;
    Shortfall shortfall;
    std::chrono::milliseconds took; // the whole command
};

/** One line, as the interfaces and networks are now; empty for an answer that is what it seems. */
std::string causeOf(const Failed& failed);

/** The same for a network that is not in the table, with the name that may have been meant. */
std::string unknownNetwork(const std::string& name);
} // namespace shell

#endif
