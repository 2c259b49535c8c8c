#include "glue.h"

#include "arrivals.h"

#include <atomic>
#include <kest.h>
#include <pthread.h>
#include <sys/stat.h>

namespace shell {
namespace {
constexpr int kLookMs = 1;
constexpr int kNameLength = 8;

constexpr RETURN_TYPE kFailed = 1;

bool (*s_becomeHost)();
int s_users; // starts without a stop
bool s_stopped;

void install()
{
    int id = 0;
    (void)Movo_NET_InstallCallback(kAppId, onCallback, nullptr, &id);
}

/** Threads of this process: each has a folder there, beside the two links that every folder has. */
nlink_t threadCount()
{
    struct stat tasks = {};
    return stat("/proc/self/task", &tasks) == 0 ? tasks.st_nlink : 0;
}

/** What the two threads of a start tell each other. */
struct Start {
    std::atomic<bool> watched = false;
    std::atomic<bool> over = false;
    bool installed = false; // read after the join
};

/** The start clears the callback before it makes its thread: one more thread tells that a callback will stay. */
void* installDuring(void* argument)
{
    auto& start = *static_cast<Start*>(argument);
    const nlink_t before = threadCount();
    start.watched = true;
    while (!start.over && threadCount() <= before) {
        Kest_Util_Delay(kLookMs);
    }
    if (!start.over) {
        install();
        start.installed = true;
    }
    return nullptr;
}

RETURN_TYPE startWithCallback()
{
    Start start;
    pthread_t installer{};
    const bool helped = pthread_create(&installer, nullptr, installDuring, &start) == 0;
    while (helped && !start.watched) {
        Kest_Util_Delay(kLookMs);
    }
    const RETURN_TYPE result = Movo_NET_Glue_Init();
    start.over = true;
    if (helped) {
        (void)pthread_join(installer, nullptr);
    }
    if (!start.installed) {
        install();
    }
    return result;
}
} // namespace

void setHostCheck(bool (*becomeHost)())
{
    s_becomeHost = becomeHost;
}

RETURN_TYPE startGlue()
{
    if (s_becomeHost != nullptr && !s_becomeHost()) {
        return kFailed;
    }
    s_users++;
    return Movo_NET_IsInitializationDone(kAppId) != 0 ? Movo_NET_Glue_Init() : startWithCallback();
}

RETURN_TYPE stopGlue()
{
    s_users -= s_users > 0 ? 1 : 0;
    const RETURN_TYPE code = Movo_NET_Glue_Exit();
    s_stopped = s_stopped || (code == 0 && s_users == 0);
    return code;
}

bool wasStopped()
{
    return s_stopped;
}

void leaveGlue()
{
    while (s_users > 0) {
        (void)stopGlue();
    }
}

std::vector<std::string> interfaceNames()
{
    std::vector<std::string> names;
    int count = 0;
    if (Movo_NET_IsInitializationDone(kAppId) == 0 || Movo_NET_GetNumOfIfaces(kAppId, &count) != 0) {
        return names;
    }
    for (int i = 0; i < count; i++) {
        char name[kNameLength + 1] = "";
        if (Movo_NET_GetIfaceName(kAppId, i, kNameLength, name) == 0) {
            names.emplace_back(name);
        }
    }
    return names;
}
} // namespace shell
