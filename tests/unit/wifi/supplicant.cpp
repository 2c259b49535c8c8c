#include "supplicant.h"

#include "sim/world.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <sys/eventfd.h>
#include <unistd.h>
#include <wpa_ctrl.h>

struct wpa_ctrl {
    int fd; // readable while messages wait, of a monitor
    bool isMonitor;
    bool isStale; // of a supplicant that has ended
};

namespace wifi {
namespace {
Supplicant* s_supplicant;

/** One exchange of the glue with the client library, which has none for two at once: they would mix their replies. */
class Exchange {
public:
    Exchange()
    {
        if (s_depth++ == 0 && s_exchanges++ != 0) {
            sim::problem("two threads use the supplicant's client library at once");
        }
    }
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;
    ~Exchange() { s_exchanges -= --s_depth == 0 ? 1 : 0; }

private:
    static inline thread_local int s_depth = 0;
    static inline std::atomic<int> s_exchanges = 0;
};

/** Not readable any more. */
void drain(const wpa_ctrl& connection)
{
    std::uint64_t count = 0;
    (void)!read(connection.fd, &count, sizeof(count));
}
} // namespace

/** The client library's side of the supplicant. */
struct Library {
    Supplicant& supplicant = *s_supplicant;
    const std::lock_guard<std::recursive_mutex> lock{supplicant.m_lock};

    wpa_ctrl* open(const char* path)
    {
        supplicant.opened.emplace_back(path);
        if (supplicant.onOpen) {
            supplicant.onOpen();
        }
        if (supplicant.openGrants > 0) {
            --supplicant.openGrants;
        } else if (supplicant.openFailures > 0) {
            --supplicant.openFailures;
            return nullptr;
        }
        if (!supplicant.m_alive) {
            return nullptr;
        }
        supplicant.m_open.push_back(new wpa_ctrl{eventfd(0, EFD_NONBLOCK), false, false}); // as the library does
        wpa_ctrl* opened = supplicant.m_open.back();
        if (supplicant.onOpened) {
            supplicant.onOpened(opened->fd);
        }
        return opened;
    }

    void close(wpa_ctrl* connection)
    {
        ++supplicant.closed;
        std::erase(supplicant.m_open, connection);
        (void)::close(connection->fd);
        delete connection;
    }

    int request(const wpa_ctrl& connection, const std::string& command, char* reply, std::size_t* room)
    {
        supplicant.commands.push_back(command);
        std::string text;
        const int result = answer(connection, command, text);
        if (result == 0) {
            *room = std::min(*room, text.size());
            std::memcpy(reply, text.data(), *room);
        }
        const bool isPin = command.starts_with("WPS_PIN any ");
        const bool taken = result == 0 && (isPin ? command.ends_with(text) && !text.empty() : text.starts_with("OK"));
        supplicant.attempts.command(command, taken);
        if (supplicant.afterCommand) {
            supplicant.afterCommand(command);
        }
        return result;
    }

    int attach(wpa_ctrl* connection)
    {
        ++supplicant.attached;
        if (supplicant.attachFails || !supplicant.m_alive) {
            return -1;
        }
        connection->isMonitor = true;
        return 0;
    }

    int detach(const wpa_ctrl& connection)
    {
        ++supplicant.detached;
        return connection.isStale ? -1 : 0;
    }

    int shown(const wpa_ctrl& connection) const
    {
        return supplicant.shownDescriptor >= 0 ? supplicant.shownDescriptor : connection.fd;
    }

    int pending(const wpa_ctrl& connection) const
    {
        return supplicant.events.empty() || connection.isStale ? supplicant.pendingAtEnd : 1;
    }

