#include "supplicant.h"

#include "movo_net_fl_eventloop/eventloop.h"

#include <cstring>
#include <fstream>
#include <sstream>
#include <sys/eventfd.h>
#include <unistd.h>
#include <wpa_ctrl.h>

namespace {
wifi::Supplicant* s_supplicant;

std::string answer(const std::string& command)
{
    const auto found = s_supplicant->replies.find(command);
    if (found == s_supplicant->replies.end()) {
        return "OK\n";
    }
    const std::string reply = found->second.front();
    if (found->second.size() > 1) {
        found->second.pop_front();
    }
    return reply;
}
} // namespace

struct wpa_ctrl {
    int fd;
};

wpa_ctrl* wpa_ctrl_open(const char* path)
{
    s_supplicant->opened.emplace_back(path);
    if (s_supplicant->openGrants > 0) {
        --s_supplicant->openGrants;
    } else if (s_supplicant->openFailures > 0) {
        --s_supplicant->openFailures;
        return nullptr;
    }
    return new wpa_ctrl{eventfd(0, EFD_CLOEXEC)};
}

void wpa_ctrl_close(wpa_ctrl* connection)
{
    ++s_supplicant->closed;
    (void)close(connection->fd);
    delete connection;
}

int wpa_ctrl_request(wpa_ctrl* /*connection*/, const char* command, size_t length, char* reply, size_t* room,
                     void (* /*onMessage*/)(char*, size_t))
{
    s_supplicant->commands.emplace_back(command, length);
    if (!s_supplicant->results.empty()) {
        const int result = s_supplicant->results.front();
        s_supplicant->results.pop_front();
        if (result != 0) {
            return result;
        }
    }
    const std::string text = answer(s_supplicant->commands.back());
    *room = std::min(*room, text.size());
    std::memcpy(reply, text.data(), *room);
    return 0;
}

int wpa_ctrl_attach(wpa_ctrl* /*connection*/)
{
    ++s_supplicant->attached;
    return s_supplicant->attachFails ? -1 : 0;
}

int wpa_ctrl_detach(wpa_ctrl* /*connection*/)
{
    ++s_supplicant->detached;
    return 0;
}

int wpa_ctrl_get_fd(wpa_ctrl* connection)
{
    return connection->fd;
}

int wpa_ctrl_pending(wpa_ctrl* /*connection*/)
{
    return s_supplicant->events.empty() ? s_supplicant->pendingAtEnd : 1;
}

int wpa_ctrl_recv(wpa_ctrl* /*connection*/, char* buffer, size_t* room)
{
    if (s_supplicant->receiveFails) {
        return -1;
    }
    const std::string text = s_supplicant->events.front();
    s_supplicant->events.pop_front();
    *room = std::min(*room, text.size());
    std::memcpy(buffer, text.data(), *room);
    return 0;
}

using namespace movonet;

namespace wifi {
Supplicant::Supplicant()
{
    s_supplicant = this;
    replies["ADD_NETWORK"] = {"0\n"};
}

Supplicant::~Supplicant()
{
    s_supplicant = nullptr;
}

Lines sent(Supplicant& supplicant)
{
    return std::exchange(supplicant.commands, {});
}

Bench::Bench()
{
    set.addIface("mlan0").wireless();
    set.startLoop();
    set.recordCallbacks();
    set.onCommand("cat ").prints("");
    std::strcpy(iface.name, "mlan0");
    iface.type = _MOVO_NET_IFACE_WIFI_;
    iface.dhcpcfd = -1;
    EXPECT_EQ(int_Movo_Net_InitWifi(&iface), 0);
    EXPECT_EQ(Wpactrl_Init(&link(), iface.name), 0);
    iface.isActived = 1;
    set.forget();
}

Bench::~Bench()
{
    set.stopLoop();
    closeCommandConnection(link());
    closeMonitorConnection(link());
    discardWifi(iface);
}

MovNetWifiEssItem_t& Bench::list(const std::string& name, MovoNetWifiSecurity_e security,
                                 MovoNetWifiEncryption_e cipher, const std::string& key)
{
    MovNetWifiEssItem_t& ess = wifi().esss[wifi().esss_num++];
    name.copy(ess.essid, MOVO_NET_ESSID_LENGTH);
    key.copy(ess.Key, MOVO_NET_KEY_LENGTH);
    ess.securityType = security;
    ess.encrypType = cipher;
    return ess;
}

RETURN_TYPE Bench::hear(const Lines& messages)
{
    supplicant.events.insert(supplicant.events.end(), messages.begin(), messages.end());
    const LoopGate gate; // handlers run with the loop's lock held
    return OnWpactrlEventRev(link().fd, &iface, 0);
}

void Bench::connect()
{
    MovNetWifiEssItem_t& ess =
        list("My Home Net", _MOVO_NET_WIFI_SECURITY_WPA2_PSK_, _MOVO_NET_WIFI_ENCRYP_AES_, "correct horse");
    EXPECT_EQ(int_Movo_Net_Wpactrl_Connect(&iface, &ess), 0);
    (void)sent(supplicant);
    set.forget();
}

Lines told(const sim::Set& set, int level)
{
    Lines lines;
    for (const sim::LogLine& line : set.log()) {
        if (line.level == level) {
            lines.push_back(line.function + ": " + line.text);
        }
    }
    return lines;
}

std::string fixture(const std::string& name)
{
    std::ifstream file(FIXTURE_FOLDER "/" + name);
    EXPECT_TRUE(file) << name;
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}
} // namespace wifi
