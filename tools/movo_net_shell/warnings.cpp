#include "warnings.h"

#include "glue.h"
#include "networks.h"
#include "quiet_log.h"
#include "text.h"

#include <algorithm>
#include <set>

namespace shell {
namespace {
constexpr std::size_t kPinDigits = 8;

std::set<std::string> s_secured;

/** That it is not remembered is an error in the log, which is not meant here. */
bool isRemembered(const std::string& ifname, const std::string& essid)
{
    const QuietLog quiet;
    char key[65] = "";
    int length = 0;
    return Movo_NET_WifiGetKey(kAppId, ifname.c_str(), essid.c_str(), key, &length) == 0;
}

enum class Security { Unknown, Weak, Wpa };

Security securityOf(const std::string& ifname, const std::string& essid)
{
    MovoNetWifiSecurity_e security{};
    if (Movo_NET_WifiGetSecurityEss(kAppId, ifname.c_str(), essid.c_str(), &security) != 0) {
        return Security::Unknown;
    }
    const bool weak = security == _MOVO_NET_WIFI_SECURITY_OPEN_ || security == _MOVO_NET_WIFI_SECURITY_SHARED_;
    return weak ? Security::Weak : Security::Wpa;
}
} // namespace

void warnOfPin(Console& console, const std::string& pin)
{
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (pin.size() != kPinDigits || !std::ranges::all_of(pin, isDigit)) {
        console.print("warning: a PIN has eight digits\n");
    }
}

void noteSecured(const std::string& ifname)
{
    for (const std::string& name : tableNames(ifname)) {
        if (securityOf(ifname, name) == Security::Wpa && isRemembered(ifname, name)) {
            s_secured.insert(name);
        }
    }
}

void warnOfLostSecurity(Console& console, const std::string& ifname)
{
    if (s_secured.empty()) {
        return;
    }
    for (const std::string& name : tableNames(ifname)) {
        if (s_secured.contains(name) && securityOf(ifname, name) == Security::Weak) {
            console.print("warning: %s is remembered as secured, and is open or has WEP now\n",
                          printable(name).c_str());
        }
    }
}
} // namespace shell
