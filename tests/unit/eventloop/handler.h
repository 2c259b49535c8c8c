/** Registrations whose calls a test counts, and pipes that make them ready. */
#pragma once

#include "movo_net_internal.h"
#include "sim/sim.h"

#include <fcntl.h>
#include <functional>
#include <list>
#include <ostream>
#include <unistd.h>
#include <vector>

inline constexpr const char* kModule = "movo_net_fl_eventloop";
inline constexpr int kNoTimer = 0;

struct HandlerCall {
    int fd;
    bool isTimeout;

    bool operator==(const HandlerCall&) const = default;
};
inline std::ostream& operator<<(std::ostream& out, const HandlerCall& call)
{
    return out << (call.isTimeout ? "timeout of " : "input on ") << call.fd;
}

/** Counts its calls. */
struct Handler {
    int handle = 0;
    std::vector<HandlerCall> calls = {};
    std::function<void()> action = {}; ///< Run on each call, on the loop's thread.
    RETURN_TYPE result = 0;

    RETURN_TYPE watch(int fd, int ticks = kNoTimer) { return int_addEvent({fd, ticks, this, onEvent}, &handle); }
    RETURN_TYPE time(int ticks) { return watch(-1, ticks); }
    RETURN_TYPE remove() const { return int_removeEvent(handle); }
    int count() const { return static_cast<int>(calls.size()); }

    static RETURN_TYPE onEvent(int fd, void* data, kest_bool isTimeout)
    {
        auto* self = static_cast<Handler*>(data);
        self->calls.push_back({fd, isTimeout != 0});
        if (self->action) {
            self->action();
        }
        return self->result;
    }
};

/** Its reading end is what a handler watches. */
class Pipe {
public:
    Pipe() { EXPECT_EQ(pipe2(m_ends, O_CLOEXEC | O_NONBLOCK), 0); }
    ~Pipe()
    {
        (void)close(m_ends[0]);
        (void)close(m_ends[1]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int fd() const { return m_ends[0]; }
    void fill() const { EXPECT_EQ(write(m_ends[1], "x", 1), 1); }
    void drain() const
    {
        char byte = 0;
        EXPECT_EQ(read(m_ends[0], &byte, 1), 1);
    }

private:
    int m_ends[2] = {-1, -1};
};

/** Handlers and pipes outlive the set, and so the loop that may still look at them. */
class EventLoop : public testing::Test {
    std::list<Pipe> m_pipes;
    std::list<Handler> m_handlers;

protected:
    sim::Set set;

    Pipe& newPipe() { return m_pipes.emplace_back(); }
    Handler& newHandler() { return m_handlers.emplace_back(); }
    /** New registrations are live when the loop begins its next pass: the first granted tick is not theirs. */
    void nextPass() { set.grantTicks(1); }
};

class RunningLoop : public EventLoop {
protected:
    RunningLoop() { set.startLoop(); }
};
