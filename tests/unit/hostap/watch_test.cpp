#include "bench.h"

#include <cstring>
#include <sys/inotify.h>

using namespace hostap;
using sim::Call;

// The thread that watches the leases.

namespace {

std::string event(std::uint32_t mask, const std::string& name = "", std::uint32_t told = UINT32_MAX)
{
    inotify_event header{};
    header.wd = 1;
    header.mask = mask;
    header.len = told == UINT32_MAX ? static_cast<std::uint32_t>(name.size()) : told;
    return std::string(reinterpret_cast<const char*>(&header), sizeof(header)) + name;
}

Lines said(const Bench& bench)
{
    return bench.said("s_SoftAP_Check_Connection");
}

/** A watch that waits for the list to change. */
struct Watching : Bench {
    Watching()
    {
        EXPECT_EQ(SoftAP_Create_Thread(s_SoftAP_Check_Connection), 0);
        set.settle();
        set.grantTicks(1);
        set.forget();
    }
    void tell(const std::string& bytes) { set.watch(kLeases).tells(bytes); }
};

TEST(LeaseWatch, BeginsWithThePipe)
{
    Bench bench;
    EXPECT_EQ(SoftAP_Create_Thread(s_SoftAP_Check_Connection), 0);
    bench.set.settle();
    EXPECT_EQ(bench.set.openDescriptors(), (Lines{"open(\"/tmp/softapnotify.pipe.bcm0\")", "inotify_init1()"}));
    EXPECT_EQ(bench.set.watch(kLeases).watchers(), 1);
    EXPECT_EQ(bench.set.watch(kLeases).awaited(), std::uint32_t{IN_MODIFY});
    EXPECT_EQ(said(bench), Lines{});
}

TEST(LeaseWatch, BeginsWithEachStart)
{
    Bench bench;
    bench.start();
    EXPECT_EQ(bench.set.watch(kLeases).watchers(), 1);
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Status(0), 1);
}

TEST(LeaseWatch, TellsWhenADeviceHasGotAnAddress)
{
    Bench bench;
    bench.start();
    bench.writeLeases(kPhoneLease);
    EXPECT_CALLBACKS(bench.set, {{sim::SOFTAPCONNECTED, "bcm0"}});
    EXPECT_STREQ(softap_connectinfo.devicename, "phone1");
    EXPECT_EQ(bench.set.callbacks()[0].thread, sim::ThreadKind::Product);
}

TEST(LeaseWatch, TellsOfEachWriteAgain)
{
    Watching bench;
    for (int count = 0; count < 3; ++count) {
        bench.writeLeases(kPhoneLease);
        EXPECT_CALLBACKS(bench.set, {{sim::SOFTAPCONNECTED, "bcm0"}});
    }
}

TEST(LeaseWatch, WaitsForTheListFiveSecondsAtATime)
{
    Bench bench;
    bench.set.remove(kLeases);
    bench.set.holdSleeps(5000);
    bench.start();
    for (int count = 0; count < 3; ++count) {
        EXPECT_EQ(bench.set.watch(kLeases).watchers(), 0);
        EXPECT_TRUE(bench.set.wake());
    }
    EXPECT_EQ(bench.set.clock(), 4 * 5000 + 100); // with the tick of the start
    bench.set.write(kLeases, "");
    EXPECT_TRUE(bench.set.wake());
    EXPECT_EQ(bench.set.watch(kLeases).watchers(), 1);
    EXPECT_EQ(said(bench), Lines{});
    EXPECT_FALSE(bench.set.wake());
    bench.writeLeases(kPhoneLease);
    EXPECT_CALLBACKS(bench.set, {{sim::SOFTAPCONNECTED, "bcm0"}});
}

TEST(LeaseWatch, EndsWithoutInotify)
{
    Bench bench;
    (void)bench.set.fail({.call = Call::InotifyInit, .error = EMFILE});
    EXPECT_EQ(s_SoftAP_Check_Connection(nullptr), nullptr);
    EXPECT_EQ(said(bench), Lines{"ERROR HOSTAP:inotify_init error " + std::to_string(EMFILE) + "\n"});
    EXPECT_EQ(bench.set.openDescriptors(), Lines{"open(\"/tmp/softapnotify.pipe.bcm0\")"});
}

