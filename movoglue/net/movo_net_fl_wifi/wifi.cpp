#include "movo_net_fl_wifi/wifi.h"

using namespace movonet;

kest_bool g_isWifiConnectByUI;

RETURN_TYPE int_Movo_Net_InitWifi(MovoNetIface_t* /*pIface*/)
{
    return kFail;
}
