#include "cases.h"

namespace {
const std::vector<Case> kCases = {
    {"wifi use", {}, "wlan0\n"},
    {"wifi use wlan1", {}, ""},
    {"wifi status",
     {"Movo_NET_WifiGetConnectedEss wlan0 33", "Movo_NET_WifiGetDevType wlan0",
      "Movo_NET_WifiGetSignalEss wlan0 My Home Net", "Movo_NET_WifiIsReconnecting wlan0",
      "Movo_NET_WifiGetWpsModeEss wlan0"},
     "0 success\n"
     "  interface   wlan0\n"
     "  chip        realtek-8812au\n"
     "  joined      My Home Net\n"
     "  signal      -50\n"
     "  joining     no\n"
     "  wps         push\n"},
    {"wifi chip", {"Movo_NET_WifiGetDevType wlan0"}, "0 success: realtek-8812au\n"},
    {"wifi scan", {"Movo_NET_WifiScanEsss wlan0"}, "0 success\n"},
    {"wifi update",
     {"Movo_NET_GetNumOfWifiEsss wlan0", "Movo_NET_WifiGetSsidEss wlan0 0", "Movo_NET_WifiGetSsidEss wlan0 1",
      "Movo_NET_WifiGetSecurityEss wlan0 My Home Net", "Movo_NET_WifiGetKey wlan0 My Home Net",
      "Movo_NET_WifiGetSecurityEss wlan0 caf\xc3\xa9", "Movo_NET_WifiGetKey wlan0 caf\xc3\xa9",
      "Movo_NET_WifiUpdateEsss wlan0", "Movo_NET_GetNumOfWifiEsss wlan0", "Movo_NET_WifiGetSsidEss wlan0 0",
      "Movo_NET_WifiGetSsidEss wlan0 1", "Movo_NET_WifiGetSecurityEss wlan0 My Home Net",
      "Movo_NET_WifiGetSecurityEss wlan0 caf\xc3\xa9"},
     "0 success\n"},
    {"wifi list",
     {"Movo_NET_GetNumOfWifiEsss wlan0",
      "Movo_NET_WifiGetConnectedEss wlan0 33",
      "Movo_NET_GetNumOfWifiEsss wlan0",
      "Movo_NET_WifiGetSsidEss wlan0 0",
      "Movo_NET_WifiGetSsidEss wlan0 1",
      "Movo_NET_WifiGetBssidEss wlan0 My Home Net",
      "Movo_NET_WifiGetSignalEss wlan0 My Home Net",
      "Movo_NET_WifiGetChannelEss wlan0 My Home Net",
      "Movo_NET_WifiGetSecurityEss wlan0 My Home Net",
      "Movo_NET_WifiGetEncryptionEss wlan0 My Home Net",
      "Movo_NET_WifiIsWPS wlan0 My Home Net",
      "Movo_NET_WifiGetConnectedEss wlan0 33",
      "Movo_NET_WifiGetKey wlan0 My Home Net",
      "Movo_NET_WifiGetBssidEss wlan0 caf\xc3\xa9",
      "Movo_NET_WifiGetSignalEss wlan0 caf\xc3\xa9",
      "Movo_NET_WifiGetChannelEss wlan0 caf\xc3\xa9",
      "Movo_NET_WifiGetSecurityEss wlan0 caf\xc3\xa9",
      "Movo_NET_WifiGetEncryptionEss wlan0 caf\xc3\xa9",
      "Movo_NET_WifiIsWPS wlan0 caf\xc3\xa9",
      "Movo_NET_WifiGetConnectedEss wlan0 33",
      "Movo_NET_WifiGetKey wlan0 caf\xc3\xa9"},
     "0 success: 2\n"
     "name                              bssid              signal  channel  security  cipher     wps  joined  "
     "remembered\n"
     "My Home Net                       02:00:00:00:01:ff  -50     6        wpa2-psk  ccmp       yes  yes     yes\n"
     "caf\xc3\xa9                              02:00:00:00:01:ff  -50     6        wpa2-psk  ccmp       yes  no    "
     "  "
     "yes\n"},
    {"wifi info \"My Home Net\"",
     {"Movo_NET_WifiGetSignalEss wlan0 My Home Net", "Movo_NET_WifiGetBssidEss wlan0 My Home Net",
      "Movo_NET_WifiGetSignalEss wlan0 My Home Net", "Movo_NET_WifiGetFrequencyEss wlan0 My Home Net",
      "Movo_NET_WifiGetChannelEss wlan0 My Home Net", "Movo_NET_WifiGetSecurityEss wlan0 My Home Net",
      "Movo_NET_WifiGetEncryptionEss wlan0 My Home Net", "Movo_NET_WifiIsWPS wlan0 My Home Net",
      "Movo_NET_WifiGetPriorityEss wlan0 My Home Net", "Movo_NET_WifiGetConnectedEss wlan0 33",
      "Movo_NET_WifiGetKey wlan0 My Home Net"},
     "0 success\n"
     "  name        My Home Net\n"
     "  bssid       02:00:00:00:01:ff\n"
     "  signal      -50\n"
     "  frequency   2437\n"
     "  channel     6\n"
     "  security    wpa2-psk\n"
     "  cipher      ccmp\n"
     "  wps         yes\n"
     "  priority    3\n"
     "  joined      yes\n"
     "  remembered  yes\n"},
    {"wifi key Net", {"Movo_NET_WifiGetKey wlan0 Net"}, "0 success: correct horse\n"},
    {"wifi key Net \"a key\"", {"Movo_NET_WifiSetKey wlan0 Net a key 5"}, "0 success\n"},
    {"wifi key Net \"\"", {"Movo_NET_WifiSetKey wlan0 Net  0"}, "0 success\n"},
    {"wifi priority Net", {"Movo_NET_WifiGetPriorityEss wlan0 Net"}, "0 success: 3\n"},
    {"wifi priority Net 8", {"Movo_NET_WifiSetPriorityEss wlan0 Net 8"}, "0 success\n"},
    {"wifi join Net",
     {"Movo_NET_WifiGetEncryptionEss wlan0 Net", "Movo_NET_WifiGetKey wlan0 Net",
      "Movo_NET_WifiGetConnectedEss wlan0 33", "Movo_NET_WifiGetKey wlan0 My Home Net",
      "Movo_NET_WifiSetKey wlan0 Net correct horse 13", "Movo_NET_WifiConnectEss wlan0 Net"},
     "0 success\n"},
    {"wifi join Net secrecies",
     {"Movo_NET_WifiGetEncryptionEss wlan0 Net", "Movo_NET_WifiGetConnectedEss wlan0 33",
      "Movo_NET_WifiGetKey wlan0 My Home Net", "Movo_NET_WifiSetKey wlan0 Net secrecies 9",
      "Movo_NET_WifiConnectEss wlan0 Net"},
     "0 success\n"},
    {"wifi leave", {"Movo_NET_WifiDisConnect wlan0"}, "0 success\n"},
    {"wifi hidden Net", {"Movo_NET_WifiSearchHideEss wlan0 Net"}, "0 success\n"},
    {"wifi wps", {"Movo_NET_WifiGetWpsModeEss wlan0"}, "0 success: push\n"},
    {"wifi wps push", {"Movo_NET_WifiStartWpsConnection wlan0 1 "}, "0 success\n"},
    {"wifi wps pin",
     {"Movo_NET_WifiGenerateWpsPin wlan0 9", "Movo_NET_WifiStartWpsConnection wlan0 2 12345670"},
     "0 success: 12345670\n0 success\n"},
    {"wifi wps pin 87654325", {"Movo_NET_WifiStartWpsConnection wlan0 2 87654325"}, "0 success\n"},
    {"wifi wps both 87654325", {"Movo_NET_WifiStartWpsConnection wlan0 3 87654325"}, "0 success\n"},
    {"wifi wps 9", {"Movo_NET_WifiStartWpsConnection wlan0 9 "}, "0 success\n"},
    {"wifi security none", {"Movo_NET_WifiSetSecurityType 0"}, "0 success\n"},
    {"wifi security wep", {"Movo_NET_WifiSetSecurityType 1"}, "0 success\n"},
    {"wifi security mix", {"Movo_NET_WifiSetSecurityType 2"}, "0 success\n"},
    {"wifi security default", {"Movo_NET_WifiSetSecurityType 3"}, "0 success\n"},
    {"wifi security -7", {"Movo_NET_WifiSetSecurityType -7"}, "0 success\n"},
    {"wifi signal", {"Movo_NET_WifiGetConnectedSignal"}, "0 success: wlan0 -50 My Home Net\n"},
};
} // namespace

const std::vector<Case>& wifiCases()
{
    return kCases;
}
