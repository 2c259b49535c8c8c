#include "support/ifreq.h"

#include "support/fd.h"
#include "support/text.h"

#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace movonet {
ifreq ifreqFor(const char* ifname)
{
    ifreq request{};
    copyText(request.ifr_name, ifname);
    return request;
}

ifreq ifreqFor(const char* ifname, std::uint32_t ipv4)
{
    ifreq request = ifreqFor(ifname);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = ipv4;
    std::memcpy(&request.ifr_addr, &address, sizeof(address));
    return request;
}

std::uint32_t ipv4Of(const ifreq& request)
{
    sockaddr_in address{};
    std::memcpy(&address, &request.ifr_addr, sizeof(address));
    return address.sin_addr.s_addr;
}

int openControlSocket()
{
    return socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
}

IfreqError issueIfreq(unsigned long code, ifreq& request)
{
    const UniqueFd control(openControlSocket());
    if (!control) {
        return IfreqError::Socket;
    }
    if (ioctl(control.get(), code, &request) < 0) {
        return IfreqError::Ioctl;
    }
    return IfreqError::None;
}
} // namespace movonet
