/** What the files of the fake library share. */
#ifndef TESTS_UNIT_SHELL_FAKE_STATE_H
#define TESTS_UNIT_SHELL_FAKE_STATE_H

#include "fake_net.h"

#include <arpa/inet.h>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

namespace fake {
struct State {
    std::mutex lock;
    std::condition_variable changed;
    std::vector<std::string> calls;
    std::map<std::string, int> results;
    std::function<void(const std::string&)> onCall;
    std::vector<std::string> names = {"lo", "eth0"};
    std::vector<std::string> networks = {"My Home Net", "caf\xc3\xa9"};
    MovoNetWifiSecurity_e security = _MOVO_NET_WIFI_SECURITY_WPA2_PSK_;
    bool joined = true;
    MovoNetWifiEncryption_e cipher = _MOVO_NET_WIFI_ENCRYP_AES_;
    bool running = false;
    bool connected = true;
    MovoNetIPMode_e mode = _MOVO_NET_IPMODE_STATIC_;
    std::thread loop; // the glue's own thread, from start to stop
    bool stopping = false;
    MovoNetCallback_t callback = nullptr;
    void* context = nullptr;
};

State& state();

inline std::string text(const char* argument)
{
    return argument != nullptr ? argument : "NULL";
}
inline std::string text(int argument)
{
    return std::to_string(argument);
}
inline std::string text(unsigned address)
{
    char quad[INET_ADDRSTRLEN] = "";
    return inet_ntop(AF_INET, &address, quad, sizeof(quad));
}

/** Remembers a call and tells what it returns. */
template <typename... Arguments>
int called(const std::string& function, Arguments... arguments)
{
    std::string call = function;
    ((call += " " + text(arguments)), ...);
    std::function<void(const std::string&)> action;
    int result = 0;
    {
        const std::lock_guard lock(state().lock);
        state().calls.push_back(call);
        const auto found = state().results.find(function);
        result = found != state().results.end() ? found->second : 0;
        action = state().onCall;
    }
    if (action) {
        action(call);
    }
    return result;
}

inline kest_bool answered(int result)
{
    return static_cast<kest_bool>(result);
}

template <typename Value>
RETURN_TYPE wrote(int result, Value* out, Value value)
{
    if (result == 0) {
        *out = value;
    }
    return result;
}
} // namespace fake

#endif
