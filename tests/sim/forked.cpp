#include "sim/sim.h"

#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" void __gcov_dump() __attribute__((weak));

namespace sim {
int forkedRun(const std::function<void()>& body)
{
    (void)std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        body();
        (void)std::fflush(nullptr);
        if (&__gcov_dump != nullptr) {
            __gcov_dump();
        }
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status)) {
        return -1;
    }
    return WEXITSTATUS(status);
}

CapturedOutput::CapturedOutput() : m_saved(-1), m_file(-1)
{
    (void)std::fflush(stdout);
    m_saved = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
    m_file = open("/tmp", O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    (void)dup2(m_file, STDOUT_FILENO);
}

CapturedOutput::~CapturedOutput()
{
    (void)std::fflush(stdout);
    (void)dup2(m_saved, STDOUT_FILENO);
    (void)close(m_saved);
    (void)close(m_file);
}

std::string CapturedOutput::text() const
{
    (void)std::fflush(stdout);
    std::string text;
    char part[512];
    off_t at = 0;
    for (ssize_t got = 0; (got = pread(m_file, part, sizeof(part), at)) > 0; at += got) {
        text.append(part, static_cast<std::size_t>(got));
    }
    return text;
}
} // namespace sim
