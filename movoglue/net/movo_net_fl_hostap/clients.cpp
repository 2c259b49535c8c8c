#include "movo_net_fl_hostap/hostap.h"
#include "support/atomic.h"
#include "support/command.h"
#include "support/fd.h"
#include "support/log.h"
#include "support/own_file.h"
#include "support/text.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/inotify.h>
#include <sys/select.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_hostap", &KEST_CAT_DEFAULT};

constexpr mode_t kPipeMode = 02702;
constexpr std::size_t kMessageSize = 16;
constexpr std::size_t kEventRoom = 272;
constexpr int kWatchDelayMs = 5000;

// Deliberate: each start keeps a watch and a pipe, up to the eighth. A set that is started for years keeps no more.
constexpr int kMaxWatches = 8;
int s_watches;             // Guarded by hotspotLock.
int s_pipes;               // Guarded by hotspotLock.
int s_latestWatch = kNoFd; // Never closed.
kest_bool s_isWatchAskedFor;
kest_bool s_isFollowing;

/** Takes a place for a watch or a pipe; false when all are taken. */
bool takePlace(int& taken)
{
    const ScopedLock lock(hotspotLock);
    if (taken == kMaxWatches) {
        return false;
    }
    ++taken;
    return true;
}

void leavePlace(int& taken)
{
    const ScopedLock lock(hotspotLock);
    --taken;
}

/** Makes and opens the pipe; speaks for SoftAP_Gethostap_Pipe. */
int openPipe(const FixedText<261>& path, CallSite at)
{
    const int removed = unlink(path.c_str());
    // Deliberate: the pipe is told of as the DHCP client's.
    NET_LOG_AT(at, KEST_LEVEL_INFO, "HOSTAP:removing dhcpcd pipe: %s, return=%d\n", path.c_str(), removed);
    NET_LOG_AT(at, KEST_LEVEL_INFO, "HOSTAP:opening dhcpcd pipe: %s\n", path.c_str());
    if (mkfifo(path.c_str(), kPipeMode) != 0 && errno != EEXIST) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "HOSTAP:can't create fifo : %s\n", std::strerror(errno));
        return kNoFd;
    }
    const int fd = openFifo(path.c_str());
    if (fd < 0) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "HOSTAP:can not open file: %s error is %s\n", path.c_str(),
                   std::strerror(errno));
    }
    return fd;
}

/** False while there is no list; what a local user has planted in its place, a link or a FIFO, is none. */
bool watchList(int watch)
{
    const UniqueFd list(openRegular(kLeaseFile, O_RDONLY, Owner::Anybody));
    return list && inotify_add_watch(watch, kLeaseFile, IN_MODIFY) >= 0;
}

/** Waits, for good if need be, until the lease file can be watched; a file that is watched stays so. */
void awaitLeases(int watch)
{
    while (!watchList(watch)) {
        Kest_Util_Delay(kWatchDelayMs);
    }
}

/** The descriptor of a new watch, or -1. */
int watchLeases(CallSite at)
{
    const int watch = inotify_init1(IN_CLOEXEC);
    if (watch < 0) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "HOSTAP:inotify_init error %d\n", errno);
        return kNoFd;
    }
    awaitLeases(watch);
    store(s_latestWatch, watch);
    return watch;
}

/** For a start without a watch of its own: the list may be a new file. Of several starts one waits for it. */
void followLeases()
{
    const int watch = load(s_latestWatch);
    if (watch == kNoFd || exchange(s_isFollowing, kTrue) != kFalse) {
        return; // whoever waits for the file will watch it
    }
    awaitLeases(watch);
    store(s_isFollowing, kFalse);
}

/** Body of a watch's thread. */
void* watchInPlace(void* arg)
{
    (void)s_SoftAP_Check_Connection(arg);
    leavePlace(s_watches); // it could not be set up
    return nullptr;
}

