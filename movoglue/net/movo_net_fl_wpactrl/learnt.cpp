#include "movo_net_fl_wpactrl/learnt.h"

#include "movo_net_fl_wpactrl/flags.h"
#include "movo_net_fl_wpactrl/name.h"
#include "support/command.h"
#include "support/file.h"
#include "support/log.h"
#include "support/text.h"

#include <algorithm>
#include <cstring>
#include <string_view>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_wpactrl", &movoglue_net_debug};

constexpr std::size_t kLineSize = 1024;

/** The texts of one network block. */
struct NetworkTexts {
    char ssid[MOVO_NET_ESSID_LENGTH + 1];
    char key[MOVO_NET_KEY_LENGTH + 1];
    char keyManagement[28];
    char pairwise[28];
};

template <std::size_t N>
void copyBounded(char (&to)[N], std::string_view from)
{
    const std::size_t length = std::min(from.size(), N - 1);
    std::memcpy(to, from.data(), length);
    std::memset(to + length, 0, N - length);
}

/** Takes what follows `start` if the line begins so; with a closing quote where `start` opens one. */
template <std::size_t N>
void takeValue(std::string_view line, std::string_view start, char (&to)[N])
{
    if (!line.starts_with(start)) {
        return;
    }
    line.remove_prefix(start.size());
    if (start.ends_with('"')) {
        if (!line.ends_with('"')) { // hexadecimal, or a lone opening quote
            return;
        }
        line.remove_suffix(1);
    }
    copyBounded(to, line);
}

/** Takes a name that the supplicant cannot quote: one beyond ASCII. */
void takeHexName(std::string_view line, NetworkTexts& texts)
{
    constexpr std::string_view kStart = "\tssid=";
    if (line.starts_with(kStart)) {
        decodeHexName(line.substr(kStart.size()), texts.ssid);
    }
}

bool findBlock(std::FILE* file)
{
    char line[kLineSize];
    while (std::fgets(line, sizeof(line), file) != nullptr) {
        if (std::string_view(line).starts_with("network={")) {
            return true;
        }
    }
    return false;
}

NetworkTexts readBlock(std::FILE* file)
{
    NetworkTexts texts{};
    char text[kLineSize];
    while (std::fgets(text, sizeof(text), file) != nullptr && text[0] != '}') {
        std::string_view line(text);
        if (line.ends_with('\n')) {
            line.remove_suffix(1);
        }
        takeValue(line, "\tssid=\"", texts.ssid);
        takeHexName(line, texts);
        takeValue(line, "\tpsk=\"", texts.key);
        takeValue(line, "\tkey_mgmt=", texts.keyManagement);
        takeValue(line, "\tpairwise=", texts.pairwise);
    }
    return texts;
}

void fill(MovNetWifiEssItem_t& ess, const NetworkTexts& texts)
{
    if (texts.ssid[0] != '\0') {
        copyText(ess.essid, texts.ssid);
    }
    if (texts.key[0] != '\0') {
        copyText(ess.Key, texts.key);
    }
    if (texts.keyManagement[0] != '\0') {
        (void)security_str_to_type(texts.keyManagement, &ess.securityType, nullptr);
    }
    // Deliberate: the supplicant's "CCMP TKIP" names TKIP first for the parser.
    (void)encryp_str_to_type(texts.pairwise, &ess.encrypType);
    ess.isSaved = kTrue;
}

/** Reads the configuration; false when it cannot be opened and stays as it is. */
bool readConfiguration(MovNetWifiEssItem_t& ess, CallSite at)
{
    const UniqueFile file("/etc/wpa_supplicant.conf", "re");
    if (!file) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "Could not open wpa_supplicant.conf\n");
        return false;
    }
    if (findBlock(file.get())) {
        const NetworkTexts texts = readBlock(file.get());
        NET_LOG_AT(at, KEST_LEVEL_INFO,
                   "get saved ess:\n\tssid-\"%s\"\n\tkey-\"%s\"\n\tsecurityStr-%s\n\tencrypStr-%s\n", texts.ssid,
                   texts.key, texts.keyManagement, texts.pairwise);
        fill(ess, texts);
    }
    return true;
}
} // namespace

void Wpa_GetSavedEss(MovNetWifiEssItem_t* pEss)
{
    if (readConfiguration(*pEss, NET_HERE)) {
        // The network lives in the set's own remembered ones from now on.
        (void)runShell("cp -f Misc/wpa_supplicant.conf /etc/");
        (void)runShell("sync");
    }
}
