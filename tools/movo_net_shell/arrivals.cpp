#include "arrivals.h"

#include <atomic>
#include <csignal>
#include <cstdint>
#include <mutex>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace shell {
namespace {
constexpr int kInterruptedStatus = 130;

std::mutex s_lock;
std::vector<Arrival> s_arrivals;   // guarded by s_lock
Softap_Connection_info_t s_device; // guarded by s_lock

std::atomic<bool> s_interrupted;        // lock-free, for the signal handler
std::atomic<int> s_wakeDescriptor = -1; // made by the shell's thread before anybody wakes it
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

void onInterrupt(int /*signal*/)
{
    if (s_interrupted.exchange(true)) {
        _exit(kInterruptedStatus); // the shell hangs in a call
    }
    wake();
}
} // namespace

void onCallback(MovoNetCBReason_e reason, void* /*context*/, void* param)
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const char* const ifname = param != nullptr ? static_cast<const char*>(param) : "";
    {
        const std::lock_guard lock(s_lock);
        s_arrivals.push_back(
            {std::chrono::duration_cast<std::chrono::milliseconds>(now), std::time(nullptr), reason, ifname});
        if (reason == _MOVO_NET_CALLBACK_SOFTAPCONNECTED_) {
            s_device = softap_connectinfo; // may be read only here
        }
    }
    wake();
}

std::vector<Arrival> takeArrivals()
{
    const std::lock_guard lock(s_lock);
    return std::exchange(s_arrivals, {});
}

Softap_Connection_info_t lastDevice()
{
    const std::lock_guard lock(s_lock);
    return s_device;
}

int wakeDescriptor()
{
    if (s_wakeDescriptor < 0) {
        s_wakeDescriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    }
    return s_wakeDescriptor;
}

void wake()
{
    constexpr std::uint64_t kOnce = 1;
    (void)!write(s_wakeDescriptor, &kOnce, sizeof(kOnce));
}

void sleepAgain()
{
    std::uint64_t wakes = 0;
    (void)!read(s_wakeDescriptor, &wakes, sizeof(wakes));
}

void catchInterrupts()
{
    (void)wakeDescriptor();
    struct sigaction action = {};
    action.sa_handler = onInterrupt;
    (void)sigaction(SIGINT, &action, nullptr);
}

bool takeInterrupt()
{
    return s_interrupted.exchange(false);
}
} // namespace shell
