/** The commands of the shell: one row each, one table a subject. */
#ifndef MOVO_NET_SHELL_COMMAND_H
#define MOVO_NET_SHELL_COMMAND_H

#include "console.h"

#include <span>
#include <string>
#include <vector>

namespace shell {
enum class Outcome {
    Done,
    BadArgument, // the usage is shown
    Unmet,       // an expectation failed
    Interrupted,
    Quit
};

/** The words after the command's name, as many as the row allows. */
using Arguments = std::span<const std::string>;

struct Command {
    const char* subject;
    const char* name;      // one word, or two with one blank between
    const char* arguments; // one word each; what may be left out in brackets, "..." after one that may be repeated
    const char* help;
    const char* calls; // the public functions behind it, "" when there is none
    Outcome (*run)(Console& console, Arguments arguments);
};

std::span<const Command> scriptCommands();
std::span<const Command> glueCommands();
std::span<const Command> ifaceCommands();
std::span<const Command> ipCommands();
std::span<const Command> wifiCommands();
std::span<const Command> apCommands();
std::span<const Command> statusCommands();

/** Every command, in the order of the help. */
const std::vector<Command>& allCommands();

/** The command that a line begins with, NULL when there is none; `length` is how many words its name takes. */
const Command* findCommand(std::span<const std::string> words, std::size_t& length);

/** The arguments of a row: how many there must and may be, and what each is called, without brackets and dots. */
struct Parameters {
    std::size_t least = 0;
    std::size_t most = 0;
    std::vector<std::string> names;
};
Parameters parametersOf(const Command& command);

/** Name and arguments. */
std::string usageOf(const Command& command);

/** `help`, `help SUBJECT` and `help COMMAND`. */
Outcome help(Console& console, Arguments arguments);

} // namespace shell

#endif