    int receive(const wpa_ctrl& connection, char* buffer, std::size_t* room)
    {
        drain(connection);
        if (supplicant.receiveFails || supplicant.events.empty()) {
            return -1;
        }
        const std::string text = supplicant.events.front();
        supplicant.events.pop_front();
        *room = std::min(*room, text.size());
        std::memcpy(buffer, text.data(), *room);
        return 0;
    }

private:
    int answer(const wpa_ctrl& connection, const std::string& command, std::string& text)
    {
        if (supplicant.onCommand) {
            supplicant.onCommand(command);
        }
        int result = connection.isStale ? -1 : 0;
        if (!supplicant.results.empty()) {
            result = supplicant.results.front();
            supplicant.results.pop_front();
        }
        if (result == 0 && !supplicant.nextReplies.empty()) {
            text = supplicant.nextReplies.front();
            supplicant.nextReplies.pop_front();
            return 0;
        }
        const auto found = supplicant.replies.find(command);
        if (result != 0 || found == supplicant.replies.end()) {
            text = "OK\n";
            return result;
        }
        text = found->second.front();
        if (found->second.size() > 1) {
            found->second.pop_front();
        }
        return 0;
    }
};

Supplicant::Supplicant(std::function<MovoNetIface_t*()> iface)
    : attempts(std::move(iface), [this] {
          const std::lock_guard guard(m_lock);
          return std::ranges::any_of(m_open, [](const wpa_ctrl* each) { return !each->isMonitor && !each->isStale; });
      })
{
    s_supplicant = this;
    replies["ADD_NETWORK"] = {"0\n"};
}

Supplicant::~Supplicant()
{
    for (wpa_ctrl* left : m_open) { // a stop of the glue leaves them to the end of the process
        (void)close(left->fd);
        delete left;
    }
    s_supplicant = nullptr;
}

void Supplicant::says(const Lines& messages)
{
    const std::lock_guard guard(m_lock);
    const auto monitor =
        std::ranges::find_if(m_open, [](const wpa_ctrl* each) { return each->isMonitor && !each->isStale; });
    if (monitor != m_open.end()) {
        events.insert(events.end(), messages.begin(), messages.end());
        const std::uint64_t one = 1;
        (void)!write((*monitor)->fd, &one, sizeof(one));
    }
}

void Supplicant::answers(const std::string& command, const std::string& reply)
{
    const std::lock_guard guard(m_lock);
    replies[command] = {reply};
}

void Supplicant::lives(bool alive)
{
    const std::lock_guard guard(m_lock);
    m_alive = alive;
    if (!alive) {
        for (wpa_ctrl* each : m_open) {
            each->isStale = true;
            drain(*each);
        }
        events.clear();
    }
}

bool Supplicant::isAlive() const
{
    const std::lock_guard guard(m_lock);
    return m_alive;
}

int Supplicant::connections() const
{
    const std::lock_guard guard(m_lock);
    return static_cast<int>(m_open.size());
}

Lines sent(Supplicant& supplicant)
{
    return std::exchange(supplicant.commands, {});
}
} // namespace wifi

using wifi::Library;

wpa_ctrl* wpa_ctrl_open(const char* path)
{
    const wifi::Exchange exchange;
    return Library().open(path);
}

void wpa_ctrl_close(wpa_ctrl* connection)
{
    const wifi::Exchange exchange;
    Library().close(connection);
}

int wpa_ctrl_request(wpa_ctrl* connection, const char* command, size_t length, char* reply, size_t* room,
                     void (* /*onMessage*/)(char*, size_t))
{
    const wifi::Exchange exchange;
    return Library().request(*connection, std::string(command, length), reply, room);
}

int wpa_ctrl_attach(wpa_ctrl* connection)
{
    const wifi::Exchange exchange;
    return Library().attach(connection);
}

int wpa_ctrl_detach(wpa_ctrl* connection)
{
    const wifi::Exchange exchange;
    return Library().detach(*connection);
}

int wpa_ctrl_get_fd(wpa_ctrl* connection)
{
    return Library().shown(*connection);
}

int wpa_ctrl_pending(wpa_ctrl* connection)
{
    return Library().pending(*connection);
}

int wpa_ctrl_recv(wpa_ctrl* connection, char* buffer, size_t* room)
{
    return Library().receive(*connection, buffer, room);
}
