/** Names that many tests of Wi-Fi expect to the letter: modules and functions in log lines, files, commands. */
#ifndef UNIT_WIFI_NAMES_H
#define UNIT_WIFI_NAMES_H

#include <cstddef>

namespace wifi {
inline constexpr const char* kIf = "mlan0";

inline constexpr const char* kWifiModule = "movo_net_fl_wifi";
inline constexpr const char* kLinkModule = "movo_net_fl_wpactrl";
inline constexpr const char* kHandler = "OnWpactrlEventRev";

inline constexpr const char* kScanFile = "/tmp/wpa_scan_result";
inline constexpr const char* kSavedFile = "/data/tv/save/saved_esss";
inline constexpr const char* kSavedBackup = "/data/tv/save/saved_esss_back";
inline constexpr const char* kSavedCopy = "cat /data/tv/save/saved_esss > /data/tv/save/saved_esss_back";
inline constexpr std::size_t kSavedRecord = 152; // bytes of one network in the file
} // namespace wifi
#endif
