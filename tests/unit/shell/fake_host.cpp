/** The host's lock: FAKE_HOST in the environment is who has it, as "PID NAME", or nobody can have it when it is empty.
 */
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <movo_net_tools.h>

RETURN_TYPE Movo_NET_TakeHostLock(const char* /*file*/, const char* /*name*/, MovoNetHost_t* holder)
{
    const char* const host = std::getenv("FAKE_HOST");
    if (host == nullptr) {
        return 0;
    }
    *holder = {};
    const int words = std::sscanf(host, "%d %31s", &holder->pid, holder->name); // NOLINT(cert-err34-c): the test's own
    errno = EROFS;
    return words > 0 ? 1 : 6;
}
