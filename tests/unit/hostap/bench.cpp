#include "bench.h"

#include <fcntl.h>
#include <kest.h>
#include <unistd.h>

namespace hostap {
namespace {
std::string levelOf(const sim::LogLine& line)
{
    return line.level == KEST_LEVEL_ERROR ? "ERROR" : line.level == KEST_LEVEL_INFO ? "INFO" : "?";
}
} // namespace

Bench::Bench(unsigned seed) : set(seed)
{
    set.onCommand(kGetName).prints("MyTV\n");
    set.write(kLeases, "");
    set.startLoop();
    set.recordCallbacks();
}

/** A watch of the leases that still waits for the file would look for it for ever. */
Bench::~Bench()
{
    set.clearFaults();
    set.write(kLeases, "");
}

void Bench::startHere()
{
    (void)set.fail({.call = sim::Call::ThreadCreate, .error = EAGAIN});
    EXPECT_EQ(s_SoftAP_Start(nullptr), nullptr);
    set.clearFaults();
}

void Bench::start()
{
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Start(0), 0);
    set.settle();
    set.grantTicks(1); // the loop takes the pipe up
}

void Bench::startAndForget()
{
    startHere();
    ASSERT_EQ(Movo_Net_WiFi_HostAP_Status(0), 1);
    set.forget();
}

void Bench::writeLeases(const std::string& contents)
{
    set.write(kLeases, contents);
    set.watch(kLeases).modified();
}

void Bench::say(const std::string& words)
{
    const int pipe = open(set.real(kPipe).c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(pipe, 0) << "nobody reads the pipe";
    EXPECT_EQ(write(pipe, words.data(), words.size()), static_cast<ssize_t>(words.size()));
    EXPECT_EQ(close(pipe), 0);
    set.settle();
}

Lines Bench::said() const
{
    Lines lines;
    for (const sim::LogLine& line : set.log()) {
        if (line.module == kModule) {
            EXPECT_EQ(line.category, kest_debug_category_name(KEST_CAT_DEFAULT)) << line;
            lines.push_back(levelOf(line) + " " + line.function + ": " + line.text);
        }
    }
    return lines;
}

Lines Bench::said(const std::string& function) const
{
    Lines lines;
    for (const sim::LogLine& line : set.log()) {
        if (line.module == kModule && line.function == function) {
            lines.push_back(levelOf(line) + " " + line.text);
        }
    }
    return lines;
}

Lines Bench::ran() const
{
    Lines commands;
    for (const sim::Command& command : set.commands()) {
        commands.push_back(command.text);
    }
    return commands;
}
} // namespace hostap
