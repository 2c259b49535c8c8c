/* Brings the network up, tells what happens for a minute, and shows the address of each interface that gets one. */
#include <arpa/inet.h>
#include <kest.h>
#include <movo_net.h>
#include <stdio.h>
#include <unistd.h>

static void showAddress(const char* ifname)
{
    struct in_addr ip;
    unsigned mask, gateway, dns1, dns2;
    if (Movo_NET_GetIP(0, ifname, &ip.s_addr, &mask, &gateway, &dns1, &dns2) == 0) {
        printf("%s has the address %s\n", ifname, inet_ntoa(ip));
    }
}

/* Whatever came before the callback was installed is seen here. */
static void lookAround(void)
{
    char ifname[9];
    int count = 0;
    (void)Movo_NET_GetNumOfIfaces(0, &count);
    for (int i = 0; i < count; i++) {
        kest_bool connected = 0;
        if (Movo_NET_GetIfaceName(0, i, 8, ifname) == 0 && Movo_NET_IsConnected(0, ifname, &connected) == 0 &&
            connected) {
            showAddress(ifname);
        }
    }
}

/* Runs on the thread that reports; every call but start, stop and wait may be made here. */
static void onEvent(MovoNetCBReason_e reason, void* context, void* param)
{
    const char* ifname = param; /* the interface's record begins with its name */
    (void)context;
    printf("reason %d on %s\n", (int)reason, ifname);
    if (reason == _MOVO_NET_CALLBACK_DHCP_SUCCESS_ || reason == _MOVO_NET_CALLBACK_STATICIP_SUCCESS_) {
        showAddress(ifname);
    }
    fflush(stdout);
}

int main(void)
{
    int id = 0;
    kest_debug_init("listen");
    movoglue_net_debug = kest_debug_category_new("LISTEN", 0, "an example");
    if (Movo_NET_Glue_Init() != 0 || Movo_NET_InstallCallback(0, onEvent, NULL, &id) != 0) {
        return 1;
    }
    lookAround();
    sleep(60);
    return Movo_NET_Glue_Exit();
}
