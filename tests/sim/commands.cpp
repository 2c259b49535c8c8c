#include "sim/flash.h"
#include "sim/world.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

// The programs of the set, as far as the product uses them. The world is held.

namespace sim {
namespace {
using Words = std::vector<std::string>;

constexpr int kDone = 0;
constexpr int kFailed = 1 << 8;
constexpr int kRouteFailed = 7 << 8;
constexpr int kNotFound = 127 << 8;

std::optional<std::string> parseMac(const std::string& text)
{
    unsigned bytes[6];
    char rest = 0;
    if (std::sscanf(text.c_str(), "%x:%x:%x:%x:%x:%x%c", &bytes[0], &bytes[1], &bytes[2], &bytes[3], &bytes[4],
                    &bytes[5], &rest) != 6) {
        return std::nullopt;
    }
    return std::string(std::begin(bytes), std::end(bytes));
}

int netcfg(const Words& words)
{
    KernelIface* iface = words.size() >= 3 ? findIface(words[1]) : nullptr;
    if (iface == nullptr) {
        return kFailed;
    }
    if (words[2] == "up" || words[2] == "down") {
        iface->up = words[2] == "up";
        if (!iface->up) {
            dropRoutes(iface->name);
        }
        return kDone;
    }
    const auto mac = words[2] == "hwprefix" && words.size() == 4 ? parseMac(words[3]) : std::nullopt;
    if (!mac || iface->up) { // an interface that is up keeps its address
        return kFailed;
    }
    iface->mac = *mac;
    return kDone;
}

int ifconfig(const Words& words)
{
    KernelIface* iface = words.size() == 3 ? findIface(words[1]) : nullptr;
    if (iface == nullptr) {
        return kFailed;
    }
    clearAddress(*iface);
    iface->address = addressOf(words[2]);
    iface->mask = iface->address != 0 ? addressOf("255.255.255.0") : 0;
    iface->up = iface->up || iface->address != 0;
    return kDone;
}

int route(const Words& words)
{
    if (words.size() != 7 || words[1] != "add" || words[2] != "default" || words[3] != "gw" || words[5] != "dev") {
        return kRouteFailed;
    }
    const std::string& gateway = words[4];
    const KernelIface* iface = findIface(words[6]);
    if (iface == nullptr || !iface->up || ((addressOf(gateway) ^ iface->address) & iface->mask) != 0 ||
        iface->mask == 0) {
        return kRouteFailed; // the network is unreachable
    }
    auto& routes = world().kernel.routes;
    const auto isSame = [&](const Route& other) {
        return other.destination.empty() && other.table == 254 && other.ifname == words[6] && other.gateway == gateway;
    };
    if (std::ranges::any_of(routes, isSame)) {
        return kRouteFailed; // it is there already
    }
    routes.insert(routes.begin(), {.ifname = words[6], .gateway = gateway});
    return kDone;
}

int kill(const Words& words)
{
    if (words.size() != 3 || words[1] != "-9") {
        return kFailed;
    }
    return signalProcess(std::atoi(words[2].c_str()), SIGKILL) == 0 ? kDone : kFailed;
}

int removeFiles(const Words& words)
{
    int status = kDone;
    for (std::size_t at = 1; at < words.size(); ++at) {
        if (words[at] != "-f" && !std::filesystem::remove(realPath(words[at]))) {
            status = words[1] == "-f" ? kDone : kFailed;
        }
    }
    return status;
}

int changeMode(const Words& words)
{
    if (words.size() != 3) {
        return kFailed;
    }
    const auto mode = static_cast<mode_t>(std::strtoul(words[1].c_str(), nullptr, 8));
    return chmod(realPath(words[2]).c_str(), mode) == 0 ? kDone : kFailed;
}

int copy(const Words& words)
{
    std::error_code error;
    const bool copied =
        words.size() == 3 && std::filesystem::copy_file(realPath(words[1]), realPath(words[2]),
                                                        std::filesystem::copy_options::overwrite_existing, error);
    return copied ? kDone : kFailed;
}

/** Makes and removes interfaces beside the station's, as the supplicant does when it is told to. */
int wpaCli(const Words& words)
{
    const bool creates = words.size() == 3 && words[1] == "INTERFACE_CREATE";
    const bool deletes = words.size() == 3 && words[1] == "interface_del";
    if (!(creates || deletes) || creates == (findIface(words[2]) != nullptr)) {
        return kFailed;
    }
    if (creates) {
        addKernelIface(words[2]);
    } else {
        removeKernelIface(words[2]);
    }
    return kDone;
}

/** "cat FROM > TO": the shell empties the second file before the first one is looked at. */
int concatenate(const Words& words)
{
    if (words.size() != 4 || words[2] != ">") {
        return kFailed;
    }
    const int fd = open(realPath(words[3]).c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0) {
        return kFailed;
    }
    noteFileCall(Call::Open, fd, words[3]);
    const auto contents = readFile(words[1]);
    bool copied = contents.has_value();
    if (copied && !contents->empty()) {
        copied = write(fd, contents->data(), contents->size()) == static_cast<ssize_t>(contents->size());
        noteFileCall(Call::Write, fd, words[3]);
    }
    (void)close(fd);
    return copied ? kDone : kFailed;
}

int runWords(const Words& words)
{
    struct Program {
        const char* name;
        int (*run)(const Words&);
    };
    const auto succeeds = [](const Words&) { return kDone; };
    const Program programs[] = {
        {"netcfg", netcfg},   {"ifconfig", ifconfig}, {"route", route},      {"kill", kill},
        {"rm", removeFiles},  {"chmod", changeMode},  {"cp", copy},          {"/bin/wpa_cli", wpaCli},
        {"cat", concatenate}, {"sync", succeeds},     {"setprop", succeeds}, {"wl", succeeds},
    };
    if (words.empty()) {
        return kDone;
    }
    for (const Program& program : programs) {
        if (words[0] == program.name) {
            return program.run(words);
        }
    }
    return kNotFound;
}

Words split(const std::string& text)
{
    std::istringstream in(text);
    Words words;
    for (std::string word; in >> word;) {
        words.push_back(word);
    }
    return words;
}
} // namespace

int runCommand(const std::string& command)
{
    if (command.find("/system/bin/dhcpcd ") != std::string::npos) {
        return launchClient(command);
    }
    int status = kDone;
    std::istringstream in(command);
    for (std::string single; std::getline(in, single, ';');) {
        status = runWords(split(single));
    }
    return status;
}
} // namespace sim
