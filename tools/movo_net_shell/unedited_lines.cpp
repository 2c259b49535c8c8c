/** Where the editor's library is not there, a terminal is read as a file is. */
#include "lines.h"

namespace shell {
std::unique_ptr<Lines> editedLines(int input, std::FILE* output, Console& console)
{
    (void)output;
    return plainLines(input, console);
}
} // namespace shell
