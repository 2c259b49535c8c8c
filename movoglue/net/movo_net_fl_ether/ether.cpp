#include "movo_net_fl_ether/ether.h"

#include "movo_net_fl_ether/board_mac.h"
#include "support/fd.h"
#include "support/ifreq.h"
#include "support/lock.h"
#include "support/log.h"

#include <cerrno>
#include <cstring>
#include <linux/mii.h>
#include <linux/sockios.h>
#include <sys/ioctl.h>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_ether", &movoglue_net_debug};

/** Made with the first record, for whoever adds ethtool requests; nothing takes it yet. */
Mutex etherToolLock{Mutex::Kind::Recursive};

void installEtherOps(MovoNetIfaceFunc_t& ops)
{
    ops.Init = int_Movo_Net_InitEther;
    ops.DeInit = int_Movo_Net_DeInitEther;
    ops.CanActive = int_Movo_Net_CanActiveEther;
}

bool isLinkUp(std::uint16_t basicStatus)
{
    return (basicStatus & (BMSR_LSTATUS | BMSR_RFAULT | BMSR_JCD)) == BMSR_LSTATUS;
}

/** Issues a PHY request; `mii` travels in the request's data area both ways. */
bool issueMii(int control, unsigned long code, ifreq& request, mii_ioctl_data& mii)
{
    static_assert(sizeof(mii) <= sizeof(request.ifr_ifru));
    std::memcpy(&request.ifr_ifru, &mii, sizeof(mii));
    if (ioctl(control, code, &request) < 0) {
        return false;
    }
    std::memcpy(&mii, &request.ifr_ifru, sizeof(mii));
    return true;
}
} // namespace

RETURN_TYPE int_Movo_Net_InitEther(MovoNetIface_t* pIface)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    if (!etherToolLock.create()) {
        NET_ERROR("init mutex failed\n");
        return kFail;
    }
    installEtherOps(pIface->funcs);
    if (std::strcmp(pIface->name, "eth0") == 0) {
        programBoardMac(*pIface, NET_HERE);
    }
    return kOk;
}

RETURN_TYPE int_Movo_Net_DeInitEther(MovoNetIface_t* pIface)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    return kOk;
}

int int_Movo_Net_CanActiveEther(MovoNetIface_t* pIface)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    const UniqueFd control(openControlSocket());
    if (!control) {
        NET_ERROR("Cannot get control socket, exit\n");
        return -1;
    }
    ifreq request = ifreqFor(pIface->name);
    mii_ioctl_data mii{};
    if (!issueMii(control.get(), SIOCGMIIPHY, request, mii)) {
        NET_ERROR("SIOCGMIIPHY on %s failed: %s\n", pIface->name, std::strerror(errno));
        return -1;
    }
    mii.reg_num = MII_BMSR;
    if (!issueMii(control.get(), SIOCGMIIREG, request, mii)) {
        NET_ERROR("SIOCGMIIREG on %s failed: %s\n", pIface->name, std::strerror(errno));
        return -1;
    }
    return isLinkUp(mii.val_out) ? 1 : 0;
}
