/** Where the lines come from. */
#ifndef MOVO_NET_SHELL_LINES_H
#define MOVO_NET_SHELL_LINES_H

#include "console.h"

#include <memory>
#include <string>

namespace shell {
constexpr std::size_t kLongestLine = 1023;
constexpr char kPrompt[] = "movo> ";

enum class Read { Line, TooLong, Interrupted, End };

class Lines {
public:
    virtual ~Lines() = default;

    /** Waits for a line, showing callbacks meanwhile; it comes without its end. */
    virtual Read next(std::string& line) = 0;
};

/** Lines of a file or a pipe, as they are. */
std::unique_ptr<Lines> plainLines(int input, Console& console);

/** Lines of a person at a terminal, with editing, history and completion; nothing where that is not built in. */
std::unique_ptr<Lines> editedLines(int input, std::FILE* output, Console& console);
} // namespace shell

#endif
