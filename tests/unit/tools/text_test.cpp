/** Words for the glue's numbers. */
#include <gtest/gtest.h>
#include <movo_net_tools.h>
#include <set>
#include <string>

TEST(ToolsText, NamesEachResult)
{
    EXPECT_STREQ(Movo_NET_ResultText(0), "success");
    EXPECT_STREQ(Movo_NET_ResultText(1), "failure");
    EXPECT_STREQ(Movo_NET_ResultText(3), "buffer too small");
    EXPECT_STREQ(Movo_NET_ResultText(4), "out of memory");
    EXPECT_STREQ(Movo_NET_ResultText(5), "invalid argument");
    EXPECT_STREQ(Movo_NET_ResultText(6), "not supported");
}

TEST(ToolsText, NamesEachReasonDifferently)
{
    std::set<std::string> names;
    for (int reason = _MOVO_NET_CALLBACK_IFFOUND_; reason <= _MOVO_NET_CALLBACK_DHCP_FAILED_; reason++) {
        names.insert(Movo_NET_ReasonText(static_cast<MovoNetCBReason_e>(reason)));
    }
    EXPECT_EQ(names.size(), 18U);
    EXPECT_FALSE(names.contains("unknown reason"));
    EXPECT_STREQ(Movo_NET_ReasonText(_MOVO_NET_CALLBACK_IFFOUND_), "IFFOUND");
    EXPECT_STREQ(Movo_NET_ReasonText(_MOVO_NET_CALLBACK_DHCP_FAILED_), "DHCP_FAILED");
}

TEST(ToolsText, HasAWordForOtherNumbers)
{
    for (const int number : {-1, 2, 7, 1 << 30}) {
        EXPECT_STREQ(Movo_NET_ResultText(number), "unknown result");
    }
    for (const int number : {-1, 18, 1 << 30}) {
        EXPECT_STREQ(Movo_NET_ReasonText(static_cast<MovoNetCBReason_e>(number)), "unknown reason");
    }
}
