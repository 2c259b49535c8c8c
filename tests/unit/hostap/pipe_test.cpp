#include "bench.h"

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace hostap;
using sim::Call;

// The pipe into which the soft access point's services write as stations come and go.

namespace {
const Lines kMade = {"INFO HOSTAP:removing dhcpcd pipe: /tmp/softapnotify.pipe.bcm0, return=-1\n",
                     "INFO HOSTAP:opening dhcpcd pipe: /tmp/softapnotify.pipe.bcm0\n"};

Lines with(Lines lines, const std::string& last)
{
    lines.push_back(last);
    return lines;
}

TEST(SoftApPipe, IsMadeForEverybodyToWriteInto)
{
    Bench bench;
    EXPECT_EQ(SoftAP_Gethostap_Pipe(), 0);
    EXPECT_EQ(bench.said(), (Lines{"INFO SoftAP_Gethostap_Pipe: HOSTAP:removing dhcpcd pipe: "
                                   "/tmp/softapnotify.pipe.bcm0, return=-1\n",
                                   "INFO SoftAP_Gethostap_Pipe: HOSTAP:opening dhcpcd pipe: "
                                   "/tmp/softapnotify.pipe.bcm0\n"}));
    EXPECT_EQ(bench.ran(), Lines{"chmod 777 /tmp/softapnotify.pipe.bcm0"});
    struct stat status {};
    ASSERT_EQ(stat(bench.set.real(kPipe).c_str(), &status), 0);
    EXPECT_TRUE(S_ISFIFO(status.st_mode));
    EXPECT_EQ(status.st_mode & 0777, 0777U);
}

TEST(SoftApPipe, KeepsCallingItselfTheOneOfDhcpcd)
{
    Bench bench;
    EXPECT_EQ(SoftAP_Gethostap_Pipe(), 0);
    EXPECT_EQ(bench.said("SoftAP_Gethostap_Pipe"), kMade);
}

/** What the pipe is before somebody changes its mode. */
TEST(SoftApPipe, IsMadeWithTheGroupBit)
{
    Bench bench;
    const mode_t mask = umask(0);
    bench.set.onCommand("chmod").does([&bench] {
        struct stat status {};
        ASSERT_EQ(stat(bench.set.real(kPipe).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 02702U);
    });
    EXPECT_EQ(SoftAP_Gethostap_Pipe(), 0);
    (void)umask(mask);
    EXPECT_RAN(bench.set, "chmod 777 /tmp/softapnotify.pipe.bcm0");
}

TEST(SoftApPipe, TakesThePlaceOfAnOlderOne)
{
    Bench bench;
    bench.set.write(kPipe, "no pipe");
    EXPECT_EQ(SoftAP_Gethostap_Pipe(), 0);
    EXPECT_EQ(bench.said("SoftAP_Gethostap_Pipe")[0],
              "INFO HOSTAP:removing dhcpcd pipe: /tmp/softapnotify.pipe.bcm0, return=0\n");
    bench.set.grantTicks(1);
    bench.say("up");
    EXPECT_CALLBACKS(bench.set, {{sim::SOFTAPSCAN, "bcm0"}});
}

TEST(SoftApPipe, MayBeThereAlready)
{
    Bench bench;
    ASSERT_EQ(mkfifo(bench.set.real(kPipe).c_str(), 0600), 0);
    (void)bench.set.fail({.call = Call::Unlink, .on = kPipe, .error = EBUSY});
    EXPECT_EQ(SoftAP_Gethostap_Pipe(), 0);
    bench.set.grantTicks(1);
    bench.say("up");
    EXPECT_CALLBACKS(bench.set, {{sim::SOFTAPSCAN, "bcm0"}});
}

// --- When it cannot be made ---

struct PipeFailure {
    const char* name;
    std::function<void(sim::Set&)> fault;
    std::string said;
    Lines left; ///< Descriptors.
};
void PrintTo(const PipeFailure& failure, std::ostream* out)
{
    *out << failure.name;
}

const PipeFailure kPipeFailures[] = {
    {"NoPipe",
     [](sim::Set& set) { (void)set.fail({.call = Call::Mkfifo, .on = kPipe, .error = ENOSPC}); },
     "ERROR HOSTAP:can't create fifo : No space left on device\n",
     {}},
    {"NotOpened",
     [](sim::Set& set) { (void)set.fail({.call = Call::Open, .on = kPipe, .error = EACCES}); },
     "ERROR HOSTAP:can not open file: /tmp/softapnotify.pipe.bcm0 error is Permission denied\n",
     {}},
    {"NoLoop", [](sim::Set& set) { set.stopLoop(); }, "ERROR HOSTAP:can not addevent\n", {}},
    {"NoMemory",
     [](sim::Set& set) { (void)set.fail({.call = Call::Malloc, .error = ENOMEM}); },
     "ERROR HOSTAP:can not addevent\n",
     {}},
    {"ModeNotChanged",
     [](sim::Set& set) { set.onCommand("chmod 777 /tmp/softapnotify.pipe.bcm0").fails(); },
     "ERROR HOSTAP:chmod failed \n",
     {"open(\"/tmp/softapnotify.pipe.bcm0\")"}},
};

class SoftApPipeFailure : public testing::TestWithParam<PipeFailure> {};

TEST_P(SoftApPipeFailure, IsTold)
{
    Bench bench;
    GetParam().fault(bench.set);
    EXPECT_EQ(SoftAP_Gethostap_Pipe(), -1);
    EXPECT_EQ(bench.said("SoftAP_Gethostap_Pipe"), with(kMade, GetParam().said));
    EXPECT_EQ(bench.set.openDescriptors(), GetParam().left);
}

TEST_P(SoftApPipeFailure, EndsTheWatch)
{
    Bench bench;
    GetParam().fault(bench.set);
    EXPECT_EQ(s_SoftAP_Check_Connection(nullptr), nullptr);
    EXPECT_EQ(bench.said("s_SoftAP_Check_Connection"), Lines{"ERROR HOSTAP:can not add event!\n"});
    EXPECT_EQ(bench.set.watch(kLeases).watchers(), 0);
}
INSTANTIATE_TEST_SUITE_P(Steps, SoftApPipeFailure, testing::ValuesIn(kPipeFailures),
                         [](const auto& each) { return each.param.name; });

TEST(SoftApPipe, WithADescriptorTooHighForTheLoopIsNotGivenToIt)
{
    Bench bench;
    const sim::HighDescriptors high;
    if (!high) {
        GTEST_SKIP() << "this process may not open so many files";
    }
    EXPECT_EQ(SoftAP_Gethostap_Pipe(), -1);
    EXPECT_EQ(bench.said("SoftAP_Gethostap_Pipe"), with(kMade, "ERROR HOSTAP:can not addevent\n"));
    EXPECT_EQ(bench.set.openDescriptors(), Lines{});
    bench.set.grantTicks(2);
    EXPECT_NOT_LOGGED(bench.set, KEST_LEVEL_ERROR, "movo_net_fl_eventloop", "int_eventLoopThread",
                      "evt->event.fd >= FD_SETSIZE\n");
}

// --- What is said through it ---

/** A message, and the callback that follows. */
struct Message {
    const char* name;
    std::string words;
    std::vector<sim::Called> callbacks;
    Lines said;
    std::string printed;
};
void PrintTo(const Message& message, std::ostream* out)
{
    *out << message.name;
}

const sim::Called kCame = {sim::SOFTAPSCAN, "bcm0"};
const sim::Called kWent = {sim::SOFTAPDISCONNECTED, "bcm0"};
constexpr const char* kPrintedUp = "HOSTAP: Get up status!!!";
constexpr const char* kPrintedDown = "HOSTAP: Get down status!!!";

const Message kMessages[] = {
    {"Up", "up", {kCame}, {}, kPrintedUp},
    {"Down", "down", {kWent}, {}, kPrintedDown},
    {"UpWithALineEnd", "up\n", {kCame}, {}, kPrintedUp},
    {"DownWithALineEnd", "down\n", {kWent}, {}, kPrintedDown},
    {"KeepsUpgradeAsUp", "upgrade", {kCame}, {}, kPrintedUp},
    {"KeepsDowntownAsDown", "downtown", {kWent}, {}, kPrintedDown},
    {"KeepsTheFirstOfTwo", "updown", {kCame}, {}, kPrintedUp},
    {"DownThenUpAtOnce", "downup", {kWent}, {}, kPrintedDown},
    {"HalfAWord", "u", {}, {"INFO unknown message: u\n"}, ""},
    {"MostOfAWord", "dow", {}, {"INFO unknown message: dow\n"}, ""},
    {"AnotherWord", "hello", {}, {"INFO unknown message: hello\n"}, ""},
    {"InCapitals", "UP", {}, {"INFO unknown message: UP\n"}, ""},
    {"AfterABlank", " up", {}, {"INFO unknown message:  up\n"}, ""},
    {"AZeroByte", std::string(1, '\0'), {}, {"INFO unknown message: \n"}, ""},
    {"AZeroByteInside", std::string("x\0y", 3), {}, {"INFO unknown message: x\n"}, ""},
    {"UpAndAZeroByte", std::string("up\0", 3), {kCame}, {}, kPrintedUp},
    {"Formats", "%s%n%x", {}, {"INFO unknown message: %s%n%x\n"}, ""},
    {"FifteenBytes", "abcdefghijklmno", {}, {"INFO unknown message: abcdefghijklmno\n"}, ""},
    {"SixteenBytes",
     "abcdefghijklmnop",
     {},
     {"INFO unknown message: abcdefghijklmno\n", "INFO unknown message: p\n"},
     ""},
    {"UpAcrossTheFifteenth",
     "abcdefghijklmnup",
     {},
     {"INFO unknown message: abcdefghijklmnu\n", "INFO unknown message: p\n"},
     ""},
    {"UpAfterTheFifteenth", "abcdefghijklmnoup", {kCame}, {"INFO unknown message: abcdefghijklmno\n"}, kPrintedUp},
    {"EightTimesUp", "upupupupupupupup", {kCame}, {"INFO unknown message: p\n"}, kPrintedUp},
};

class SoftApMessage : public testing::TestWithParam<Message> {};

TEST_P(SoftApMessage, IsToldOf)
{
    Bench bench;
    ASSERT_EQ(SoftAP_Gethostap_Pipe(), 0);
    bench.set.grantTicks(1);
    bench.set.forget();
    sim::CapturedOutput output;
    bench.say(GetParam().words);
    EXPECT_TRUE(bench.set.calledBack(GetParam().callbacks));
    EXPECT_EQ(bench.said("OnSoftapEventRev"), GetParam().said);
    EXPECT_EQ(output.text(), GetParam().printed);
}
INSTANTIATE_TEST_SUITE_P(Messages, SoftApMessage, testing::ValuesIn(kMessages),
                         [](const auto& each) { return each.param.name; });

/** Two words, written in two pieces at every place: what each read begins with is what counts. */
TEST(SoftApMessage, CountsByWhatEachReadBeginsWith)
{
    Bench bench;
    ASSERT_EQ(SoftAP_Gethostap_Pipe(), 0);
    bench.set.grantTicks(1);
    const std::string words = "updown";
    const std::vector<std::vector<sim::Called>> expected = {{}, {}, {kCame, kWent}, {kCame}, {kCame}, {kCame}};
    for (std::size_t at = 1; at < words.size(); ++at) {
        SCOPED_TRACE(words.substr(0, at) + "|" + words.substr(at));
        bench.say(words.substr(0, at));
        bench.say(words.substr(at));
        EXPECT_TRUE(bench.set.calledBack(expected[at]));
    }
}

TEST(SoftApMessage, IsReadWhenTheLoopIsAwakeAndNotBefore)
{
    Bench bench;
    ASSERT_EQ(SoftAP_Gethostap_Pipe(), 0); // the loop takes it up at its next pass
    bench.say("up");
    bench.say("up");
    EXPECT_CALLBACKS(bench.set, {});
    bench.set.grantTicks(1);
    EXPECT_CALLBACKS(bench.set, {{sim::SOFTAPSCAN, "bcm0"}}); // "upup", in one read
}

TEST(SoftApMessage, ComesOnTheLoopsThread)
{
    Bench bench;
    ASSERT_EQ(SoftAP_Gethostap_Pipe(), 0);
    bench.set.grantTicks(1);
    bench.say("up");
    ASSERT_EQ(bench.set.callbacks().size(), 1U);
    EXPECT_EQ(bench.set.callbacks()[0].thread, sim::ThreadKind::Loop);
}

TEST(SoftApMessage, BringsARecordThatIsNothingButItsName)
{
    Bench bench;
    ASSERT_EQ(SoftAP_Gethostap_Pipe(), 0);
    bench.set.grantTicks(1);
    MovoNetIface_t expected{};
    (void)std::snprintf(expected.name, sizeof(expected.name), "bcm0");
    bool compared = false;
    bench.set.onCallback([&](MovoNetCBReason_e, void* parameter) {
        compared = true;
        EXPECT_EQ(std::memcmp(parameter, &expected, sizeof(expected)), 0);
    });
    bench.say("up");
    EXPECT_TRUE(compared);
}

// --- The handler itself ---

class SoftApHandler : public testing::Test {
protected:
    SoftApHandler()
    {
        EXPECT_EQ(pipe2(m_ends, O_NONBLOCK | O_CLOEXEC), 0);
        bench.set.give(m_ends[0]);
    }
    ~SoftApHandler() override { closeWriter(); }

    int handle() { return OnSoftapEventRev(m_ends[0], nullptr, 0); }
    void write(const std::string& words)
    {
        EXPECT_EQ(::write(m_ends[1], words.data(), words.size()), static_cast<ssize_t>(words.size()));
    }
    void closeWriter()
    {
        if (m_ends[1] >= 0) {
            (void)close(m_ends[1]);
            m_ends[1] = -1;
        }
    }

    Bench bench;

private:
    int m_ends[2];
};

TEST_F(SoftApHandler, ReturnsZeroForEveryMessage)
{
    for (const char* words : {"up", "down", "what"}) {
        write(words);
        EXPECT_EQ(handle(), 0) << words;
    }
    EXPECT_CALLBACKS(bench.set, {kCame, kWent});
}

TEST_F(SoftApHandler, HasNothingToRead)
{
    EXPECT_EQ(handle(), 1);
    EXPECT_EQ(bench.said(), Lines{"INFO OnSoftapEventRev: HOSTAP:no data yet: Resource temporarily unavailable\n"});
}

TEST_F(SoftApHandler, CannotRead)
{
    (void)bench.set.fail({.call = Call::Read, .nth = 1, .error = EIO});
    EXPECT_EQ(handle(), 1);
    EXPECT_EQ(bench.said(), Lines{"ERROR OnSoftapEventRev: HOSTAP:unknown error: Input/output error\n"});
}

TEST_F(SoftApHandler, ReadsTheEnd)
{
    closeWriter();
    errno = 0;
    EXPECT_EQ(handle(), 1);
    EXPECT_EQ(bench.said(), Lines{"ERROR OnSoftapEventRev: HOSTAP:read zero data!!!!!!: Success\n"});
    EXPECT_CALLBACKS(bench.set, {});
}

TEST_F(SoftApHandler, ReadsFifteenBytesAtMost)
{
    write("abcdefghijklmnop");
    EXPECT_EQ(handle(), 0);
    EXPECT_EQ(bench.said(), Lines{"INFO OnSoftapEventRev: unknown message: abcdefghijklmno\n"});
}

TEST(SoftApHandlerDeathTest, IsNeverCalledForATimeOut)
{
    EXPECT_EXIT((void)OnSoftapEventRev(0, nullptr, 1), testing::KilledBySignal(SIGABRT),
                "movo_net_fl_hostap:[0-9]+: OnSoftapEventRev: Assertion `!isTimeout' failed");
}
} // namespace
