/*
 * join IFACE NAME [KEY]: joins a network. A join leaves the network of before with its first command; when the key is
 * wrong or the network does not answer, this joins the last good one again.
 */
#include <kest.h>
#include <movo_net.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

struct Network {
    char name[33];
    char key[65];
    int keyLength; /* 0: none */
};

static struct Network s_good; /* the network that was joined when the join began */
static int s_goesBack;

static int join(const char* ifname, const struct Network* network)
{
    if (network->keyLength > 0 &&
        Movo_NET_WifiSetKey(0, ifname, network->name, network->key, network->keyLength) != 0) {
        return 1;
    }
    return Movo_NET_WifiConnectEss(0, ifname, network->name);
}

/* After an update and before the join: later the network is left. */
static void noteGood(const char* ifname)
{
    if (Movo_NET_WifiGetConnectedEss(0, ifname, s_good.name, sizeof(s_good.name)) == 0 && s_good.name[0] != '\0' &&
        Movo_NET_WifiGetKey(0, ifname, s_good.name, s_good.key, &s_good.keyLength) != 0) {
        s_good.keyLength = 0; /* open, or not remembered */
    }
}

/* Once: the good one may be out of reach, too. */
static void goBack(const char* ifname)
{
    if (s_good.name[0] != '\0' && !s_goesBack) {
        s_goesBack = 1;
        printf("back to %s: %s\n", s_good.name, join(ifname, &s_good) == 0 ? "being joined" : "refused");
    }
}

/* Runs on the thread that reports; it may call the glue. */
static void onEvent(MovoNetCBReason_e reason, void* context, void* param)
{
    const char* ifname = param; /* the interface's record begins with its name */
    (void)context;
    if (reason == _MOVO_NET_CALLBACK_WIFIBADKEY_) {
        printf("the key is wrong\n");
        goBack(ifname);
    } else if (reason == _MOVO_NET_CALLBACK_WIFITIMEOUT_) {
        printf("no answer\n");
        goBack(ifname);
    } else if (reason == _MOVO_NET_CALLBACK_DHCP_SUCCESS_) {
        printf("%s has an address\n", ifname);
    }
    fflush(stdout);
}

/* Whether a key may be right is seen before anything is lost: WPA takes 8 to 63 characters, WEP other lengths. */
static int isRefusedAnyway(const char* ifname, const struct Network* network)
{
    MovoNetWifiEncryption_e cipher = _MOVO_NET_WIFI_ENCRYP_NONE_;
    if (Movo_NET_WifiGetEncryptionEss(0, ifname, network->name, &cipher) != 0) {
        return 1; /* not there */
    }
    return cipher != _MOVO_NET_WIFI_ENCRYP_NONE_ && cipher != _MOVO_NET_WIFI_ENCRYP_WEP_ &&
           (network->keyLength < 8 || network->keyLength > 63);
}

int main(int argc, char** argv)
{
    int id = 0;
    struct Network wanted = {"", "", 0};
    if (argc < 3) {
        return 2;
    }
    (void)snprintf(wanted.name, sizeof(wanted.name), "%s", argv[2]);
    (void)snprintf(wanted.key, sizeof(wanted.key), "%s", argc > 3 ? argv[3] : "");
    wanted.keyLength = (int)strlen(wanted.key);

    kest_debug_init("join");
    movoglue_net_debug = kest_debug_category_new("JOIN", 0, "an example");
    if (Movo_NET_Glue_Init() != 0 || Movo_NET_InstallCallback(0, onEvent, NULL, &id) != 0) {
        return 1;
    }
    while (Movo_NET_WifiScanEsss(0, argv[1]) != 0) { /* until the interface is active */
        sleep(1);
    }
    sleep(5); /* a real application waits for WIFISCANDONE */
    (void)Movo_NET_WifiUpdateEsss(0, argv[1]);
    noteGood(argv[1]);
    if (isRefusedAnyway(argv[1], &wanted)) {
        printf("%s is not there, or takes no such key\n", wanted.name);
    } else if (join(argv[1], &wanted) != 0) {
        printf("refused\n");
        goBack(argv[1]);
    }
    fflush(stdout);
    sleep(60);
    return Movo_NET_Glue_Exit();
}
