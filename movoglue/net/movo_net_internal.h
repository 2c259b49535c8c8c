/**
 * What the modules of the glue share: the interface record, its operations table, the event loop's calls and the doors
 * through which a lower module reaches up.
 */
#ifndef MOVO_NET_INTERNAL_H
#define MOVO_NET_INTERNAL_H

#include "include/movo_net_core.h"
#include "include/movo_net_types.h"

#include <cstddef>
#include <cstdint>

namespace movonet {
constexpr RETURN_TYPE kOk = 0;
constexpr RETURN_TYPE kFail = 1;
constexpr RETURN_TYPE kBufferTooSmall = 3;
constexpr RETURN_TYPE kNoMemory = 4;
constexpr RETURN_TYPE kBadArgument = 5;
constexpr RETURN_TYPE kNotSupported = 6;

constexpr int kNoFd = -1;
constexpr kest_bool kFalse = 0;
constexpr kest_bool kTrue = 1;
/** Second argument of `ConfigIP`: restart a DHCP client that runs, or leave it alone. */
constexpr kest_bool kForce = 1;
constexpr kest_bool kNoForce = 0;
/** Second argument of `ShutdownDhcpcd`: the client gives its lease back, or leaves the address in place. */
constexpr kest_bool kRelease = 0;
constexpr kest_bool kKeepIfconfig = 1;
} // namespace movonet

