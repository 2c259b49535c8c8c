#include "sim/sim.h"
#include "sim/world.h"

#include <movo_net_core.h>

namespace sim {
namespace {
void record(MovoNetCBReason_e reason, void* /*context*/, void* parameter)
{
    // An interface record begins with its name.
    const std::string ifname = parameter != nullptr ? static_cast<const char*>(parameter) : "";
    std::function<void(MovoNetCBReason_e, void*)> watcher;
    std::function<void(MovoNetCBReason_e, void*)> action;
    {
        const Hold hold;
        world().records.callbacks.push_back({reason, ifname, self().kind});
        watcher = world().records.watcher;
        action = world().records.onCallback;
    }
    if (watcher) {
        watcher(reason, parameter);
    }
    if (action) {
        action(reason, parameter);
    }
}

void install()
{
    int id = -1;
    muteLog(true);
    const RETURN_TYPE result = Movo_NET_InstallCallback(0, record, nullptr, &id);
    muteLog(false);
    if (result != 0 || id != 0) {
        problem("the callback recorder was not installed");
    }
}
} // namespace

void installAtFirstLook(const std::string& path)
{
    bool now = false;
    {
        const Hold hold;
        bool& wanted = world().records.installAtFirstLook;
        now = wanted && path.starts_with("/proc/net/") && self().kind == ThreadKind::Test;
        wanted = wanted && !now;
    }
    if (now) {
        install();
    }
}

void Set::recordCallbacks()
{
    install();
}

void Set::onCallback(std::function<void(MovoNetCBReason_e, void*)> action)
{
    const Hold hold;
    world().records.onCallback = std::move(action);
}

void Set::watchCallbacks(std::function<void(MovoNetCBReason_e, void*)> watcher)
{
    const Hold hold;
    world().records.watcher = std::move(watcher);
}

std::vector<Called> Set::callbacks() const
{
    const Hold hold;
    return world().records.callbacks;
}

testing::AssertionResult Set::calledBack(const std::vector<Called>& expected)
{
    std::vector<Called> happened;
    {
        const Hold hold;
        Records& records = world().records;
        happened.assign(records.callbacks.begin() + static_cast<std::ptrdiff_t>(records.callbacksTaken),
                        records.callbacks.end());
        records.callbacksTaken = records.callbacks.size();
    }
    if (happened == expected) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "expected " << testing::PrintToString(expected) << "\nbut it was "
                                       << testing::PrintToString(happened);
}

std::ostream& operator<<(std::ostream& out, const Called& called)
{
    static constexpr const char* kNames[] = {
        "IFFOUND",         "IFREMOVED",          "IFDISCONNECTED",   "IFCONNECTED",     "IFACTIVED",    "IFDEACTIVED",
        "IPCHANGED",       "WIFISCANDONE",       "WIFIESSSUPDATED",  "WIFIBADKEY",      "WIFITIMEOUT",  "SOFTAPSCAN",
        "SOFTAPCONNECTED", "SOFTAPDISCONNECTED", "STATICIP_SUCCESS", "STATICIP_FAILED", "DHCP_SUCCESS", "DHCP_FAILED"};
    const auto number = static_cast<std::size_t>(called.reason);
    return out << (number < std::size(kNames) ? kNames[number] : "?") << " " << called.ifname;
}
} // namespace sim
