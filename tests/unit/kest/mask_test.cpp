#include "kest_libc.h"

#include "kest.h"

#include <cstdlib>

// Keys do not show in the log.

namespace {

class Keys : public KestTest {
protected:
    Keys()
    {
        libc.now = timespec{12, 0};
        tell(nullptr);
    }
    ~Keys() override { tell(nullptr); }

    /** What the environment says about keys. */
    static void tell(const char* value)
    {
        (void)(value != nullptr ? setenv("KEST_DEBUG_KEYS", value, 1) : unsetenv("KEST_DEBUG_KEYS"));
        kest_debug_init("kest_tests");
    }
    static std::string shown(const std::string& message)
    {
        const std::string line =
            stderrOf([&] { kest_debug_log(nullptr, KEST_LEVEL_ERROR, "m", "f", 1, "%s", message.c_str()); });
        const std::string head = "12.000 ERROR   DEFAULT m f:1 ";
        EXPECT_TRUE(line.starts_with(head) && line.ends_with("\n")) << line;
        return line.substr(head.size(), line.size() - head.size() - 1);
    }
};

TEST_F(Keys, OfCommandsAndRememberedNetworksAreMasked)
{
    EXPECT_EQ(shown("[SET_NETWORK 0 psk \"correct horse\"] failed\n"), "[SET_NETWORK 0 psk \"***\"] failed");
    EXPECT_EQ(shown("[SET_NETWORK 12 wep_key0 \"abcde\"] failed again\n"),
              "[SET_NETWORK 12 wep_key0 ***] failed again");
    EXPECT_EQ(shown("[SET_NETWORK 0 wep_key0 0011223344] failed\n"), "[SET_NETWORK 0 wep_key0 ***] failed");
    EXPECT_EQ(shown("get saved ess:\n\tssid-\"Net\"\n\tkey-\"correct horse\"\n\tsecurityStr-WPA2\n"),
              "get saved ess:  ssid-\"Net\"  key-\"***\"  securityStr-WPA2");
    EXPECT_EQ(shown("[SET_NETWORK 0 psk \"\"] failed\n"), "[SET_NETWORK 0 psk \"***\"] failed");
}

TEST_F(Keys, ThatHoldQuotesAndBracketsAreMaskedToTheirEnd)
{
    EXPECT_EQ(shown("[SET_NETWORK 0 psk \"a\"] failed\"b\"] failed\n"), "[SET_NETWORK 0 psk \"***\"] failed");
    EXPECT_EQ(shown("[SET_NETWORK 0 wep_key0 \"ab]c]\"] failed\n"), "[SET_NETWORK 0 wep_key0 ***] failed");
    EXPECT_EQ(shown("[SET_NETWORK 0 psk \"psk \"secret\"] failed\n"), "[SET_NETWORK 0 psk \"***\"] failed");
}

TEST_F(Keys, AreMaskedBehindNamesThatLookLikeThem)
{
    const std::string line =
        shown("get saved ess:\n\tssid-\"wep_key0 ]psk \"key-\"\n\tkey-\"secret\"\n\tsecurityStr-\n");
    EXPECT_EQ(line.find("secret"), std::string::npos) << line;
}

TEST_F(Keys, OfALineThatIsCutAreMasked)
{
    const std::string filler(960, 'a');
    EXPECT_EQ(shown(filler + "psk \"" + std::string(64, 'k') + "\"] failed\n"), filler + "psk \"***");
    for (std::size_t room = 0; room < 8; ++room) { // the mask itself does not fit
        const std::string full(1023 - 29 - 6 - room, 'a');
        const std::string line = shown(full + "psk \"\"" + std::string(room, 'b'));
        EXPECT_LE(line.size(), 1023U - 29);
        EXPECT_TRUE(line.starts_with(full + "psk \"")) << room;
    }
}

TEST_F(Keys, AreShownToWhomTheEnvironmentSaysSo)
{
    tell("1");
    EXPECT_EQ(shown("[SET_NETWORK 0 psk \"correct horse\"] failed\n"), "[SET_NETWORK 0 psk \"correct horse\"] failed");
    for (const std::string value : {"0", "", "yes", "11"}) { // each with a line of its own: repeats are counted
        tell(value.c_str());
        EXPECT_EQ(shown("[" + value + " psk \"correct horse\"] failed\n"), "[" + value + " psk \"***\"] failed");
    }
}

TEST_F(Keys, AreAllThatIsMasked)
{
    for (const char* text : {"[SET_NETWORK 0 key_mgmt WPA-PSK] failed", "psk", "psk\"", "wep_key0", "ssid-\"Net\""}) {
        EXPECT_EQ(shown(text), text);
    }
}

} // namespace
