/** Plays scripts to the shell, which runs in the test's own process on the fake library. */
#ifndef TESTS_UNIT_SHELL_PLAY_H
#define TESTS_UNIT_SHELL_PLAY_H

#include <string>

/** What a shell that has ended leaves behind. */
struct Played {
    int status;
    std::string output;
    std::string errors;
};

/** The glue runs, without having been started, unless a test says otherwise. */
Played play(const std::string& script);

/** As the program does without --no-start. */
Played playWithStart(const std::string& script);

/** The glue keeps its files in that folder. */
Played playSaving(const std::string& script, const std::string& folder);

/** The lines read from a descriptor. */
Played playFrom(int input);

#endif
