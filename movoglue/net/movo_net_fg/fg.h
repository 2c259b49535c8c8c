/** What the files of the module movo_net_fg share. */
#ifndef MOVO_NET_FG_FG_H
#define MOVO_NET_FG_FG_H

#include "movo_net_internal.h"
#include "support/atomic.h"
#include "support/lock.h"

namespace movonet {
/** Held, never waited for, while the link-status pass runs: one pass at a time. First in the lock order of this module.
 */
extern Mutex updateIfListLock;
/** Guards the interface list, that is its links; the fields of a record are read and written one by one. */
extern Mutex ifaceListLock;
/** Guards the callback slot and is held while the application is called. */
extern Mutex callbackListLock;

/** Head of the interface list; changed under ifaceListLock, may be walked without it. */
extern MovoNetIface_t* s_pInterfaces;

extern kest_bool s_bIsInitDone;
extern kest_bool s_bThreadTerminating;

/** The first record of the list, and the one after `iface`; NULL at the end. With or without ifaceListLock. */
inline MovoNetIface_t* firstInterface()
{
    return load(s_pInterfaces);
}
inline MovoNetIface_t* nextInterface(const MovoNetIface_t* iface)
{
    return load(iface->next);
}

/** Puts a record that is complete at the list's end. The caller holds ifaceListLock. */
void appendInterface(MovoNetIface_t* iface);

/** Takes the head off the list, NULL when it is empty. The caller holds ifaceListLock. */
MovoNetIface_t* takeHeadInterface();

/**
 * Forgets a record that was listed without giving its memory back: handlers, configuration threads and applications
 * may still hold it. The few kilobytes of one configuration stay.
 */
void retireInterface(MovoNetIface_t* iface);

/** Forgets the callback. */
void clearCallback();

/**
 * The record of highest priority among those that `qualifies` accepts, the earliest of equals; NULL when there is none.
 * The caller holds ifaceListLock where the choice must be consistent.
 */
template <typename Qualifies>
MovoNetIface_t* highestPriority(Qualifies qualifies)
{
    MovoNetIface_t* best = nullptr;
    for (MovoNetIface_t* iface = firstInterface(); iface != nullptr; iface = nextInterface(iface)) {
        if (qualifies(*iface) && (best == nullptr || load(iface->priority) > load(best->priority))) {
            best = iface;
        }
    }
    return best;
}
} // namespace movonet

extern "C" {

/** The platform's clients of the glue, one at the most, and how many there are; see resource.cpp. */
extern kest_sint32 m_appid[1];
extern kest_sint32 m_nbrclients;

/**
 * One look at the interfaces: discovers new ones, activates those that became available, removes those that are gone.
 * A handler of the event loop; the arguments are not used.
 *
 * @retval 0  Looked, or another thread is looking.
 * @retval 1  A lock could not be taken.
 *
 * @par Threads  The event loop's, and once the one that starts the glue, which holds a LoopGate.
 * @par Locks    updateIfListLock (tried), ifaceListLock, and below it callbackListLock.
 */
RETURN_TYPE OnLinkStatusEventRev(int fd, void* data, kest_bool isTimeout);

/** How many interface names one look keeps, and the longest name it keeps, with its end mark. */
enum { MOVO_NET_MAX_IFACES = 10, MOVO_NET_IFNAME_SIZE = 9 };

/** Names read from one of the kernel's tables; the list ends at the first empty one. */
typedef char MovoNetIfnames_t[MOVO_NET_MAX_IFACES + 1][MOVO_NET_IFNAME_SIZE];

/** Reads the names of a kernel table; 1 when it cannot be opened, `ifnames` is then unchanged. Under updateIfListLock.
 */
RETURN_TYPE GetInterfacesFromFile(const char* filename, MovoNetIfnames_t& ifnames);

/** Tells whether `ifname` is in the list. */
kest_bool FindInterfaceName(const MovoNetIfnames_t& ifnames, const char* ifname);

/** Reads the kernel's tables and records interfaces that are new. Under updateIfListLock. */
void UpdateInterfaces(void);

/** Tells whether the last look saw `ifname`. Under updateIfListLock. */
kest_bool IsInterfacePresent(const char* ifname);

/**
 * Saves the configuration and configures `pIface` anew on a thread of its own.
 *
 * @retval 0  The thread runs; DHCP_FAILED follows when DHCP cannot be started.
 * @retval 1  The thread could not be made.
 */
RETURN_TYPE CreateConfigIPThread(MovoNetIface_t* pIface);

/** The body of that thread; `arg` is the record. The result is not used. */
void* ConfigIPThread(void* arg);

/** Reads the configuration file into the interface list. 0 loaded, 1 no file or a broken one. */
RETURN_TYPE LoadNetConfig(void);

/** Writes the interface list to the configuration file. 0 written, 1 not written. Holds ifaceListLock while it writes.
 */
RETURN_TYPE SaveNetConfig(void);

} // extern "C"

#endif
