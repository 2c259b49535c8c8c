#include "sim/sim.h"
#include "sim/world.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstdio>

namespace sim {
namespace {
constexpr std::uint16_t kLinkUp = 0x0004;
constexpr std::uint16_t kRemoteFault = 0x0010;
constexpr std::uint16_t kJabber = 0x0002;
constexpr std::uint16_t kUsualBits = 0x7809; // abilities of a 10/100 PHY

void setBit(const std::string& ifname, std::uint16_t bit, bool on)
{
    const Hold hold;
    KernelIface& iface = ifaceOrFail(ifname);
    iface.bmsr = static_cast<std::uint16_t>(on ? iface.bmsr | bit : iface.bmsr & ~bit);
}

void setRegister(const std::string& ifname, std::uint16_t bits)
{
    const Hold hold;
    ifaceOrFail(ifname).bmsr = bits;
}
} // namespace

std::string textOf(std::uint32_t address)
{
    char text[INET_ADDRSTRLEN];
    return inet_ntop(AF_INET, &address, text, sizeof(text));
}

std::uint32_t addressOf(const std::string& text)
{
    std::uint32_t address = 0;
    if (inet_pton(AF_INET, text.c_str(), &address) != 1) {
        world().problems.push_back("\"" + text + "\" is no address");
    }
    return address;
}

KernelIface* findIface(const std::string& name)
{
    auto& ifaces = world().kernel.ifaces;
    const auto found = std::ranges::find(ifaces, name, &KernelIface::name);
    return found != ifaces.end() ? &*found : nullptr;
}

KernelIface& ifaceOrFail(const std::string& name)
{
    KernelIface* iface = findIface(name);
    if (iface == nullptr) {
        static KernelIface nowhere;
        world().problems.push_back("the set has no interface " + name);
        return nowhere;
    }
    return *iface;
}

void dropRoutes(const std::string& ifname)
{
    std::erase_if(world().kernel.routes, [&](const Route& route) { return route.ifname == ifname; });
}

void clearAddress(KernelIface& iface)
{
    iface.address = 0;
    iface.mask = 0;
    dropRoutes(iface.name);
}

std::string renderTable(const std::string& path)
{
    const bool wireless = path == "/proc/net/wireless";
    std::string table =
        wireless ? "Inter-| sta-|   Quality        |   Discarded packets               | Missed | WE\n"
                   " face | tus | link level noise |  nwid  crypt   frag  retry   misc | beacon | 22\n"
                 : "Inter-|   Receive                                                |  Transmit\n"
                   " face |bytes    packets errs drop fifo frame compressed multicast|bytes    packets errs drop "
                   "fifo colls carrier compressed\n";
    for (const KernelIface& iface : world().kernel.ifaces) {
        if (!wireless || iface.wireless) {
            char name[32];
            (void)std::snprintf(name, sizeof(name), "%6s:", iface.name.c_str());
            table += std::string(name) +
                     (wireless ? " 0000   70.  -40.  -256        0      0      0      0      0        0\n"
                               : "    1480      20    0    0    0     0          0         0     1480"
                                 "      20    0    0    0     0       0          0\n");
        }
    }
    return table;
}

Cable::Cable(std::string ifname) : m_ifname(std::move(ifname)) {}

Cable& Cable::plug()
{
    setRegister(m_ifname, kUsualBits | kLinkUp);
    return *this;
}

Cable& Cable::pull()
{
    setRegister(m_ifname, kUsualBits);
    return *this;
}

Cable& Cable::remoteFault(bool present)
{
    setBit(m_ifname, kRemoteFault, present);
    return *this;
}

Cable& Cable::jabber(bool present)
{
    setBit(m_ifname, kJabber, present);
    return *this;
}

Cable& Cable::statusRegister(std::uint16_t bits)
{
    setRegister(m_ifname, bits);
    return *this;
}

Cable& Cable::withoutMii()
{
    const Hold hold;
    ifaceOrFail(m_ifname).mii = false;
    return *this;
}

void addKernelIface(const std::string& name)
{
    Kernel& kernel = world().kernel;
    const int index = ++kernel.lastIndex;
    const std::string mac{'\x52', '\x54', '\0', '\x12', '\x34', static_cast<char>(index)};
    kernel.ifaces.push_back({.name = name, .index = index, .mac = mac, .bmsr = kUsualBits});
}

void removeKernelIface(const std::string& name)
{
    dropRoutes(name);
    std::erase_if(world().kernel.ifaces, [&](const KernelIface& iface) { return iface.name == name; });
}

Iface Set::addIface(const std::string& name)
{
    const Hold hold;
    addKernelIface(name);
    return Iface(name);
}

Iface::Iface(std::string name) : m_name(std::move(name)) {}

bool Iface::up() const
{
    const Hold hold;
    return ifaceOrFail(m_name).up;
}

std::string Iface::address() const
{
    const Hold hold;
    return textOf(ifaceOrFail(m_name).address);
}

std::string Iface::mask() const
{
    const Hold hold;
    return textOf(ifaceOrFail(m_name).mask);
}

std::string Iface::mac() const
{
    const Hold hold;
    const std::string& mac = ifaceOrFail(m_name).mac;
    std::string text;
    for (const char byte : mac) {
        char digits[4];
        (void)std::snprintf(digits, sizeof(digits), "%02x", static_cast<unsigned>(static_cast<unsigned char>(byte)));
        text += (text.empty() ? "" : ":") + std::string(digits);
    }
    return text;
}

int Iface::index() const
{
    const Hold hold;
    return ifaceOrFail(m_name).index;
}

Iface& Iface::setUp(bool up)
{
    const Hold hold;
    ifaceOrFail(m_name).up = up;
    return *this;
}

Iface& Iface::setAddress(const std::string& address, const std::string& mask)
{
    const Hold hold;
    KernelIface& iface = ifaceOrFail(m_name);
    iface.address = addressOf(address);
    iface.mask = addressOf(mask);
    return *this;
}

Iface& Iface::setMac(const std::string& mac)
{
    unsigned bytes[6] = {};
    const Hold hold;
    if (std::sscanf(mac.c_str(), "%x:%x:%x:%x:%x:%x", &bytes[0], &bytes[1], &bytes[2], &bytes[3], &bytes[4],
                    &bytes[5]) != 6) {
        world().problems.push_back("\"" + mac + "\" is no MAC address");
    }
    ifaceOrFail(m_name).mac = std::string(std::begin(bytes), std::end(bytes));
    return *this;
}

Iface& Iface::wireless(bool listed)
{
    const Hold hold;
    ifaceOrFail(m_name).wireless = listed;
    return *this;
}

void Iface::unplugDevice()
{
    const Hold hold;
    removeKernelIface(m_name);
}
} // namespace sim
