/** What may have been meant by a line that cannot be run. */
#ifndef MOVO_NET_SHELL_HINTS_H
#define MOVO_NET_SHELL_HINTS_H

#include "command.h"

#include <string>
#include <vector>

namespace shell {
/** Of words that begin with no command: what there is instead. */
std::string unknownCommand(Arguments words);

/** Of arguments that a command does not take: its usage, and the values of the word that is wrong. */
std::string wrongArguments(const Command& command, Arguments arguments);
} // namespace shell

#endif
