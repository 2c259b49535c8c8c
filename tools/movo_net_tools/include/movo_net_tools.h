/**
 * For programs that host the network glue: words for its numbers, and one host at a time. Usable from C and C++.
 *
 * A library of its own, `movo_net_tools`, which needs nothing but libc.
 */
#ifndef MOVO_NET_TOOLS_H
#define MOVO_NET_TOOLS_H

#include "movo_net_types.h"

/** What hosts of the glue lock, unless they agree on another file. */
#define MOVO_NET_HOST_FILE "/run/movo_net.lock"

/** Bytes of a host's name, its end included. */
#define MOVO_NET_HOST_NAME_LENGTH 32

/** A process that hosts the glue. */
typedef struct MovoNetHost_t {
    char name[MOVO_NET_HOST_NAME_LENGTH]; /**< As it named itself, printable ASCII; empty when it is not known. */
    int pid;                              /**< 0 when it runs where its number means nothing here. */
} MovoNetHost_t;

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Names a result of the glue's calls: "success", "failure", "buffer too small", "out of memory", "invalid argument",
 * "not supported".
 *
 * @param[in] result  Any number.
 *
 * @return The name; "unknown result" for other numbers. Never NULL, valid for ever.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    None.
 */
const char* Movo_NET_ResultText(RETURN_TYPE result);

/**
 * Names a reason of the callback as its enumerator does: "IFFOUND", "DHCP_SUCCESS".
 *
 * @param[in] reason  Any number.
 *
 * @return The name; "unknown reason" for other numbers. Never NULL, valid for ever.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    None.
 */
const char* Movo_NET_ReasonText(MovoNetCBReason_e reason);

/**
 * Makes this process the one that hosts the glue, until it ends. Call it once, after the last fork of a process that
 * goes to the background and before `Movo_NET_Glue_Init`, which does not look for other hosts.
 *
 * The file is made when it is missing (mode 0600) and is never deleted. Its lock goes with the process, however that
 * ends; it goes too when the process opens the file and closes it again. Programs that the process starts do not have
 * it.
 *
 * @param[in]  file    What is locked; NULL: MOVO_NET_HOST_FILE. Only a regular file with one name that belongs to the
 * user of the process; no link is followed.
 * @param[in]  name    What the program is called; the first 31 bytes count.
 * @param[out] holder  The other host when 1 is returned, else untouched. May be NULL.
 *
 * @retval 0  This process is the host.
 * @retval 1  Another one is.
 * @retval 5  `name` is NULL.
 * @retval 6  The file cannot be made or locked, errno says why: another host would not be noticed.
 *
 * @par Threads  Any; not from a signal handler.
 * @par Locks    None. It does not wait for the other host.
 */
RETURN_TYPE Movo_NET_TakeHostLock(const char* file, const char* name, MovoNetHost_t* holder);

#ifdef __cplusplus
}
#endif

#endif
