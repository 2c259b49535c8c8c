#include "keys.h"

#include "glue.h"
#include "quiet_log.h"

#include <algorithm>
#include <map>

namespace shell {
namespace {
constexpr std::size_t kLeastWpa = 8;
constexpr std::size_t kMostWpa = 63;

MovoNetWifiUISecurity_e s_choice = _MOVO_NET_WIFI_UI_DEFAULT_;
std::map<std::string, std::string> s_set; // network, key

bool isHexadecimal(const std::string& key)
{
    return key.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
}

bool isOneOf(std::size_t length, std::initializer_list<std::size_t> lengths)
{
    return std::ranges::find(lengths, length) != lengths.end();
}

std::string faultOfWpa(const std::string& key)
{
    if (key.size() >= kLeastWpa && key.size() <= kMostWpa) {
        return "";
    }
    if (key.size() == kMostWpa + 1 && isHexadecimal(key)) {
        return "64 hexadecimal digits are a WPA key, but the supplicant is given pass phrases only, of 8 to 63 "
               "characters";
    }
    return "a WPA key has 8 to 63 characters, this one has " + std::to_string(key.size());
}

std::string faultOfWep(const std::string& key)
{
    if (isOneOf(key.size(), {5, 13, 16}) || (isOneOf(key.size(), {10, 26, 32}) && isHexadecimal(key))) {
        return "";
    }
    return "a WEP key has 5, 13 or 16 characters, or 10, 26 or 32 hexadecimal digits; this one has " +
           std::to_string(key.size()) + (isHexadecimal(key) ? " digits" : " characters");
}
} // namespace

KeyKind keyKindOf(const std::string& ifname, const std::string& essid)
{
    MovoNetWifiEncryption_e cipher{};
    if (Movo_NET_WifiGetEncryptionEss(kAppId, ifname.c_str(), essid.c_str(), &cipher) != 0) {
        return KeyKind::Unknown;
    }
    if (s_choice == _MOVO_NET_WIFI_UI_NONE_) {
        return KeyKind::None;
    }
    if (s_choice == _MOVO_NET_WIFI_UI_WEP_) {
        return KeyKind::Wep;
    }
    const bool byTable = s_choice == _MOVO_NET_WIFI_UI_DEFAULT_; // any other choice is WPA
    if (byTable && cipher == _MOVO_NET_WIFI_ENCRYP_NONE_) {
        return KeyKind::None;
    }
    return byTable && cipher == _MOVO_NET_WIFI_ENCRYP_WEP_ ? KeyKind::Wep : KeyKind::Wpa;
}

void noteSecurityChoice(int wish)
{
    s_choice = static_cast<MovoNetWifiUISecurity_e>(wish);
}

std::string faultOf(KeyKind kind, const std::string& key)
{
    switch (kind) {
    case KeyKind::Wpa:
        return faultOfWpa(key);
    case KeyKind::Wep:
        return faultOfWep(key);
    case KeyKind::None:
    case KeyKind::Unknown:
        break;
    }
    return "";
}

RETURN_TYPE setKey(const std::string& ifname, const std::string& essid, const std::string& key)
{
    const RETURN_TYPE code =
        Movo_NET_WifiSetKey(kAppId, ifname.c_str(), essid.c_str(), key.c_str(), static_cast<int>(key.size()));
    if (code == 0) {
        s_set[essid] = key;
    }
    return code;
}

void forgetKeys()
{
    s_set.clear();
}

std::optional<std::string> rememberedKey(const std::string& ifname, const std::string& essid)
{
    const QuietLog quiet;
    char key[65] = "";
    int length = 0;
    const RETURN_TYPE code = Movo_NET_WifiGetKey(kAppId, ifname.c_str(), essid.c_str(), key, &length);
    return code == 0 && length > 0 ? std::optional<std::string>(key) : std::nullopt;
}

std::optional<std::string> keyOf(const std::string& ifname, const std::string& essid)
{
    const auto set = s_set.find(essid);
    return set != s_set.end() ? set->second : rememberedKey(ifname, essid);
}
} // namespace shell
