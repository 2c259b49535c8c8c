#include "sim/flash.h"

#include <atomic>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <sstream>

namespace sim {
namespace {
std::atomic<Flash*> s_flash;
std::mutex s_lock; // guards what the one Flash knows

std::string contentsOf(const std::filesystem::path& path)
{
    std::ostringstream contents;
    contents << std::ifstream(path, std::ios::binary).rdbuf();
    return contents.str();
}

std::string contentsOf(int fd)
{
    return contentsOf("/proc/self/fd/" + std::to_string(fd));
}

bool writesSynchronously(int fd)
{
    return (fcntl(fd, F_GETFL) & O_DSYNC) != 0; // O_SYNC holds that bit too
}

const char* verbOf(Call call)
{
    switch (call) {
    case Call::Open:
        return "open";
    case Call::Close:
        return "close";
    case Call::Read:
        return "read";
    case Call::Write:
        return "write";
    case Call::Lseek:
        return "lseek";
    case Call::Fsync:
        return "fsync";
    case Call::Unlink:
        return "unlink";
    case Call::Rename:
        return "rename";
    default:
        return "sync";
    }
}
} // namespace

Flash::Flash(const Set& set, std::string folder) : m_folder(std::move(folder))
{
    State state;
    Names names;
    for (const auto& file : std::filesystem::directory_iterator(set.real(m_folder))) {
        names[file.path().filename()] = state.inodes.size();
        const std::string contents = contentsOf(file.path());
        state.inodes.push_back({contents, contents});
    }
    state.names.push_back(names);
    m_states.push_back(state);
    s_flash.store(this, std::memory_order_relaxed);
}

Flash::~Flash()
{
    s_flash.store(nullptr, std::memory_order_relaxed);
}

std::vector<std::string> Flash::calls() const
{
    const std::lock_guard lock(s_lock);
    return m_calls;
}

std::set<Folder> Flash::leftAfter(std::size_t calls) const
{
    const std::lock_guard lock(s_lock);
    const State& state = m_states.at(calls);
    std::set<Folder> left;
    for (const Names& names : state.names) {
        for (std::size_t arrived = 0; arrived < std::size_t{1} << state.inodes.size(); ++arrived) {
            Folder folder;
            for (const auto& [name, inode] : names) {
                const Inode& contents = state.inodes[inode];
                folder[name] = (arrived >> inode & 1) != 0 ? contents.written : contents.stored;
            }
            left.insert(folder);
        }
    }
    return left;
}

bool Flash::isInside(const std::string& path) const
{
    return path.starts_with(m_folder + "/");
}

std::string Flash::nameOf(const std::string& path) const
{
    return path.substr(m_folder.size() + 1);
}

void Flash::opened(State& state, int fd, const std::string& name)
{
    Names names = state.names.back();
    if (!names.contains(name)) {
        names[name] = state.inodes.size();
        state.inodes.push_back({});
        state.names.push_back(names);
    }
    m_open[fd] = names[name];
    state.inodes[m_open[fd]].written = contentsOf(fd); // cut short, if opened so
}

void Flash::renamed(State& state, const std::string& from, const std::string& to)
{
    Names names = state.names.back();
    if (!to.empty()) {
        names[to] = names[from];
    }
    names.erase(from);
    state.names.push_back(names);
}

void Flash::note(Call call, int fd, const std::string& path, const std::string& to)
{
    if (call != Call::Sync && !isInside(path)) {
        return;
    }
    State state = m_states.back();
    switch (call) {
    case Call::Open:
        opened(state, fd, nameOf(path));
        break;
    case Call::Write: {
        Inode& inode = state.inodes[m_open[fd]];
        inode.written = contentsOf(fd);
        inode.stored = writesSynchronously(fd) ? inode.written : inode.stored;
        break;
    }
    case Call::Fsync:
        state.inodes[m_open[fd]].stored = state.inodes[m_open[fd]].written;
        break;
    case Call::Unlink:
        renamed(state, nameOf(path), "");
        break;
    case Call::Rename:
        renamed(state, nameOf(path), nameOf(to));
        break;
    case Call::Sync:
        state.names = {state.names.back()};
        for (Inode& inode : state.inodes) {
            inode.stored = inode.written;
        }
        break;
    default:
        break;
    }
    m_calls.push_back(std::string(verbOf(call)) + (call == Call::Sync ? "" : " " + nameOf(path)));
    m_states.push_back(std::move(state));
}

void noteFileCall(Call call, int fd, const std::string& path, const std::string& to)
{
    // Nothing is locked without one, so that the thread sanitizer sees no order that the product does not make.
    if (Flash* flash = s_flash.load(std::memory_order_relaxed); flash != nullptr) {
        const std::lock_guard lock(s_lock);
        flash->note(call, fd, path, to);
    }
}
} // namespace sim
