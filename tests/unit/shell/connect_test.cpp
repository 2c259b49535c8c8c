/** Joining in one step: what is called, what is said, and where the television is in the end. */
#include "fake_net.h"
#include "play.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <regex>

namespace {
class ShellConnect : public testing::Test {
protected:
    ShellConnect()
    {
        fake::addWireless("wlan0");
        fake::returns("Movo_NET_IsEnabledIface", 1);
        fake::returns("Movo_NET_IsActivedIface", 1);
        fake::onCall([this](const std::string& call) { answer(call); });
    }

    /** A network's answer to a join: a callback of the reason, then one of the address if it is joined. */
    void networkAnswers(const std::string& name, MovoNetCBReason_e reason,
                        MovoNetCBReason_e address = _MOVO_NET_CALLBACK_DHCP_SUCCESS_)
    {
        m_answers[name] = {reason, address};
    }
    void scanFinds(const std::vector<std::string>& names) { m_found = names; }

    /** What is said but the callbacks, without the times. */
    std::string said(const std::string& script)
    {
        const Played played = play("callback on\n" + script);
        m_status = played.status;
        const std::string text = std::regex_replace(played.output + played.errors, std::regex("callback [^\n]*\n"), "");
        return std::regex_replace(text, std::regex(R"(\d+\.\d s)"), "T s").substr(std::string("0 success\n").size());
    }
    std::vector<std::string> calls(const std::string& function)
    {
        std::vector<std::string> some = fake::calls();
        std::erase_if(some, [&](const std::string& call) { return !call.starts_with(function); });
        return some;
    }

    int m_status = -1;

private:
    struct Answer {
        MovoNetCBReason_e join;
        MovoNetCBReason_e address;
    };

    void answer(const std::string& call)
    {
        if (call.starts_with("Movo_NET_WifiScanEsss")) {
            fake::callBack(_MOVO_NET_CALLBACK_WIFISCANDONE_, "wlan0");
        } else if (call.starts_with("Movo_NET_WifiUpdateEsss")) {
            fake::setNetworks(m_found);
        } else if (call.starts_with("Movo_NET_WifiConnectEss wlan0 ")) {
            fake::setJoined(false);
            answerJoin(call.substr(std::string("Movo_NET_WifiConnectEss wlan0 ").size()));
        }
    }
    void answerJoin(const std::string& name)
    {
        const auto found = m_answers.find(name);
        if (found == m_answers.end()) {
            return;
        }
        fake::callBack(found->second.join, "wlan0");
        if (found->second.join == _MOVO_NET_CALLBACK_IFCONNECTED_) {
            fake::callBack(found->second.address, "wlan0");
        }
    }

    std::map<std::string, Answer> m_answers;
    std::vector<std::string> m_found = {"My Home Net"};
};
} // namespace

TEST_F(ShellConnect, JoinsAListedNetworkAndTellsItsAddress)
{
    networkAnswers("caf\u00e9", _MOVO_NET_CALLBACK_IFCONNECTED_);
    EXPECT_EQ(said("wifi connect caf\u00e9 \"a good key\"\n"), "joined caf\u00e9 in T s, address 10.0.2.15\n");
    EXPECT_EQ(m_status, 0);
    EXPECT_EQ(calls("Movo_NET_WifiSetKey"),
              std::vector<std::string>{"Movo_NET_WifiSetKey wlan0 caf\u00e9 a good key 10"});
    EXPECT_TRUE(calls("Movo_NET_WifiScanEsss").empty()) << "it is listed";
}

TEST_F(ShellConnect, TakesTheRememberedKey)
{
    networkAnswers("caf\u00e9", _MOVO_NET_CALLBACK_IFCONNECTED_);
    EXPECT_EQ(said("wifi connect caf\u00e9\n"), "joined caf\u00e9 in T s, address 10.0.2.15\n");
    EXPECT_EQ(calls("Movo_NET_WifiSetKey"),
              std::vector<std::string>{"Movo_NET_WifiSetKey wlan0 caf\u00e9 correct horse 13"});
}

TEST_F(ShellConnect, LooksForANetworkThatIsNotListed)
{
    scanFinds({"My Home Net", "\u6211\u5bb6"});
    networkAnswers("\u6211\u5bb6", _MOVO_NET_CALLBACK_IFCONNECTED_);
    EXPECT_EQ(said("wifi connect \u6211\u5bb6 \"a good key\"\n"), "joined \u6211\u5bb6 in T s, address 10.0.2.15\n");
    EXPECT_EQ(calls("Movo_NET_WifiScanEsss").size(), 1U);
    EXPECT_EQ(calls("Movo_NET_WifiUpdateEsss").size(), 1U);
}

TEST_F(ShellConnect, SaysWhichNetworkMayBeMeant)
{
    const std::string text = said("wifi connect \"my home\" \"a good key\"\n");
    EXPECT_TRUE(text.starts_with("no network \"my home\"; did you mean My Home Net?\n")) << text;
    EXPECT_EQ(m_status, 1);
    EXPECT_TRUE(calls("Movo_NET_WifiConnectEss").empty());
}

