// Brings the network up, tells what happens for a minute, and shows the address of each interface that gets one.
#include <arpa/inet.h>
#include <chrono>
#include <iostream>
#include <kest.h>
#include <movo_net.h>
#include <movo_net_tools.h>
#include <thread>

static void showAddress(const char* ifname)
{
    in_addr ip{};
    unsigned mask = 0, gateway = 0, dns1 = 0, dns2 = 0;
    if (Movo_NET_GetIP(0, ifname, &ip.s_addr, &mask, &gateway, &dns1, &dns2) == 0) {
        std::cout << ifname << " has the address " << inet_ntoa(ip) << std::endl;
    }
}

// Whatever came before the callback was installed is seen here.
static void lookAround()
{
    int count = 0;
    (void)Movo_NET_GetNumOfIfaces(0, &count);
    for (int i = 0; i < count; i++) {
        char ifname[9];
        kest_bool connected = 0;
        if (Movo_NET_GetIfaceName(0, i, 8, ifname) == 0 && Movo_NET_IsConnected(0, ifname, &connected) == 0 &&
            connected) {
            showAddress(ifname);
        }
    }
}

// Runs on the thread that reports; every call but start, stop and wait may be made here.
static void onEvent(MovoNetCBReason_e reason, void* /*context*/, void* param)
{
    const char* ifname = static_cast<const char*>(param); // the interface's record begins with its name
    std::cout << Movo_NET_ReasonText(reason) << " on " << ifname << std::endl;
    if (reason == _MOVO_NET_CALLBACK_DHCP_SUCCESS_ || reason == _MOVO_NET_CALLBACK_STATICIP_SUCCESS_) {
        showAddress(ifname);
    }
}

int main()
{
    MovoNetHost_t other{};
    if (Movo_NET_TakeHostLock(nullptr, "listen_cpp", &other) == 1) {
        std::cerr << "the network has a host: " << other.name << ", pid " << other.pid << std::endl;
        return 1;
    }
    int id = 0;
    kest_debug_init("listen");
    movoglue_net_debug = kest_debug_category_new("LISTEN", 0, "an example");
    if (Movo_NET_Glue_Init() != 0 || Movo_NET_InstallCallback(0, onEvent, nullptr, &id) != 0) {
        return 1;
    }
    lookAround();
    std::this_thread::sleep_for(std::chrono::minutes(1));
    return Movo_NET_Glue_Exit();
}
