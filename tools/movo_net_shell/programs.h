/** Programs of a folder that are commands too: what the place where the shell runs adds, such as pulling a cable. */
#ifndef MOVO_NET_SHELL_PROGRAMS_H
#define MOVO_NET_SHELL_PROGRAMS_H

#include "command.h"

namespace shell {
/** Names the folder; until then, and with NULL, there are none. */
void setProgramFolder(const char* folder);

/** The names, sorted. */
std::vector<std::string> programNames();

/** What a program says of itself: "# NAME ARGUMENTS: what it does", on the lines below the first one of a script. */
struct ProgramHelp {
    std::string usage;
    std::string text; // empty when it says nothing
};
ProgramHelp programHelp(const std::string& name);

/** Whether a word names one. */
bool isProgram(const std::string& word);

/** Runs one with its arguments to its end; any status but 0 is shown and leaves an expectation unmet. */
Outcome runProgram(Console& console, Arguments words);
} // namespace shell

#endif
