/** Commands with what they call and print. */
#ifndef TESTS_UNIT_SHELL_CASES_H
#define TESTS_UNIT_SHELL_CASES_H

#include <string>
#include <vector>

struct Case {
    const char* line;
    std::vector<std::string> calls;
    const char* output;
};

/** The commands for the wireless interface, which is wlan0. */
const std::vector<Case>& wifiCases();

#endif
