#include "movo_net_fl_hostap/hostap.h"
#include "movo_net_fl_hostap/ifc.h"
#include "support/atomic.h"
#include "support/command.h"
#include "support/fd.h"
#include "support/ifreq.h"
#include "support/log.h"
#include "support/slow.h"
#include "support/text.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/socket.h>

using namespace movonet;

// The start of the soft access point, step by step. The helpers without a fixed name speak for s_SoftAP_Start.
// Deliberate: most of its progress is logged as an error, always visible.

namespace {
constexpr LogModule kLog{"movo_net_fl_hostap", &KEST_CAT_DEFAULT};

constexpr const char* kAddress = "192.168.255.249";
constexpr int kNameAttempts = 20;
constexpr int kNameDelayMs = 1000;
constexpr std::size_t kNameRoom = 32;

/** Reads the set's name with the line end that it comes with; false when there is none. */
bool SoftAP_getprop(char (&name)[kNameRoom])
{
    const SlowWatch watch("getprop persist.device_name");
    std::FILE* output = readShell("getprop persist.device_name");
    if (output == nullptr) {
        NET_ERROR("HOSTAP:popen failure !\n");
        return false;
    }
    std::memset(name, 0, sizeof(name));
    (void)std::fgets(name, sizeof(name), output); // a tool that prints nothing gives an empty name
    (void)pclose(output);
    if (name[0] == '\n') {
        NET_ERROR("HOSTAP:can not get cast device name!\n");
        return false;
    }
    return true;
}

void storeName(const char* name)
{
    const ScopedLock lock(hotspotLock);
    copyText(hotspot.mSSID, name);
}

bool isDefaultName(std::string_view name)
{
    if (name.ends_with('\n')) {
        name.remove_suffix(1);
    }
    return name == kDefaultSsid;
}

/** One attempt; true when the set has a name of its own. */
bool readCastName(CallSite at)
{
    char name[kNameRoom];
    if (!SoftAP_getprop(name)) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "HOSTAP: Can not get cast name ,use default name: %s", kDefaultSsid);
        copyText(name, kDefaultSsid);
    }
    storeName(name);
    return !isDefaultName(name);
}

void findCastName(CallSite at)
{
    for (int attempt = 1; attempt <= kNameAttempts; ++attempt) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "HOSTAP: retry = %d\n", attempt);
        if (readCastName(at)) {
            break;
        }
        Kest_Util_Delay(kNameDelayMs);
    }
    NET_LOG_AT(at, KEST_LEVEL_ERROR, "HOSTAP: Get name %s\n", hotspotTexts().ssid);
}

void resetHotspot()
{
    const ScopedLock lock(hotspotLock);
    std::memcpy(&hotspot.mBssid, "000000", sizeof(hotspot.mBssid));
    store(hotspot.mIsInitialized, kFalse);
    store(hotspot.mIsHidden, kFalse);
    copyText(hotspot.mInterface, kSoftApName);
    copyText(hotspot.mStaInterface, "mlan0");
}

bool initialise(CallSite at)
{
    if (SoftAP_initializeInterface() != 0) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "HOSTAP :initializeInterface failed \n ");
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "HOSTAP :Movo_Net_WiFi_HostAP_Init Failed!\n ");
        return false;
    }
    NET_LOG_AT(at, KEST_LEVEL_ERROR, "HOSTAP : Movo_Net_WiFi_HostAP_Init success\n ");
    store(hotspot.mState, HOTSPOT_STARTING);
    return true;
}

int SoftAP_setIPAddress(const char* ip_address)
{
    NET_INFO("HOSTAP:enter SoftAP_setIPAddress success!\n");
    const UniqueFd control(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ifreq request = ifreqFor(kSoftApName, inet_addr(ip_address));
    if (!control || ioctl(control.get(), SIOCSIFADDR, &request) < 0) {
        return -1;
    }
    NET_ERROR("HOSTAP:SoftAP_setIPAddress success!\n");
    return 0;
}

bool bringUp(CallSite at)
{
    if (SoftAP_isInterfaceAvailable() != 0) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "HOSTAP :start called, but interface unavailable yet \n");
        return false;
    }
    if (SoftAP_enableInterface(1) != 0) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "HOSTAP :ifconfig up error: %s", std::strerror(errno));
        return false;
    }
    if (load(hotspot.mIsHidden)) {
        (void)ifc_clear_ipv4_addresses(kSoftApName);
        return true;
    }
    if (SoftAP_setIPAddress(kAddress) != 0) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "HOSTAP: failed to set IP address %s", std::strerror(errno));
        return false;
    }
    return true;
}

bool startDaemons(CallSite at)
{
    if (SoftAP_startHostapd() != 0) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "HOSTAP :start hostapd error: %s", std::strerror(errno));
        (void)SoftAP_enableInterface(0);
        return false;
    }
    if (SoftAP_dnsmasq_setprop(kTrue) != 0) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "HOSTAP: failed to setup  dnsmasq%s", std::strerror(errno));
        if (SoftAP_hostapd_setprop(kFalse) != 0) {
            (void)SoftAP_stopHostapd();
        }
        (void)SoftAP_enableInterface(0);
        return false;
    }
    return true;
}
} // namespace

void* s_SoftAP_Start(void* /*arg*/)
{
    askForWatch();
    resetHotspot();
    findCastName(NET_HERE);
    if (!initialise(NET_HERE) || !bringUp(NET_HERE) || !startDaemons(NET_HERE)) {
        return nullptr; // Deliberate: the state stays as it is, and a later start is taken.
    }
    store(hotspot.mState, HOTSPOT_STARTED);
    beginWatch(NET_HERE);
    return nullptr;
}
