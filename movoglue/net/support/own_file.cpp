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
} // namespace movonet
