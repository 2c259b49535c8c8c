/** Opening files by names that any local user may have planted: in /tmp and below it. */
#ifndef MOVO_NET_SUPPORT_OWN_FILE_H
#define MOVO_NET_SUPPORT_OWN_FILE_H

#include <cstdio>
#include <sys/types.h>

namespace movonet {
/** Whose a file may be. One of ours must not have a second name: it could be any file of ours. */
enum class Owner { Us, Anybody };

/**
 * Opens a regular file. Follows no symbolic link and waits for nobody; truncates nothing.
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

/** Opens a FIFO of ours for reading and writing, which does not wait. -1 as `openRegular`. */
int openFifo(const char* path);

/** True while `path` itself, not a link, names the file that `fd` is open on. */
bool isNamed(int fd, const char* path);
} // namespace movonet

#endif
