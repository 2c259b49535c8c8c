#include "wifi_fake.h"

namespace dhcp {
WifiFake wifiFake;
} // namespace dhcp

using dhcp::wifiFake;

// The linker gives the product these in place of the real ones.
extern "C" {
RETURN_TYPE __wrap_int_Movo_Net_InitWifi(MovoNetIface_t* pIface);
RETURN_TYPE __wrap_int_Movo_Net_Wpactrl_IsConnected(MovoNetIface_t* pIface, kest_bool* isConnected);
RETURN_TYPE __wrap_int_Movo_Net_Wpactrl_Status(MovoNetIface_t* pIface, kest_bool* isWpanone);
RETURN_TYPE __wrap_int_Movo_Net_Wpactrl_ResetConnecting(MovoNetIface_t* pIface);
}

RETURN_TYPE __wrap_int_Movo_Net_InitWifi(MovoNetIface_t* pIface)
{
    ++wifiFake.initialised;
    wifiFake.asked = pIface;
    return wifiFake.initResult;
}

RETURN_TYPE __wrap_int_Movo_Net_Wpactrl_IsConnected(MovoNetIface_t* pIface, kest_bool* isConnected)
{
    wifiFake.asked = pIface;
    if (wifiFake.askResult == 0) {
        *isConnected = wifiFake.associated;
    }
    return wifiFake.askResult;
}

RETURN_TYPE __wrap_int_Movo_Net_Wpactrl_Status(MovoNetIface_t* pIface, kest_bool* isWpanone)
{
    wifiFake.asked = pIface;
    if (wifiFake.askResult == 0) {
        *isWpanone = wifiFake.idle;
    }
    return wifiFake.askResult;
}

RETURN_TYPE __wrap_int_Movo_Net_Wpactrl_ResetConnecting(MovoNetIface_t* pIface)
{
    ++wifiFake.resets;
    wifiFake.asked = pIface;
    return wifiFake.resetResult;
}
