#include "bench.h"

#include "movo_net_fl_eventloop/eventloop.h"

#include <fstream>
#include <sstream>

using namespace movonet;

namespace wifi {
MovNetWifiEssItem_t networkNamed(const std::string& name)
{
    MovNetWifiEssItem_t ess{};
    name.copy(ess.essid, MOVO_NET_ESSID_LENGTH);
    return ess;
}

RETURN_TYPE remember(MovNetWifiEssItem_t ess)
{
    return int_Movo_Net_SaveEss(&ess);
}

Lines rememberedNames()
{
    Lines names;
    for (const MovNetWifiEssItem_t* ess = movonet::g_pSavedEsss; ess != nullptr; ess = ess->next) {
        names.emplace_back(ess->essid);
    }
    return names;
}

Bench::Bench()
{
    set.addIface("mlan0").wireless();
    set.startLoop();
    set.recordCallbacks();
    set.watchCallbacks([this](MovoNetCBReason_e reason, void*) { supplicant.attempts.callback(reason); });
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
    supplicant.attempts.finish();
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

Lines errors(const sim::Set& set)
{
    return told(set, KEST_LEVEL_ERROR);
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