TEST(LeaseWatch, DoesNotKeepTheAccessPointFromBeingUp)
{
    Bench bench;
    (void)bench.set.fail({.call = Call::InotifyInit, .error = EMFILE});
    bench.start();
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Status(0), 1);
    bench.say("up"); // the pipe works
    EXPECT_CALLBACKS(bench.set, {{sim::SOFTAPSCAN, "bcm0"}});
}

TEST(LeaseWatch, ReadsAgainAtOnceWhenAReadFails)
{
    Bench bench;
    (void)bench.set.fail({.call = Call::Read, .on = "inotify", .nth = 1, .times = 3, .error = EIO});
    EXPECT_EQ(SoftAP_Create_Thread(s_SoftAP_Check_Connection), 0);
    bench.set.settle();
    EXPECT_EQ(said(bench), Lines(3, "ERROR HOSTAP: read error!\n"));
    EXPECT_EQ(bench.set.clock(), 0);
    bench.writeLeases(kPhoneLease);
    EXPECT_CALLBACKS(bench.set, {{sim::SOFTAPCONNECTED, "bcm0"}});
}

TEST(LeaseWatch, ReadsAgainAtOnceWhenAReadGivesNothing)
{
    Bench bench;
    (void)bench.set.fail({.call = Call::Read, .on = "inotify", .nth = 1, .times = 2, .bytes = 0});
    EXPECT_EQ(SoftAP_Create_Thread(s_SoftAP_Check_Connection), 0);
    bench.set.settle();
    EXPECT_EQ(said(bench), Lines(2, "ERROR HOSTAP: read error!\n"));
}

TEST(LeaseWatch, StaysWhenTheAccessPointStops)
{
    Bench bench;
    bench.start();
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 0);
    bench.set.forget();
    bench.writeLeases(kPhoneLease);
    EXPECT_CALLBACKS(bench.set, {{sim::SOFTAPCONNECTED, "bcm0"}});
}

TEST(LeaseWatch, KeepsOneWatchAndOnePipeForEachStart)
{
    Bench bench;
    for (int count = 1; count <= 3; ++count) {
        bench.start();
        EXPECT_EQ(bench.set.watch(kLeases).watchers(), count);
        EXPECT_EQ(bench.set.liveThreads(), 1 + count); // the loop's, and theirs
        EXPECT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 0);
    }
    bench.set.forget();
    bench.writeLeases(kPhoneLease);
    EXPECT_CALLBACKS(bench.set,
                     {{sim::SOFTAPCONNECTED, "bcm0"}, {sim::SOFTAPCONNECTED, "bcm0"}, {sim::SOFTAPCONNECTED, "bcm0"}});
    bench.say("up"); // into the latest pipe
    EXPECT_CALLBACKS(bench.set, {{sim::SOFTAPSCAN, "bcm0"}});
}

/** The list is emptied and written: two changes, of which the first shows no device. */
/** Under the lock of the watches, since every one of them publishes. */
std::string deviceName()
{
    const movonet::ScopedLock lock(movonet::hotspotLock);
    return softap_connectinfo.devicename;
}

TEST(LeaseWatch, KeepsTwoCallbacksAStartForADeviceThatGetsAnAddress)
{
    Bench bench;
    for (int starts = 1; starts <= 3; ++starts) {
        bench.start();
        EXPECT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 0);
        bench.set.forget();
        bench.writeLeases("");
        EXPECT_EQ(deviceName(), "");
        bench.writeLeases(kPhoneLease);
        EXPECT_EQ(deviceName(), "phone1");
        EXPECT_EQ(bench.set.callbacks().size(), 2U * static_cast<std::size_t>(starts));
    }
}

// --- Events of every kind ---

struct Events {
    const char* name;
    std::string bytes;
    Lines said;
    std::size_t callbacks;
};
void PrintTo(const Events& events, std::ostream* out)
{
    *out << events.name;
}

constexpr const char* kFile = "INFO HOSTAP :Object type: File\n";
constexpr const char* kFolder = "INFO HOSTAP :Object type: Direcotory\n";
constexpr const char* kModified = "ERROR HOSTAP:Event mask: 00000002\n";
constexpr const char* kFirst = "ERROR HOSTAP :File modified!!!!!!!!!:0\n";
constexpr const char* kSecond = "ERROR HOSTAP :File modified!!!!!!!!!:16\n";

const std::string kMod = event(IN_MODIFY);

