#include "movo_net_fg/fg.h"
#include "movo_net_fg/netconfig_image.h"
#include "movo_net_fl_common/common.h"
#include "support/fd.h"
#include "support/log.h"
#include "support/slow.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

using namespace movonet;

// The helpers of this file are steps of LoadNetConfig and SaveNetConfig and speak for them.

namespace {
constexpr LogModule kLog{"movo_net_fg", &movoglue_net_debug};

constexpr const char* kFile = "/data/tv/save/netconfig";
constexpr const char* kTemporary = "/data/tv/save/netconfig.tmp";
constexpr mode_t kMode = 0777;

constexpr std::size_t kMostSaved = 11; // Deliberate: a file of so many records is refused when it is read.
constexpr std::size_t kMostLoaded = 10;
constexpr off_t kSmallestFile = 5;
constexpr off_t kLargestFile = 2907;

/** Deliberate: descriptor 0 counts as failure. It stays open, so that the next attempt gets another one. */
constexpr int kLowestFd = 1;

template <std::size_t Most>
struct Records {
    std::array<std::uint8_t, Most * kRecordSize> bytes;
    std::size_t count = 0;

    std::size_t size() const { return count * kRecordSize; }
    RecordImage image(std::size_t index) { return RecordImage(bytes.data() + index * kRecordSize, kRecordSize); }
    std::uint32_t check() const { return Kest_Util_CRC32(0, bytes.data(), static_cast<kest_sint32>(size())); }
};

bool holdsRecords(off_t size)
{
    constexpr auto kRecord = static_cast<off_t>(kRecordSize);
    constexpr auto kCheck = static_cast<off_t>(kCheckSize);
    return size >= kSmallestFile && size <= kLargestFile && (size - kCheck) % kRecord == 0;
}

bool transferred(ssize_t result, std::size_t wanted)
{
    return result >= 0 && static_cast<std::size_t>(result) == wanted;
}

/** Reads an open file and closes it; false when it is broken. */
bool readRecords(int fd, Records<kMostLoaded>& records, CallSite at)
{
    const UniqueFd file(fd);
    const off_t size = lseek(fd, 0, SEEK_END);
    if (!holdsRecords(size)) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "netconfig file is broken\n");
        return false;
    }
    records.count = static_cast<std::size_t>(size) / kRecordSize;

    std::array<std::uint8_t, kCheckSize> check;
    (void)lseek(fd, 0, SEEK_SET);
    if (!transferred(read(fd, check.data(), check.size()), check.size())) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "cannot read crc value\n");
        return false;
    }
    if (!transferred(read(fd, records.bytes.data(), records.size()), records.size())) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "cannot read ifaces from netconfig file\n");
        return false;
    }
    const std::uint32_t computed = records.check();
    NET_LOG_AT(at, KEST_LEVEL_INFO, "read crc=%ld\n", static_cast<long>(computed));
    if (computed != decodeCheck(check)) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "file crc check failed\n");
        return false;
    }
    return true;
}

/** Deliberate: each record goes before those read earlier, so every load reverses the order. */
MovoNetIface_t* makeList(Records<kMostLoaded>& records, CallSite at)
{
    MovoNetIface_t* head = nullptr;
    for (std::size_t index = 0; index < records.count; ++index) {
        auto* iface = static_cast<MovoNetIface_t*>(std::calloc(1, sizeof(MovoNetIface_t)));
        if (iface == nullptr) {
            NET_LOG_AT(at, KEST_LEVEL_ERROR, "out of memory\n");
            break;
        }
        decodeRecord(records.image(index), *iface);
        iface->next = head;
        head = iface;
    }
    return head;
}

