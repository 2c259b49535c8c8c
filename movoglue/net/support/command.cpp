#include "support/command.h"

#include <cstdlib>

namespace movonet {
int runShell(const char* command)
{
    return std::system(command); // NOLINT(cert-env33-c): the set's tools are commands by contract
}
} // namespace movonet
