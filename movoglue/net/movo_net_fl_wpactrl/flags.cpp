#include "movo_net_fl_wpactrl/flags.h"

#include "support/text.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

using namespace movonet;

namespace {
template <typename Type>
struct Word {
    std::string_view text;
    Type type;
};

// In order: the first one found decides.
constexpr Word<MovoNetWifiSecurity_e> kSecurityWords[] = {
    {"WPA2-PSK", _MOVO_NET_WIFI_SECURITY_WPA2_PSK_},
    {"WPA2-EAP", _MOVO_NET_WIFI_SECURITY_WPA_PSK_A2_},
    {"WPA-PSK", _MOVO_NET_WIFI_SECURITY_WPA_PSK_},
    {"WPA-EAP", _MOVO_NET_WIFI_SECURITY_WPA_},
};

// In order: the first one found decides.
constexpr Word<MovoNetWifiEncryption_e> kEncryptionWords[] = {
    {"TKIP+CCMP", _MOVO_NET_WIFI_ENCRYP_TKIPAES_}, {"CCMP+TKIP", _MOVO_NET_WIFI_ENCRYP_TKIPAES_},
    {"TKIP", _MOVO_NET_WIFI_ENCRYP_WEP_RYP_TKIP_}, {"CCMP", _MOVO_NET_WIFI_ENCRYP_AES_},
    {"WEP", _MOVO_NET_WIFI_ENCRYP_WEP_},
};

unsigned digitValue(char c)
{
    if (c >= '0' && c <= '9') {
        return static_cast<unsigned>(c - '0');
    }
    if (c >= 'a' && c <= 'f') {
        return static_cast<unsigned>(c - 'a' + 10);
    }
    if (c >= 'A' && c <= 'F') {
        return static_cast<unsigned>(c - 'A' + 10);
    }
    return 0;
}

/** The group around the word at `at`, up to its bracket; the whole text without word or bracket. */
std::string_view deciding(std::string_view flags, std::size_t at)
{
    const std::size_t end = at != std::string_view::npos ? flags.find(']', at) : at;
    return end != std::string_view::npos ? flags.substr(at, end - at) : flags;
}

void copyInfo(char* info, std::string_view text)
{
    const std::size_t length = std::min<std::size_t>(text.size(), MOVO_NET_INFO_SIZE - 1);
    std::memcpy(info, text.data(), length);
    info[length] = '\0';
}
} // namespace

RETURN_TYPE encryp_str_to_type(const char* encryp_str, MovoNetWifiEncryption_e* type)
{
    if (encryp_str == nullptr || type == nullptr || *encryp_str == '\0') {
        return kBadArgument;
    }
    const std::string_view text(encryp_str);
    for (const auto& word : kEncryptionWords) {
        if (text.find(word.text) != std::string_view::npos) {
            *type = word.type;
            return kOk;
        }
    }
    *type = _MOVO_NET_WIFI_ENCRYP_NONE_;
    return kOk;
}

RETURN_TYPE security_str_to_type(const char* flags_str, MovoNetWifiSecurity_e* type, char* info_str)
{
    if (flags_str == nullptr || type == nullptr) {
        return kBadArgument;
    }
    const std::string_view flags(flags_str);
    std::size_t at = std::string_view::npos;
    *type = _MOVO_NET_WIFI_SECURITY_OPEN_;
    for (const auto& word : kSecurityWords) {
        at = flags.find(word.text);
        if (at != std::string_view::npos) {
            *type = word.type;
            break;
        }
    }
    if (info_str != nullptr) {
        copyInfo(info_str, deciding(flags, at));
    }
    return kOk;
}

void flags_to_encryp_security(const char* flags_str, MovoNetWifiEncryption_e* encrypType,
                              MovoNetWifiSecurity_e* securityType)
{
    if (*flags_str == '\0') {
        *encrypType = _MOVO_NET_WIFI_ENCRYP_NONE_;
        return;
    }
    char info[MOVO_NET_INFO_SIZE];
    (void)security_str_to_type(flags_str, securityType, info);
    (void)encryp_str_to_type(info, encrypType);
}

std::int64_t mac_string_to_long_long(const char* address)
{
    constexpr std::size_t kTextLength = 17;
    char text[kTextLength + 1] = {};
    copyPadded(text, address, kTextLength);
    std::uint8_t bytes[sizeof(std::int64_t)] = {};
    for (std::size_t pair = 0; pair < 6; ++pair) {
        const char* at = text + 3 * pair;
        bytes[pair] = static_cast<std::uint8_t>(digitValue(at[0]) << 4 | digitValue(at[1]));
    }
    std::int64_t mac = 0;
    std::memcpy(&mac, bytes, sizeof(mac));
    return mac;
}

void Wpa_Add_EsssItem(MovNetWifiEssItem_t* esss, const char* bssid_str, const char* ssid_str, const char* frequency_str,
                      int signal, const char* flags_str, kest_bool bWPS)
{
    if (esss == nullptr) {
        return;
    }
    if (ssid_str != nullptr && *ssid_str != '\0') {
        copyText(esss->essid, ssid_str);
    }
    if (bssid_str != nullptr && *bssid_str != '\0') {
        esss->bssid = mac_string_to_long_long(bssid_str);
    }
    esss->frequency = frequency_str != nullptr ? static_cast<std::int32_t>(std::strtol(frequency_str, nullptr, 10)) : 0;
    esss->bWPS = bWPS;
    esss->signalVal = signal;
    if (flags_str != nullptr) {
        flags_to_encryp_security(flags_str, &esss->encrypType, &esss->securityType);
    }
}
