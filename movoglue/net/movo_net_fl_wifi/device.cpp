#include "movo_net_fl_wifi/device.h"

#include "support/command.h"
#include "support/log.h"
#include "support/text.h"

#include <cstdlib>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_wifi", &movoglue_net_debug};

/** Names of the environment variables that describe a chip. */
struct Chip {
    MovoNetWifiDevType_e type;
    const char* driver;
    const char* deviceId;
    const char* supplicant;
};

// In the order of probing: the first one present wins.
constexpr Chip kChips[] = {
    {_MOVO_NET_WIFI_REALTEK_8812AU_, "REALTEK_DRIVER_NAME_8812AU", "REALTEK_DEVICE_ID_8812AU",
     "REALTEK_SUPPLICANT_STR_8812AU"},
    {_MOVO_NET_WIFI_REALTEK_8188EU_, "REALTEK_DRIVER_NAME_8188EU", "REALTEK_DEVICE_ID_8188EU",
     "REALTEK_SUPPLICANT_STR_8188EU"},
    {_MOVO_NET_WIFI_ATHEROS_, "ATHEROS_DRIVER_NAME", "ATHEROS_DEVICE_ID", "ATHEROS_SUPPLICANT_STR"},
    {_MOVO_NET_WIFI_BRCM_43242_, "BRCM_DRIVER_NAME_43242", "BROADCOM_DEVICE_ID_43242", "BROADCOM_SUPPLICANT_STR_43242"},
    {_MOVO_NET_WIFI_BRCM_43569_, "BRCM_DRIVER_NAME_43569", "BROADCOM_DEVICE_ID_43569", "BROADCOM_SUPPLICANT_STR_43569"},
    {_MOVO_NET_WIFI_BRCM_LITEON_43569_, "BRCM_DRIVER_NAME_43569", "BROADCOM_LITEON__DEVICE_ID_43569",
     "BROADCOM_SUPPLICANT_STR_43569"},
};

const char* environmentOf(MovoNetWifiDevType_e type, const char* const Chip::*variable)
{
    for (const Chip& chip : kChips) {
        if (chip.type == type) {
            return std::getenv(chip.*variable);
        }
    }
    return nullptr;
}

/** Runs a probe unless it had to be cut; speaks for int_Wifi_IsDevAvailable. */
bool probe(const FixedText<256>& command, CallSite at)
{
    if (!command.fits()) {
        return false;
    }
    NET_LOG_AT(at, KEST_LEVEL_INFO, "Command: %s\n", command.c_str());
    return runShell(command) == 0;
}
} // namespace

const char* int_Wifi_GetDrvName(MovoNetWifiDevType_e type)
{
    return environmentOf(type, &Chip::driver);
}

const char* int_Wifi_GetDevID(MovoNetWifiDevType_e type)
{
    return environmentOf(type, &Chip::deviceId);
}

const char* int_Wifi_GetWpaSupplicantStr(MovoNetWifiDevType_e type)
{
    return environmentOf(type, &Chip::supplicant);
}

kest_bool int_Wifi_IsDevAvailable(const char* ifname, MovoNetWifiDevType_e type)
{
    const char* deviceId = int_Wifi_GetDevID(type);
    const char* driver = int_Wifi_GetDrvName(type);
    if (ifname == nullptr || deviceId == nullptr || driver == nullptr) {
        return kFalse;
    }
    switch (type) {
    case _MOVO_NET_WIFI_ATHEROS_:
    case _MOVO_NET_WIFI_BRCM_43242_:
    case _MOVO_NET_WIFI_BRCM_43569_:
    case _MOVO_NET_WIFI_BRCM_LITEON_43569_:
        return probe(FixedText<256>("lsusb | grep %s && lsmod | grep %s", deviceId, driver), NET_HERE) ? kTrue : kFalse;
    case _MOVO_NET_WIFI_REALTEK_8188EU_:
    case _MOVO_NET_WIFI_REALTEK_8812AU_:
        return probe(FixedText<256>("lsusb | grep %s && ls /sys/class/net/%s/device/driver/ -l | grep %s", deviceId,
                                    ifname, driver),
                     NET_HERE)
                   ? kTrue
                   : kFalse;
    case _MOVO_NET_WIFI_UNKNOWN_:
        break;
    }
    NET_ERROR("unknow wifi device type\n");
    return kFalse;
}

MovoNetWifiDevType_e int_Wifi_GetDevType(const char* ifname)
{
    if (ifname == nullptr) {
        return _MOVO_NET_WIFI_UNKNOWN_;
    }
    for (const Chip& chip : kChips) {
        if (int_Wifi_IsDevAvailable(ifname, chip.type)) {
            return chip.type;
        }
    }
    return _MOVO_NET_WIFI_UNKNOWN_;
}
