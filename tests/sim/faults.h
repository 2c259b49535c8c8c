/** Fault injection: calls of the product that fail, or at which the test does something. */
#ifndef SIM_FAULTS_H
#define SIM_FAULTS_H

#include <cerrno>
#include <cstddef>
#include <functional>
#include <ostream>
#include <string>

namespace sim {
/** The calls of the product that can be made to fail. Look-alikes share a value: unlink and remove, send and sendto. */
enum class Call {
    Open,
    Close,
    Read,
    Write,
    Lseek,
    Fsync,
    Mkfifo,
    Unlink,
    Rename,
    Access,
    Stat,
    Chmod,
    Sync,
    Fopen,
    Fclose,
    Popen,
    System,
    Kill,
    Socket,
    Ioctl,
    Send,
    Recv,
    IfIndexToName,
    Select,
    Sleep,
    ThreadCreate,
    ThreadJoin,
    MutexAttrInit,
    MutexAttrSetType,
    MutexInit,
    MutexLock,
    MutexTryLock,
    CondWait,
    CondSignal,
    Malloc,
    Calloc,
    Strdup,
    Vasprintf,
    GetIfAddrs,
    InotifyInit,
    InotifyAddWatch,
    TimerCreate,
};

/** Whose call: the test's own, the event loop's, another one that the product created, or any other. */
enum class ThreadKind { Test, Loop, Product, Other, Any };

/**
 * What fails, and how. Counting starts when the fault is set, and counts only the calls that match.
 *
 *     set.fail({.call = Call::Socket, .error = EMFILE});                                  // every one from now on
 *     set.fail({.call = Call::Ioctl, .code = SIOCGMIIREG, .nth = 2, .error = EIO});       // the second, once
 *     set.fail({.call = Call::Open, .on = "/etc/resolv.conf", .error = EACCES});
 *     set.fail({.call = Call::Read, .on = "/tmp/dhcpnotify.pipe.eth0", .nth = 1, .bytes = 3});   // a short read
 *     set.fail({.call = Call::System, .on = "chmod", .nth = 1});                          // no shell: -1
 *     set.fail({.call = Call::MutexLock, .object = &movonet::ifaceListLock, .size = sizeof(movonet::ifaceListLock)});
 *     set.fail({.call = Call::Unlink, .on = "/tmp/x", .does = [&] { ... }});   // what else happens at that moment
 *
 * Calls that tell their error by the return value (pthread) return `error`, the others set errno to it. A wait for a
 * condition that is struck ends at once, for no reason. EINTR comes in the middle of a select: half of its time has
 * passed, and its time-out holds the rest.
 */
struct Fault {
    Call call;
    /** Beginning of the path, command or interface name; for a socket "inet" or "netlink"; for any other descriptor, of
     * what it was opened on. Empty: any. */
    std::string on = {};
    /** Code of the ioctl; 0: any. */
    unsigned long code = 0;
    /** Object in which the mutex lies, and its size; NULL: any mutex. */
    const void* object = nullptr;
    std::size_t size = 0;
    ThreadKind thread = ThreadKind::Any;
    /** Which matching call is the first to fail, from 1 on; 0: every one, for good. */
    int nth = 0;
    /** How many fail from the nth on. */
    int times = 1;
    int error = EIO;
    /** For Read, Write, Send and Recv: transfer at most so many bytes instead of failing. -1: fail. */
    int bytes = -1;
    /** Called on the product's thread just before the call, which then does not fail; nothing of the set is locked. */
    std::function<void()> does = {};
    /** A fault that no call ran into fails the test at the set's end, unless it may miss. */
    bool mayMiss = false;
};
std::ostream& operator<<(std::ostream& out, const Fault& fault);
} // namespace sim

#endif
