/** The soft access point: its state and the steps of its start and stop. */
#ifndef MOVO_NET_FL_HOSTAP_HOSTAP_H
#define MOVO_NET_FL_HOSTAP_HOSTAP_H

#include "include/movo_net_hostap.h"
#include "movo_net_internal.h"
#include "support/lock.h"
#include "support/log.h"

/** docs/states.md has the transitions. */
enum MovoHotspotState_e : int {
    HOTSPOT_STOPPED = 0,
    HOTSPOT_STOPPING = 1,
    HOTSPOT_STARTING = 2,
    HOTSPOT_STARTED = 3,
};

/** State and flags are read and written atomically, texts and addresses under `hotspotLock`. */
struct MovoHotspotManager_t {
    MovoHotspotState_e mState;
    char mInterface[32];
    char mStaInterface[32]; ///< Written only.
    char mSSID[33];         ///< With the line end that the set's name property has.
    std::uint8_t mMacAddress[6];
    std::uint8_t mBssid[6];
    kest_bool mIsInitialized; ///< The interface is there and its address was read.
    kest_bool mIsHidden;
};

namespace movonet {
/** The soft access point's interface, always. */
constexpr const char* kSoftApName = "bcm0";

/** What its network is called on a set without a name. */
constexpr const char* kDefaultSsid = "Lumenpoint";

/** Where its DHCP server lists the devices that have an address. */
constexpr const char* kLeaseFile = "/tmp/dnsmasq.leases";

/** What callbacks get in place of an interface record: it has the soft access point's name and nothing else. */
extern MovoNetIface_t softApRecord;

/** A leaf: guards the texts and addresses of `hotspot`, and `softap_connectinfo`, while they are copied. */
extern Mutex hotspotLock;

/** The texts of `hotspot` at one moment: of two starts at once, one may be changing them. */
struct HotspotTexts {
    char interface[32];
    char ssid[33];
};
HotspotTexts hotspotTexts();

/** Says that a start needs a watch of the leases; of starts at the same time one makes it. */
void askForWatch();

/** Begins the watch that was asked for; beyond the eighth, those that are there serve. Helpers log for the caller. */
void beginWatch(CallSite at);
} // namespace movonet

extern "C" {

extern MovoHotspotManager_t hotspot;

/** Body of the start's thread. */
void* s_SoftAP_Start(void* arg);

/** Body of the thread that waits for devices to join; returns only when it cannot be set up. */
void* s_SoftAP_Check_Connection(void* arg);

/** Runs `func` on a detached thread with a small stack. 0, or 1. */
int SoftAP_Create_Thread(void* (*func)(void*));

/** Writes hostapd's configuration and switches it on. 0, or -1. */
int SoftAP_startHostapd(void);

/** What is left when a switch has failed: tells so. -1. */
int SoftAP_stopHostapd(void);

/** The platform's switches. 0, or -1. */
int SoftAP_hostapd_setprop(kest_bool up);
int SoftAP_dnsmasq_setprop(kest_bool up);

/** 0 when the interface is there, made if need be; 0xFF when not. The sense is the reverse of the name. */
kest_bool SoftAP_isInterfaceAvailable(void);

/** Sees that the interface is there and reads its address, once a start. 0, or -1. */
int SoftAP_initializeInterface(void);

/** Brings the interface up or down. 0, or below. */
int SoftAP_enableInterface(int up);

/** Makes the notify pipe and has the loop watch it; beyond the eighth, the one in place serves. 0, or -1. */
int SoftAP_Gethostap_Pipe(void);

/** Handler of the notify pipe. 0, or 1 when nothing could be read. */
RETURN_TYPE OnSoftapEventRev(int fd, void* data, kest_bool isTimeout);

/** Reads the leases and tells the application of the first one. */
void SoftAP_GetConnection(void);

} // extern "C"

#endif
