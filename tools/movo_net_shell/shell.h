/** The shell itself: reads lines and runs them. */
#ifndef MOVO_NET_SHELL_SHELL_H
#define MOVO_NET_SHELL_SHELL_H

#include <cstdio>

namespace shell {
/** How the shell ends. */
enum Status { kStatusGood = 0, kStatusUnmet = 1, kStatusNotUnderstood = 2, kStatusInterrupted = 130 };

struct Options {
    int input; // descriptor that the lines come from
    std::FILE* output;
    std::FILE* errors;              // complaints; those about what is played, or at a terminal, go to the output
    bool startGlue;                 // before the first line
    const char* programs = nullptr; // folder whose programs are commands too
    const char* saved = nullptr;    // folder of the files that calls write: a warning when they do not
    int play = -1;                  // descriptor whose lines are shown and run before those of the input
    bool (*becomeHost)() = nullptr; // asked before each start; false: another process hosts the glue
};

/**
 * Runs lines until `quit` or the end of the input, then stops the glue. When input and output are a terminal it goes on
 * after whatever a line does; otherwise the first line that cannot be run, or expects what does not come, ends it. On a
 * terminal such a line ends what is played, and the input follows.
 *
 * @return A status for the process.
 */
int run(const Options& options);
} // namespace shell

#endif
