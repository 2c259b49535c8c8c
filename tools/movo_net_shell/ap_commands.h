/** What the shell says of the soft access point beyond what the calls return. */
#ifndef MOVO_NET_SHELL_AP_COMMANDS_H
#define MOVO_NET_SHELL_AP_COMMANDS_H

#include <chrono>
#include <string>

namespace shell {
/** Why `ap status` says no, so long after a start. */
std::string notUp(std::chrono::seconds since);
} // namespace shell

#endif
