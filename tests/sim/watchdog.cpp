#include "sim/world.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <execinfo.h>
#include <sched.h>
#include <unistd.h>

// A test that does not move any more ends here, with a word on where every thread is.

namespace sim {
namespace {
constexpr unsigned kPatienceSeconds = 600; // of a busy computer, too: it only ends a test that hangs
constexpr int kFrames = 32;

std::atomic<unsigned> s_told;
unsigned s_lastProgress;

const char* nameOf(ThreadKind kind)
{
    switch (kind) {
    case ThreadKind::Test:
        return "test";
    case ThreadKind::Loop:
        return "event loop";
    case ThreadKind::Product:
        return "product";
    case ThreadKind::Other:
    case ThreadKind::Any:
        break;
    }
    return "other";
}

const char* nameOf(Place place)
{
    switch (place) {
    case Place::Held:
        return "held back";
    case Place::Running:
        return "running";
    case Place::Selecting:
        return "selecting";
    case Place::Reading:
        return "reading";
    case Place::Asleep:
        return "asleep";
    case Place::Waiting:
        return "waiting for a condition";
    case Place::Joining:
        return "joining";
    case Place::Ended:
        break;
    }
    return "ended";
}

void tellFrames(int /*signal*/)
{
    void* frames[kFrames];
    backtrace_symbols_fd(frames, backtrace(frames, kFrames), STDERR_FILENO);
    s_told.fetch_add(1);
}

/** Lets the thread print its own frames; gives up when it does not answer. */
void askForFrames(pthread_t thread)
{
    using Clock = std::chrono::steady_clock;
    const unsigned before = s_told.load();
    if (pthread_kill(thread, SIGUSR2) != 0) {
        return;
    }
    const auto end = Clock::now() + std::chrono::seconds(2);
    while (s_told.load() == before && Clock::now() < end) {
        (void)sched_yield();
    }
}

void onAlarm(int /*signal*/)
{
    const unsigned progress = world().progress.load(std::memory_order_relaxed);
    if (progress == s_lastProgress) {
        wedged("any call of the product");
    }
    s_lastProgress = progress;
    (void)alarm(patienceSeconds());
}

void handle(int signal, void (*handler)(int))
{
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    (void)sigaction(signal, &action, nullptr);
}
} // namespace

unsigned patienceSeconds()
{
    static const unsigned seconds = [] {
        const char* text = std::getenv("SIM_PATIENCE");
        return text != nullptr ? static_cast<unsigned>(std::atoi(text)) : kPatienceSeconds;
    }();
    return seconds;
}

void wedged(const char* what)
{
    (void)std::fprintf(stderr, "The simulated set waited too long for %s. Its threads:\n", what);
    handle(SIGUSR2, tellFrames);
    for (const Thread& thread : world().threads.all) {
        if (thread.place == Place::Ended) {
            continue;
        }
        (void)std::fprintf(stderr, "- %s, %s, latest call %s\n", nameOf(thread.kind), nameOf(thread.place),
                           thread.at.c_str());
        askForFrames(thread.id);
    }
    std::abort();
}

void startWatchdog()
{
    void* frame = nullptr;
    (void)backtrace(&frame, 1); // loads what it needs now, not in the signal's handler
    handle(SIGALRM, onAlarm);
    (void)alarm(patienceSeconds());
}

void stopWatchdog()
{
    (void)alarm(0);
}
} // namespace sim
