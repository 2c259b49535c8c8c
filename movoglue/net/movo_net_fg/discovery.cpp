#include "movo_net_fg/fg.h"
#include "movo_net_fl_common/common.h"
#include "movo_net_fl_wifi/wifi.h"
#include "support/file.h"
#include "support/log.h"
#include "support/text.h"

#include <arpa/inet.h>
#include <cstdlib>
#include <cstring>
#include <string_view>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fg", &movoglue_net_debug};

const char* const s_sIfnamesAllFileName = "/proc/net/dev";
const char* const s_sIfnamesWifiFileName = "/proc/net/wireless";
MovoNetIfnames_t s_pIfnamesAll;  // guarded by updateIfListLock
MovoNetIfnames_t s_pIfnamesWifi; // guarded by updateIfListLock

constexpr std::size_t kLineSize = 256;
constexpr std::string_view kSoftApInterface = "bcm0";

/** Reads the name that a line of a kernel table starts with; false when no colon ends it or it is too long. */
bool readName(const char* line, char (&name)[MOVO_NET_IFNAME_SIZE])
{
    std::size_t length = 0;
    for (const char* at = line; *at != '\0'; ++at) {
        if (*at == ' ') {
            continue;
        }
        if (*at == ':') {
            name[length] = '\0';
            return true;
        }
        if (length == sizeof(name) - 1) {
            return false;
        }
        name[length++] = *at;
    }
    return false;
}

bool isLoopback(std::string_view name)
{
    return name == "lo" || name.starts_with("sit");
}

void describe(MovoNetIface_t& iface)
{
    if (isLoopback(iface.name)) {
        iface.type = _MOVO_NET_IFACE_LO_;
        iface.isEnabled = kTrue;
        iface.ipMode = _MOVO_NET_IPMODE_STATIC_;
        iface.sipv4 = htonl(INADDR_LOOPBACK);
        iface.smaskv4 = htonl(0xff000000U);
    } else if (FindInterfaceName(s_pIfnamesWifi, iface.name)) {
        iface.type = _MOVO_NET_IFACE_WIFI_;
    } else {
        iface.type = _MOVO_NET_IFACE_ETHER_;
    }
}

/** Gives a record back that was never listed, with what a back end that failed half-way has left attached. */
void discard(MovoNetIface_t* iface)
{
    if (iface->type == _MOVO_NET_IFACE_WIFI_) {
        discardWifi(*iface);
    }
    std::free(iface);
}

enum class Discovery { GoOn, End };

/** One name of the kernel's table; speaks for UpdateInterfaces. */
Discovery discover(const char* name, CallSite at)
{
    if (FindInterface(name) != nullptr) {
        return Discovery::GoOn;
    }
    auto* iface = static_cast<MovoNetIface_t*>(std::calloc(1, sizeof(MovoNetIface_t)));
    if (iface == nullptr) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "out of memory\n");
        return Discovery::End;
    }
    copyText(iface->name, name);
    iface->dhcpcfd = kNoFd;
    if (iface->name == kSoftApInterface) {
        // Deliberate: names after the soft access point's are not looked at as long as it is there.
        std::free(iface);
        return Discovery::End;
    }
    describe(*iface);
    if (int_Movo_Net_Init(iface) != kOk) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "int_Movo_Net_Init failed\n");
        discard(iface);
        return Discovery::GoOn;
    }
    ScopedLock listLock(ifaceListLock);
    if (!listLock) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "lock mutex failed\n");
        discard(iface);
        return Discovery::End;
    }
    if (load(s_bThreadTerminating)) { // the list may have been emptied, and nobody would end this one
        discard(iface);
        return Discovery::End;
    }
    appendInterface(iface);
    listLock.unlock();
    NET_LOG_AT(at, KEST_LEVEL_INFO, "new interface %s\n", iface->name);
    return Discovery::GoOn;
}
} // namespace

RETURN_TYPE GetInterfacesFromFile(const char* filename, MovoNetIfnames_t& ifnames)
{
    const UniqueFile file(filename, "re");
    if (!file) {
        NET_ERROR("cannot open %s for read\n", filename);
        return kFail;
    }
    std::size_t count = 0;
    char line[kLineSize];
    while (std::fgets(line, sizeof(line), file.get()) != nullptr) {
        if (count == MOVO_NET_MAX_IFACES) {
            NET_ERROR("ifname count > %d\n", static_cast<int>(MOVO_NET_MAX_IFACES));
            break;
        }
        if (readName(line, ifnames[count])) {
            ++count;
        }
    }
    ifnames[count][0] = '\0';
    return kOk;
}

kest_bool FindInterfaceName(const MovoNetIfnames_t& ifnames, const char* ifname)
{
    for (const auto& name : ifnames) {
        if (name[0] == '\0') {
            return kFalse;
        }
        if (std::strcmp(name, ifname) == 0) {
            return kTrue;
        }
    }
    return kFalse;
}

kest_bool IsInterfacePresent(const char* ifname)
{
    return FindInterfaceName(s_pIfnamesAll, ifname);
}

void UpdateInterfaces(void)
{
    (void)GetInterfacesFromFile(s_sIfnamesWifiFileName, s_pIfnamesWifi);
    (void)GetInterfacesFromFile(s_sIfnamesAllFileName, s_pIfnamesAll);
    for (const auto& name : s_pIfnamesAll) {
        if (name[0] == '\0' || discover(name, NET_HERE) == Discovery::End) {
            return;
        }
    }
}
