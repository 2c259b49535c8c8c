#include "kest_libc.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sstream>
#include <unistd.h>

Libc libc;

extern "C" {
int __real_clock_gettime(clockid_t clock, timespec* now);
void* __real_malloc(size_t size);
ssize_t __real_write(int fd, const void* bytes, size_t length);

int __wrap_clock_gettime(clockid_t clock, timespec* now)
{
    if (clock != CLOCK_MONOTONIC || !libc.now) {
        return __real_clock_gettime(clock, now);
    }
    *now = *libc.now;
    return 0;
}

void* __wrap_malloc(size_t size)
{
    return libc.outOfMemory ? nullptr : __real_malloc(size);
}

int __wrap_nanosleep(const timespec* wanted, timespec* left)
{
    libc.sleeps.push_back(*wanted);
    if (libc.interruptions.empty()) {
        return 0;
    }
    *left = libc.interruptions.front();
    libc.interruptions.pop_front();
    errno = EINTR;
    return -1;
}

ssize_t __wrap_write(int fd, const void* bytes, size_t length)
{
    if (fd == STDERR_FILENO && !libc.writeErrors.empty()) {
        errno = libc.writeErrors.front();
        libc.writeErrors.pop_front();
        return -1;
    }
    if (fd == STDERR_FILENO) {
        __atomic_fetch_add(&libc.linesWritten, 1, __ATOMIC_RELAXED);
    }
    return __real_write(fd, bytes, length);
}
}

StderrTo::StderrTo(int fd) : m_saved(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0))
{
    dup2(fd, STDERR_FILENO);
}

StderrTo::~StderrTo()
{
    dup2(m_saved, STDERR_FILENO);
    close(m_saved);
}

std::string readAll(int fd)
{
    std::string all;
    std::array<char, 4096> piece{};
    for (ssize_t got = 0; (got = read(fd, piece.data(), piece.size())) > 0;) {
        all.append(piece.data(), static_cast<size_t>(got));
    }
    return all;
}

std::string stderrOf(const std::function<void()>& action)
{
    // An ordinary file: the kernel keeps one write whole there, unlike in an anonymous one.
    FILE* file = std::tmpfile();
    {
        const StderrTo redirected(fileno(file));
        action();
    }
    rewind(file);
    std::string all = readAll(fileno(file));
    (void)std::fclose(file);
    return all;
}

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}
