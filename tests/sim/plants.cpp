#include "sim/plants.h"

#include <filesystem>
#include <sys/stat.h>

namespace sim {
namespace {
void makeFifo(Set& set, const std::string& path)
{
    EXPECT_EQ(mkfifo(set.real(path).c_str(), 0666), 0) << path;
}
} // namespace

void plant(Set& set, const std::string& path, Plant kind, const std::string& contents)
{
    set.remove(path);
    const std::string victim = set.real(kVictim);
    if (kind == Plant::Link || kind == Plant::HardLink) {
        set.write(kVictim, contents);
    }
    switch (kind) {
    case Plant::Link:
    case Plant::DanglingLink:
        std::filesystem::create_symlink(victim, set.real(path));
        break;
    case Plant::HardLink:
        std::filesystem::create_hard_link(victim, set.real(path));
        break;
    case Plant::Fifo:
        makeFifo(set, path);
        break;
    case Plant::ForeignFifo:
        makeFifo(set, path);
        set.disown(path);
        break;
    case Plant::ForeignFile:
        set.write(path, contents);
        set.disown(path);
        break;
    }
}

std::string nameOf(Plant kind)
{
    constexpr const char* kNames[] = {"Link", "DanglingLink", "HardLink", "Fifo", "ForeignFifo", "ForeignFile"};
    return kNames[static_cast<int>(kind)];
}

void PrintTo(Plant kind, std::ostream* out)
{
    *out << nameOf(kind);
}
} // namespace sim
