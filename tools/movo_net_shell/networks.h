/** The wireless interface that commands are for, and what the glue tells of its networks. */
#ifndef MOVO_NET_SHELL_NETWORKS_H
#define MOVO_NET_SHELL_NETWORKS_H

#include "command.h"

#include <string>
#include <vector>

namespace shell {
/** The interface that `wifi use` has chosen, else the first wireless one; empty when there is none. */
std::string wifiName();

/** Chooses it; an empty name goes back to the first wireless one. */
void chooseWifi(const std::string& ifname);

/** The networks of the table; none, without a word in the log, where they cannot be read. */
std::vector<std::string> networkNames();

/** `wifi list`, `wifi info NAME` and `wifi status`. */
Outcome listNetworks(Console& console, Arguments arguments);
Outcome showNetwork(Console& console, Arguments arguments);
Outcome showConnection(Console& console, Arguments arguments);
} // namespace shell

#endif
