#include "hostile.h"
#include "unit/hostap/bench.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/inotify.h>

using fuzz::Hostile;
using hostap::Bench;

// What devices near the set, its services and its kernel may say to the soft access point.

namespace {
constexpr int kSoftApRounds = 150;
constexpr std::size_t kLeaseWords = 5;
constexpr std::size_t kMostLeases = 5;

using Words = std::vector<std::string>;

Words wordsOf(const std::string& contents)
{
    std::istringstream in(contents);
    Words words;
    for (std::string word; in >> word;) {
        words.push_back(word);
    }
    return words;
}

/** The device that a list of leases begins with, each word as far as there is room for it. */
Words firstDevice(const std::string& contents)
{
    static constexpr std::size_t kRooms[kLeaseWords] = {31, 23, 23, 127, 31};
    Words words = wordsOf(contents);
    words.resize(kLeaseWords);
    for (std::size_t column = 0; column < kLeaseWords; ++column) {
        words[column] = words[column].substr(0, kRooms[column]).c_str(); // to the first zero byte
    }
    return words;
}

Words device()
{
    const Softap_Connection_info_t& info = softap_connectinfo;
    return {info.timestamp, info.macaddr, info.ipaddr, info.devicename, info.packetmac};
}

std::size_t count(const std::string& text, const std::string& part)
{
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++found;
    }
    return found;
}

void readsAsWords(Bench& bench, const std::string& contents)
{
    bench.set.write(hostap::kLeases, contents);
    sim::CapturedOutput output;
    SoftAP_GetConnection();
    EXPECT_EQ(device(), firstDevice(contents));
    EXPECT_EQ(count(output.text(), "].packetmac == "), std::min(wordsOf(contents).size() / kLeaseWords, kMostLeases));
}

TEST(HostileLeases, OfRandomBytesAreWords)
{
    Bench bench;
    Hostile hostile(21);
    for (int round = 0; round < kSoftApRounds; ++round) {
        std::string contents = hostile.bytes(hostile.upTo(3000));
        std::ranges::replace(contents, 'H', 'h'); // the test counts by the glue's own words
        readsAsWords(bench, contents);
    }
}

TEST(HostileLeases, OfWordsOfAnyLengthAreCut)
{
    Bench bench;
    Hostile hostile(22);
    for (int round = 0; round < kSoftApRounds; ++round) {
        std::string contents;
        for (std::size_t words = hostile.upTo(40); words > 0; --words) {
            const std::size_t edges[] = {1, 22, 23, 24, 30, 31, 32, 126, 127, 128, 255, 764, 2000};
            contents += std::string(edges[hostile.upTo(std::size(edges) - 1)], static_cast<char>('a' + words % 26));
            contents += hostile.words({" ", "\n", "\t", "\r\n"}, 3) + " ";
        }
        readsAsWords(bench, contents);
    }
}

TEST(HostileLeases, ThatAreSpoiledAreWords)
{
    Bench bench;
    Hostile hostile(23);
    const std::string good = "1795206803 02:00:00:00:02:00 192.168.255.182 phone1 01:02:00:00:00:02:00\n";
    for (int round = 0; round < kSoftApRounds; ++round) {
        std::string contents;
        for (std::size_t lines = hostile.upTo(8); lines > 0; --lines) {
            contents += hostile.spoiled(good);
        }
        readsAsWords(bench, contents);
    }
}

/** How many events, and how many changes among them, one read of these bytes tells of. */
std::pair<std::size_t, std::size_t> eventsIn(const std::string& bytes)
{
    std::size_t events = 0;
    std::size_t changes = 0;
    for (std::size_t at = 0; bytes.size() - at >= sizeof(inotify_event);) {
        inotify_event event;
        std::memcpy(&event, bytes.data() + at, sizeof(event));
        ++events;
        changes += (event.mask & IN_MODIFY) != 0 ? 1 : 0;
        if (event.len > bytes.size() - at - sizeof(event)) {
            break;
        }
        at += sizeof(event) + event.len;
    }
    return {events, changes};
}

TEST(HostileEvents, AreReadWithinTheirBytes)
{
    Bench bench;
    Hostile hostile(24);
    bench.start();
    inotify_event event{};
    event.mask = IN_MODIFY;
    for (int round = 0; round < kSoftApRounds; ++round) {
        event.len = static_cast<std::uint32_t>(hostile.upTo(2) * 16);
        std::string bytes;
        for (std::size_t each = hostile.upTo(8); each > 0; --each) {
            bytes += std::string(reinterpret_cast<const char*>(&event), sizeof(event)) + hostile.bytes(event.len);
        }
        bytes = hostile.spoiled(bytes).substr(0, 272); // as much as one read takes
        if (bytes.empty()) {
            continue;
        }
        bench.set.forget();
        bench.set.watch(hostap::kLeases).tells(bytes);
        const auto [events, changes] = eventsIn(bytes);
        EXPECT_EQ(bench.said("s_SoftAP_Check_Connection").size(), 2 * events + changes);
        EXPECT_EQ(bench.set.callbacks().size(), changes);
    }
}

TEST(HostileStations, CountByWhatEachReadBeginsWith)
{
    constexpr std::size_t kRead = 15;
    Bench bench;
    Hostile hostile(25);
    bench.start();
    sim::CapturedOutput output;
    for (int round = 0; round < kSoftApRounds; ++round) {
        const std::string bytes = hostile.spoiled(hostile.words({"up", "down", "u", "down\n", "x", " "}, 20));
        if (bytes.empty()) {
            continue;
        }
        std::vector<sim::Called> expected;
        for (std::size_t at = 0; at < bytes.size(); at += kRead) {
            const std::string read = bytes.substr(at, kRead);
            if (read.starts_with("up") || read.starts_with("down")) {
                expected.push_back({read[0] == 'u' ? sim::SOFTAPSCAN : sim::SOFTAPDISCONNECTED, "bcm0"});
            }
        }
        bench.say(bytes);
        EXPECT_TRUE(bench.set.calledBack(expected));
    }
}

TEST(HostileNames, AreWrittenAsTheyAreRead)
{
    Bench bench;
    Hostile hostile(26);
    for (int round = 0; round < kSoftApRounds; ++round) {
        std::string printed = hostile.bytes(hostile.upTo(60));
        printed = printed.starts_with('\n') ? "x" + printed : printed;
        const std::size_t end = printed.find('\n');
        const std::string name = printed.substr(0, std::min<std::size_t>(31, end == std::string::npos ? 31 : end + 1));
        bench.set.onCommand(hostap::kGetName).prints(printed);
        bench.startHere();
        EXPECT_STREQ(hotspot.mSSID, name.c_str());
        EXPECT_EQ(
            bench.set.read(hostap::kConfiguration),
            "interface=bcm0\ndriver=nl80211\nctrl_interface=/data/wifi\nchannel=0\nhw_mode=g\nieee80211n=1\nssid=" +
                std::string(name.c_str()) + "\nignore_broadcast_ssid=0\n");
    }
}
} // namespace
