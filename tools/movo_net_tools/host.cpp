/** A record lock of the process: the kernel knows whose it is, a child has no part in it, and it ends with its owner.
 */
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <iterator>
#include <movo_net_tools.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr RETURN_TYPE kOk = 0;
constexpr RETURN_TYPE kAnother = 1;
constexpr RETURN_TYPE kBadArgument = 5;
constexpr RETURN_TYPE kImpossible = 6;

constexpr mode_t kMode = 0600; // whoever may read it could lock it
constexpr int kTries = 3;

/** Opens our file; -1 for any other, with errno. */
int openOurs(const char* file)
{
    const int fd = open(file, O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, kMode);
    if (fd < 0) {
        return -1;
    }
    struct stat status {};
    if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode) || status.st_nlink != 1 || status.st_uid != geteuid()) {
        (void)close(fd);
        errno = EPERM;
        return -1;
    }
    return fd;
}

struct flock wholeFile()
{
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

/** Asks for the lock. What another process gives back in between is asked for again. */
RETURN_TYPE lockOrFindHolder(int fd, int& pid)
{
    for (int left = kTries; left > 0; --left) {
        struct flock lock = wholeFile();
        if (fcntl(fd, F_SETLK, &lock) == 0) {
            return kOk;
        }
        if ((errno != EACCES && errno != EAGAIN) || fcntl(fd, F_GETLK, &lock) != 0) {
            return kImpossible;
        }
        if (lock.l_type != F_UNLCK) {
            pid = std::max<int>(lock.l_pid, 0);
            return kAnother;
        }
    }
    errno = EAGAIN;
    return kImpossible;
}

/** Leaves our pid and name for who comes later, and for people. */
void write(int fd, const char* name)
{
    char text[2 * MOVO_NET_HOST_NAME_LENGTH];
    const int length = std::snprintf(text, sizeof(text), "%d %.*s\n", getpid(), MOVO_NET_HOST_NAME_LENGTH - 1, name);
    if (fchmod(fd, kMode) == 0 && ftruncate(fd, 0) == 0) {
        (void)!pwrite(fd, text, static_cast<std::size_t>(length), 0);
    }
}

/** The name beside this pid: another pid is that of an earlier host. */
void readName(int fd, int pid, char (&name)[MOVO_NET_HOST_NAME_LENGTH])
{
    char text[2 * MOVO_NET_HOST_NAME_LENGTH] = {};
    (void)!pread(fd, text, sizeof(text) - 1, 0);
    char* word = nullptr;
    name[0] = '\0';
    if (std::strtol(text, &word, 10) == pid && *word == ' ') {
        word[std::strcspn(word, "\n")] = '\0';
        (void)std::snprintf(name, sizeof(name), "%s", word + 1);
    }
    std::replace_if(
        name, name + std::strlen(name), [](char byte) { return byte < ' ' || byte > '~'; }, '?');
}
} // namespace

RETURN_TYPE Movo_NET_TakeHostLock(const char* file, const char* name, MovoNetHost_t* holder)
{
    if (name == nullptr) {
        return kBadArgument;
    }
    const int fd = openOurs(file != nullptr ? file : MOVO_NET_HOST_FILE);
    if (fd < 0) {
        return kImpossible;
    }
    int pid = 0;
    const RETURN_TYPE result = lockOrFindHolder(fd, pid);
    if (result == kOk) {
        write(fd, name); // the descriptor stays open, and with it the lock, until the process ends
        return kOk;
    }
    const int error = errno;
    if (result == kAnother && holder != nullptr) {
        holder->pid = pid;
        readName(fd, pid, holder->name);
    }
    (void)close(fd);
    errno = error;
    return result;
}
