#include "fake_state.h"

using namespace fake;

namespace {
void writeAddresses(const char* first, unsigned* ip, unsigned* mask, unsigned* gateway, unsigned* dns1, unsigned* dns2)
{
    *ip = inet_addr(first);
    *mask = inet_addr("255.255.255.0");
    *gateway = inet_addr("10.0.2.2");
    *dns1 = inet_addr("10.0.2.3");
    *dns2 = inet_addr("9.9.9.9");
}
} // namespace

void fake::setMode(MovoNetIPMode_e mode)
{
    state().mode = mode;
}

void fake::setConnected(bool connected)
{
    state().connected = connected;
}

RETURN_TYPE Movo_NET_ConfigIPMode(kest_sint32, const char* ifname, MovoNetIPMode_e mode)
{
    return called("Movo_NET_ConfigIPMode", ifname, static_cast<int>(mode));
}

RETURN_TYPE Movo_NET_GetIPMode(kest_sint32, const char* ifname, MovoNetIPMode_e* retval)
{
    return wrote(called("Movo_NET_GetIPMode", ifname), retval, state().mode);
}

RETURN_TYPE Movo_NET_GetIPStatus(kest_sint32, const char* ifname, MovoNetIPStatus_e* retval)
{
    return wrote(called("Movo_NET_GetIPStatus", ifname), retval, _MOVO_NET_IPSTATUS_DHCP_GOT_);
}

RETURN_TYPE Movo_NET_GetIP(kest_sint32, const char* ifname, unsigned* ip, unsigned* mask, unsigned* gateway,
                           unsigned* dns1, unsigned* dns2)
{
    const int result = called("Movo_NET_GetIP", ifname);
    if (result == 0) {
        writeAddresses("10.0.2.15", ip, mask, gateway, dns1, dns2);
    }
    return result;
}

RETURN_TYPE Movo_NET_ConfigIPStatic(kest_sint32, const char* ifname, unsigned ip, unsigned mask, unsigned gateway,
                                    unsigned dns1, unsigned dns2)
{
    return called("Movo_NET_ConfigIPStatic", ifname, ip, mask, gateway, dns1, dns2);
}

RETURN_TYPE Movo_NET_GetIPStatic(kest_sint32, const char* ifname, unsigned* ip, unsigned* mask, unsigned* gateway,
                                 unsigned* dns1, unsigned* dns2)
{
    const int result = called("Movo_NET_GetIPStatic", ifname);
    if (result == 0) {
        writeAddresses("10.0.2.77", ip, mask, gateway, dns1, dns2);
    }
    return result;
}

RETURN_TYPE Movo_NET_IsConnected(kest_sint32, const char* ifname, kest_bool* isConnected)
{
    return wrote(called("Movo_NET_IsConnected", ifname), isConnected,
                 static_cast<kest_bool>(state().connected ? 1 : 0));
}

kest_bool Movo_NET_IsDNSOK(kest_sint32, const char* ifname)
{
    return answered(called("Movo_NET_IsDNSOK", ifname));
}

kest_bool Movo_NET_IsNetworkOK(kest_sint32)
{
    return answered(called("Movo_NET_IsNetworkOK"));
}

RETURN_TYPE Movo_NET_ClearIP(kest_sint32, const char* ifname)
{
    return called("Movo_NET_ClearIP", ifname);
}
