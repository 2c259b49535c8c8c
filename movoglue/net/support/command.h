/** Commands of the set, run through the shell. */
#ifndef MOVO_NET_SUPPORT_COMMAND_H
#define MOVO_NET_SUPPORT_COMMAND_H

#include "support/lock.h"

#include <cstdio>

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

/** Starts a command and returns the stream of its output, or NULL; for pclose. */
std::FILE* readShell(const char* command);

/** Taken for a moment by each launch of a command. */
extern StaticMutex launchLock;

/**
 * While it lives no command is launched: for a descriptor that is not close-on-exec from its first moment on. Before,
 * it waits for the commands that run, but no longer than a second: system() hides when it has forked, and after that
 * time it has. A command may hang, and may wait for the very thread that waits here.
 */
class [[nodiscard]] MOVO_SCOPED_LOCK NoLaunch {
public:
    NoLaunch() MOVO_ACQUIRE(launchLock);
    ~NoLaunch() MOVO_RELEASE();
    NoLaunch(const NoLaunch&) = delete;
    NoLaunch& operator=(const NoLaunch&) = delete;
};
} // namespace movonet

#endif
