/** Warnings about what the glue takes without a word. */
#ifndef MOVO_NET_SHELL_WARNINGS_H
#define MOVO_NET_SHELL_WARNINGS_H

#include "console.h"

#include <string>

namespace shell {
/** Warns when a PIN of WPS has not eight digits. */
void warnOfPin(Console& console, const std::string& pin);

/** Notes which remembered networks of the table are secured. A new table may have others of their names. */
void noteSecured(const std::string& ifname);

/** Warns of each noted network that is open, or has WEP, in the table. */
void warnOfLostSecurity(Console& console, const std::string& ifname);
} // namespace shell

#endif
