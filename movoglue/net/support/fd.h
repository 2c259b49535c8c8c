/** A descriptor that is closed at the end of its scope. */
#ifndef MOVO_NET_SUPPORT_FD_H
#define MOVO_NET_SUPPORT_FD_H

#include <unistd.h>

namespace movonet {
class UniqueFd {
public:
    explicit UniqueFd(int fd) : m_fd(fd) {}
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    ~UniqueFd()
    {
        if (m_fd >= 0) {
            (void)close(m_fd);
        }
    }

    explicit operator bool() const { return m_fd >= 0; }
    int get() const { return m_fd; }

private:
    int m_fd;
};
} // namespace movonet

#endif
