#include "movo_net_fl_wpactrl/wpactrl.h"

using namespace movonet;

// A record without a wireless back end has no supplicant link.

RETURN_TYPE int_Movo_Net_Wpactrl_IsConnected(MovoNetIface_t* /*pIface*/, kest_bool* /*isConnected*/)
{
    return kBadArgument;
}

RETURN_TYPE int_Movo_Net_Wpactrl_Status(MovoNetIface_t* /*pIface*/, kest_bool* /*isWpanone*/)
{
    return kBadArgument;
}

RETURN_TYPE int_Movo_Net_Wpactrl_ResetConnecting(MovoNetIface_t* /*pIface*/)
{
    return kBadArgument;
}

RETURN_TYPE ShutdownWpactrl(MovoNetIface_t* /*pIface*/)
{
    return kOk;
}
