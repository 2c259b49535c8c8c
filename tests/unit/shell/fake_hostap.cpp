#include "fake_state.h"

using namespace fake;

Softap_Connection_info_t softap_connectinfo;

RETURN_TYPE Movo_Net_WiFi_HostAP_Start(int)
{
    return called("Movo_Net_WiFi_HostAP_Start");
}

RETURN_TYPE Movo_Net_WiFi_HostAP_Stop(int)
{
    return called("Movo_Net_WiFi_HostAP_Stop");
}

kest_bool Movo_Net_WiFi_HostAP_Status(int)
{
    return answered(called("Movo_Net_WiFi_HostAP_Status"));
}

RETURN_TYPE Movo_Net_WiFi_HostAP_Config(int, MovoHotspotconfig_t* config)
{
    return wrote(called("Movo_Net_WiFi_HostAP_Config"), config,
                 MovoHotspotconfig_t{.Ssid = "MyTV\n", .Bssid = {0x42, 0, 0, 0, 0, 1}, .Hidden = 0});
}

RETURN_TYPE Movo_Net_WiFi_Wakeup(int, char* iface, kest_bool wakeup)
{
    return called("Movo_Net_WiFi_Wakeup", iface, static_cast<int>(wakeup));
}
