#include "bench.h"

#include "movo_net_fg/fg.h"

#include <fcntl.h>
#include <sched.h>
#include <unistd.h>

namespace dhcp {
namespace {
MovoNetIface_t& listed(const std::string& name, MovoNetIfaceType_e type)
{
    MovoNetIface_t iface{};
    name.copy(iface.name, sizeof(iface.name) - 1);
    iface.type = type;
    makeFresh(iface);
    iface.priority = 0;
    MovoNetIface_t& record = ip::listed(iface, 0);
    record.isConnected = 0;
    return record;
}
} // namespace

void makeFresh(MovoNetIface_t& iface)
{
    EXPECT_EQ(int_Movo_Net_Init(&iface), 0);
    iface.isEnabled = 1;
    iface.isAvailable = 1;
    iface.isActived = 1;
}

void namePipes(const char* base)
{
    movonet::s_sDhcpcdPipeName = base;
}

Lines only(const Lines& lines, std::initializer_list<const char*> beginnings)
{
    Lines chosen;
    for (const std::string& line : lines) {
        for (const char* beginning : beginnings) {
            if (line.starts_with(beginning)) {
                chosen.push_back(line);
                break;
            }
        }
    }
    return chosen;
}

Lines said(const sim::Set& set)
{
    static const std::string kModule = "movo_net_fl_common ";
    Lines lines;
    for (const std::string& line : told(set)) {
        if (const auto at = line.find(kModule); at != std::string::npos) {
            lines.push_back(line.substr(0, at) + line.substr(at + kModule.size()));
        }
    }
    return lines;
}

Lines openFiles(const sim::Set& set)
{
    Lines files = set.openDescriptors();
    std::erase(files, "popen(\"bdconf -p\")");
    return files;
}

std::vector<sim::Signal> sent(const sim::Set& set)
{
    std::vector<sim::Signal> signals = set.signals();
    std::erase_if(signals, [](const sim::Signal& signal) { return signal.number == 0; });
    return signals;
}

void goesAsFarAsItCan(const std::atomic<bool>& underWay)
{
    while (!underWay) {
        (void)sched_yield();
    }
    for (int yields = 0; yields < 1000; ++yields) {
        (void)sched_yield();
    }
}

Bench::Bench(MovoNetIfaceType_e type, unsigned seed)
    : set(seed), iface((set.startLoop(), add(type == _MOVO_NET_IFACE_WIFI_ ? "wlan0" : "eth0", type)))
{
    set.recordCallbacks();
    set.forget();
}

MovoNetIface_t& Bench::add(const std::string& name, MovoNetIfaceType_e type)
{
    if (name != "eth0") {
        set.addIface(name).wireless(type == _MOVO_NET_IFACE_WIFI_);
    }
    set.cable(name).plug();
    MovoNetIface_t& record = listed(name, type);
    set.iface(name).setUp(true);
    return record;
}

void Bench::launch()
{
    ASSERT_EQ(ConfigIP(&iface, movonet::kForce), 0);
    ASSERT_TRUE(set.dhcp(iface.name).running());
    nextPass();
    set.forget();
}

void Bench::lease(const sim::Lease& lease)
{
    launch();
    set.dhcp(iface.name).leases(lease);
    ASSERT_EQ(iface.isConnected, 1);
    set.forget();
}

void Bench::hear(const std::string& message)
{
    const std::string pipe = set.real(std::string("/tmp/dhcpnotify.pipe.") + iface.name);
    const int fd = open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(fd, 0) << "nobody listens to " << pipe;
    EXPECT_EQ(write(fd, message.data(), message.size()), static_cast<ssize_t>(message.size()));
    EXPECT_EQ(close(fd), 0);
    set.settle();
}

void Bench::setStatic()
{
    iface.ipMode = _MOVO_NET_IPMODE_STATIC_;
    iface.sipv4 = address("192.168.1.20");
    iface.smaskv4 = address("255.255.255.0");
    iface.sgwv4 = address("192.168.1.1");
    iface.sdns1v4 = address("192.168.1.2");
    iface.sdns2v4 = address("192.168.1.3");
}
} // namespace dhcp