TEST_F(ShellConnect, AKeyThatIsMissingOrTooShortLosesNothing)
{
    EXPECT_TRUE(said("wifi connect caf\u00e9 short\n").starts_with("not joined: a WPA key has 8 to 63 characters"));
    EXPECT_EQ(m_status, 1);
    fake::returns("Movo_NET_WifiGetKey", 1);
    EXPECT_TRUE(
        said("wifi connect caf\u00e9\n").starts_with("not joined: caf\u00e9 wants a key: wifi connect caf\u00e9 KEY"));
    EXPECT_TRUE(calls("Movo_NET_WifiConnectEss").empty());
}

TEST_F(ShellConnect, AWrongKeyGoesBackToTheNetworkOfBefore)
{
    networkAnswers("caf\u00e9", _MOVO_NET_CALLBACK_WIFIBADKEY_);
    networkAnswers("My Home Net", _MOVO_NET_CALLBACK_IFCONNECTED_);
    const std::string text = said("wifi connect caf\u00e9 \"wrong horse\"\n");
    EXPECT_TRUE(text.starts_with("not joined: the key of caf\u00e9 is wrong, after T s\n"
                                 "back to My Home Net\n"
                                 "joined My Home Net in T s, address 10.0.2.15\n"))
        << text;
    EXPECT_EQ(m_status, 1);
    EXPECT_EQ(calls("Movo_NET_WifiSetKey").back(), "Movo_NET_WifiSetKey wlan0 My Home Net correct horse 13");
}

TEST_F(ShellConnect, ATimeOutGoesBackToo)
{
    networkAnswers("caf\u00e9", _MOVO_NET_CALLBACK_WIFITIMEOUT_);
    networkAnswers("My Home Net", _MOVO_NET_CALLBACK_IFCONNECTED_, _MOVO_NET_CALLBACK_STATICIP_SUCCESS_);
    const std::string text = said("wifi connect caf\u00e9\n");
    EXPECT_TRUE(text.starts_with("not joined: caf\u00e9 did not answer within T s\n"
                                 "back to My Home Net\n"
                                 "joined My Home Net in T s, address 10.0.2.15\n"))
        << text;
}

TEST_F(ShellConnect, ARefusalGoesBackOnceWhateverComesOfIt)
{
    fake::returns("Movo_NET_WifiConnectEss", 1);
    const std::string text = said("wifi connect caf\u00e9\n");
    EXPECT_TRUE(text.starts_with("not joined: the supplicant refused caf\u00e9; the log names the command\n"
                                 "back to My Home Net\n"
                                 "not joined: the supplicant refused My Home Net; the log names the command\n"))
        << text;
    EXPECT_EQ(calls("Movo_NET_WifiConnectEss").size(), 2U);
}

TEST_F(ShellConnect, ANetworkWithoutAddressesIsNotLeft)
{
    networkAnswers("caf\u00e9", _MOVO_NET_CALLBACK_IFCONNECTED_, _MOVO_NET_CALLBACK_DHCP_FAILED_);
    EXPECT_TRUE(said("wifi connect caf\u00e9\n").starts_with("joined caf\u00e9, but it gave no address within T s\n"));
    EXPECT_EQ(m_status, 1);
    EXPECT_EQ(calls("Movo_NET_WifiConnectEss").size(), 1U);
}

TEST_F(ShellConnect, NothingToGoBackToIsNoWordAboutIt)
{
    fake::setJoined(false);
    networkAnswers("caf\u00e9", _MOVO_NET_CALLBACK_WIFIBADKEY_);
    EXPECT_EQ(said("wifi connect caf\u00e9\n").find("back"), std::string::npos);
}

TEST_F(ShellConnect, AnEarlierCallbackIsNotItsAnswer)
{
    networkAnswers("caf\u00e9", _MOVO_NET_CALLBACK_WIFIBADKEY_);
    networkAnswers("My Home Net", _MOVO_NET_CALLBACK_IFCONNECTED_);
    EXPECT_TRUE(said("wifi join caf\u00e9\nwifi connect \"My Home Net\"\n")
                    .ends_with("\njoined My Home Net in T s, address "
                               "10.0.2.15\n"));
}

TEST_F(ShellConnect, ItsCallbacksMeetExpectationsAfterwards)
{
    networkAnswers("caf\u00e9", _MOVO_NET_CALLBACK_IFCONNECTED_);
    (void)said("wifi connect caf\u00e9\nexpect IFCONNECTED wlan0 0\nexpect DHCP_SUCCESS wlan0 0\n");
    EXPECT_EQ(m_status, 0);
}

TEST_F(ShellConnect, ADisabledInterfaceHasItsCause)
{
    fake::returns("Movo_NET_IsEnabledIface", 0);
    fake::returns("Movo_NET_WifiScanEsss", 1);
    EXPECT_TRUE(
        said("wifi connect Elsewhere\n").starts_with("1 failure\n  wlan0 is disabled; enable wlan0 brings it up\n"));
}