extern "C" {

/** The operations of one interface, filled by `int_Movo_Net_Init` by type; a slot that the back end lacks is NULL. */
struct MovoNetIfaceFunc_t {
    RETURN_TYPE (*Init)(MovoNetIface_t*);
    RETURN_TYPE (*DeInit)(MovoNetIface_t*);
    int (*CanActive)(MovoNetIface_t*);
    RETURN_TYPE (*Active)(MovoNetIface_t*, kest_bool isActive);
    RETURN_TYPE (*IsConnected)(MovoNetIface_t*, kest_bool*);
    RETURN_TYPE (*GetIpv4)(MovoNetIface_t*, std::uint32_t*);
    RETURN_TYPE (*SetIpv4)(MovoNetIface_t*, std::uint32_t);
    RETURN_TYPE (*GetMaskv4)(MovoNetIface_t*, std::uint32_t*);
    RETURN_TYPE (*SetMaskv4)(MovoNetIface_t*, std::uint32_t);
    RETURN_TYPE (*GetGwv4)(MovoNetIface_t*, std::uint32_t*);
    RETURN_TYPE (*SetGwv4)(MovoNetIface_t*, std::uint32_t);
    RETURN_TYPE (*Getdnsv4)(MovoNetIface_t*, std::uint32_t*, std::uint32_t*);
    RETURN_TYPE (*Setdnsv4)(MovoNetIface_t*, std::uint32_t, std::uint32_t);
    RETURN_TYPE (*GetMacAddr)(MovoNetIface_t*, std::int64_t*);
    RETURN_TYPE (*GetIfaceThroughput)(MovoNetIface_t*, std::int32_t*);
    RETURN_TYPE (*WifiScanEsss)(MovoNetIface_t*);
    RETURN_TYPE (*WifiUpdateEsss)(MovoNetIface_t*);
    RETURN_TYPE (*WifiGetNumOfEsss)(MovoNetIface_t*, std::int32_t*);
    RETURN_TYPE (*WifiGetSsidEss)(MovoNetIface_t*, std::int32_t index, char*);
    RETURN_TYPE (*WifiGetSignalEss)(MovoNetIface_t*, const char*, std::int32_t*);
    RETURN_TYPE (*WifiIsWPS)(MovoNetIface_t*, const char*, kest_bool*);
    RETURN_TYPE (*WifiGetEncryptionEss)(MovoNetIface_t*, const char*, MovoNetWifiEncryption_e*);
    RETURN_TYPE (*WifiGetSecurityEss)(MovoNetIface_t*, const char*, MovoNetWifiSecurity_e*);
    RETURN_TYPE (*WifiGetFrequencyEss)(MovoNetIface_t*, const char*, std::int32_t*);
    RETURN_TYPE (*WifiGetChannelEss)(MovoNetIface_t*, const char*, std::int32_t*);
    RETURN_TYPE (*WifiSetPriorityEss)(MovoNetIface_t*, const char*, std::int32_t);
    RETURN_TYPE (*WifiGetPriorityEss)(MovoNetIface_t*, const char*, std::int32_t*);
    RETURN_TYPE (*WifiSetKey)(MovoNetIface_t*, const char*, const char*, std::int32_t);
    RETURN_TYPE (*WifiGetKey)(MovoNetIface_t*, const char*, char*, std::int32_t*);
    RETURN_TYPE (*WifiConnectEss)(MovoNetIface_t*, const char*);
    RETURN_TYPE (*WifiDisConnect)(MovoNetIface_t*);
    RETURN_TYPE (*WifiGetConnectedEss)(MovoNetIface_t*, char*, std::int32_t);
    RETURN_TYPE (*WifiGetWpsModeEss)(MovoNetIface_t*, MovoNetWifiWPSMode_e*);
    RETURN_TYPE (*WifiStartWpsConnection)(MovoNetIface_t*, MovoNetWifiWPSMode_e, const char*);
    RETURN_TYPE (*WifiGenerateWpsPin)(MovoNetIface_t*, char*, std::int32_t);
    RETURN_TYPE (*WifiSearchHideEss)(MovoNetIface_t*, const char*);
    RETURN_TYPE (*WifiGetBssidEss)(MovoNetIface_t*, const char*, std::int64_t*);
    RETURN_TYPE (*WifiGetDevType)(MovoNetIface_t*, MovoNetWifiDevType_e*);
    RETURN_TYPE (*WifiIsReconnecting)(MovoNetIface_t*, kest_bool*);
};
static_assert(sizeof(MovoNetIfaceFunc_t) == 39 * sizeof(void*));

/**
 * One network interface. Owned by the interface list; memory is never given back while the process lives, so a pointer
 * got from `FindInterface` stays good on any thread. Addresses and masks are in network byte order. The fields are
 * plain because their layout is fixed; once a record is listed they are read and written with `movonet::load` and
 * `movonet::store` (support/atomic.h), since several threads do.
 */
struct MovoNetIface_t {
    char name[9];
    MovoNetIfaceType_e type;
    MovoNetIPMode_e ipMode;
    kest_bool isEnabled;
    kest_bool isAvailable;
    kest_bool isActived;
    kest_bool isConnected;
    std::int32_t priority;
    MovoNetIPStatus_e ipStatus;
    alignas(8) std::int64_t macaddr;
    std::uint32_t ipv4;
    std::uint32_t maskv4;
    std::uint32_t gwv4;
    std::uint32_t dns1v4;
    std::uint32_t dns2v4;
    std::uint32_t thoughput;
    std::uint32_t sipv4;
    std::uint32_t smaskv4;
    std::uint32_t sgwv4;
    std::uint32_t sdns1v4;
    std::uint32_t sdns2v4;
    std::int32_t dhcpcfd;
    std::int32_t dhcpcEventHandle;
    std::int32_t dhcpDownCount;
    std::int32_t dhcpDownHandle;
    MovoNetIfaceFunc_t funcs;
    void* priv;
    MovoNetIface_t* next;
};
static_assert(offsetof(MovoNetIface_t, type) == 12 && offsetof(MovoNetIface_t, macaddr) == 32);
static_assert(offsetof(MovoNetIface_t, sipv4) == 64 && offsetof(MovoNetIface_t, dhcpDownHandle) == 96);
static_assert(sizeof(void*) != 4 || sizeof(MovoNetIface_t) == 264);

/** One registration with the event loop. */
struct MovoNetEvent_t {
    int fd;          ///< Descriptor to watch for input, below FD_SETSIZE; -1 for a pure timer.
    int timeoutTick; ///< Period in ticks of 100 ms; 0 or less: no timer.
    void* data;      ///< Handed back to the handler.
    /** Called with `isTimeout` 0 when `fd` is readable and 1 when the ticks ran out; the result is ignored. */
    RETURN_TYPE (*OnEventRev)(int fd, void* data, kest_bool isTimeout);
};

/** Says whether the loop takes registrations. Any thread, no lock. */
kest_bool int_IsEventLoopInitDone(void);

/**
 * Registers an event; it is live from the loop's next pass on.
 *
 * @param[in]  event   Copied.
 * @param[out] handle  The registration's number, above 0, never used again.
 *
 * @retval 0  Registered.
 * @retval 1  The loop does not run yet, or has ended.
 * @retval 4  Out of memory.
 * @retval 5  `handle` is NULL, or neither descriptor nor ticks are given.
 *
 * @par Threads  Any, also from inside a handler; never waits for a handler.
 * @par Locks    eventListTodoLock.
 */
RETURN_TYPE int_addEvent(MovoNetEvent_t event, int* handle);

/**
 * Takes a registration back. When this returns on a thread other than the loop's, its handler does not run
 * and will not be called again.
 *
 * @retval 0  Taken back, now or before.
 * @retval 1  The loop does not run yet, or has ended.
 * @retval 5  `handle` is 0 or unknown.
 *
 * @par Threads  Any, also from inside a handler, its own included. Waits for running handlers, so the caller
 *               must hold none of the locks below eventListLock.
 * @par Locks    eventListLock, then eventListTodoLock.
 */
RETURN_TYPE int_removeEvent(int handle);

/** The loop's thread; `param` points at the kest_bool flag that ends it. Result: NULL, or 1 when its locks cannot be
 * made. */
void* int_eventLoopThread(void* param);

/** Finds a listed interface by its exact name; NULL when there is none or `ifname` is NULL. Any thread; ifaceListLock.
 */
MovoNetIface_t* FindInterface(const char* ifname);

/**
 * Calls the application back, if it wants to be.
 *
 * @retval 0  Called, or nobody to call.
 * @retval 1  The glue was stopped.
 *
 * @par Threads  Any.
 * @par Locks    eventListLock (recursive), then callbackListLock. A caller off the loop's thread must hold no other
 * lock.
 */
RETURN_TYPE NotifyApp(MovoNetCBReason_e reason, void* param);

/**
 * Moves default route and resolver to the best connected interface.
 *
 * @retval 0  Moved, or no interface is connected.
 * @retval 1  The route or the resolver file could not be written.
 *
 * @par Threads  Any.
 * @par Locks    eventListLock to its end, ifaceListLock for the choice only. A caller off the loop's thread holds no
 * lock that a handler takes.
 */
RETURN_TYPE ResetGwAndDns(void);

/**
 * Brings an interface up and starts its IP configuration. A NULL record ends the process.
 *
 * @retval 0  Started; see `ConfigIP` for what follows.
 * @retval 1  Failed.
 */
RETURN_TYPE ifup(MovoNetIface_t* pIface);

/**
 * Ends an interface's IP configuration and moves the default route to another one; the result of ResetGwAndDns.
 *
 * @par Locks  eventListLock to its end: the caller holds no lock that a handler takes.
 */
RETURN_TYPE ifdown(MovoNetIface_t* pIface);

/**
 * Closes the notify pipe of an interface's DHCP client and stops the client. A NULL record ends the process.
 *
 * @param[in] bKeepIfconfig  1: the client leaves the address in place; 0: it gives the lease back, and is waited for,
 *                           2 s at the most.
 *
 * @return 0 when the client could not be signalled, else 1.
 *
 * @par Locks  eventListLock while the pipe is closed: the caller holds no lock that a handler takes.
 */
kest_bool ShutdownDhcpcd(MovoNetIface_t* pIface, kest_bool bKeepIfconfig);

} // extern "C"

#endif
