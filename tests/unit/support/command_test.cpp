#include "support/command.h"

#include "movo_net_fg/fg.h"
#include "movo_net_fl_wifi/saved.h"
#include "sim/sim.h"

#include <future>
#include <optional>

using movonet::runShell;

namespace {
constexpr int kJustInTimeMs = 4999;
constexpr int kTooLateMs = 5000;

class SlowCommand : public testing::Test {
protected:
    sim::Set set;

    std::vector<std::string> named() const
    {
        std::vector<std::string> commands;
        for (const sim::LogLine& line : set.log()) {
            if (line.function == "logSlow") {
                EXPECT_EQ(line.level, KEST_LEVEL_ERROR);
                commands.push_back(line.text);
            }
        }
        return commands;
    }
    /** Each from inside the one before. */
    void nest(int depth)
    {
        set.onCommand("nested " + std::to_string(depth)).does([this, depth] {
            if (depth > 1) {
                (void)runShell(("nested " + std::to_string(depth - 1)).c_str());
            } else {
                set.spend(kTooLateMs);
            }
        });
        if (depth > 1) {
            nest(depth - 1);
        }
    }
};

using Texts = std::vector<std::string>;

TEST_F(SlowCommand, IsNamedWhileItRuns)
{
    Texts meanwhile;
    set.onCommand("netcfg eth0 up").does([&] {
        set.spend(kTooLateMs);
        meanwhile = named();
        set.spend(60 * kTooLateMs);
    });
    EXPECT_EQ(runShell("netcfg eth0 up"), 0);
    EXPECT_EQ(meanwhile, (Texts{"still waiting after 5 s for: netcfg eth0 up\n"}));
    EXPECT_EQ(named(), meanwhile) << "once";
}

TEST_F(SlowCommand, IsNoneThatEndsInTime)
{
    set.onCommand("netcfg eth0 up").takes(kJustInTimeMs);
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(runShell("netcfg eth0 up"), 0);
    }
    set.spend(60 * kTooLateMs);
    EXPECT_EQ(named(), Texts{});
}

TEST_F(SlowCommand, IsNamedEachTime)
{
    set.onCommand("netcfg eth0 up").takes(kTooLateMs).times(2);
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(runShell("netcfg eth0 up"), 0);
    }
    EXPECT_EQ(named().size(), 2U);
}

TEST_F(SlowCommand, ShowsItsBeginningWhenItIsLong)
{
    const std::string command = "sync " + std::string(400, 'x');
    set.onCommand("sync").takes(kTooLateMs);
    EXPECT_EQ(runShell(command), 0);
    EXPECT_EQ(named(), (Texts{"still waiting after 5 s for: " + command.substr(0, 255) + "\n"}));
}

TEST_F(SlowCommand, OfEightAtOnceAllAreNamed)
{
    nest(9);
    (void)runShell("nested 9");
    EXPECT_EQ(named().size(), 8U) << "and the ninth just runs";
    set.forget();
    (void)runShell("nested 1");
    EXPECT_EQ(named(), (Texts{"still waiting after 5 s for: nested 1\n"})) << "all are free again";
}

/** A command that begins and ends when the test says so. */
struct HeldCommand {
    std::promise<void> begins;
    std::promise<void> ends;

    HeldCommand(sim::Set& set, const std::string& command)
    {
        set.onCommand(command).does([this] {
            begins.set_value();
            ends.get_future().wait();
        });
        set.background([command] { (void)runShell(command); });
        begins.get_future().wait();
    }
};

TEST_F(SlowCommand, IsNotTheNextOneWhoseTimeHasOnlyBegun)
{
    HeldCommand first(set, "first");
    std::optional<HeldCommand> second;
    // The first one's time is over; before its timer's function looks, it ends and the second one begins.
    set.fail({.call = sim::Call::MutexLock, .thread = sim::ThreadKind::Test, .nth = 1, .does = [&] {
                  first.ends.set_value();
                  set.joinBackground();
                  second.emplace(set, "second");
              }});
    set.spend(kTooLateMs);
    ASSERT_TRUE(second);
    EXPECT_EQ(named(), Texts{});
    second->ends.set_value();
    set.joinBackground();
}

TEST_F(SlowCommand, RunsWithoutATimer)
{
    set.fail({.call = sim::Call::TimerCreate, .error = EAGAIN});
    set.onCommand("netcfg eth0 up").takes(kTooLateMs);
    EXPECT_EQ(runShell("netcfg eth0 up"), 0);
    EXPECT_EQ(named(), Texts{});
}

TEST_F(SlowCommand, MayBeTheBoardsMacAddress)
{
    set.onCommand("bdconf -p").prints("mac=02:00:00:00:00:01\n").takes(kTooLateMs);
    set.cable("eth0").plug();
    ASSERT_EQ(set.start(), 0);
    EXPECT_EQ(named(), (Texts{"still waiting after 5 s for: bdconf -p\n"}));
}

TEST_F(SlowCommand, MayBeTheWaitForTheDisks)
{
    set.cable("eth0").plug();
    ASSERT_EQ(set.start(), 0);
    set.fail({.call = sim::Call::Sync, .nth = 1, .does = [&] { set.spend(kTooLateMs); }});
    EXPECT_EQ(SaveNetConfig(), 0);
    EXPECT_EQ(named(), (Texts{"still waiting after 5 s for: sync\n"}));
}

TEST_F(SlowCommand, MayBeTheFileOfTheConfiguration)
{
    set.cable("eth0").plug();
    ASSERT_EQ(set.start(), 0);
    for (const sim::Call slow : {sim::Call::Write, sim::Call::Fsync}) {
        set.forget();
        set.fail({.call = slow, .nth = 1, .does = [&] { set.spend(kTooLateMs); }});
        EXPECT_EQ(SaveNetConfig(), 0);
        EXPECT_EQ(named(), (Texts{"still waiting after 5 s for: /data/tv/save/netconfig.tmp\n"}));
    }
}

TEST_F(SlowCommand, MayBeTheFileOfRememberedNetworks)
{
    set.write("/data/tv/save/.keep", "");
    set.fail({.call = sim::Call::Fsync, .nth = 1, .does = [&] { set.spend(kTooLateMs); }});
    MovNetWifiEssItem_t ess{};
    ess.essid[0] = 'A';
    EXPECT_EQ(int_Movo_Net_SaveEss(&ess), 0);
    EXPECT_EQ(named(), (Texts{"still waiting after 5 s for: /data/tv/save/saved_esss\n"}));
}
} // namespace
