#include "movo_net_fl_ether/ether.h"
#include "tools.h"

using ip::Lines;
using ip::record;
using ip::told;

namespace {
/** What the first look at eth0 does with what the board's configuration prints. */
class BoardMac : public testing::Test {
protected:
    std::string initialise(const std::string& board)
    {
        set.boardPrints(board);
        return initialise();
    }

    std::string initialise()
    {
        set.forget();
        MovoNetIface_t iface = record("eth0");
        const sim::CapturedOutput output;
        EXPECT_EQ(int_Movo_Net_InitEther(&iface), 0);
        return output.text();
    }

    /** The address given to eth0, as the command names it. */
    void expectProgrammed(const std::string& board, const std::string& mac)
    {
        (void)initialise(board);
        EXPECT_EQ(ip::ran(set), (Lines{"bdconf -p", "netcfg eth0 down; netcfg eth0 hwprefix " + mac})) << board;
        EXPECT_EQ(told(set),
                  Lines{"INFO movo_net_fl_ether int_Movo_Net_InitEther: get eth0 mac " + mac + " from board config\n"})
            << board;
    }

    /** As above, from a line in which digits are missing. */
    void expectProgrammedInPart(const std::string& board, const std::string& mac)
    {
        (void)initialise(board);
        EXPECT_EQ(ip::ran(set), (Lines{"bdconf -p", "netcfg eth0 down; netcfg eth0 hwprefix " + mac})) << board;
        EXPECT_EQ(
            told(set),
            (Lines{"ERROR movo_net_fl_ether int_Movo_Net_InitEther: mac of board config is cut, zeros fill it\n",
                   "INFO movo_net_fl_ether int_Movo_Net_InitEther: get eth0 mac " + mac + " from board config\n"}))
            << board;
    }

    void expectNothing(const std::string& board)
    {
        EXPECT_EQ(initialise(board), "") << board;
        EXPECT_EQ(ip::ran(set), Lines{"bdconf -p"}) << board;
        EXPECT_EQ(told(set), Lines{}) << board;
    }

