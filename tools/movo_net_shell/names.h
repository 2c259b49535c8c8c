/** The public enumerations by name. */
#ifndef MOVO_NET_SHELL_NAMES_H
#define MOVO_NET_SHELL_NAMES_H

#include <movo_net.h>
#include <optional>
#include <span>
#include <string>

namespace shell {
struct Name {
    int value;
    const char* text;
};

std::span<const Name> resultNames();   // RETURN_TYPE
std::span<const Name> typeNames();     // MovoNetIfaceType_e
std::span<const Name> modeNames();     // MovoNetIPMode_e
std::span<const Name> stateNames();    // MovoNetIPStatus_e
std::span<const Name> reasonNames();   // MovoNetCBReason_e
std::span<const Name> securityNames(); // MovoNetWifiSecurity_e
std::span<const Name> cipherNames();   // MovoNetWifiEncryption_e
std::span<const Name> wpsNames();      // MovoNetWifiWPSMode_e
std::span<const Name> chipNames();     // MovoNetWifiDevType_e
std::span<const Name> wishNames();     // MovoNetWifiUISecurity_e
std::span<const Name> levelNames();    // KEST_LEVEL_*

/** The name of a value, or its number when it has none. */
std::string nameOf(std::span<const Name> names, int value);

/** The value of a name, in capitals or not. */
std::optional<int> valueOf(std::span<const Name> names, const std::string& text);

/** The same, or any number: the calls take them all. */
std::optional<int> valueOrNumber(std::span<const Name> names, const std::string& text);

/** What a public call has written, as people read it. */
std::string textOf(int number);
std::string textOf(long long macAddress);
std::string textOf(kest_bool yes);
std::string textOf(MovoNetIfaceType_e type);
std::string textOf(MovoNetIPMode_e mode);
std::string textOf(MovoNetIPStatus_e state);
std::string textOf(MovoNetWifiSecurity_e security);
std::string textOf(MovoNetWifiEncryption_e cipher);
std::string textOf(MovoNetWifiWPSMode_e mode);
std::string textOf(MovoNetWifiDevType_e chip);
} // namespace shell

#endif