/** Handles what one read has brought; speaks for s_SoftAP_Check_Connection. */
void handleEvents(const char* buffer, std::size_t length, CallSite at)
{
    std::size_t offset = 0;
    while (length - offset >= sizeof(inotify_event)) {
        inotify_event event;
        std::memcpy(&event, buffer + offset, sizeof(event));
        NET_LOG_AT(at, KEST_LEVEL_INFO, "HOSTAP :Object type: %s\n",
                   (event.mask & IN_ISDIR) != 0 ? "Direcotory" : "File");
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "HOSTAP:Event mask: %08X\n", event.mask);
        if ((event.mask & IN_MODIFY) != 0) {
            NET_LOG_AT(at, KEST_LEVEL_ERROR, "HOSTAP :File modified!!!!!!!!!:%d\n", static_cast<int>(offset));
            SoftAP_GetConnection();
        }
        if (event.len > length - offset - sizeof(event)) {
            return;
        }
        offset += sizeof(event) + event.len;
    }
}
} // namespace

namespace movonet {
void askForWatch()
{
    store(s_isWatchAskedFor, kTrue);
}

void beginWatch(CallSite at)
{
    if (exchange(s_isWatchAskedFor, kFalse) == kFalse) {
        return; // a start that ran beside this one has made it
    }
    if (!takePlace(s_watches)) {
        followLeases();
        return;
    }
    if (SoftAP_Create_Thread(watchInPlace) != 0) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "HOSTAP: SoftAP Check Connection Thread Creating Failed.......\n");
        leavePlace(s_watches);
    }
}
} // namespace movonet

int SoftAP_Gethostap_Pipe(void)
{
    if (!takePlace(s_pipes)) {
        return 0;
    }
    const FixedText<261> path("%s.%s", "/tmp/softapnotify.pipe", kSoftApName);
    const int fd = openPipe(path, NET_HERE);
    if (fd < 0) {
        leavePlace(s_pipes);
        return -1;
    }
    int handle = 0; // Deliberate: the event is never taken back.
    // One that is too high for the loop's set would park the loop for good.
    if (fd >= FD_SETSIZE || int_addEvent({fd, 0, nullptr, OnSoftapEventRev}, &handle) != kOk) {
        NET_ERROR("HOSTAP:can not addevent\n");
        (void)close(fd);
        leavePlace(s_pipes);
        return -1;
    }
    // The command follows links, so that the name must still be the pipe's.
    if (!isNamed(fd, path.c_str()) || runShell(FixedText<128>("chmod 777 %s", path.c_str())) != 0) {
        NET_ERROR("HOSTAP:chmod failed \n");
        return -1;
    }
    return 0;
}

void* s_SoftAP_Check_Connection(void* /*arg*/)
{
    if (SoftAP_Gethostap_Pipe() != 0) {
        NET_ERROR("HOSTAP:can not add event!\n");
        return nullptr;
    }
    const UniqueFd watch(watchLeases(NET_HERE));
    while (watch) {
        char buffer[kEventRoom] = {};
        const ssize_t length = read(watch.get(), buffer, sizeof(buffer));
        if (length <= 0) {
            NET_ERROR("HOSTAP: read error!\n"); // Deliberate: reads again at once.
            continue;
        }
        handleEvents(buffer, static_cast<std::size_t>(length), NET_HERE);
    }
    return nullptr;
}

RETURN_TYPE OnSoftapEventRev(int fd, void* /*data*/, kest_bool isTimeout)
{
    NET_REQUIRE(!isTimeout, "!isTimeout");
    char buffer[kMessageSize] = {};
    const ssize_t length = read(fd, buffer, sizeof(buffer) - 1);
    if (length < 0 && errno == EAGAIN) {
        NET_INFO("HOSTAP:no data yet: %s\n", std::strerror(errno));
        return kFail;
    }
    if (length < 0) {
        NET_ERROR("HOSTAP:unknown error: %s\n", std::strerror(errno));
        return kFail;
    }
    if (length == 0) {
        NET_ERROR("HOSTAP:read zero data!!!!!!: %s\n", std::strerror(errno));
        return kFail;
    }
    const std::string_view message(buffer, static_cast<std::size_t>(length));
    if (message.starts_with("up")) {
        (void)std::printf("HOSTAP: Get up status!!!");
        (void)NotifyApp(_MOVO_NET_CALLBACK_SOFTAPSCAN_, &softApRecord);
    } else if (message.starts_with("down")) {
        (void)std::printf("HOSTAP: Get down status!!!");
        (void)NotifyApp(_MOVO_NET_CALLBACK_SOFTAPDISCONNECTED_, &softApRecord);
    } else {
        NET_INFO("unknown message: %s\n", buffer);
    }
    return kOk;
}
