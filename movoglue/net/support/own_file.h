/** Opening files by names that any local user may have planted: in /tmp and below it. */
#ifndef MOVO_NET_SUPPORT_OWN_FILE_H
#define MOVO_NET_SUPPORT_OWN_FILE_H

#include <sys/types.h>

namespace movonet {
enum class Owner { Us, Anybody };

/** True when `fd` is a file of this kind (S_IFREG, S_IFIFO) with a single name and this owner. */
bool isTrusted(int fd, mode_t kind, Owner owner = Owner::Us);

/**
 * Opens a regular file that has a single name. Follows no symbolic link and waits for nobody; truncates nothing.
 *
 * @param[in] access  O_RDONLY, O_WRONLY or O_RDWR.
 *
 * @return A close-on-exec descriptor, or -1: as for open, or with EPERM for any other file.
 */
int openRegular(const char* path, int access, Owner owner = Owner::Us);
} // namespace movonet

#endif
