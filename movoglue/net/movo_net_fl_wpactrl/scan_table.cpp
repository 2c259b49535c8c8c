#include "movo_net_fl_wpactrl/scan_table.h"

#include "movo_net_fl_wpactrl/flags.h"
#include "movo_net_fl_wpactrl/name.h"

#include <cstdlib>
#include <cstring>
#include <string_view>

namespace movonet {
namespace {
constexpr std::size_t kLineSize = 1024;
}

struct ScanLine {
    char bssid[kLineSize];
    char frequency[kLineSize];
    char signal[kLineSize];
    char flags[kLineSize];
    char ssid[kLineSize];
};

namespace {
/** The set's own kind opens groups of this form for direct links; nobody joins them by hand. */
bool isOwnDirectGroup(std::string_view ssid)
{
    return ssid.size() == 17 && ssid.starts_with("DIRECT-") && ssid.ends_with("-ZENTATV");
}

/** A written name that is not sent: empty, or made of zero bytes. */
bool isHidden(std::string_view ssid)
{
    return ssid.empty() || ssid.starts_with("\\x0");
}

/** Splits a line; fields that are missing keep what an earlier line left, as the names that matter never do. */
void split(const char* text, ScanLine& line)
{
    line.ssid[0] = '\0';
    // Every field has room for a whole line.
    const int fields = std::sscanf(text, "%1023s %1023s %1023s %1023s %1023[^\n]", line.bssid, line.frequency,
                                   line.signal, line.flags, line.ssid);
    if (fields == 4 && line.flags[0] != '[') { // an access point without flags: this is its name
        std::memcpy(line.ssid, line.flags, sizeof(line.ssid));
        line.flags[0] = '\0';
    }
}
} // namespace

void ScanTable::read(std::FILE* file)
{
    char text[kLineSize];
    if (std::fgets(text, sizeof(text), file) == nullptr) {
        return;
    }
    ScanLine line = {};
    while (m_count < MOVO_NET_MAX_ESSS && std::fgets(text, sizeof(text), file) != nullptr) {
        split(text, line);
        if (isHidden(line.ssid)) {
            continue;
        }
        decodeName(line.ssid);
        if (!isOwnDirectGroup(line.ssid)) {
            add(line);
        }
    }
}

void ScanTable::add(const ScanLine& line)
{
    const int signal = static_cast<int>(std::strtol(line.signal, nullptr, 10));
    const kest_bool bWPS = std::strstr(line.flags, "WPS") != nullptr ? kTrue : kFalse;
    MovNetWifiEssItem_t* ess = find(line.ssid);
    if (ess == nullptr) {
        ess = &m_esss[m_count++];
    } else if (signal <= ess->signalVal) {
        return; // of equal ones the earlier line stays
    }
    Wpa_Add_EsssItem(ess, line.bssid, line.ssid, line.frequency, signal, line.flags, bWPS);
}

MovNetWifiEssItem_t* ScanTable::find(const char* essid)
{
    for (int index = 0; index < m_count; ++index) {
        if (sameEssid(m_esss[index].essid, essid)) {
            return &m_esss[index];
        }
    }
    return nullptr;
}
} // namespace movonet
