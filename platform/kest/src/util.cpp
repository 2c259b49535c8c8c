#include "kest.h"
#include "sigpipe.h"

#include <algorithm>
#include <cerrno>
#include <execinfo.h>
#include <time.h>
#include <unistd.h>

void Kest_Util_Delay(int milliseconds)
{
    if (milliseconds <= 0) {
        return;
    }

    timespec left{.tv_sec = milliseconds / 1000, .tv_nsec = (milliseconds % 1000) * 1'000'000L};
    while (nanosleep(&left, &left) == -1 && errno == EINTR) {
        // A signal came in between: sleep for what is left.
    }
}

// Never inlined: its own frame is the one that is left out.
__attribute__((noinline)) void Kest_Util_BT(int frames)
{
    constexpr int kMaxFrames = 64;
    constexpr int kOwnFrame = 1;
    void* addresses[kMaxFrames + kOwnFrame];

    const int count = backtrace(addresses, std::clamp(frames, 0, kMaxFrames) + kOwnFrame);
    if (count > kOwnFrame) {
        const kest::SigpipeHeld held;
        backtrace_symbols_fd(addresses + kOwnFrame, count - kOwnFrame, STDERR_FILENO);
    }
}
