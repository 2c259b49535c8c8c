#include "movo_net_fl_hostap/hostap.h"
#include "movo_net_fl_hostap/ifc.h"
#include "support/atomic.h"
#include "support/command.h"
#include "support/ifreq.h"
#include "support/log.h"
#include "support/text.h"

#include <cerrno>
#include <cstring>
#include <ifaddrs.h>
#include <sys/ioctl.h>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_hostap", &KEST_CAT_DEFAULT};

constexpr kest_bool kUnavailable = 0xFF;

bool isListed(const ifaddrs* list, const char* name)
{
    for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
        if (std::strcmp(entry->ifa_name, name) == 0) {
            return true;
        }
    }
    return false;
}

void storeAddress(const char* bytes)
{
    const ScopedLock lock(hotspotLock);
    std::memcpy(&hotspot.mMacAddress, bytes, sizeof(hotspot.mMacAddress));
    std::memcpy(&hotspot.mBssid, bytes, sizeof(hotspot.mBssid));
}
} // namespace

kest_bool SoftAP_isInterfaceAvailable(void)
{
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0) {
        NET_ERROR("fatal error getifaddrs() %s", std::strerror(errno));
        return kUnavailable;
    }
    const bool listed = isListed(list, hotspotTexts().interface);
    freeifaddrs(list);
    // Deliberate: always visible, all three.
    if (listed) {
        NET_ERROR("HOSTAP :find bcm0\n");
        return 0;
    }
    if (runShell("/bin/wpa_cli INTERFACE_CREATE bcm0") != 0) {
        NET_ERROR("HOSTAP :create bcm0  failed \n");
        return kUnavailable;
    }
    NET_ERROR("HOSTAP :create bcm0 ok \n");
    return 0;
}

int SoftAP_initializeInterface(void)
{
    if (load(hotspot.mIsInitialized)) {
        return 0;
    }
    if (SoftAP_isInterfaceAvailable() != 0) {
        NET_ERROR("initialize interface: interface is unavailable");
        return -1;
    }
    NET_INFO("HOSTAP :enter SoftAP_initializeInterface1\n ");
    ifreq request = ifreqFor(kSoftApName);
    if (issueIfreq(SIOCGIFHWADDR, request) != IfreqError::None) {
        NET_ERROR("HOSTAP :Can not get MAC address!\n ");
        return -1;
    }
    storeAddress(request.ifr_hwaddr.sa_data);
    for (std::size_t index = 0; index < sizeof(hotspot.mBssid); ++index) {
        NET_INFO("HOSTAP:%02X\n", static_cast<std::uint8_t>(request.ifr_hwaddr.sa_data[index]));
    }
    store(hotspot.mIsInitialized, kTrue);
    return 0;
}

int SoftAP_enableInterface(int up)
{
    if (!load(hotspot.mIsInitialized)) {
        if (const int result = SoftAP_initializeInterface(); result != 0) {
            NET_ERROR("HOSTAP :initialize interface error %d %s", result, std::strerror(errno));
            return result;
        }
    }
    if (up == 0) {
        (void)ifc_init();
        return ifc_down(hotspotTexts().interface); // Deliberate: the shared socket stays open.
    }
    const FixedText<256> command("netcfg %s up", hotspotTexts().interface);
    NET_INFO("HOSTAP :Command: %s\n", command.c_str());
    return runShell(command) != 0 ? -1 : 0;
}
