#include "movo_net_fl_hostap/ifc.h"

#include "movo_net_internal.h"
#include "support/ifreq.h"
#include "support/lock.h"
#include "support/log.h"

#include <cerrno>
#include <cstring>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace movonet;

int ifc_ctl_sock = kNoFd; // guarded by s_socketLock

namespace {
constexpr LogModule kLog{"movo_net_fl_hostap", &KEST_CAT_DEFAULT};

constexpr int kMaxAddresses = 255;

/** A leaf: start and stop may use the socket at once, and one must not close what the other is using. */
Mutex s_socketLock{Mutex::Kind::Recursive};

int issue(unsigned long code, ifreq& request)
{
    const ScopedLock lock(s_socketLock);
    return ioctl(ifc_ctl_sock, code, &request);
}
} // namespace

int ifc_init(void)
{
    ScopedLock lock(s_socketLock);
    if (ifc_ctl_sock == kNoFd) {
        ifc_ctl_sock = openControlSocket();
        if (ifc_ctl_sock < 0) {
            NET_ERROR("socket() failed: %s\n", std::strerror(errno));
        }
    }
    const int result = ifc_ctl_sock < 0 ? -1 : 0;
    lock.unlock();
    NET_INFO("ifc_init_returning %d", result);
    return result;
}

void ifc_close(void)
{
    const ScopedLock lock(s_socketLock);
    if (ifc_ctl_sock != kNoFd) {
        (void)close(ifc_ctl_sock);
        ifc_ctl_sock = kNoFd;
    }
}

int ifc_down(const char* name)
{
    ifreq request = ifreqFor(name);
    int result = issue(SIOCGIFFLAGS, request);
    if (result < 0) {
        result = -1;
    } else {
        request.ifr_flags = static_cast<short>(request.ifr_flags & ~IFF_UP);
        result = issue(SIOCSIFFLAGS, request);
    }
    NET_INFO("ifc_down(%s) = %d", name, result);
    return result;
}

int ifc_get_addr(const char* name, in_addr_t* addr)
{
    if (addr == nullptr) {
        return 0;
    }
    ifreq request = ifreqFor(name);
    const int result = issue(SIOCGIFADDR, request);
    *addr = result < 0 ? 0 : ipv4Of(request);
    return result;
}

int ifc_set_addr(const char* name, in_addr_t addr)
{
    ifreq request = ifreqFor(name, addr);
    const int result = issue(SIOCSIFADDR, request);
    NET_INFO("ifc_set_addr(%s, xx) = %d", name, result);
    return result;
}

int ifc_clear_ipv4_addresses(const char* name)
{
    (void)ifc_init();
    for (int round = 0; round < kMaxAddresses; ++round) {
        in_addr_t address = 0;
        if (ifc_get_addr(name, &address) < 0 || address == 0) {
            break;
        }
        (void)ifc_set_addr(name, 0);
    }
    ifc_close();
    return 0;
}
