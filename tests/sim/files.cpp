#include "sim/calls.h"
#include "sim/flash.h"
#include "sim/sim.h"
#include "sim/world.h"

#include <algorithm>
#include <cstdarg>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace sim {
namespace {
bool isKernelTable(const std::string& path)
{
    return path == "/proc/net/dev" || path == "/proc/net/wireless";
}

/** Gives a file of another user another owner. */
int withOwner(int result, struct stat* status)
{
    const Hold hold;
    const auto& foreign = world().files.foreign;
    if (result == 0 && std::ranges::any_of(foreign, [status](const ForeignFile& file) {
            return file.device == status->st_dev && file.number == status->st_ino;
        })) {
        ++status->st_uid;
    }
    return result;
}
} // namespace

std::string openedOn(int fd)
{
    const Hold hold;
    const Descriptor* descriptor = findDescriptor(fd);
    return descriptor != nullptr ? descriptor->subject : "";
}

std::string preparedPath(const std::string& path)
{
    const Hold hold;
    Files& files = world().files;
    if (isKernelTable(path) && !files.taken.contains(path)) {
        std::string table = renderTable(path);
        if (files.rendered[path] != table) {
            writeFile(path, table);
            files.rendered[path] = std::move(table);
        }
    }
    return realPath(path);
}

std::string realPath(const std::string& path)
{
    return world().root + (path.starts_with("/") ? "" : "/") + path;
}

void writeFile(const std::string& path, const std::string& contents)
{
    const std::filesystem::path real = realPath(path);
    std::filesystem::create_directories(real.parent_path());
    std::ofstream(real, std::ios::binary) << contents;
}

std::optional<std::string> readFile(const std::string& path)
{
    std::ifstream file(realPath(path), std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
}

void Set::write(const std::string& path, const std::string& contents)
{
    const Hold hold;
    world().files.taken.insert(path);
    writeFile(path, contents);
}

std::string Set::read(const std::string& path) const
{
    const Hold hold;
    const auto contents = readFile(path);
    if (!contents) {
        ADD_FAILURE() << "no file " << path;
    }
    return contents.value_or("");
}

bool Set::exists(const std::string& path) const
{
    return std::filesystem::exists(std::filesystem::symlink_status(real(path)));
}

void Set::remove(const std::string& path)
{
    const Hold hold;
    world().files.taken.insert(path);
    std::filesystem::remove_all(realPath(path));
}

void Set::disown(const std::string& path)
{
    const int fd = open(realPath(path).c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
    struct stat status {};
    EXPECT_EQ(fstat(fd, &status), 0) << path;
    const Hold hold;
    world().files.foreign.push_back({fd, status.st_dev, status.st_ino});
}

std::string Set::real(const std::string& path) const
{
    return realPath(path);
}
} // namespace sim

using namespace sim;

int sim_open(const char* path, int flags, ...)
{
    mode_t mode = 0;
    if ((flags & (O_CREAT | O_TMPFILE)) != 0) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    if (!active()) {
        return open(path, flags, mode);
    }
    if (const auto strike = enter(Call::Open, {.name = path})) {
        return failWith(strike->error);
    }
    const int fd = open(preparedPath(path).c_str(), flags, mode);
    if (fd >= 0) {
        const Hold hold;
        noteDescriptor(fd, {DescriptorKind::File, path, describe(Call::Open, path)});
    }
    if (fd >= 0) {
        noteFileCall(Call::Open, fd, path);
    }
    return fd;
}

int sim_mkfifo(const char* path, mode_t mode)
{
    if (!active()) {
        return mkfifo(path, mode);
    }
    if (const auto strike = enter(Call::Mkfifo, {.name = path})) {
        return failWith(strike->error);
    }
    return mkfifo(realPath(path).c_str(), mode);
}

int sim_unlink(const char* path)
{
    if (!active()) {
        return unlink(path);
    }
    if (const auto strike = enter(Call::Unlink, {.name = path})) {
        return failWith(strike->error);
    }
    const int result = unlink(realPath(path).c_str());
    if (result == 0) {
        noteFileCall(Call::Unlink, -1, path);
    }
    return result;
}

int sim_remove(const char* path)
{
    if (!active()) {
        return remove(path);
    }
    if (const auto strike = enter(Call::Unlink, {.name = path})) {
        return failWith(strike->error);
    }
    const int result = remove(realPath(path).c_str());
    if (result == 0) {
        noteFileCall(Call::Unlink, -1, path);
    }
    return result;
}

int sim_rename(const char* from, const char* to)
{
    if (!active()) {
        return rename(from, to);
    }
    if (const auto strike = enter(Call::Rename, {.name = from})) {
        return failWith(strike->error);
    }
    const int result = rename(realPath(from).c_str(), realPath(to).c_str());
    if (result == 0) {
        noteFileCall(Call::Rename, -1, from, to);
    }
    return result;
}

int sim_access(const char* path, int mode)
{
    if (!active()) {
        return access(path, mode);
    }
    if (const auto strike = enter(Call::Access, {.name = path})) {
        return failWith(strike->error);
    }
    return access(preparedPath(path).c_str(), mode);
}

int sim_stat(const char* path, struct stat* status)
{
    if (!active()) {
        return stat(path, status);
    }
    if (const auto strike = enter(Call::Stat, {.name = path})) {
        return failWith(strike->error);
    }
    return stat(preparedPath(path).c_str(), status);
}

int sim_lstat(const char* path, struct stat* status)
{
    if (!active()) {
        return lstat(path, status);
    }
    if (const auto strike = enter(Call::Stat, {.name = path})) {
        return failWith(strike->error);
    }
    return withOwner(lstat(preparedPath(path).c_str(), status), status);
}

int sim_fstat(int fd, struct stat* status)
{
    if (!active()) {
        return fstat(fd, status);
    }
    if (const auto strike = enter(Call::Stat, {.name = openedOn(fd)})) {
        return failWith(strike->error);
    }
    return withOwner(fstat(fd, status), status);
}

int sim_chmod(const char* path, mode_t mode)
{
    if (!active()) {
        return chmod(path, mode);
    }
    if (const auto strike = enter(Call::Chmod, {.name = path})) {
        return failWith(strike->error);
    }
    return chmod(realPath(path).c_str(), mode);
}

int sim_fchmod(int fd, mode_t mode)
{
    if (!active()) {
        return fchmod(fd, mode);
    }
    if (const auto strike = enter(Call::Chmod, {.name = openedOn(fd)})) {
        return failWith(strike->error);
    }
    return fchmod(fd, mode);
}

void sim_sync()
{
    if (active()) {
        (void)enter(Call::Sync, {}); // the machine that runs the test has nothing to gain from a real one
        noteFileCall(Call::Sync, -1, "");
        return;
    }
    sync();
}
