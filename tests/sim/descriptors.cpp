#include "sim/calls.h"
#include "sim/flash.h"
#include "sim/sim.h"
#include "sim/world.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <unistd.h>

namespace sim {
namespace {
bool waitsToBeRead(int fd)
{
    const Hold hold;
    const Descriptor* descriptor = findDescriptor(fd);
    return descriptor != nullptr && descriptor->kind == DescriptorKind::FileWatch;
}

/** How much a fault lets pass. */
size_t atMost(size_t size, const std::optional<Strike>& strike)
{
    return strike ? std::min(size, static_cast<size_t>(strike->bytes)) : size;
}
} // namespace

void noteDescriptor(int fd, Descriptor descriptor)
{
    World& w = world();
    if ((fcntl(fd, F_GETFD) & FD_CLOEXEC) == 0) {
        w.problems.push_back(descriptor.text + " is not close-on-exec");
    }
    descriptor.order = ++w.files.opened;
    w.files.descriptors[fd] = std::move(descriptor);
}

const Descriptor* findDescriptor(int fd)
{
    const auto& all = world().files.descriptors;
    const auto found = all.find(fd);
    return found != all.end() ? &found->second : nullptr;
}

void Set::give(int fd)
{
    const Hold hold;
    noteDescriptor(fd, {DescriptorKind::File, "given", "given by the test"});
}

std::vector<std::string> Set::openDescriptors() const
{
    const Hold hold;
    std::vector<const Descriptor*> open;
    for (const auto& [fd, descriptor] : world().files.descriptors) {
        open.push_back(&descriptor);
    }
    std::ranges::sort(open, {}, &Descriptor::order);
    std::vector<std::string> texts;
    for (const Descriptor* descriptor : open) {
        texts.push_back(descriptor->text);
    }
    return texts;
}

HighDescriptors::HighDescriptors()
{
    constexpr rlim_t kEnough = FD_SETSIZE + 100;
    rlimit limit{};
    EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    limit.rlim_cur = std::min(std::max(limit.rlim_cur, kEnough), limit.rlim_max);
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    int fd = 0;
    while (!m_high && fd >= 0) {
        fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
        m_high = fd >= FD_SETSIZE;
        m_taken.push_back(fd);
    }
}

HighDescriptors::~HighDescriptors()
{
    for (const int fd : m_taken) {
        (void)close(fd);
    }
}
} // namespace sim

using namespace sim;

int sim_close(int fd)
{
    if (!active()) {
        return close(fd);
    }
    const std::string subject = openedOn(fd);
    const auto strike = enter(Call::Close, {.name = subject});
    bool known = false;
    {
        const Hold hold;
        known = world().files.descriptors.erase(fd) != 0;
    }
    if (!known) {
        problem("close(" + std::to_string(fd) + "): not a descriptor of the product");
        return failWith(EBADF);
    }
    const int result = close(fd);
    noteFileCall(Call::Close, fd, subject);
    return strike ? failWith(strike->error) : result; // closed all the same, as the kernel does
}

ssize_t sim_read(int fd, void* buffer, size_t size)
{
    if (!active()) {
        return read(fd, buffer, size);
    }
    const std::string subject = openedOn(fd);
    const auto strike = enter(Call::Read, {.name = subject});
    if (strike && strike->bytes < 0) {
        return failWith(strike->error);
    }
    if (waitsToBeRead(fd) && atMost(size, strike) > 0) {
        waitForInput(fd);
    }
    const ssize_t result = read(fd, buffer, atMost(size, strike));
    if (result >= 0) {
        noteFileCall(Call::Read, fd, subject);
    }
    return result;
}

ssize_t sim_write(int fd, const void* buffer, size_t size)
{
    if (!active()) {
        return write(fd, buffer, size);
    }
    const std::string subject = openedOn(fd);
    const auto strike = enter(Call::Write, {.name = subject});
    if (strike && strike->bytes < 0) {
        return failWith(strike->error);
    }
    const ssize_t result = write(fd, buffer, atMost(size, strike));
    if (result >= 0) {
        noteFileCall(Call::Write, fd, subject);
    }
    return result;
}

off_t sim_lseek(int fd, off_t offset, int whence)
{
    if (active()) {
        if (const auto strike = enter(Call::Lseek, {.name = openedOn(fd)})) {
            return failWith(strike->error);
        }
    }
    const off_t result = lseek(fd, offset, whence);
    if (active() && result >= 0) {
        noteFileCall(Call::Lseek, fd, openedOn(fd));
    }
    return result;
}

int sim_fsync(int fd)
{
    if (active()) {
        if (const auto strike = enter(Call::Fsync, {.name = openedOn(fd)})) {
            return failWith(strike->error);
        }
    }
    const int result = fsync(fd);
    if (active() && result == 0) {
        noteFileCall(Call::Fsync, fd, openedOn(fd));
    }
    return result;
}
