#include "bench.h"

#include <cstring>

using namespace hostap;
using sim::Call;

// The list of leases: whatever devices send, and whoever writes it.

namespace {
constexpr std::size_t kRooms[] = {31, 23, 23, 127, 31}; ///< Characters that are kept of each word.

using Device = std::vector<std::string>;

Device device()
{
    const Softap_Connection_info_t& info = softap_connectinfo;
    return {info.timestamp, info.macaddr, info.ipaddr, info.devicename, info.packetmac};
}

/** Reads the list and returns what goes to standard output. */
std::string readLeases()
{
    sim::CapturedOutput output;
    SoftAP_GetConnection();
    return output.text();
}

std::string printed(int index, const Device& words)
{
    const std::string head = "HOSTAP:con[" + std::to_string(index) + "].";
    return head + "timestamp == " + words[0] + "\n" + head + "macaddr == " + words[1] + "\n" + head +
           "ipaddr == " + words[2] + "\n" + head + "devicename == " + words[3] + "\n" + head +
           "packetmac == " + words[4] + "\n";
}

std::string line(const Device& words)
{
    return words[0] + " " + words[1] + " " + words[2] + " " + words[3] + " " + words[4] + "\n";
}

Device phone(int number)
{
    const std::string digit = std::to_string(number);
    return {"179520680" + digit, "02:00:00:00:02:0" + digit, "192.168.255.18" + digit, "phone" + digit,
            "01:02:0" + digit};
}

TEST(Leases, GiveTheFirstDevice)
{
    Bench bench;
    bench.set.write(kLeases, "1795206803 02:00:00:00:02:00 192.168.255.182 phone1 *\n");
    EXPECT_EQ(readLeases(), "HOSTAP:con[0].timestamp == 1795206803\n"
                            "HOSTAP:con[0].macaddr == 02:00:00:00:02:00\n"
                            "HOSTAP:con[0].ipaddr == 192.168.255.182\n"
                            "HOSTAP:con[0].devicename == phone1\n"
                            "HOSTAP:con[0].packetmac == *\n");
    EXPECT_EQ(device(), (Device{"1795206803", "02:00:00:00:02:00", "192.168.255.182", "phone1", "*"}));
    EXPECT_CALLBACKS(bench.set, {{sim::SOFTAPCONNECTED, "bcm0"}});
    EXPECT_EQ(bench.said(), Lines{});
}

TEST(Leases, OfThreeDevicesArePrintedAndTheFirstCounts)
{
    Bench bench;
    bench.set.write(kLeases, line(phone(1)) + line(phone(2)) + line(phone(3)));
    EXPECT_EQ(readLeases(), printed(0, phone(1)) + printed(1, phone(2)) + printed(2, phone(3)));
    EXPECT_EQ(device(), phone(1));
}

TEST(Leases, BeyondTheFifthAreNotRead)
{
    Bench bench;
    std::string all;
    std::string expected;
    for (int number = 1; number <= 9; ++number) {
        all += line(phone(number));
        expected += number <= 5 ? printed(number - 1, phone(number)) : "";
    }
    bench.set.write(kLeases, all);
    EXPECT_EQ(readLeases(), expected);
    EXPECT_EQ(device(), phone(1));
}

TEST(Leases, OfNobodyEmptyTheDevice)
{
    Bench bench;
    bench.set.write(kLeases, line(phone(1)));
    (void)readLeases();
    for (const char* contents : {"", "\n", " \t\r\n \n"}) {
        softap_connectinfo = {
            .timestamp = "old", .macaddr = "old", .ipaddr = "old", .devicename = "old", .packetmac = "old"};
        bench.set.write(kLeases, contents);
        EXPECT_EQ(readLeases(), "");
        EXPECT_EQ(device(), Device(5));
    }
    EXPECT_TRUE(bench.set.calledBack(std::vector<sim::Called>(4, {sim::SOFTAPCONNECTED, "bcm0"})));
}

TEST(Leases, AreWholeRecordsOfZeroBehindTheirWords)
{
    Bench bench;
    std::memset(&softap_connectinfo, 'x', sizeof(softap_connectinfo));
    bench.set.write(kLeases, "1 2 3 4 5\n");
    (void)readLeases();
    const Softap_Connection_info_t expected = {
        .timestamp = "1", .macaddr = "2", .ipaddr = "3", .devicename = "4", .packetmac = "5"};
    EXPECT_EQ(std::memcmp(&softap_connectinfo, &expected, sizeof(expected)), 0);
}

/** Contents of the list, what is printed and which device counts. */
struct Shape {
    const char* name;
    std::string contents;
    std::vector<Device> printed;
    Device device;
};
void PrintTo(const Shape& shape, std::ostream* out)
{
    *out << shape.name;
}

const Shape kShapes[] = {
    {"NoLineEndAtTheEnd", "1 2 3 4 5", {{"1", "2", "3", "4", "5"}}, {"1", "2", "3", "4", "5"}},
    {"ManyBlanks", "  1\t2  3 \v4\f5 \n\n", {{"1", "2", "3", "4", "5"}}, {"1", "2", "3", "4", "5"}},
    {"WindowsLineEnds",
     "1 2 3 4 5\r\n6 7 8 9 0\r\n",
     {{"1", "2", "3", "4", "5"}, {"6", "7", "8", "9", "0"}},
     {"1", "2", "3", "4", "5"}},
    {"OneWordALine", "1\n2\n3\n4\n5\n", {{"1", "2", "3", "4", "5"}}, {"1", "2", "3", "4", "5"}},
    {"KeepsWordsOfTheNextLineForAMissingName",
     "1 2 3 5\n6 7 8 9 0\n",
     {{"1", "2", "3", "5", "6"}},
     {"1", "2", "3", "5", "6"}},
    {"KeepsASixthWordForTheNextRecord",
     "1 2 3 4 5 6\n7 8 9 0 a\n",
     {{"1", "2", "3", "4", "5"}, {"6", "7", "8", "9", "0"}},
     {"1", "2", "3", "4", "5"}},
    {"KeepsTheWordsOfARecordThatIsNotWhole", "1 2 3\n", {}, {"1", "2", "3", "", ""}},
    {"OneWord", "word", {}, {"word", "", "", "", ""}},
    {"FourWords", "1 2 3 4", {}, {"1", "2", "3", "4", ""}},
    {"SecondNotWhole", "1 2 3 4 5\n6 7", {{"1", "2", "3", "4", "5"}}, {"1", "2", "3", "4", "5"}},
    {"BytesAboveAscii",
     "1 2 3 \xc3\xa4\xff 5\n",
     {{"1", "2", "3", "\xc3\xa4\xff", "5"}},
     {"1", "2", "3", "\xc3\xa4\xff", "5"}},
    {"Formats", "%s %n %d %x %%\n", {{"%s", "%n", "%d", "%x", "%%"}}, {"%s", "%n", "%d", "%x", "%%"}},
    {"ZeroBytes", std::string("1\0x 2 3 4 5\n", 12), {{"1", "2", "3", "4", "5"}}, {"1", "2", "3", "4", "5"}},
    {"DuidLine",
     "duid 00:01:00:01\n1 2 3 4 5\n",
     {{"duid", "00:01:00:01", "1", "2", "3"}},
     {"duid", "00:01:00:01", "1", "2", "3"}},
};

class LeaseShape : public testing::TestWithParam<Shape> {};

TEST_P(LeaseShape, IsReadAsWords)
{
    Bench bench;
    bench.set.write(kLeases, GetParam().contents);
    std::string expected;
    for (std::size_t index = 0; index < GetParam().printed.size(); ++index) {
        expected += printed(static_cast<int>(index), GetParam().printed[index]);
    }
    EXPECT_EQ(readLeases(), expected);
    EXPECT_EQ(device(), GetParam().device);
    EXPECT_CALLBACKS(bench.set, {{sim::SOFTAPCONNECTED, "bcm0"}});
}
INSTANTIATE_TEST_SUITE_P(Shapes, LeaseShape, testing::ValuesIn(kShapes),
                         [](const auto& each) { return each.param.name; });

/** Names are up to the devices: each column in turn, words of every length. */
class LeaseColumn : public testing::TestWithParam<std::size_t> {};

TEST_P(LeaseColumn, CutsWordsOfEveryLength)
{
    Bench bench;
    sim::CapturedOutput output;
    for (std::size_t length = 1; length <= 2000; ++length) {
        Device words = {"a", "b", "c", "d", "e"};
        for (std::size_t at = words[GetParam()].size(); at < length; ++at) {
            words[GetParam()] += static_cast<char>('A' + at % 26);
        }
        bench.set.write(kLeases, line(words) + line(phone(2)));
        SoftAP_GetConnection();
        words[GetParam()].resize(std::min(length, kRooms[GetParam()]));
        ASSERT_EQ(device(), words) << length;
    }
}
INSTANTIATE_TEST_SUITE_P(Columns, LeaseColumn, testing::Range<std::size_t>(0, 5));

TEST(Leases, LongWordsDoNotShiftWhatFollows)
{
    Bench bench;
    const std::string word(2000, 'x');
    bench.set.write(kLeases, line({word, word, word, word, word}) + line(phone(2)));
    const Device cut = {std::string(31, 'x'), std::string(23, 'x'), std::string(23, 'x'), std::string(127, 'x'),
                        std::string(31, 'x')};
    EXPECT_EQ(readLeases(), printed(0, cut) + printed(1, phone(2)));
}

// --- A list that cannot be read ---

TEST(Leases, AreLookedForTenTimes)
{
    Bench bench;
    bench.set.remove(kLeases);
    SoftAP_GetConnection();
    Lines expected;
    for (int attempt = 0; attempt < 10; ++attempt) {
        expected.emplace_back("ERROR SoftAP_GetConnection: HOSTAP:open /tmp/dnsmasq.leases  failed \n");
        expected.push_back("INFO SoftAP_GetConnection: HOSTAP: retry = " + std::to_string(attempt));
    }
    EXPECT_EQ(bench.said(), expected);
    EXPECT_EQ(bench.set.clock(), 5000);
    EXPECT_CALLBACKS(bench.set, {});
}

TEST(Leases, LeaveTheDeviceAloneWhenTheyCannotBeOpened)
{
    Bench bench;
    bench.set.write(kLeases, line(phone(1)));
    (void)readLeases();
    bench.set.remove(kLeases);
    (void)readLeases();
    EXPECT_EQ(device(), phone(1));
}

TEST(Leases, AreReadAsSoonAsTheyCanBeOpened)
{
    Bench bench;
    bench.set.write(kLeases, line(phone(1)));
    (void)bench.set.fail({.call = Call::Open, .on = kLeases, .nth = 1, .times = 9, .error = ENOENT});
    (void)readLeases();
    EXPECT_EQ(device(), phone(1));
    EXPECT_EQ(bench.said().size(), 18U);
    EXPECT_EQ(bench.set.clock(), 4500);
    EXPECT_CALLBACKS(bench.set, {{sim::SOFTAPCONNECTED, "bcm0"}});
}

TEST(Leases, ThatAreAFolderCannotBeOpened)
{
    Bench bench;
    bench.set.remove(kLeases);
    bench.set.write(std::string(kLeases) + "/file", "");
    EXPECT_EQ(readLeases(), "");
    EXPECT_EQ(bench.said().size(), 20U) << "ten attempts";
    EXPECT_CALLBACKS(bench.set, {});
    bench.set.remove(kLeases);
}

TEST(Leases, AreClosed)
{
    Bench bench;
    bench.set.write(kLeases, line(phone(1)));
    (void)readLeases();
    EXPECT_EQ(bench.set.openDescriptors(), Lines{});
}
} // namespace
