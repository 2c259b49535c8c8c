#include "movo_net_fl_ether/board_mac.h"

#include "movo_net_fl_ether/ether.h"
#include "support/atomic.h"
#include "support/command.h"
#include "support/log.h"
#include "support/slow.h"
#include "support/text.h"

#include <cstdio>
#include <string_view>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_ether", &movoglue_net_debug};

constexpr std::size_t kLineSize = 100;
constexpr std::size_t kMacBytes = 6;
constexpr std::size_t kAddressAt = 4; // after mac and one separator of any kind
constexpr unsigned kFewestBytes = 2;

/** The board's line that starts with mac; false when there is none. */
bool readBoardLine(char (&line)[kLineSize])
{
    const SlowWatch watch("bdconf -p");
    // Deliberate: the stream is never closed, closing would wait for the command.
    std::FILE* board = readShell("bdconf -p");
    if (board == nullptr) {
        return false;
    }
    while (std::fgets(line, sizeof(line), board) != nullptr) {
        if (std::string_view(line).starts_with("mac")) {
            return true;
        }
    }
    return false;
}

bool endsAddress(char c)
{
    return c == '\0' || c == ' ' || c == '\n';
}

bool isHexDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

/**
 * Reads pairs of digits up to the address's end or the first character that is none; counts all, keeps six. False when
 * one of their twelve digits is missing.
 */
bool parseAddress(const char* at, kest_uint8* MAC, kest_uint8* len)
{
    std::size_t digits = 0;
    while (!endsAddress(*at)) {
        if (*at == ':') {
            ++at;
            continue;
        }
        if (!isHexDigit(*at)) {
            break;
        }
        if (*len < kMacBytes) {
            MAC[*len] = static_cast<kest_uint8>((GetOprd(at[0]) << 4) | (GetOprd(at[1]) & 0x0f));
            digits += isHexDigit(at[1]) ? 2 : 1;
        }
        ++*len;
        if (endsAddress(at[1])) {
            break;
        }
        at += 2;
    }
    return digits == 2 * kMacBytes;
}

/** Reads the board's address into six bytes and counts them; false when it is not whole. */
bool getMacAddr(kest_uint8* MAC, kest_uint8* len)
{
    char line[kLineSize] = {};
    return readBoardLine(line) && std::string_view(line).size() > kAddressAt &&
           parseAddress(line + kAddressAt, MAC, len);
}
} // namespace

int GetOprd(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    return 0;
}

namespace movonet {
void programBoardMac(MovoNetIface_t& iface, CallSite at)
{
    kest_uint8 mac[kMacBytes + 1] = {}; // one more, so that it ends as a text
    kest_uint8 count = 0;
    const bool whole = getMacAddr(mac, &count);
    if (count < kFewestBytes) {
        return;
    }
    (void)std::printf("MAC %s len %d\n", reinterpret_cast<const char*>(mac), count);
    if (load(g_NetworkLinkType) != 0) {
        return;
    }
    if (!whole) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "mac of board config is cut, zeros fill it\n");
    }
    NET_LOG_AT(at, KEST_LEVEL_INFO, "get eth0 mac %02X:%02X:%02X:%02X:%02X:%02X from board config\n", mac[0], mac[1],
               mac[2], mac[3], mac[4], mac[5]);
    const FixedText<64> command("netcfg %s down; netcfg %s hwprefix %02X:%02X:%02X:%02X:%02X:%02X", iface.name,
                                iface.name, mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]);
    if (runShell(command) != 0) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "set eth0 hw mac failed\n");
    }
}
} // namespace movonet
