#include <movo_net_tools.h>

const char* Movo_NET_ResultText(RETURN_TYPE result)
{
    switch (result) {
    case 0:
        return "success";
    case 1:
        return "failure";
    case 3:
        return "buffer too small";
    case 4:
        return "out of memory";
    case 5:
        return "invalid argument";
    case 6:
        return "not supported";
    default:
        return "unknown result";
    }
}

const char* Movo_NET_ReasonText(MovoNetCBReason_e reason)
{
    switch (reason) {
    case _MOVO_NET_CALLBACK_IFFOUND_:
        return "IFFOUND";
    case _MOVO_NET_CALLBACK_IFREMOVED_:
        return "IFREMOVED";
    case _MOVO_NET_CALLBACK_IFDISCONNECTED_:
        return "IFDISCONNECTED";
    case _MOVO_NET_CALLBACK_IFCONNECTED_:
        return "IFCONNECTED";
    case _MOVO_NET_CALLBACK_IFACTIVED_:
        return "IFACTIVED";
    case _MOVO_NET_CALLBACK_IFDEACTIVED_:
        return "IFDEACTIVED";
    case _MOVO_NET_CALLBACK_IPCHANGED_:
        return "IPCHANGED";
    case _MOVO_NET_CALLBACK_WIFISCANDONE_:
        return "WIFISCANDONE";
    case _MOVO_NET_CALLBACK_WIFIESSSUPDATED_:
        return "WIFIESSSUPDATED";
    case _MOVO_NET_CALLBACK_WIFIBADKEY_:
        return "WIFIBADKEY";
    case _MOVO_NET_CALLBACK_WIFITIMEOUT_:
        return "WIFITIMEOUT";
    case _MOVO_NET_CALLBACK_SOFTAPSCAN_:
        return "SOFTAPSCAN";
    case _MOVO_NET_CALLBACK_SOFTAPCONNECTED_:
        return "SOFTAPCONNECTED";
    case _MOVO_NET_CALLBACK_SOFTAPDISCONNECTED_:
        return "SOFTAPDISCONNECTED";
    case _MOVO_NET_CALLBACK_STATICIP_SUCCESS_:
        return "STATICIP_SUCCESS";
    case _MOVO_NET_CALLBACK_STATICIP_FAILED_:
        return "STATICIP_FAILED";
    case _MOVO_NET_CALLBACK_DHCP_SUCCESS_:
        return "DHCP_SUCCESS";
    case _MOVO_NET_CALLBACK_DHCP_FAILED_:
        return "DHCP_FAILED";
    }
    return "unknown reason";
}
