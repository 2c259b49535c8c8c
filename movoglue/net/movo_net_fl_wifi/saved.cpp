#include "movo_net_fl_wifi/saved.h"

#include "support/atomic.h"
#include "support/log.h"
#include "support/wiped.h"

#include <cstdlib>
#include <cstring>
#include <utility>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_wifi", &movoglue_net_debug};

using Link = MovNetWifiEssItem_t**;

/** The list was forgotten since it was loaded; guarded by essListLock. */
bool s_forgotten;

bool sameNetwork(const MovNetWifiEssItem_t& left, const MovNetWifiEssItem_t& right)
{
    return std::strcmp(left.essid, right.essid) == 0 && left.bssid == right.bssid &&
           left.securityType == right.securityType && left.encrypType == right.encrypType;
}

/** The link that points at the first node that `matches`, or at the list's end. The caller holds essListLock. */
template <typename Matches>
Link findLink(Matches matches)
{
    Link link = &g_pSavedEsss;
    while (*link != nullptr && !matches(**link)) {
        link = &(*link)->next;
    }
    return link;
}

void putFirst(MovNetWifiEssItem_t* node)
{
    node->next = g_pSavedEsss;
    store(g_pSavedEsss, node);
}

MovNetWifiEssItem_t* takeOut(Link link)
{
    MovNetWifiEssItem_t* node = *link;
    store(*link, node->next);
    return node;
}

/** Puts `ess` first, over the node of the same network or as a new one. */
RETURN_TYPE insertFirst(const MovNetWifiEssItem_t& ess, CallSite at)
{
    const MovNetWifiEssItem_t copy = ess; // it may be the node itself
    Link link = findLink([&copy](const MovNetWifiEssItem_t& node) { return sameNetwork(node, copy); });
    auto* node =
        *link != nullptr ? takeOut(link) : static_cast<MovNetWifiEssItem_t*>(std::malloc(sizeof(MovNetWifiEssItem_t)));
    if (node == nullptr) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "out of memory\n");
        return kNoMemory;
    }
    *node = copy;
    putFirst(node);
    return kOk;
}
} // namespace

namespace movonet {
Mutex essListLock{Mutex::Kind::Recursive};
MovNetWifiEssItem_t* g_pSavedEsss;

bool hasSavedEsss()
{
    return load(g_pSavedEsss) != nullptr;
}

void freeSavedEsss()
{
    while (g_pSavedEsss != nullptr) {
        freeWiped(takeOut(&g_pSavedEsss));
    }
}

void forgetSavedEsss()
{
    freeSavedEsss();
    s_forgotten = true;
}

void installSavedEsss(MovNetWifiEssItem_t* head)
{
    freeSavedEsss();
    store(g_pSavedEsss, head);
    s_forgotten = false;
}
} // namespace movonet

RETURN_TYPE int_Movo_Net_SaveEss(MovNetWifiEssItem_t* ess)
{
    if (ess == nullptr || ess->essid[0] == '\0') {
        return kBadArgument;
    }
    const ScopedLock lock(essListLock);
    if (!lock) {
        NET_ERROR("lock mutex failed\n");
        return kFail;
    }
    if (std::exchange(s_forgotten, false)) {
        (void)LoadEsss(); // the stop has come first; a file of this network alone would lose the others
    }
    if (g_pSavedEsss != nullptr && sameNetwork(*g_pSavedEsss, *ess) && std::strcmp(g_pSavedEsss->Key, ess->Key) == 0) {
        return kOk; // saved last time: costs nothing
    }
    if (const RETURN_TYPE result = insertFirst(*ess, NET_HERE); result != kOk) {
        return result;
    }
    return SaveEsss(); // the lock is held on: a list that is forgotten meanwhile would be taken for an empty one
}

RETURN_TYPE int_Movo_Net_DelEss(MovNetWifiEssItem_t ess)
{
    if (ess.essid[0] == '\0') {
        return kBadArgument;
    }
    const ScopedLock lock(essListLock);
    if (!lock) {
        NET_ERROR("lock mutex failed\n");
        return kFail;
    }
    Link link = findLink([&ess](const MovNetWifiEssItem_t& node) {
        return sameEssid(node.essid, ess.essid) && node.bssid == ess.bssid;
    });
    if (*link == nullptr) {
        return kOk;
    }
    freeWiped(takeOut(link));
    NET_INFO("delete %s in saved ess list\n", ess.essid);
    return SaveEsss();
}

MovNetWifiEssItem_t* int_Movo_Net_GetSavedEss(const char* ess)
{
    if (ess == nullptr) {
        NET_ERROR("bad param\n");
        return nullptr;
    }
    const ScopedLock lock(essListLock);
    if (!lock) {
        NET_ERROR("lock mutex failed\n");
        return nullptr;
    }
    return *findLink([ess](const MovNetWifiEssItem_t& node) { return sameEssid(node.essid, ess); });
}

MovNetWifiEssItem_t* int_Movo_Net_GetSavedConnectedEss(void)
{
    const ScopedLock lock(essListLock);
    if (!lock) {
        NET_ERROR("lock mutex failed\n");
        return nullptr;
    }
    return *findLink([](const MovNetWifiEssItem_t& node) { return node.isConnected != kFalse; });
}
