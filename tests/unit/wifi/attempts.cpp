#include "attempts.h"

#include "sim/world.h"
#include "support/atomic.h"

#include <sstream>

namespace wifi {
namespace {
constexpr std::size_t kMostSeen = 12;

bool beginsAttempt(const std::string& command)
{
    const bool enables = command.starts_with("ENABLE_NETWORK  "); // two blanks: a connection, one: a reset
    return enables || command == "WPS_PBC any" || command.starts_with("WPS_PIN any ");
}
} // namespace

Attempts::Attempts(std::function<MovoNetIface_t*()> iface, std::function<bool()> linked)
    : m_iface(std::move(iface)), m_linked(std::move(linked))
{
}

void Attempts::command(const std::string& text, bool taken)
{
    const std::lock_guard lock(m_lock);
    note(text + (taken || !beginsAttempt(text) ? "" : " (refused)"));
    m_justTaken = false;
    if (text == "REMOVE_NETWORK ALL") {
        const Wpactrl_t* link = wpactrl_iface(m_iface());
        removed(link != nullptr && movonet::load(link->isSearchingHideEss));
    } else if (text.starts_with("SELECT_NETWORK  ")) {
        m_searching = true;
    } else if (text == "DISABLE_NETWORK 0") {
        m_stage = Stage::Trying; // the supplicant tries its network anew
        ++m_resets;
    } else if (taken && beginsAttempt(text)) {
        begin();
    }
}

void Attempts::callback(MovoNetCBReason_e reason)
{
    const bool linked = m_linked();
    const std::lock_guard lock(m_lock);
    std::ostringstream name;
    name << sim::Called{reason};
    note(name.str());
    const bool justTaken = std::exchange(m_justTaken, false);
    switch (reason) {
    case sim::IFCONNECTED:
        if (m_stage != Stage::Trying && linked) {
            complain("connected without an attempt");
        }
        end(End::Connected, Stage::Joined);
        break;
    case sim::WIFIBADKEY:
        if (m_stage != Stage::Trying && linked) {
            complain("a bad key without an attempt");
        }
        end(End::BadKey, Stage::BadKey);
        break;
    case sim::WIFITIMEOUT:
        timedOut(linked);
        break;
    case sim::IFDISCONNECTED:
        disconnected(linked);
        break;
    case sim::WIFISCANDONE:
        if (justTaken && linked) {
            complain("a network was removed with the end of a scan");
            end(End::Lost, Stage::None);
        }
        break;
    default:
        break;
    }
}

void Attempts::finish()
{
    const bool linked = m_linked();
    const std::lock_guard lock(m_lock);
    if (m_stage == Stage::BadKey && linked) {
        complain("the network of a bad key was not removed");
    }
    m_wasTrying = false;
}

std::map<End, int> Attempts::ends() const
{
    const std::lock_guard lock(m_lock);
    return m_ends;
}

int Attempts::resets() const
{
    const std::lock_guard lock(m_lock);
    return m_resets;
}

bool Attempts::agreesWith(WpactrlConnectStatus_e status)
{
    static constexpr Stage kStages[] = {Stage::None, Stage::Trying, Stage::Joined};
    const bool linked = m_linked();
    const std::lock_guard lock(m_lock);
    const Stage expected = kStages[status];
    if (!linked) {
        m_stage = expected; // what the glue does to itself meanwhile is not seen here
    }
    return m_stage == expected;
}

void Attempts::lookAway()
{
    const std::lock_guard lock(m_lock);
    m_looking = false;
}

void Attempts::begin()
{
    if (m_stage != Stage::None) {
        complain("an attempt began over another network");
    }
    if (m_wasTrying) {
        end(End::Replaced, Stage::None);
    }
    m_stage = Stage::Trying;
    m_searching = m_removed = m_left = false;
}

void Attempts::removed(bool searching)
{
    m_wasTrying = m_wasTrying || m_stage == Stage::Trying;
    const bool network = m_stage == Stage::Trying || m_stage == Stage::Joined;
    m_justTaken = !std::exchange(m_searching, false) && searching && network;
    m_stage = Stage::None;
    m_removed = true;
    m_left = false;
}

void Attempts::disconnected(bool linked)
{
    if (m_removed) {
        if (m_wasTrying) {
            end(End::Left, Stage::None);
        }
        m_removed = false;
        m_left = true;
        return;
    }
    const MovoNetIface_t* iface = m_iface();
    const bool addressed = iface != nullptr && movonet::load(iface->isConnected);
    if (m_stage != Stage::Joined && !addressed && linked) {
        complain("disconnected from nothing");
    }
}

void Attempts::timedOut(bool linked)
{
    if (m_wasTrying || (m_stage == Stage::Trying && !linked)) {
        end(End::TimeOut, Stage::None);
    } else if (!m_left && linked) { // left for want of an address reports a time-out, too
        complain("a time-out without an attempt");
    }
    m_left = m_removed = false;
}

void Attempts::end(End how, Stage next)
{
    ++m_ends[how];
    m_wasTrying = false;
    m_stage = next;
}

void Attempts::complain(const char* what)
{
    if (!m_looking) {
        return;
    }
    std::string report = std::string("Wi-Fi: ") + what + ", after";
    for (const std::string& seen : m_seen) {
        report += "\n  " + seen;
    }
    sim::problem(report);
}

void Attempts::note(const std::string& seen)
{
    m_seen.push_back(seen);
    if (m_seen.size() > kMostSeen) {
        m_seen.pop_front();
    }
}
} // namespace wifi
