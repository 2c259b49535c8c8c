#include "movo_net_fl_hostap/hostap.h"

#include "movo_net_fl_hostap/ifc.h"
#include "support/atomic.h"
#include "support/command.h"
#include "support/log.h"
#include "support/text.h"

#include <cerrno>
#include <cstring>
#include <pthread.h>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_hostap", &KEST_CAT_DEFAULT};

constexpr int kDeleteDelayMs = 100;

// A watch stays for good, and the usual 8 MB of address space are dear on 32 bits. Callbacks run on it, too.
constexpr std::size_t kStackSize = std::size_t{256} * 1024;

void copyConfig(MovoHotspotconfig_t& config)
{
    const ScopedLock lock(hotspotLock);
    std::memcpy(&config.Ssid, &hotspot.mSSID, sizeof(config.Ssid));
    std::memcpy(&config.Bssid, &hotspot.mBssid, sizeof(config.Bssid));
    config.Hidden = load(hotspot.mIsHidden);
}
} // namespace

namespace movonet {
Mutex hotspotLock{Mutex::Kind::Recursive};
MovoNetIface_t softApRecord = {.name = "bcm0"};

HotspotTexts hotspotTexts()
{
    HotspotTexts texts;
    const ScopedLock lock(hotspotLock);
    std::memcpy(&texts.interface, &hotspot.mInterface, sizeof(texts.interface));
    std::memcpy(&texts.ssid, &hotspot.mSSID, sizeof(texts.ssid));
    return texts;
}
} // namespace movonet

MovoHotspotManager_t hotspot;

int SoftAP_Create_Thread(void* (*func)(void*))
{
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) {
        return 1;
    }
    pthread_t thread;
    const bool created = pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED) == 0 &&
                         pthread_attr_setstacksize(&attributes, kStackSize) == 0 &&
                         pthread_create(&thread, &attributes, func, nullptr) == 0;
    (void)pthread_attr_destroy(&attributes);
    if (!created) {
        return 1;
    }
    NET_INFO("Created a Connection Testing thread\n");
    return 0;
}

RETURN_TYPE Movo_Net_WiFi_HostAP_Start(int /*appid*/)
{
    if (load(hotspot.mState) == HOTSPOT_STARTED) {
        return kOk;
    }
    return SoftAP_Create_Thread(s_SoftAP_Start) == 0 ? kOk : kFail;
}

RETURN_TYPE Movo_Net_WiFi_HostAP_Stop(int /*appid*/)
{
    if (load(hotspot.mState) == HOTSPOT_STOPPED) {
        return kOk;
    }
    NET_INFO("HOSTAP: hotspot stop\n");
    store(hotspot.mState, HOTSPOT_STOPPING);
    if (SoftAP_dnsmasq_setprop(kFalse) != 0) {
        NET_ERROR("HOSTAP: clear dnsmasq.enable: %s\n", std::strerror(errno));
        return kFail;
    }
    (void)ifc_clear_ipv4_addresses(kSoftApName);
    if (SoftAP_hostapd_setprop(kFalse) != 0 && SoftAP_stopHostapd() != 0) {
        NET_ERROR("HOSTAP:stop hostapd error: %s\n", std::strerror(errno));
        return kFail;
    }
    if (SoftAP_enableInterface(0) != 0) {
        NET_ERROR("HOSTAP:ifconfig down error: %s\n", std::strerror(errno));
        return kFail;
    }
    Kest_Util_Delay(kDeleteDelayMs);
    if (runShell("/bin/wpa_cli interface_del bcm0") != 0) {
        NET_ERROR("HOSTAP :deleate bcm0 failed \n");
        return kFail;
    }
    store(hotspot.mState, HOTSPOT_STOPPED);
    return kOk;
}

kest_bool Movo_Net_WiFi_HostAP_Status(int /*appid*/)
{
    return load(hotspot.mState) == HOTSPOT_STARTED ? kTrue : kFalse;
}

RETURN_TYPE Movo_Net_WiFi_HostAP_Config(int appid, MovoHotspotconfig_t* config)
{
    if (config == nullptr) {
        return kOk;
    }
    if (Movo_Net_WiFi_HostAP_Status(appid)) {
        copyConfig(*config);
        return kOk;
    }
    *config = {};
    copyText(config->Ssid, kDefaultSsid);
    return kOk;
}
