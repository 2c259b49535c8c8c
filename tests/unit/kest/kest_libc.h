// What the platform library asks of libc, in the hands of the test: the linker gives the library the __wrap_ calls of
// kest_libc.cpp, which a test scripts through `libc`. Nothing sleeps.
#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <time.h>
#include <vector>

/** What the replaced calls do; without a script they are the real ones, but no call ever sleeps. */
struct Libc {
    std::optional<timespec> now; // what the monotonic clock shows
    bool outOfMemory = false;
    std::deque<timespec> interruptions; // each ends one nanosleep early, with this much left
    std::vector<timespec> sleeps;
    std::deque<int> writeErrors; // each fails one write to standard error
    int linesWritten = 0;
};
extern Libc libc;

class KestTest : public testing::Test {
protected:
    KestTest() { libc = Libc{}; }
    ~KestTest() override { libc = Libc{}; }
};

/** Points standard error at `fd` for as long as it lives. */
class StderrTo {
public:
    explicit StderrTo(int fd);
    ~StderrTo();
    StderrTo(const StderrTo&) = delete;
    StderrTo& operator=(const StderrTo&) = delete;

private:
    int m_saved;
};

std::string readAll(int fd);
std::string stderrOf(const std::function<void()>& action);
std::vector<std::string> linesOf(const std::string& text);