    sim::Set set;
};

TEST_F(BoardMac, IsGivenToEth0WhichIsTakenDownForIt)
{
    set.iface("eth0").setUp(true);
    expectProgrammed("mac=00:11:22:aa:bb:cc\n", "00:11:22:AA:BB:CC");
    EXPECT_EQ(set.iface("eth0").mac(), "00:11:22:aa:bb:cc");
    EXPECT_FALSE(set.iface("eth0").up());
}

TEST_F(BoardMac, IsPrintedRawWithItsLength)
{
    EXPECT_EQ(initialise("mac=41:42:43:44:45:46\n"), "MAC ABCDEF len 6\n");
    EXPECT_EQ(initialise("mac=41:42:00:44:45:46\n"), "MAC AB len 6\n");
    EXPECT_EQ(initialise("mac=41:42:43:44:45:46:47:48\n"), "MAC ABCDEF len 8\n");
}

TEST_F(BoardMac, NeedsNoColonsAndNoCase)
{
    for (const char* board : {"mac=001122AABBCC\n", "mac=00:11:22:AA:BB:CC\n", "mac=00:11:22:aA:Bb:cC",
                              "mac=0011:22aa:bbcc\n", "mac=::00::11:22:aa:bb:cc:\n", "mac=001122aabbcc 99\n"}) {
        expectProgrammed(board, "00:11:22:AA:BB:CC");
    }
}

TEST_F(BoardMac, FollowsAnySeparator)
{
    for (const char* board : {"mac 00:11:22:aa:bb:cc\n", "mac:00:11:22:aa:bb:cc\n", "macX00:11:22:aa:bb:cc\n",
                              "mac\t00:11:22:aa:bb:cc\n"}) {
        expectProgrammed(board, "00:11:22:AA:BB:CC");
    }
}

TEST_F(BoardMac, IsInTheFirstLineThatBeginsWithMac)
{
    expectProgrammed("board=x\nMAC=ff:ff\n mac=ff:ff\nxmac=ff:ff\nmac=00:11:22:aa:bb:cc\nmac=ff:ff:ff:ff:ff:ff\n",
                     "00:11:22:AA:BB:CC");
    expectNothing("machine=ff\nmac=00:11:22:aa:bb:cc\n");
}

TEST_F(BoardMac, IsLookedForInPiecesOf99Characters)
{
    expectProgrammed(std::string(99, 'x') + "mac=00:11:22:aa:bb:cc\n", "00:11:22:AA:BB:CC");
    expectNothing(std::string(98, 'x') + "mac=00:11:22:aa:bb:cc\n");
}

TEST_F(BoardMac, IsMissingWithoutSuchALine)
{
    for (const char* board : {"", "\n", "ma", "board=x\n", "ma=00:11:22:aa:bb:cc\n"}) {
        expectNothing(board);
    }
}

TEST_F(BoardMac, OfLessThanTwoBytesIsNone)
{
    for (const char* board : {"mac", "mac\n", "mac=", "mac=\n", "mac=0", "mac=0\n", "mac=00\n", "mac=00:\n",
                              "mac=:::\n", "mac=00 11 22\n", "mac= 00:11:22:aa:bb:cc\n", "mac = 00:11:22:aa:bb:cc\n",
                              "mac==00:11:22:aa:bb:cc\n", "mac=xx:yy\n", "mac=00:x1\n", "mac=\"00:11\"\n"}) {
        expectNothing(board);
    }
}

TEST_F(BoardMac, TakesNothingFromTheLineBefore)
{
    expectNothing("other=11:22:33:44:55:66\nmac");
    expectNothing("other=11:22:33:44:55:66\nmac=\n");
    expectNothing("00000011223344556677\nmac=1\n");
    expectNothing("00000011223344556677\nmac");
}

TEST_F(BoardMac, OfTwoToFiveBytesIsFilledWithZeros)
{
    expectProgrammedInPart("mac=12:34\n", "12:34:00:00:00:00");
    expectProgrammedInPart("mac=12:34:56:78:9a\n", "12:34:56:78:9A:00");
    EXPECT_EQ(initialise("mac=41:42\n"), "MAC AB len 2\n");
}

TEST_F(BoardMac, OfAnOddDigitReadsItAsTheUpperHalf)
{
    expectProgrammedInPart("mac=12:3", "12:30:00:00:00:00");
    expectProgrammedInPart("mac=12:3\n", "12:30:00:00:00:00");
    expectProgrammedInPart("mac=12:3 45\n", "12:30:00:00:00:00");
    expectProgrammedInPart("mac=00:11:22:aa:bb:c\n", "00:11:22:AA:BB:C0");
    expectProgrammedInPart("mac=1:2:3:4:5:6\n", "10:20:30:40:50:60");
}

TEST_F(BoardMac, EndsAtTheFirstPairThatDoesNotBeginWithADigit)
{
    expectProgrammedInPart("mac=00:11:22:aa:bb-cc\n", "00:11:22:AA:BB:00");
    expectProgrammedInPart("mac=00:11\t22\n", "00:11:00:00:00:00");
    expectProgrammedInPart("mac=00:11\r\n", "00:11:00:00:00:00");
    expectProgrammedInPart("mac=00:1g:22\n", "00:10:22:00:00:00");
    expectProgrammedInPart(std::string("mac=00:11\0:22\n", 14), "00:11:00:00:00:00");
}

TEST_F(BoardMac, OfMoreThanSixBytesIsItsFirstSix)
{
    expectProgrammed("mac=00:11:22:aa:bb:cc:dd:ee\n", "00:11:22:AA:BB:CC");
    std::string longest = "mac=";
    for (int pair = 0; pair < 47; ++pair) {
        longest += "41";
    }
    EXPECT_EQ(initialise(longest + "\n"), "MAC AAAAAA len 47\n");
    EXPECT_EQ(initialise(longest + "4142434445\n"), "MAC AAAAAA len 48\n");
    EXPECT_EQ(initialise(longest + std::string(1000, '9')), "MAC AAAAAA len 48\n");
}

class KeptAddress : public BoardMac, public testing::WithParamInterface<int> {
protected:
    ~KeptAddress() override { g_NetworkLinkType = 0; }
};

TEST_P(KeptAddress, IsPrintedButNotProgrammedForALinkTypeOtherThanZero)
{
    g_NetworkLinkType = static_cast<kest_uint8>(GetParam());
    EXPECT_EQ(initialise("mac=41:42:43:44:45:46\n"), "MAC ABCDEF len 6\n");
    EXPECT_EQ(ip::ran(set), Lines{"bdconf -p"});
    EXPECT_EQ(told(set), Lines{});
}

INSTANTIATE_TEST_SUITE_P(All, KeptAddress, testing::Values(1, 2, 255));

TEST_F(BoardMac, IsSilentlyMissingWithoutTheCommand)
{
    set.fail({.call = sim::Call::Popen, .on = "bdconf -p", .error = ENOMEM});
    EXPECT_EQ(initialise(), "");
    EXPECT_EQ(told(set), Lines{});
    EXPECT_EQ(ip::ran(set), Lines{});
}

TEST_F(BoardMac, ThatIsRefusedIsToldAndForgiven)
{
    set.onCommand("netcfg eth0 down; netcfg").fails();
    (void)initialise("mac=00:11:22:aa:bb:cc\n");
    EXPECT_EQ(told(set), (Lines{"INFO movo_net_fl_ether int_Movo_Net_InitEther: get eth0 mac 00:11:22:AA:BB:CC "
                                "from board config\n",
                                "ERROR movo_net_fl_ether int_Movo_Net_InitEther: set eth0 hw mac failed\n"}));
}

TEST_F(BoardMac, ThatCannotBeGivenWithoutAShellIsToldAndForgiven)
{
    set.fail({.call = sim::Call::System, .on = "netcfg", .error = ENOMEM});
    (void)initialise("mac=00:11:22:aa:bb:cc\n");
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, "movo_net_fl_ether", "int_Movo_Net_InitEther", "set eth0 hw mac failed\n");
}

// Closing the command's output would wait for the command.
TEST_F(BoardMac, KeepsTheCommandsOutputOpenOnEveryPath)
{
    (void)initialise("mac=00:11:22:aa:bb:cc\n");
    EXPECT_EQ(set.openDescriptors(), Lines{"popen(\"bdconf -p\")"});
    (void)initialise("nothing\n");
    (void)initialise("mac=00\n");
    EXPECT_EQ(set.openDescriptors().size(), 3U);
}
} // namespace
