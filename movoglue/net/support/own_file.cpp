#include "support/own_file.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace movonet {
namespace {
bool isTrusted(int fd, mode_t kind, Owner owner)
{
    struct stat status {};
    return fstat(fd, &status) == 0 && (status.st_mode & S_IFMT) == kind &&
           (owner == Owner::Anybody || (status.st_uid == geteuid() && status.st_nlink == 1));
}

int openTrusted(const char* path, int access, mode_t kind, Owner owner)
{
    const int fd = open(path, access | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (fd >= 0 && !isTrusted(fd, kind, owner)) {
        (void)close(fd);
        errno = EPERM;
        return -1;
    }
    return fd;
}
} // namespace

int openRegular(const char* path, int access, Owner owner)
{
    return openTrusted(path, access, S_IFREG, owner);
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

int openFifo(const char* path)
{
    return openTrusted(path, O_RDWR, S_IFIFO, Owner::Us);
}

bool isNamed(int fd, const char* path)
{
    struct stat opened {};
    struct stat named {};
    return fstat(fd, &opened) == 0 && lstat(path, &named) == 0 && opened.st_dev == named.st_dev &&
           opened.st_ino == named.st_ino;
}
} // namespace movonet
