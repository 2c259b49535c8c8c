#include "recovery.h"

#include <cerrno>

int recoveryMain(int argc, char** argv); // the daemon's main, renamed for this test

Told g_told;
HostLock g_hostLock;

int daemonWith(std::vector<std::string> words)
{
    std::vector<char*> arguments = {const_cast<char*>("recovery_net")};
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    return recoveryMain(static_cast<int>(arguments.size()) - 1, arguments.data());
}

extern "C" {
RETURN_TYPE Movo_NET_TakeHostLock(const char* file, const char* name, MovoNetHost_t* holder)
{
    g_hostLock.times++;
    g_hostLock.name = name;
    g_hostLock.usualFile = file == nullptr;
    g_hostLock.beforeTheGlue = g_told.program.empty() && movoglue_net_debug == nullptr;
    if (g_hostLock.answer == 1) {
        *holder = g_hostLock.holder;
    }
    errno = g_hostLock.error;
    return g_hostLock.answer;
}

void __real_kest_debug_init(const char* name);
kest_debug_category* __real_kest_debug_category_new(const char* name, int colour, const char* description);

void __wrap_kest_debug_init(const char* name)
{
    g_told.program = name;
    __real_kest_debug_init(name);
}

kest_debug_category* __wrap_kest_debug_category_new(const char* name, int colour, const char* description)
{
    g_told = {g_told.program, name, colour, description};
    return __real_kest_debug_category_new(name, colour, description);
}
}
