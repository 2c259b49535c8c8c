/** Commands of the set, run through the shell. */
#ifndef MOVO_NET_SUPPORT_COMMAND_H
#define MOVO_NET_SUPPORT_COMMAND_H

namespace movonet {
/**
 * Runs a command and waits for it. 0 when it succeeded, -1 when the shell could not be started or the command is empty,
 * else its wait status.
 */
int runShell(const char* command);

template <typename Text>
int runShell(const Text& command)
{
    return runShell(command.c_str());
}
} // namespace movonet

#endif
