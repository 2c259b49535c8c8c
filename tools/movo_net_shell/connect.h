/** Joining a network in one step. */
#ifndef MOVO_NET_SHELL_CONNECT_H
#define MOVO_NET_SHELL_CONNECT_H

#include "command.h"

namespace shell {
/**
 * `wifi connect NAME [KEY]`: looks for the network unless it is listed, asks for its key when none is known, joins it
 * and waits for an address. When that fails it goes back to the network that was joined before.
 */
Outcome connectNetwork(Console& console, Arguments arguments);
} // namespace shell

#endif
