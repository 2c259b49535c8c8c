#include "sim/calls.h"
#include "sim/sim.h"
#include "sim/world.h"

#include <fcntl.h>
#include <filesystem>
#include <sys/inotify.h>
#include <unistd.h>

namespace sim {
namespace {
/** Writes to the watches of a file that wait for any of these changes. The world is held. */
void tell(const std::string& path, std::uint32_t changes, const std::string& bytes)
{
    for (const auto& [fd, descriptor] : world().files.descriptors) {
        const bool watches = descriptor.kind == DescriptorKind::FileWatch && descriptor.watched == path;
        if (watches && (descriptor.mask & changes) != 0 &&
            write(descriptor.tellsThrough, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
            world().problems.push_back("the events of " + path + " do not fit");
        }
    }
    world().changed.notify_all(); // also when it is a callback that tells, which cannot settle
}

std::string eventOf(std::uint32_t mask)
{
    inotify_event event{};
    event.wd = 1;
    event.mask = mask;
    return {reinterpret_cast<const char*>(&event), sizeof(event)};
}
} // namespace

FileWatch::FileWatch(std::string path) : m_path(std::move(path)) {}

int FileWatch::watchers() const
{
    const Hold hold;
    int count = 0;
    for (const auto& [fd, descriptor] : world().files.descriptors) {
        count += descriptor.kind == DescriptorKind::FileWatch && descriptor.watched == m_path ? 1 : 0;
    }
    return count;
}

std::uint32_t FileWatch::awaited() const
{
    const Hold hold;
    std::uint32_t changes = 0;
    for (const auto& [fd, descriptor] : world().files.descriptors) {
        changes |= descriptor.kind == DescriptorKind::FileWatch && descriptor.watched == m_path ? descriptor.mask : 0;
    }
    return changes;
}

void FileWatch::modified()
{
    {
        const Hold hold;
        tell(m_path, IN_MODIFY, eventOf(IN_MODIFY));
    }
    settleWorld();
}

void FileWatch::gone()
{
    {
        const Hold hold;
        tell(m_path, ~0U, eventOf(IN_IGNORED));
        for (auto& [fd, descriptor] : world().files.descriptors) {
            if (descriptor.kind == DescriptorKind::FileWatch && descriptor.watched == m_path) {
                descriptor.watched.clear();
            }
        }
    }
    settleWorld();
}

void FileWatch::tells(const std::string& bytes)
{
    {
        const Hold hold;
        tell(m_path, ~0U, bytes);
    }
    settleWorld();
}
} // namespace sim

using namespace sim;

int sim_inotify_init1(int flags)
{
    if (!active()) {
        return inotify_init1(flags);
    }
    if (const auto strike = enter(Call::InotifyInit, {})) {
        return failWith(strike->error);
    }
    int ends[2];
    if (pipe2(ends, (flags & IN_CLOEXEC) != 0 ? O_CLOEXEC : 0) != 0) {
        return -1;
    }
    const Hold hold;
    noteDescriptor(ends[0], {.kind = DescriptorKind::FileWatch,
                             .subject = "inotify",
                             .text = describe(Call::InotifyInit, ""),
                             .tellsThrough = ends[1]});
    return ends[0];
}

int sim_inotify_add_watch(int fd, const char* path, uint32_t mask)
{
    if (!active()) {
        return inotify_add_watch(fd, path, mask);
    }
    if (const auto strike = enter(Call::InotifyAddWatch, {.name = path})) {
        return failWith(strike->error);
    }
    if (!std::filesystem::exists(preparedPath(path))) {
        return failWith(ENOENT);
    }
    const Hold hold;
    const auto found = world().files.descriptors.find(fd);
    if (found == world().files.descriptors.end() || found->second.kind != DescriptorKind::FileWatch) {
        return failWith(EBADF);
    }
    found->second.watched = path;
    found->second.mask = mask;
    return 1;
}
