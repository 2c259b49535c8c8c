/** The smallest application: starts the glue and prints every callback as a line "callback REASON IFNAME". */
#include <cstdio>
#include <kest.h>
#include <movo_net.h>

static const char* const kReasons[] = {
    "IFFOUND",         "IFREMOVED",          "IFDISCONNECTED",   "IFCONNECTED",     "IFACTIVED",    "IFDEACTIVED",
    "IPCHANGED",       "WIFISCANDONE",       "WIFIESSSUPDATED",  "WIFIBADKEY",      "WIFITIMEOUT",  "SOFTAPSCAN",
    "SOFTAPCONNECTED", "SOFTAPDISCONNECTED", "STATICIP_SUCCESS", "STATICIP_FAILED", "DHCP_SUCCESS", "DHCP_FAILED"};

static void printCallback(MovoNetCBReason_e reason, void* /*context*/, void* param)
{
    std::fprintf(stderr, "callback %s %s\n", kReasons[reason], static_cast<const char*>(param));
}

int main()
{
    kest_debug_init("callback_app");
    movoglue_net_debug = kest_debug_category_new("RECOVERY_NET_CONNECTION", 0, "Platform Glue Net");
    int cbid = -1;
    if (Movo_NET_Glue_Init() != 0 || Movo_NET_InstallCallback(0, printCallback, nullptr, &cbid) != 0) {
        std::fprintf(stderr, "callback_app: no start\n");
        return 1;
    }
    std::fprintf(stderr, "callback_app: listening\n");
    WaitForChild2Exit();
    return 0;
}
