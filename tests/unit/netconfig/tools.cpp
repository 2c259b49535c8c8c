#include "tools.h"

#include <algorithm>
#include <arpa/inet.h>
#include <fstream>
#include <sstream>
#include <zlib.h>

namespace netconfig {
namespace {
std::string dotted(std::uint32_t address)
{
    char text[INET_ADDRSTRLEN];
    return inet_ntop(AF_INET, &address, text, sizeof(text));
}

std::uint32_t addressOf(const std::string& text)
{
    in_addr address{};
    EXPECT_EQ(inet_pton(AF_INET, text.c_str(), &address), 1) << text;
    return address.s_addr;
}

/** "7f" is one byte, "00*164" so many. */
std::string bytesOf(const std::string& word)
{
    const std::size_t star = word.find('*');
    const std::size_t count = star == std::string::npos ? 1 : std::stoul(word.substr(star + 1));
    return std::string(count, static_cast<char>(std::stoi(word.substr(0, star), nullptr, 16)));
}
} // namespace

std::string golden(const std::string& name)
{
    std::ifstream file(std::string(GOLDEN_FOLDER "/") + name);
    EXPECT_TRUE(file) << "no golden file " << name;
    std::string bytes;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line.substr(0, line.find('#')));
        for (std::string word; words >> word;) {
            bytes += bytesOf(word);
        }
    }
    return bytes;
}

std::string fileOf(const std::string& records)
{
    const unsigned long check =
        crc32(0, reinterpret_cast<const Bytef*>(records.data()), static_cast<uInt>(records.size()));
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>(check >> shift & 0xff);
    }
    return bytes + records;
}

std::ostream& operator<<(std::ostream& out, const Settings& settings)
{
    out << settings.name << " type " << settings.type << " mode " << settings.mode;
    for (const std::string& address : settings.addresses) {
        out << " " << address;
    }
    return out << " lost " << settings.lost << " timer " << settings.timer;
}

std::vector<MovoNetIface_t*> records()
{
    std::vector<MovoNetIface_t*> all;
    for (MovoNetIface_t* iface = movonet::firstInterface(); iface != nullptr; iface = movonet::nextInterface(iface)) {
        all.push_back(iface);
    }
    return all;
}

Configuration listed()
{
    Configuration all;
    for (const MovoNetIface_t* iface : records()) {
        all.push_back({iface->name,
                       static_cast<int>(iface->type),
                       static_cast<int>(iface->ipMode),
                       {dotted(iface->sipv4), dotted(iface->smaskv4), dotted(iface->sgwv4), dotted(iface->sdns1v4),
                        dotted(iface->sdns2v4)},
                       iface->dhcpDownCount,
                       iface->dhcpDownHandle});
    }
    return all;
}

Configuration goldenConfiguration(int records)
{
    if (records == 1) {
        return {{"eth0", 1, 2, {"192.168.1.20", "255.255.255.0", "192.168.1.1", "192.168.1.2", "192.168.1.3"}}};
    }
    if (records == 3) {
        return {{"lo", 0, 2, {"127.0.0.1", "255.0.0.0", "0.0.0.0", "0.0.0.0", "0.0.0.0"}},
                {"eth0", 1, 0, {"10.0.2.15", "255.255.255.0", "10.0.2.2", "10.0.2.3", "0.0.0.0"}, 3, 7},
                {"wlan0abc", 2, 3, {"172.16.254.1", "255.240.0.0", "172.16.0.1", "8.8.8.8", "8.8.4.4"}, -2, 258}};
    }
    Configuration all;
    for (int number = 1; number <= records; ++number) {
        const std::string n = std::to_string(number);
        all.push_back({"net" + n,
                       1,
                       number % 4,
                       {"10.0." + n + ".2", "255.255.0.0", "10.0." + n + ".1", "9.9.9." + n, "1.1.1." + n},
                       number});
    }
    return all;
}

MovoNetIface_t& list(const MovoNetIface_t& record)
{
    auto* copy = new MovoNetIface_t(record);
    const movonet::ScopedLock lock(movonet::ifaceListLock);
    EXPECT_TRUE(lock);
    movonet::appendInterface(copy);
    return *copy;
}

MovoNetIface_t& list(const Settings& settings)
{
    MovoNetIface_t record{};
    settings.name.copy(record.name, sizeof(record.name) - 1);
    record.type = static_cast<MovoNetIfaceType_e>(settings.type);
    record.ipMode = static_cast<MovoNetIPMode_e>(settings.mode);
    record.sipv4 = addressOf(settings.addresses[0]);
    record.smaskv4 = addressOf(settings.addresses[1]);
    record.sgwv4 = addressOf(settings.addresses[2]);
    record.sdns1v4 = addressOf(settings.addresses[3]);
    record.sdns2v4 = addressOf(settings.addresses[4]);
    record.dhcpcfd = movonet::kNoFd;
    record.dhcpDownCount = settings.lost;
    record.dhcpDownHandle = settings.timer;
    return list(record);
}

Configuration reversed(Configuration configuration)
{
    std::ranges::reverse(configuration);
    return configuration;
}

void clearList()
{
    const movonet::ScopedLock lock(movonet::ifaceListLock);
    EXPECT_TRUE(lock);
    while (MovoNetIface_t* head = movonet::takeHeadInterface()) {
        movonet::retireInterface(head);
    }
}

Lines said(const sim::Set& set, const std::string& function)
{
    static constexpr const char* kLevels[] = {"NONE ", "ERROR ", "WARNING ", "INFO ", "DEBUG ", "LOG "};
    Lines lines;
    for (const sim::LogLine& line : set.log()) {
        if (line.module == "movo_net_fg" && line.function == function) {
            lines.push_back(kLevels[line.level] + line.text);
        }
    }
    return lines;
}
} // namespace netconfig
