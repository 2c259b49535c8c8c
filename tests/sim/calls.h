/**
 * The libc calls of the product, as the simulated set answers them. The product's objects are renamed to use these (see
 * calls.txt); nothing else calls them but the set's own tests. Without a living `sim::Set` each one is its original.
 */
#ifndef SIM_CALLS_H
#define SIM_CALLS_H

#include <csignal>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ifaddrs.h>
#include <pthread.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <time.h>

extern "C" {

int sim_open(const char* path, int flags, ...);
int sim_close(int fd);
ssize_t sim_read(int fd, void* buffer, size_t size);
ssize_t sim_write(int fd, const void* buffer, size_t size);
off_t sim_lseek(int fd, off_t offset, int whence);
int sim_fsync(int fd);
int sim_mkfifo(const char* path, mode_t mode);
int sim_unlink(const char* path);
int sim_remove(const char* path);
int sim_rename(const char* from, const char* to);
int sim_access(const char* path, int mode);
int sim_stat(const char* path, struct stat* status);
int sim_lstat(const char* path, struct stat* status);
int sim_fstat(int fd, struct stat* status);
int sim_chmod(const char* path, mode_t mode);
int sim_fchmod(int fd, mode_t mode);
void sim_sync();

FILE* sim_fopen(const char* path, const char* mode);
int sim_fclose(FILE* stream);
FILE* sim_popen(const char* command, const char* mode);
int sim_pclose(FILE* stream);
int sim_system(const char* command);
int sim_kill(pid_t pid, int signal);

int sim_socket(int domain, int type, int protocol);
int sim_ioctl(int fd, unsigned long request, ...);
ssize_t sim_send(int fd, const void* buffer, size_t size, int flags);
ssize_t sim_sendto(int fd, const void* buffer, size_t size, int flags, const struct sockaddr* to, socklen_t length);
ssize_t sim_recv(int fd, void* buffer, size_t size, int flags);
ssize_t sim_recvfrom(int fd, void* buffer, size_t size, int flags, struct sockaddr* from, socklen_t* length);
char* sim_if_indextoname(unsigned index, char* name);
int sim_getifaddrs(struct ifaddrs** list);
void sim_freeifaddrs(struct ifaddrs* list);

int sim_inotify_init1(int flags);
int sim_inotify_add_watch(int fd, const char* path, uint32_t mask);

int sim_select(int count, fd_set* reading, fd_set* writing, fd_set* failing, struct timeval* timeout);
int sim_usleep(useconds_t microseconds);
int sim_nanosleep(const struct timespec* wanted, struct timespec* left);
int sim_timer_create(clockid_t clock, struct sigevent* event, timer_t* timer);
int sim_timer_settime(timer_t timer, int flags, const struct itimerspec* wanted, struct itimerspec* before);
int sim_timer_gettime(timer_t timer, struct itimerspec* left);

int sim_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*), void* argument);
int sim_pthread_join(pthread_t thread, void** result);
int sim_pthread_mutexattr_init(pthread_mutexattr_t* attributes);
int sim_pthread_mutexattr_settype(pthread_mutexattr_t* attributes, int type);
int sim_pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes);
int sim_pthread_mutex_lock(pthread_mutex_t* mutex);
int sim_pthread_mutex_trylock(pthread_mutex_t* mutex);
int sim_pthread_mutex_unlock(pthread_mutex_t* mutex);
int sim_pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex);
int sim_pthread_cond_signal(pthread_cond_t* condition);
int sim_pthread_cond_broadcast(pthread_cond_t* condition);

void* sim_malloc(size_t size);
void sim_free(void* memory);
void* sim_calloc(size_t count, size_t size);
char* sim_strdup(const char* text);
int sim_vasprintf(char** text, const char* format, va_list arguments) __attribute__((format(printf, 2, 0)));

} // extern "C"

#endif
