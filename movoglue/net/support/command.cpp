#include "support/command.h"

#include "support/slow.h"

#include <atomic>
#include <cstdlib>
#include <kest.h>

namespace movonet {
StaticMutex launchLock;

namespace {
constexpr int kForkedAfterMs = 1000;
constexpr int kPollMs = 10;

std::atomic<int> s_launches; // calls that may not have forked yet

/** One call that forks; it begins when no NoLaunch lives. */
class Launch {
public:
    Launch()
    {
        const StaticLock lock(launchLock);
        ++s_launches;
    }
    ~Launch() { --s_launches; }
    Launch(const Launch&) = delete;
    Launch& operator=(const Launch&) = delete;
};
} // namespace

int runShell(const char* command)
{
    if (*command == '\0') {
        return -1; // there was no memory for it
    }
    const SlowWatch watch(command);
    const Launch launch;
    return std::system(command); // NOLINT(cert-env33-c): the set's tools are commands by contract
}

std::FILE* readShell(const char* command)
{
    const Launch launch;
    return popen(command, "re"); // NOLINT(cert-env33-c): the set's tools are commands by contract
}

NoLaunch::NoLaunch()
{
    launchLock.lock();
    for (int waited = 0; s_launches > 0 && waited < kForkedAfterMs; waited += kPollMs) {
        Kest_Util_Delay(kPollMs);
    }
}

NoLaunch::~NoLaunch()
{
    launchLock.unlock();
}
} // namespace movonet
