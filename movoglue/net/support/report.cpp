#include "support/report.h"

#include <cstdio>
#include <cstdlib>
#include <kest.h>
#include <unistd.h>

namespace movonet {
void failedRequirement(const char* expression, const char* module, CallSite at)
{
    (void)std::fflush(stdout);
    (void)std::fprintf(stderr, "%s:%d: %s: Assertion `%s' failed.\n", module, at.line, at.function, expression);
    std::abort();
}

void reportFailure(const char* expression, const char* module, CallSite at)
{
    Kest_Util_BT(10);
    (void)std::printf("\n\e[0;34;41m ASSERT, Pid:%d File:%s Line:%d Routine:%s, %s failed \e[0m \n",
                      static_cast<int>(getpid()), module, at.line, at.function, expression);
    (void)std::fflush(stdout);
}
} // namespace movonet
