#ifndef MOVO_NET_SHELL_SECRET_H
#define MOVO_NET_SHELL_SECRET_H

#include "console.h"

#include <optional>
#include <string>

namespace shell {
/** Asks a person at the terminal for a line that is not shown; nothing at the end of the input or an interrupt. */
std::optional<std::string> askSecret(Console& console, const std::string& question);
} // namespace shell

#endif
