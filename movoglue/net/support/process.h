/** Processes that the glue ends by the pid of a file. */
#ifndef MOVO_NET_SUPPORT_PROCESS_H
#define MOVO_NET_SUPPORT_PROCESS_H

#include <unistd.h>

namespace movonet {
/** False for 0 and below, which name groups of processes, for pid 1, which is the system, and for our own pid. */
inline bool maySignal(int pid)
{
    return pid > 1 && pid != getpid();
}
} // namespace movonet

#endif
