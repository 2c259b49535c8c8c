/** What reaches the shell from outside its own thread: callbacks of the glue and the person's interrupt. */
#ifndef MOVO_NET_SHELL_ARRIVALS_H
#define MOVO_NET_SHELL_ARRIVALS_H

#include <chrono>
#include <ctime>
#include <movo_net.h>
#include <string>
#include <vector>

namespace shell {
/** One callback. */
struct Arrival {
    std::chrono::milliseconds time; // monotonic, as in the log
    std::time_t wall;               // of the day
    MovoNetCBReason_e reason;
    std::string ifname;
};

/** The glue's callback: keeps the arrival and wakes the shell. */
void onCallback(MovoNetCBReason_e reason, void* context, void* param);

/** What has arrived since the last call. Any thread. */
std::vector<Arrival> takeArrivals();

/** The soft access point's device as it was when it was last told of; empty texts before. Any thread. */
Softap_Connection_info_t lastDevice();

/** Readable from a `wake` until `sleepAgain`. */
int wakeDescriptor();
void wake();
void sleepAgain();

/** From now on an interrupt (SIGINT) is kept for `takeInterrupt`; a second one before that ends the process. */
void catchInterrupts();
bool takeInterrupt();
} // namespace shell

#endif