const Events kEvents[] = {
    {"Modified", kMod, {kFile, kModified, kFirst}, 1},
    {"ModifiedTwice", kMod + kMod, {kFile, kModified, kFirst, kFile, kModified, kSecond}, 2},
    {"KeepsGoneAsNothingButItsMask", event(IN_IGNORED), {kFile, "ERROR HOSTAP:Event mask: 00008000\n"}, 0},
    {"Deleted", event(IN_DELETE_SELF), {kFile, "ERROR HOSTAP:Event mask: 00000400\n"}, 0},
    {"Overflown", event(IN_Q_OVERFLOW), {kFile, "ERROR HOSTAP:Event mask: 00004000\n"}, 0},
    {"AFolder", event(IN_ISDIR | IN_CREATE), {kFolder, "ERROR HOSTAP:Event mask: 40000100\n"}, 0},
    {"KeepsAFolderThatIsModified",
     event(IN_ISDIR | IN_MODIFY),
     {kFolder, "ERROR HOSTAP:Event mask: 40000002\n", kFirst},
     1},
    {"NothingAndModified",
     event(0) + kMod,
     {kFile, "ERROR HOSTAP:Event mask: 00000000\n", kFile, kModified, kSecond},
     1},
    {"AllBits", event(~0U), {kFolder, "ERROR HOSTAP:Event mask: FFFFFFFF\n", kFirst}, 1},
    {"WithAName",
     event(IN_MODIFY, std::string(16, 'n')) + kMod,
     {kFile, kModified, kFirst, kFile, kModified, "ERROR HOSTAP :File modified!!!!!!!!!:32\n"},
     2},
    {"WithTheLongestName", event(IN_MODIFY, std::string(256, 'n')), {kFile, kModified, kFirst}, 1},
    {"SeventeenAtOnce", std::string(), {}, 17},
    {"CutInTheHeader", kMod.substr(0, 15), {}, 0},
    {"CutInTheSecondHeader", kMod + kMod.substr(0, 15), {kFile, kModified, kFirst}, 1},
    {"CutInTheName", event(IN_MODIFY, "short", 100), {kFile, kModified, kFirst}, 1},
    {"ANameWithoutEnd", event(IN_MODIFY, "", 0xFFFFFFF0) + kMod, {kFile, kModified, kFirst}, 1},
    {"ANameThatEndsAtTheEnd", event(IN_MODIFY, "", 16) + kMod, {kFile, kModified, kFirst}, 1},
};

TEST(LeaseWatch, TakesSeventeenEventsARead)
{
    Watching bench;
    std::string bytes;
    for (int count = 0; count < 18; ++count) {
        bytes += kMod;
    }
    bench.tell(bytes);
    const Lines lines = said(bench);
    ASSERT_EQ(lines.size(), 18U * 3);
    EXPECT_EQ(lines[17 * 3 - 1], "ERROR HOSTAP :File modified!!!!!!!!!:256\n");
    EXPECT_EQ(lines.back(), kFirst) << "its place in what the second read gave";
    EXPECT_EQ(bench.set.callbacks().size(), 18U);
}

class LeaseEvents : public testing::TestWithParam<Events> {};

TEST_P(LeaseEvents, AreToldOf)
{
    Watching bench;
    std::string bytes = GetParam().bytes;
    Lines expected = GetParam().said;
    for (std::size_t count = 0; bytes.empty() && count < GetParam().callbacks; ++count) {
        expected.insert(expected.end(), {kFile, kModified,
                                         "ERROR HOSTAP :File modified!!!!!!!!!:" + std::to_string(16 * count) + "\n"});
    }
    for (std::size_t count = 0; GetParam().bytes.empty() && count < GetParam().callbacks; ++count) {
        bytes += kMod;
    }
    bench.tell(bytes);
    EXPECT_EQ(said(bench), expected);
    EXPECT_TRUE(bench.set.calledBack(std::vector<sim::Called>(GetParam().callbacks, {sim::SOFTAPCONNECTED, "bcm0"})));
}

TEST_P(LeaseEvents, DoNotEndTheWatch)
{
    Watching bench;
    if (!GetParam().bytes.empty()) {
        bench.tell(GetParam().bytes);
    }
    bench.set.forget();
    bench.writeLeases(kPhoneLease);
    EXPECT_EQ(said(bench), (Lines{kFile, kModified, kFirst}));
    EXPECT_CALLBACKS(bench.set, {{sim::SOFTAPCONNECTED, "bcm0"}});
}
INSTANTIATE_TEST_SUITE_P(Kinds, LeaseEvents, testing::ValuesIn(kEvents),
                         [](const auto& each) { return each.param.name; });
} // namespace
