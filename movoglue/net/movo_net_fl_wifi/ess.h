/** One Wi-Fi network, and the state of a wireless interface. */
#ifndef MOVO_NET_FL_WIFI_ESS_H
#define MOVO_NET_FL_WIFI_ESS_H

#include "movo_net_internal.h"
#include "support/lock.h"

enum { MOVO_NET_MAX_ESSS = 50, MOVO_NET_ESSID_LENGTH = 32, MOVO_NET_KEY_LENGTH = 64 };

/** One network. Its image is the record of the remembered networks' file, so its layout is fixed. */
struct MovNetWifiEssItem_t {
    char essid[MOVO_NET_ESSID_LENGTH + 1];
    alignas(8) std::int64_t bssid; ///< Six bytes from the lowest-addressed one on; 0: unknown.
    MovoNetWifiSecurity_e securityType;
    MovoNetWifiEncryption_e encrypType;
    char Key[MOVO_NET_KEY_LENGTH + 1];
    std::int32_t signalVal; ///< dBm, as scanned.
    std::int32_t frequency; ///< MHz.
    kest_bool isSaved;
    std::int32_t priority; ///< 0 to 7.
    kest_bool isConnected;
    kest_bool bWPS;
    MovNetWifiEssItem_t* next; ///< Next remembered network; means nothing elsewhere.
};
#define MOVO_ESS_AT(offset, field) static_assert(offsetof(MovNetWifiEssItem_t, field) == (offset))
MOVO_ESS_AT(0, essid);
MOVO_ESS_AT(40, bssid);
MOVO_ESS_AT(48, securityType);
MOVO_ESS_AT(52, encrypType);
MOVO_ESS_AT(56, Key);
MOVO_ESS_AT(124, signalVal);
MOVO_ESS_AT(128, frequency);
MOVO_ESS_AT(132, isSaved);
MOVO_ESS_AT(136, priority);
MOVO_ESS_AT(140, isConnected);
MOVO_ESS_AT(141, bWPS);
MOVO_ESS_AT(144, next);
#undef MOVO_ESS_AT
static_assert(sizeof(MovNetWifiEssItem_t) == 152);

/** State of one wireless interface, behind `MovoNetIface_t.priv`. Never given back while the process lives. */
struct MovoNetWifi_t {
    MovoNetWifiDevType_e devType;
    MovNetWifiEssItem_t esss[MOVO_NET_MAX_ESSS]; ///< Scanned networks; copied under essTableLock too.
    std::int32_t esss_num;
    MovNetWifiEssItem_t curOperatingEsss; ///< The network being joined or joined; copied under essTableLock too.
    MovoNetWifiWPSMode_e wpsMode;
    MovoNetIface_t* piface;
    void* priv; ///< The supplicant link, Wpactrl_t.
    /** For writers of the table and of the current network; after the supplicant link's lock, never before it. */
    movonet::Mutex lock{movonet::Mutex::Kind::Recursive};
};

namespace movonet {
/** Last in the lock order: nothing is taken while it is held. Keeps readers from seeing half a table. */
extern Mutex essTableLock;

/** Copies of what other threads write. */
MovNetWifiEssItem_t copyEss(const MovNetWifiEssItem_t& from);
void storeEss(MovNetWifiEssItem_t& to, const MovNetWifiEssItem_t& from);

/** Marks the current network joined or not, leaving the rest of it. */
void markCurrentConnected(MovoNetWifi_t& wifi, kest_bool isConnected);

/** Puts a copy of the current network at the end of the table; in a full table it takes the last place. */
void appendCurrentEss(MovoNetWifi_t& wifi);

/** Replaces the whole table. */
void publishEsss(MovoNetWifi_t& wifi, const MovNetWifiEssItem_t (&esss)[MOVO_NET_MAX_ESSS], int count);

/** Copies the first scanned network of that name; false, logged by get_essid_index, when there is none. */
bool findScannedEss(MovoNetWifi_t& wifi, const char* essid, MovNetWifiEssItem_t& ess);

/** Changes the first scanned network of that name; false when there is none (any more). */
template <typename Change>
[[nodiscard]] bool changeEss(MovoNetWifi_t& wifi, const char* essid, Change change);

/** Tells whether both names are equal over the 32 bytes that a name has. */
bool sameEssid(const char* left, const char* right);

template <typename Change>
bool changeEss(MovoNetWifi_t& wifi, const char* essid, Change change)
{
    const ScopedLock lock(essTableLock);
    for (int index = 0; index < wifi.esss_num; ++index) {
        if (sameEssid(wifi.esss[index].essid, essid)) {
            change(wifi.esss[index]);
            return true;
        }
    }
    return false;
}
} // namespace movonet

extern "C" {

/** The state of a wireless interface; NULL for a NULL record or one without a wireless back end. */
MovoNetWifi_t* wifi_iface(MovoNetIface_t* iface);

/** Index of the first scanned network of that name; -1, logged, when there is none. */
int get_essid_index(MovoNetWifi_t* wifi, const char* essid);

} // extern "C"

#endif
