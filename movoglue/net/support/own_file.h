/** Opening files by names that any local user may have planted: in /tmp and below it. */
#ifndef MOVO_NET_SUPPORT_OWN_FILE_H
#define MOVO_NET_SUPPORT_OWN_FILE_H

#include <cstdio>
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

/** The same for reading, as a stream; NULL instead of -1. */
std::FILE* openStream(const char* path, Owner owner = Owner::Us);

/**
 * Opens our regular file for writing, empty and of this mode whatever the umask. What else is in its place is removed
 * first, once.
 *
 * @return A close-on-exec descriptor, or -1 as open.
 */
int openEmptied(const char* path, mode_t mode);
} // namespace movonet

#endif
