#include "names.h"

#include "text.h"

#include <array>
#include <kest.h>
#include <movo_net_tools.h>
#include <strings.h>

namespace shell {
std::span<const Name> resultNames()
{
    static const Name kNames[] = {{0, Movo_NET_ResultText(0)}, {1, Movo_NET_ResultText(1)},
                                  {3, Movo_NET_ResultText(3)}, {4, Movo_NET_ResultText(4)},
                                  {5, Movo_NET_ResultText(5)}, {6, Movo_NET_ResultText(6)}};
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
    static const auto kNames = [] {
        std::array<Name, _MOVO_NET_CALLBACK_DHCP_FAILED_ + 1> names{};
        for (int reason = 0; Name & name : names) {
            name = {reason, Movo_NET_ReasonText(static_cast<MovoNetCBReason_e>(reason))};
            reason++;
        }
        return names;
    }();
    return kNames;
}

std::span<const Name> securityNames()
{
    static constexpr Name kNames[] = {
        {_MOVO_NET_WIFI_SECURITY_OPEN_, "open"},           {_MOVO_NET_WIFI_SECURITY_SHARED_, "shared"},
        {_MOVO_NET_WIFI_SECURITY_WPA2_PSK_, "wpa2-psk"},   {_MOVO_NET_WIFI_SECURITY_WPA_PSK_, "wpa-psk"},
        {_MOVO_NET_WIFI_SECURITY_WPA_PSK_A2_, "wpa2-eap"}, {_MOVO_NET_WIFI_SECURITY_WPA_, "wpa-eap"}};
    return kNames;
}

std::span<const Name> cipherNames()
{
    static constexpr Name kNames[] = {{_MOVO_NET_WIFI_ENCRYP_NONE_, "none"},
                                      {_MOVO_NET_WIFI_ENCRYP_WEP_, "wep"},
                                      {_MOVO_NET_WIFI_ENCRYP_WEP_RYP_TKIP_, "tkip"},
                                      {_MOVO_NET_WIFI_ENCRYP_AES_, "ccmp"},
                                      {_MOVO_NET_WIFI_ENCRYP_TKIPAES_, "tkip+ccmp"}};
    return kNames;
}

std::span<const Name> wpsNames()
{
    static constexpr Name kNames[] = {{_MOVO_NET_WIFI_WPS_NONE_, "none"},
                                      {_MOVO_NET_WIFI_WPS_PBC_, "push"},
                                      {_MOVO_NET_WIFI_WPS_PIN, "pin"},
                                      {_MOVO_NET_WIFI_WPS_PBC_PIN, "both"}};
    return kNames;
}

std::span<const Name> chipNames()
{
    static constexpr Name kNames[] = {{_MOVO_NET_WIFI_UNKNOWN_, "unknown"},
                                      {_MOVO_NET_WIFI_ATHEROS_, "atheros"},
                                      {_MOVO_NET_WIFI_REALTEK_8188EU_, "realtek-8188eu"},
                                      {_MOVO_NET_WIFI_REALTEK_8812AU_, "realtek-8812au"},
                                      {_MOVO_NET_WIFI_BRCM_43242_, "broadcom-43242"},
                                      {_MOVO_NET_WIFI_BRCM_43569_, "broadcom-43569"},
                                      {_MOVO_NET_WIFI_BRCM_LITEON_43569_, "broadcom-liteon-43569"}};
    return kNames;
}

std::span<const Name> wishNames()
{
    static constexpr Name kNames[] = {{_MOVO_NET_WIFI_UI_NONE_, "none"},
                                      {_MOVO_NET_WIFI_UI_WEP_, "wep"},
                                      {_MOVO_NET_WIFI_UI_MIX_, "mix"},
                                      {_MOVO_NET_WIFI_UI_DEFAULT_, "default"}};
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

std::optional<int> valueOrNumber(std::span<const Name> names, const std::string& text)
{
    const auto value = valueOf(names, text);
    return value ? value : parseInt(text);
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

std::string textOf(MovoNetWifiSecurity_e security)
{
    return nameOf(securityNames(), security);
}

std::string textOf(MovoNetWifiEncryption_e cipher)
{
    return nameOf(cipherNames(), cipher);
}

std::string textOf(MovoNetWifiWPSMode_e mode)
{
    return nameOf(wpsNames(), mode);
}

std::string textOf(MovoNetWifiDevType_e chip)
{
    return nameOf(chipNames(), chip);
}
} // namespace shell
