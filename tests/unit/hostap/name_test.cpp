#include "bench.h"

#include <algorithm>

using namespace hostap;

// How the network gets its name.

namespace {
const Lines kDefaultAttempt = {"ERROR s_SoftAP_Start: HOSTAP: Can not get cast name ,use default name: Lumenpoint"};

int attempts(const Bench& bench)
{
    return static_cast<int>(std::ranges::count(bench.ran(), kGetName));
}

/** What the set's property gives, how often it is asked, and the name in the end. */
struct Name {
    const char* title;
    std::string printed;
    int attempts;
    std::string name;
};
void PrintTo(const Name& name, std::ostream* out)
{
    *out << name.title;
}

const Name kNames[] = {
    {"Usual", "MyTV\n", 1, "MyTV\n"},
    {"WithoutALineEnd", "MyTV", 1, "MyTV"},
    {"WithBlanks", "My TV in the den\n", 1, "My TV in the den\n"},
    {"TheFirstOfTwoLines", "MyTV\nother\n", 1, "MyTV\n"},
    {"OfThirtyLetters", std::string(30, 'a') + "\n", 1, std::string(30, 'a') + "\n"},
    {"CutAtThirtyOne", std::string(31, 'a') + "\n", 1, std::string(31, 'a')},
    {"CutFarAway", std::string(5000, 'a') + "\n", 1, std::string(31, 'a')},
    {"TheDefault", "Lumenpoint\n", 20, "Lumenpoint\n"},
    {"TheDefaultWithoutALineEnd", "Lumenpoint", 20, "Lumenpoint"},
    {"BeginningLikeTheDefault", "Lumenpoint2\n", 1, "Lumenpoint2\n"},
    {"TheBeginningOfTheDefault", "Lumen\n", 1, "Lumen\n"},
    {"TheDefaultAndABlank", "Lumenpoint \n", 1, "Lumenpoint \n"},
    {"Empty", "\n", 20, "Lumenpoint"},
    {"EmptyAndAnother", "\nMyTV\n", 20, "Lumenpoint"},
    {"Nothing", "", 1, ""},
};

class SoftApName : public testing::TestWithParam<Name> {};

TEST_P(SoftApName, IsWhatTheSetIsCalled)
{
    Bench bench;
    bench.set.onCommand(kGetName).prints(GetParam().printed);
    bench.startHere();
    EXPECT_EQ(hotspot.mSSID, GetParam().name);
    EXPECT_EQ(attempts(bench), GetParam().attempts);
    EXPECT_NE(bench.set.read(kConfiguration).find("\nssid=" + GetParam().name + "\nignore"), std::string::npos);
    EXPECT_EQ(bench.set.clock(), GetParam().attempts == 1 ? 0 : 20000);
    const Lines said = bench.said("s_SoftAP_Start");
    EXPECT_NE(std::ranges::find(said, "ERROR HOSTAP: Get name " + GetParam().name + "\n"), said.end());
}
INSTANTIATE_TEST_SUITE_P(Names, SoftApName, testing::ValuesIn(kNames),
                         [](const auto& each) { return each.param.title; });

TEST(SoftApName, KeepsAnEmptyNameWhenTheToolPrintsNothing)
{
    Bench bench;
    bench.set.onCommand(kGetName).fails(127 << 8);
    bench.startHere();
    EXPECT_NE(bench.set.read(kConfiguration).find("\nssid=\nignore"), std::string::npos);
    EXPECT_EQ(hotspot.mState, HOTSPOT_STARTED);
}

TEST(SoftApName, IsLookedForTwentyTimesASecondApart)
{
    Bench bench;
    bench.set.onCommand(kGetName).prints("\n");
    bench.startHere();
    Lines expected;
    for (int attempt = 1; attempt <= 20; ++attempt) {
        expected.push_back("ERROR s_SoftAP_Start: HOSTAP: retry = " + std::to_string(attempt) + "\n");
        expected.emplace_back("ERROR SoftAP_getprop: HOSTAP:can not get cast device name!\n");
        expected.push_back(kDefaultAttempt[0]);
    }
    expected.emplace_back("ERROR s_SoftAP_Start: HOSTAP: Get name Lumenpoint\n");
    const Lines said = bench.said();
    ASSERT_GE(said.size(), expected.size());
    EXPECT_EQ(Lines(said.begin(), said.begin() + static_cast<std::ptrdiff_t>(expected.size())), expected);
    const auto commands = bench.set.commands();
    for (std::int64_t attempt = 0; attempt < 20; ++attempt) {
        EXPECT_EQ(commands[static_cast<std::size_t>(attempt)].at, attempt * 1000);
    }
}

TEST(SoftApName, IsTakenAsSoonAsTheSetHasOne)
{
    Bench bench;
    bench.set.onCommand(kGetName).prints("\n").times(7);
    bench.startHere();
    EXPECT_STREQ(hotspot.mSSID, "MyTV\n");
    EXPECT_EQ(attempts(bench), 8);
    EXPECT_EQ(bench.set.clock(), 7000);
}

TEST(SoftApName, ThatTheToolHoldsBackIsWaitedForAloud)
{
    Bench bench;
    bench.set.onCommand(kGetName).prints("MyTV\n").takes(5000);
    bench.startHere();
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, "movo_net_fl_common", "logSlow",
                  "still waiting after 5 s for: getprop persist.device_name\n");
}

TEST(SoftApName, IsTheDefaultWithoutAShell)
{
    Bench bench;
    bench.set.fail({.call = sim::Call::Popen, .on = "getprop", .nth = 1, .times = 2, .error = ENOMEM});
    bench.startHere();
    const Lines said = bench.said();
    EXPECT_EQ(Lines(said.begin(), said.begin() + 8),
              (Lines{"ERROR s_SoftAP_Start: HOSTAP: retry = 1\n", "ERROR SoftAP_getprop: HOSTAP:popen failure !\n",
                     kDefaultAttempt[0], "ERROR s_SoftAP_Start: HOSTAP: retry = 2\n",
                     "ERROR SoftAP_getprop: HOSTAP:popen failure !\n", kDefaultAttempt[0],
                     "ERROR s_SoftAP_Start: HOSTAP: retry = 3\n", "ERROR s_SoftAP_Start: HOSTAP: Get name MyTV\n\n"}));
}
} // namespace
