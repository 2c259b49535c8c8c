#include "support/command.h"

#include "support/slow.h"

#include <cerrno>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace movonet {
pthread_mutex_t launchLock = PTHREAD_MUTEX_INITIALIZER;

namespace {
/** Returns when the shell has been executed: from then on the program has no descriptor that closes on exec. */
bool launch(const char* command, pid_t& pid)
{
    const NoLaunch alone;
    const char* words[] = {"sh", "-c", command, nullptr};
    return posix_spawn(&pid, "/bin/sh", nullptr, nullptr, const_cast<char* const*>(words), environ) == 0;
}
} // namespace

int runShell(const char* command)
{
    if (*command == '\0') {
        return -1; // there was no memory for it
    }
    const SlowWatch watch(command);
    pid_t pid = 0;
    if (!launch(command, pid)) {
        return -1;
    }
    int status = -1;
    while (waitpid(pid, &status, 0) == -1 && errno == EINTR) {
        // A signal of the host came first.
    }
    return status;
}

std::FILE* readShell(const char* command)
{
    const NoLaunch alone;
    return popen(command, "re"); // NOLINT(cert-env33-c): the set's tools are commands by contract
}
} // namespace movonet
