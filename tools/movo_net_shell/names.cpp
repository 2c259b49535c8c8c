#include "names.h"

#include "text.h"

#include <kest.h>
#include <strings.h>

namespace shell {
std::span<const Name> resultNames()
{
    static constexpr Name kNames[] = {{0, "success"},       {1, "failure"},          {3, "buffer too small"},
                                      {4, "out of memory"}, {5, "invalid argument"}, {6, "not supported"}};
    return kNames;
}

std::span<const Name> typeNames()
{
    static constexpr Name kNames[] = {
        {_MOVO_NET_IFACE_LO_, "lo"}, {_MOVO_NET_IFACE_ETHER_, "ether"}, {_MOVO_NET_IFACE_WIFI_, "wifi"}};
    return kNames;
}

std::span<const Name> modeNames()
{
    static constexpr Name kNames[] = {{_MOVO_NET_IPMODE_DHCP_, "dhcp"},
                                      {_MOVO_NET_IPMODE_AUTOIP_, "autoip"},
                                      {_MOVO_NET_IPMODE_STATIC_, "static"},
                                      {_MOVO_NET_IPMODE_DNSONLY_, "dnsonly"}};
    return kNames;
}

std::span<const Name> stateNames()
{
    static constexpr Name kNames[] = {{_MOVO_NET_IPSTATUS_NONE_, "none"},
                                      {_MOVO_NET_IPSTATUS_STATIC_, "static"},
                                      {_MOVO_NET_IPSTATUS_DHCP_ACQUIRING_, "dhcp-acquiring"},
                                      {_MOVO_NET_IPSTATUS_DHCP_GOT_, "dhcp-got"},
                                      {_MOVO_NET_IPSTATUS_DHCP_RELEASED_, "dhcp-released"},
                                      {_MOVO_NET_IPSTATUS_DHCP_AUTOIP_, "dhcp-autoip"}};
    return kNames;
}

std::span<const Name> reasonNames()
{
    static constexpr Name kNames[] = {{_MOVO_NET_CALLBACK_IFFOUND_, "IFFOUND"},
                                      {_MOVO_NET_CALLBACK_IFREMOVED_, "IFREMOVED"},
                                      {_MOVO_NET_CALLBACK_IFDISCONNECTED_, "IFDISCONNECTED"},
                                      {_MOVO_NET_CALLBACK_IFCONNECTED_, "IFCONNECTED"},
                                      {_MOVO_NET_CALLBACK_IFACTIVED_, "IFACTIVED"},
                                      {_MOVO_NET_CALLBACK_IFDEACTIVED_, "IFDEACTIVED"},
                                      {_MOVO_NET_CALLBACK_IPCHANGED_, "IPCHANGED"},
                                      {_MOVO_NET_CALLBACK_WIFISCANDONE_, "WIFISCANDONE"},
                                      {_MOVO_NET_CALLBACK_WIFIESSSUPDATED_, "WIFIESSSUPDATED"},
                                      {_MOVO_NET_CALLBACK_WIFIBADKEY_, "WIFIBADKEY"},
                                      {_MOVO_NET_CALLBACK_WIFITIMEOUT_, "WIFITIMEOUT"},
                                      {_MOVO_NET_CALLBACK_SOFTAPSCAN_, "SOFTAPSCAN"},
                                      {_MOVO_NET_CALLBACK_SOFTAPCONNECTED_, "SOFTAPCONNECTED"},
                                      {_MOVO_NET_CALLBACK_SOFTAPDISCONNECTED_, "SOFTAPDISCONNECTED"},
                                      {_MOVO_NET_CALLBACK_STATICIP_SUCCESS_, "STATICIP_SUCCESS"},
                                      {_MOVO_NET_CALLBACK_STATICIP_FAILED_, "STATICIP_FAILED"},
                                      {_MOVO_NET_CALLBACK_DHCP_SUCCESS_, "DHCP_SUCCESS"},
                                      {_MOVO_NET_CALLBACK_DHCP_FAILED_, "DHCP_FAILED"}};
    return kNames;
}

std::span<const Name> levelNames()
{
    static constexpr Name kNames[] = {{KEST_LEVEL_NONE, "none"},       {KEST_LEVEL_ERROR, "error"},
                                      {KEST_LEVEL_WARNING, "warning"}, {KEST_LEVEL_INFO, "info"},
                                      {KEST_LEVEL_DEBUG, "debug"},     {KEST_LEVEL_LOG, "log"}};
    return kNames;
}

std::string nameOf(std::span<const Name> names, int value)
{
    for (const Name& name : names) {
        if (name.value == value) {
            return name.text;
        }
    }
    return std::to_string(value);
}

std::optional<int> valueOf(std::span<const Name> names, const std::string& text)
{
    for (const Name& name : names) {
        if (strcasecmp(name.text, text.c_str()) == 0) {
            return name.value;
        }
    }
    return std::nullopt;
}

std::string textOf(int number)
{
    return std::to_string(number);
}

std::string textOf(long long macAddress)
{
    return macText(macAddress);
}

std::string textOf(kest_bool yes)
{
    return yes != 0 ? "yes" : "no";
}

std::string textOf(MovoNetIfaceType_e type)
{
    return nameOf(typeNames(), type);
}

std::string textOf(MovoNetIPMode_e mode)
{
    return nameOf(modeNames(), mode);
}

std::string textOf(MovoNetIPStatus_e state)
{
    return nameOf(stateNames(), state);
}
} // namespace shell
