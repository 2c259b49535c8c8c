#include "movo_net_fg/lookup.h"
#include "movo_net_wifi.h"

using namespace movonet;

// An operation that the interface's back end does not have is an invalid argument, and nothing is said of it.

RETURN_TYPE Movo_NET_WifiDisConnect(kest_sint32 /*appid*/, const char* ifname)
{
    MovoNetIface_t* ift = wifiInterface(ifname);
    if (ift == nullptr) {
        return kFail;
    }
    return ift->funcs.WifiDisConnect != nullptr ? ift->funcs.WifiDisConnect(ift) : kBadArgument;
}
