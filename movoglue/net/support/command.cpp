#include "support/command.h"

#include "support/slow.h"

#include <cstdlib>

namespace movonet {
int runShell(const char* command)
{
    if (*command == '\0') {
        return -1; // there was no memory for it
    }
    const SlowWatch watch(command);
    return std::system(command); // NOLINT(cert-env33-c): the set's tools are commands by contract
}
} // namespace movonet
