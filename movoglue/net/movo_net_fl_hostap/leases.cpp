#include "movo_net_fl_eventloop/eventloop.h"
#include "movo_net_fl_hostap/hostap.h"
#include "support/log.h"
#include "support/own_file.h"

#include <cctype>
#include <cstdio>

using namespace movonet;

Softap_Connection_info_t softap_connectinfo;

namespace {
constexpr LogModule kLog{"movo_net_fl_hostap", &KEST_CAT_DEFAULT};

constexpr int kOpenAttempts = 10;
constexpr int kOpenDelayMs = 500;
constexpr int kMaxLeases = 5;

/** Opens the file; whoever writes it may be replacing it, and may be another user. */
std::FILE* openLeases(CallSite at)
{
    for (int attempt = 0; attempt < kOpenAttempts; ++attempt) {
        if (std::FILE* file = openStream(kLeaseFile, Owner::Anybody); file != nullptr) {
            return file;
        }
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "HOSTAP:open %s  failed \n", kLeaseFile);
        Kest_Util_Delay(kOpenDelayMs);
        NET_LOG_AT(at, KEST_LEVEL_INFO, "HOSTAP: retry = %d", attempt);
    }
    return nullptr;
}

/** Reads a whole word and keeps what fits: any device may send names of any length. False at the end of the file. */
template <std::size_t N>
bool readWord(std::FILE* file, char (&word)[N])
{
    int c = std::getc(file);
    while (c != EOF && std::isspace(c) != 0) {
        c = std::getc(file);
    }
    std::size_t length = 0;
    for (; c != EOF && std::isspace(c) == 0; c = std::getc(file)) {
        if (length < N - 1) {
            word[length] = static_cast<char>(c);
        }
        ++length;
    }
    return length > 0;
}

/** Deliberate: words, not lines, so that a lease without a name takes words of the next one. */
bool readLease(std::FILE* file, Softap_Connection_info_t& lease)
{
    return readWord(file, lease.timestamp) && readWord(file, lease.macaddr) && readWord(file, lease.ipaddr) &&
           readWord(file, lease.devicename) && readWord(file, lease.packetmac);
}

void print(int index, const Softap_Connection_info_t& lease)
{
    (void)std::printf("HOSTAP:con[%d].timestamp == %s\n", index, lease.timestamp);
    (void)std::printf("HOSTAP:con[%d].macaddr == %s\n", index, lease.macaddr);
    (void)std::printf("HOSTAP:con[%d].ipaddr == %s\n", index, lease.ipaddr);
    (void)std::printf("HOSTAP:con[%d].devicename == %s\n", index, lease.devicename);
    (void)std::printf("HOSTAP:con[%d].packetmac == %s\n", index, lease.packetmac);
}

/** Reads and prints the leases; the first one is what counts. */
Softap_Connection_info_t readLeases(std::FILE* file)
{
    Softap_Connection_info_t leases[kMaxLeases] = {};
    for (int index = 0; index < kMaxLeases && std::feof(file) == 0; ++index) {
        if (readLease(file, leases[index])) {
            print(index, leases[index]);
        }
    }
    return leases[0];
}
void publish(const Softap_Connection_info_t& lease)
{
    const ScopedLock lock(hotspotLock); // the gate is open after a stop of the glue, and two threads may come
    softap_connectinfo = lease;
}
} // namespace

/** Whatever happened to the file: a lease that was renewed and an emptied file are told of, too. */
void SoftAP_GetConnection(void)
{
    std::FILE* file = openLeases(NET_HERE);
    if (file == nullptr) {
        return;
    }
    const Softap_Connection_info_t first = readLeases(file);
    (void)std::fclose(file);
    const LoopGate gate; // no callback runs on any thread while the device changes
    publish(first);
    (void)NotifyApp(_MOVO_NET_CALLBACK_SOFTAPCONNECTED_, &softApRecord);
}
