#include "fake_state.h"

using namespace fake;

RETURN_TYPE Movo_NET_WifiDisConnect(kest_sint32, const char* ifname)
{
    return called("Movo_NET_WifiDisConnect", ifname);
}
