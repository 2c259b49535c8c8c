#include "television.h"

#include "movo_net_fg/fg.h"

using namespace movonet;

namespace wifi {
namespace {
constexpr int kPassTicks = 10;
constexpr int kFailed = 256;

void describeChip()
{
    (void)setenv("ATHEROS_DEVICE_ID", "0cf3:1022", 1);
    (void)setenv("ATHEROS_DRIVER_NAME", "ath6kl", 1);
    (void)setenv("ATHEROS_SUPPLICANT_STR", "supplicant -i%s -c%s -P/tmp/%s.pid", 1);
}
} // namespace

Television::Television(unsigned seed)
    : m_supplicant([this] { return find(); }), set(seed), m_ps(set.onCommand("ps |grep wpa_supplicant"))
{
    describeChip();
    set.addIface("mlan0").wireless();
    set.onCommand("lsusb | grep 0cf3:1022 && lsmod | grep ath6kl").prints("");
    set.onCommand("cp -f Misc/wpa_supplicant.conf").prints("");
    set.onCommand("supplicant -imlan0").does([this] { lives(true); }).prints("");
    m_ps.prints("");
    m_supplicant.afterCommand = [this](const std::string& command) {
        if (command == "TERMINATE") {
            lives(false);
        }
    };
    set.watchCallbacks([this](MovoNetCBReason_e reason, void* param) {
        if (param == find()) {
            m_supplicant.attempts.callback(reason);
        }
    });
}

Television::~Television()
{
    m_supplicant.attempts.finish();
}

void Television::start()
{
    ASSERT_EQ(set.start(), 0);
    set.grantTicks(kPassTicks + 1); // the first look comes too early for the monitor's event
    ASSERT_NE(find(), nullptr);
    ASSERT_EQ(load(mlan0().isActived), 1);
}

void Television::startWith(const std::vector<Network>& networks)
{
    tells(networks);
    start();
    ASSERT_EQ(mlan0().funcs.WifiUpdateEsss(&mlan0()), 0);
    (void)sent(m_supplicant);
    set.forget();
}

void Television::hears(const Lines& messages)
{
    m_supplicant.says(messages);
    set.settle();
}

void Television::tells(const std::vector<Network>& networks)
{
    std::string table = "bssid / frequency / signal level / flags / ssid\n";
    for (const Network& each : networks) {
        table += each.bssid + "\t" + std::to_string(each.frequency) + "\t" + std::to_string(each.signal) + "\t" +
                 each.flags + "\t" + each.name + "\n";
    }
    m_supplicant.answers("SCAN_RESULTS", table);
}

void Television::lives(bool alive)
{
    m_supplicant.lives(alive);
    m_ps.fails(alive ? 0 : kFailed);
}

MovoNetIface_t& Television::mlan0() const
{
    return *find();
}

MovoNetIface_t* Television::find() const
{
    for (MovoNetIface_t* iface = firstInterface(); iface != nullptr; iface = nextInterface(iface)) {
        if (std::string_view(iface->name) == "mlan0") {
            return iface;
        }
    }
    return nullptr;
}
} // namespace wifi