void initialise(MovoNetIface_t* list, CallSite at)
{
    for (MovoNetIface_t* iface = list; iface != nullptr; iface = iface->next) {
        NET_LOG_AT(at, KEST_LEVEL_INFO, "int_Movo_Net_Init %s, type=%d\n", iface->name, static_cast<int>(iface->type));
        if (int_Movo_Net_Init(iface) != kOk) {
            // Deliberate: it stays in the list all the same.
            NET_LOG_AT(at, KEST_LEVEL_INFO, "int_Movo_Net_Init failed: %s\n", iface->name);
        }
    }
}

/** Forgets records whose memory somebody may still hold. */
void retireAll(MovoNetIface_t* list)
{
    while (list != nullptr) {
        MovoNetIface_t* next = list->next;
        retireInterface(list);
        list = next;
    }
}

/** The list as it stands. The caller holds ifaceListLock. */
Records<kMostSaved> copyInterfaces()
{
    Records<kMostSaved> records;
    for (const MovoNetIface_t* iface = firstInterface(); iface != nullptr && records.count < kMostSaved;
         iface = nextInterface(iface)) {
        encodeRecord(*iface, records.image(records.count++));
    }
    return records;
}

/** Writes the open temporary file and closes it; false when it took less than everything. */
bool writeRecords(int fd, const Records<kMostSaved>& records, CallSite at)
{
    const UniqueFd file(fd);
    const SlowWatch watch(kTemporary); // each write waits for the disk
    const std::uint32_t value = records.check();
    std::array<std::uint8_t, kCheckSize> check;
    encodeCheck(value, check);

    (void)lseek(fd, 0, SEEK_SET);
    errno = 0; // the log shows it, and a short write sets none
    if (!transferred(write(fd, check.data(), check.size()), check.size())) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "write crc value to file failed\n");
        return false;
    }
    if (!transferred(write(fd, records.bytes.data(), records.size()), records.size())) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "write ifaces to file failed\n");
        return false;
    }
    NET_LOG_AT(at, KEST_LEVEL_INFO, "saved crc is %ld\n", static_cast<long>(value));
    (void)fsync(fd);
    return true;
}
} // namespace

RETURN_TYPE LoadNetConfig(void)
{
    const int fd = open(kFile, O_RDWR | O_CLOEXEC);
    if (fd < kLowestFd) {
        NET_ERROR("cannot open %s for read\n", kFile);
        return kFail;
    }
    Records<kMostLoaded> records;
    if (!readRecords(fd, records, NET_HERE)) {
        (void)unlink(kFile);
        return kFail;
    }
    MovoNetIface_t* list = makeList(records, NET_HERE);
    initialise(list, NET_HERE);

    const ScopedLock lock(ifaceListLock);
    if (!lock) {
        NET_ERROR("lock mutex failed\n");
        retireAll(list);
        return kFail;
    }
    MovoNetIface_t* old = firstInterface();
    store(s_pInterfaces, list);
    retireAll(old);
    return kOk;
}

RETURN_TYPE SaveNetConfig(void)
{
    if (firstInterface() == nullptr) {
        NET_ERROR("no saved interfaces\n");
        return kFail;
    }
    const ScopedLock lock(ifaceListLock);
    if (!lock) {
        NET_ERROR("lock mutex failed\n");
        return kFail;
    }
    const Records<kMostSaved> records = copyInterfaces();
    if (records.count == 0) { // the glue was stopped meanwhile
        NET_ERROR("no saved interfaces\n");
        return kFail;
    }
    // Deliberate: not truncated; what a longer file of an earlier attempt holds behind the records stays there.
    const int fd = open(kTemporary, O_RDWR | O_CREAT | O_SYNC | O_CLOEXEC, kMode);
    if (fd < kLowestFd) {
        NET_ERROR("cannot open %s for write\n", kTemporary);
        return kFail;
    }
    if (!writeRecords(fd, records, NET_HERE)) {
        (void)unlink(kTemporary);
        return kFail;
    }
    (void)std::rename(kTemporary, kFile);
    const SlowWatch watch("sync");
    sync();
    return kOk;
}
