/** The remembered networks: a list, newest first, with a file and its backup. */
#ifndef MOVO_NET_FL_WIFI_SAVED_H
#define MOVO_NET_FL_WIFI_SAVED_H

#include "movo_net_fl_wifi/ess.h"

#include <array>
#include <span>

namespace movonet {
/** Guards the list and its files; after every lock but essTableLock. */
extern Mutex essListLock;

/** Head of the list, which owns its nodes. */
extern MovNetWifiEssItem_t* g_pSavedEsss;

bool hasSavedEsss();

/** Empties the list, not the files. The caller holds essListLock. */
void freeSavedEsss();

/** The same at the end of the back end; a network that is saved after it finds the others in the file. */
void forgetSavedEsss();

/** Replaces the list by what the file holds. The caller holds essListLock. */
void installSavedEsss(MovNetWifiEssItem_t* head);

/** Bytes of a network in the file. */
constexpr std::size_t kEssRecordSize = 152;
using EssRecord = std::array<std::uint8_t, kEssRecordSize>;

/** The file's form of a network and back. A name or key without end mark is cut; `next` is written and read as nothing.
 */
void encodeEss(const MovNetWifiEssItem_t& from, EssRecord& to);
void decodeEss(const EssRecord& from, MovNetWifiEssItem_t& to);
} // namespace movonet

extern "C" {

/** Reads the file, or the backup when the file is empty, in place of the list. 0, or 1. */
RETURN_TYPE LoadEsss(void);

/** Writes the newest 50 to the file and copies it to the backup; an empty list deletes both. 0, or 1. */
RETURN_TYPE SaveEsss(void);

/** Puts a network first, as itself or over the same one, and saves. 0, 1, 4 without memory, 5 for NULL or no name. */
RETURN_TYPE int_Movo_Net_SaveEss(MovNetWifiEssItem_t* ess);

/** Forgets the network of that name and BSSID, if there is one, and saves. 0, 1, or 5 for no name. */
RETURN_TYPE int_Movo_Net_DelEss(MovNetWifiEssItem_t ess);

/** The newest of that name; NULL when there is none. Valid while the caller holds essListLock. */
MovNetWifiEssItem_t* int_Movo_Net_GetSavedEss(const char* ess);

/** The newest that was connected when it was saved; NULL when there is none. Valid while the caller holds essListLock.
 */
MovNetWifiEssItem_t* int_Movo_Net_GetSavedConnectedEss(void);

/**
 * Reads the remembered key of a scanned network whose BSSID is the remembered one's.
 *
 * @param[out] key  At least 65 bytes.
 * @param[out] len  The key's length, its end mark not counted.
 *
 * @return 0; 1 when the network is not scanned, not remembered or another access point's; 5.
 */
RETURN_TYPE int_Movo_NET_WifiGetKey(MovoNetIface_t* pIface, const char* essid, char* key, std::int32_t* len);

/** Gives a scanned network its key of `len` bytes, 1 to 64; the remembered one keeps its own. 0, 1 or 5. */
RETURN_TYPE int_Movo_NET_WifiSetKey(MovoNetIface_t* pIface, const char* essid, const char* key, std::int32_t len);

} // extern "C"

#endif
