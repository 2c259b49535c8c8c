#include "fake_state.h"

#include <cstring>
#include <string_view>

using namespace fake;

RETURN_TYPE Movo_NET_GetNumOfIfaces(kest_sint32, int* retval)
{
    const int result = called("Movo_NET_GetNumOfIfaces");
    return wrote(result, retval, static_cast<int>(state().names.size()));
}

RETURN_TYPE Movo_NET_GetIfaceName(kest_sint32, int ifidx, int length, char* retval)
{
    const int result = called("Movo_NET_GetIfaceName", ifidx, length);
    if (ifidx < 0 || static_cast<std::size_t>(ifidx) >= state().names.size()) {
        return ifidx < 0 ? 0 : 1;
    }
    const std::string& name = state().names[static_cast<std::size_t>(ifidx)];
    if (static_cast<int>(name.size()) > length) {
        return 3;
    }
    std::memcpy(retval, name.c_str(), name.size() + 1);
    return result;
}

RETURN_TYPE Movo_NET_GetIfaceType(kest_sint32, const char* ifname, MovoNetIfaceType_e* retval)
{
    const std::string_view name(ifname);
    const auto cabled = name == "lo" ? _MOVO_NET_IFACE_LO_ : _MOVO_NET_IFACE_ETHER_;
    const auto type = name.starts_with("wlan") ? _MOVO_NET_IFACE_WIFI_ : cabled;
    return wrote(called("Movo_NET_GetIfaceType", ifname), retval, type);
}

RETURN_TYPE Movo_NET_GetIfaceMacAddress(kest_sint32, const char* ifname, long long* macaddr)
{
    constexpr unsigned char kMac[] = {0x02, 0x4d, 0x4f, 0x56, 0x4f, 0x01};
    const int result = called("Movo_NET_GetIfaceMacAddress", ifname);
    std::memcpy(macaddr, kMac, result == 0 ? sizeof(kMac) : 0);
    return result;
}

RETURN_TYPE Movo_NET_GetIfaceThroughput(kest_sint32, const char* ifname, int* retval)
{
    return wrote(called("Movo_NET_GetIfaceThroughput", ifname), retval, 100);
}

RETURN_TYPE Movo_NET_EnableIface(kest_sint32, const char* ifname)
{
    return called("Movo_NET_EnableIface", ifname);
}

RETURN_TYPE Movo_NET_DisableIface(kest_sint32, const char* ifname)
{
    return called("Movo_NET_DisableIface", ifname);
}

RETURN_TYPE Movo_NET_DisableAllIfaces(kest_sint32)
{
    return called("Movo_NET_DisableAllIfaces");
}

kest_bool Movo_NET_IsEnabledIface(kest_sint32, const char* ifname)
{
    return answered(called("Movo_NET_IsEnabledIface", ifname));
}

kest_bool Movo_NET_IsActivedIface(kest_sint32, const char* ifname)
{
    return answered(called("Movo_NET_IsActivedIface", ifname));
}

RETURN_TYPE Movo_NET_GetActivedIface(kest_sint32, int* retval)
{
    return wrote(called("Movo_NET_GetActivedIface"), retval, 1);
}

RETURN_TYPE Movo_NET_GetActivedIfaceType(kest_sint32, MovoNetIfaceType_e* retval)
{
    return wrote(called("Movo_NET_GetActivedIfaceType"), retval, _MOVO_NET_IFACE_WIFI_);
}

kest_bool Movo_NET_IsPhyConnected(kest_sint32, const char* ifname)
{
    return answered(called("Movo_NET_IsPhyConnected", ifname));
}

RETURN_TYPE Movo_NET_SetIfacePriority(kest_sint32, const char* ifname, int priority)
{
    return called("Movo_NET_SetIfacePriority", ifname, priority);
}

RETURN_TYPE Movo_NET_GetIfacePriority(kest_sint32, const char* ifname, int* retval)
{
    return wrote(called("Movo_NET_GetIfacePriority", ifname), retval, 2);
}

RETURN_TYPE Movo_NET_FilterOutIF(kest_sint32, const char* ifname)
{
    return called("Movo_NET_FilterOutIF", ifname);
}

RETURN_TYPE Movo_NET_SetWol(kest_sint32, const char* ifname, kest_bool wol_enable)
{
    return called("Movo_NET_SetWol", ifname, static_cast<int>(wol_enable));
}
