#include "movo_net_fl_wifi/saved.h"

#include "support/command.h"
#include "support/fd.h"
#include "support/log.h"
#include "support/slow.h"
#include "support/text.h"
#include "support/wiped.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_wifi", &movoglue_net_debug};

constexpr const char* g_sEssSaveFileName = "/data/tv/save/saved_esss";
constexpr const char* g_sEssSaveFileName_back = "/data/tv/save/saved_esss_back";

/** Both files hold keys in plain text. */
constexpr mode_t kMode = 0600;

FixedText<128> copyCommand(const char* from, const char* to)
{
    return FixedText<128>("cat %s > %s", from, to);
}

// The ones below speak for LoadEsss and SaveEsss.

/** Writes the newest networks; what does not reach the file is logged and no more is written. */
void writeRecords(int fd, CallSite at)
{
    int written = 0;
    for (const MovNetWifiEssItem_t* ess = g_pSavedEsss; ess != nullptr && written < MOVO_NET_MAX_ESSS;
         ess = ess->next, ++written) {
        EssRecord record;
        encodeEss(*ess, record);
        errno = 0; // the log shows it, and a short write sets none
        if (write(fd, record.data(), record.size()) != static_cast<ssize_t>(record.size())) {
            NET_LOG_AT(at, KEST_LEVEL_ERROR, "write failed\n");
            return;
        }
    }
}

/** Writes and syncs the main file; false when it cannot be opened. */
bool writeMainFile(CallSite at)
{
    const SlowWatch watch(g_sEssSaveFileName);
    const UniqueFd file(open(g_sEssSaveFileName, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kMode));
    if (!file) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "cannot open %s for write\n", g_sEssSaveFileName);
        return false;
    }
    (void)fchmod(file.get(), kMode); // an older version's was everybody's to read
    writeRecords(file.get(), at);
    (void)fsync(file.get());
    return true;
}

/** The backup is there, and ours alone, before the copy fills it. */
void prepareBackup()
{
    const UniqueFd backup(open(g_sEssSaveFileName_back, O_WRONLY | O_CREAT | O_CLOEXEC, kMode));
    if (backup) {
        (void)fchmod(backup.get(), kMode);
    }
}

MovNetWifiEssItem_t* readRecord(int fd, CallSite at)
{
    EssRecord record;
    if (read(fd, record.data(), record.size()) != static_cast<ssize_t>(record.size())) {
        return nullptr; // the end, or a piece of a record
    }
    auto* node = static_cast<MovNetWifiEssItem_t*>(std::malloc(sizeof(MovNetWifiEssItem_t)));
    if (node == nullptr) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "out of memory\n");
        return nullptr;
    }
    decodeEss(record, *node);
    return node;
}

MovNetWifiEssItem_t* readRecords(int fd, CallSite at)
{
    MovNetWifiEssItem_t* head = nullptr;
    MovNetWifiEssItem_t** end = &head;
    while ((*end = readRecord(fd, at)) != nullptr) {
        end = &(*end)->next;
    }
    return head;
}

void freeList(MovNetWifiEssItem_t* head)
{
    while (head != nullptr) {
        MovNetWifiEssItem_t* next = head->next;
        freeWiped(head);
        head = next;
    }
}

/** An empty file is what an interrupted write leaves; the backup is poured into it under the open descriptor. */
bool restoreIfEmpty(off_t size, CallSite at)
{
    if (size != 0 || runShell(copyCommand(g_sEssSaveFileName_back, g_sEssSaveFileName)) == 0) {
        return true;
    }
    NET_LOG_AT(at, KEST_LEVEL_ERROR, "esss: cannot cp  %s to %s\n", g_sEssSaveFileName_back, g_sEssSaveFileName);
    return false;
}
} // namespace

RETURN_TYPE LoadEsss(void)
{
    // Deliberate: always visible, as the file's size.
    NET_ERROR("esss: enter LoadEsss\n");
    const UniqueFd file(open(g_sEssSaveFileName, O_RDONLY | O_CLOEXEC));
    if (!file) {
        NET_ERROR("esss :cannot open %s for read\n", g_sEssSaveFileName);
        return kFail;
    }
    (void)fchmod(file.get(), kMode); // the same networks again are not saved
    (void)chmod(g_sEssSaveFileName_back, kMode);
    const off_t size = lseek(file.get(), 0, SEEK_END);
    (void)lseek(file.get(), 0, SEEK_SET);
    NET_ERROR("esss: %s file size %d\n", g_sEssSaveFileName, static_cast<int>(size));
    if (!restoreIfEmpty(size, NET_HERE)) {
        return kFail;
    }
    MovNetWifiEssItem_t* head = readRecords(file.get(), NET_HERE);
    const ScopedLock lock(essListLock);
    if (!lock) {
        NET_ERROR("lock mutex failed\n");
        freeList(head);
        return kFail;
    }
    installSavedEsss(head);
    return kOk;
}

RETURN_TYPE SaveEsss(void)
{
    const ScopedLock lock(essListLock);
    if (!lock) {
        NET_ERROR("lock mutex failed\n");
        return kFail;
    }
    if (g_pSavedEsss == nullptr) {
        (void)unlink(g_sEssSaveFileName);
        (void)unlink(g_sEssSaveFileName_back);
        return kOk;
    }
    if (!writeMainFile(NET_HERE)) {
        return kFail;
    }
    prepareBackup();
    if (runShell(copyCommand(g_sEssSaveFileName, g_sEssSaveFileName_back)) != 0) {
        // The lock is released here as everywhere: kept, it would stop every later look at a key.
        NET_ERROR("cannot cp  %s to %s\n", g_sEssSaveFileName, g_sEssSaveFileName_back);
        return kFail;
    }
    return kOk;
}
