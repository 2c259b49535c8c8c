#include "fake_state.h"

#include <chrono>
#include <cstdio>

kest_debug_category* movoglue_net_debug;
kest_uint8 g_NetworkLinkType;

namespace fake {
namespace {
constexpr auto kInstallTime = std::chrono::minutes(10); // only ends a test that hangs

/** As the real start: clears the callback, makes its thread, looks. The look waits for a callback. */
void startLoop()
{
    std::unique_lock lock(state().lock);
    state().callback = nullptr;
    state().loop = std::thread([] {
        std::unique_lock wait(state().lock);
        state().changed.wait(wait, [] { return state().stopping; });
    });
    state().changed.wait_for(lock, kInstallTime, [] { return state().callback != nullptr; });
    state().running = true;
}

void stopLoop()
{
    std::thread loop;
    {
        const std::lock_guard lock(state().lock);
        state().running = false;
        state().stopping = true;
        loop = std::move(state().loop);
        state().changed.notify_all();
    }
    if (loop.joinable()) {
        loop.join();
    }
}

} // namespace

State& state()
{
    static State* const state = new State; // lives as long as any thread
    return *state;
}

std::vector<std::string> calls()
{
    const std::lock_guard lock(state().lock);
    return state().calls;
}

void forgetCalls()
{
    const std::lock_guard lock(state().lock);
    state().calls.clear();
}

void returns(const std::string& function, int result)
{
    const std::lock_guard lock(state().lock);
    state().results[function] = result;
}

void onCall(std::function<void(const std::string&)> action)
{
    const std::lock_guard lock(state().lock);
    state().onCall = std::move(action);
}

void setRunning(bool running)
{
    const std::lock_guard lock(state().lock);
    state().running = running;
}

void addInterfaces(int count)
{
    const std::lock_guard lock(state().lock);
    for (int i = 1; i <= count; i++) {
        state().names.push_back("eth" + std::to_string(i));
    }
}

void addWireless(const std::string& ifname)
{
    const std::lock_guard lock(state().lock);
    state().names.push_back(ifname);
}

void callBack(MovoNetCBReason_e reason, const char* ifname)
{
    MovoNetCallback_t callback = nullptr;
    void* context = nullptr;
    {
        const std::lock_guard lock(state().lock);
        callback = state().callback;
        context = state().context;
    }
    if (callback != nullptr) {
        callback(reason, context, const_cast<char*>(ifname));
    }
}
} // namespace fake

using namespace fake;

RETURN_TYPE Movo_NET_Glue_Init(void)
{
    const int result = called("Movo_NET_Glue_Init");
    if (result == 0 && !state().running) {
        startLoop();
        (void)std::puts("printed by the library");
        callBack(_MOVO_NET_CALLBACK_IFFOUND_, "eth0");
    }
    return result;
}

RETURN_TYPE Movo_NET_Glue_Exit(void)
{
    const int result = called("Movo_NET_Glue_Exit");
    stopLoop();
    return result;
}

void WaitForChild2Exit(void)
{
    (void)called("WaitForChild2Exit");
    std::unique_lock lock(state().lock);
    state().changed.wait(lock, [] { return state().stopping || !state().running; });
}

kest_bool Movo_NET_IsInitializationDone(kest_sint32)
{
    (void)called("Movo_NET_IsInitializationDone");
    const std::lock_guard lock(state().lock);
    return state().running ? 1 : 0;
}

RETURN_TYPE Movo_NET_InstallCallback(kest_sint32, MovoNetCallback_t callback, void* context, int* cbid)
{
    const int result = called("Movo_NET_InstallCallback");
    const std::lock_guard lock(state().lock);
    state().callback = callback;
    state().context = context;
    state().changed.notify_all();
    *cbid = 0;
    return result;
}

RETURN_TYPE Movo_NET_UnInstallCallback(kest_sint32, int cbid)
{
    const int result = called("Movo_NET_UnInstallCallback", cbid);
    const std::lock_guard lock(state().lock);
    state().callback = nullptr;
    return result;
}

RETURN_TYPE Movo_NET_GetMaxNumOfIfacesSupported(kest_sint32, int* retval)
{
    return wrote(called("Movo_NET_GetMaxNumOfIfacesSupported"), retval, 10);
}

RETURN_TYPE Movo_NET_GetMaxNumOfWifiEssSupported(kest_sint32, int* retval)
{
    return wrote(called("Movo_NET_GetMaxNumOfWifiEssSupported"), retval, 50);
}

kest_bool Movo_NET_IsNetworkModeVirgin(kest_sint32)
{
    return answered(called("Movo_NET_IsNetworkModeVirgin"));
}

RETURN_TYPE Movo_NET_SetNetworkToModeVirgin(kest_sint32)
{
    return called("Movo_NET_SetNetworkToModeVirgin");
}

RETURN_TYPE Movo_NET_SetResourceAllocation(kest_sint32 resid, kest_sint32 nbrclients, kest_sint32* appid)
{
    return called("Movo_NET_SetResourceAllocation", resid, nbrclients, *appid);
}

RETURN_TYPE Movo_NET_SetClientResourceAllocation(kest_sint32 resid, kest_sint32 nbrclients, kest_sint32* appid)
{
    return called("Movo_NET_SetClientResourceAllocation", resid, nbrclients, *appid);
}
