#include "support/own_file.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace movonet {
bool isTrusted(int fd, mode_t kind, Owner owner)
{
    struct stat status {};
    return fstat(fd, &status) == 0 && (status.st_mode & S_IFMT) == kind && status.st_nlink == 1 &&
           (owner == Owner::Anybody || status.st_uid == geteuid());
}

int openRegular(const char* path, int access, Owner owner)
{
    const int fd = open(path, access | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (fd >= 0 && !isTrusted(fd, S_IFREG, owner)) {
        (void)close(fd);
        errno = EPERM;
        return -1;
    }
    return fd;
}

std::FILE* openStream(const char* path, Owner owner)
{
    const int fd = openRegular(path, O_RDONLY, owner);
    std::FILE* stream = fd >= 0 ? fdopen(fd, "r") : nullptr;
    if (stream == nullptr && fd >= 0) {
        (void)close(fd);
    }
    return stream;
}

int openEmptied(const char* path, mode_t mode)
{
    int fd = openRegular(path, O_WRONLY);
    if (fd < 0) {
        (void)unlink(path);
        fd = open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
    }
    if (fd >= 0 && (fchmod(fd, mode) != 0 || ftruncate(fd, 0) != 0)) {
        (void)close(fd);
        return -1;
    }
    return fd;
}
} // namespace movonet
