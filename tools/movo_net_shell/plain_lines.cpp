#include "lines.h"

#include <cerrno>
#include <unistd.h>

namespace shell {
namespace {
class PlainLines : public Lines {
public:
    PlainLines(int input, Console& console) : m_input(input), m_console(console) {}

    Read next(std::string& line) override;

private:
    bool takeLine(std::string& line);
    void readMore();

    int m_input;
    Console& m_console;
    std::string m_read; // and not yet taken
    bool m_ended = false;
};

/** What stands before the next line end; at the end of the input all that is left. */
bool PlainLines::takeLine(std::string& line)
{
    const std::size_t end = m_read.find('\n');
    if (end == std::string::npos && !(m_ended && !m_read.empty())) {
        return false;
    }
    line = m_read.substr(0, end);
    m_read.erase(0, end == std::string::npos ? end : end + 1);
    return true;
}

/** Of a line that does not end, no more is kept than tells that it is too long. */
void PlainLines::readMore()
{
    char bytes[512];
    const ssize_t count = read(m_input, bytes, sizeof(bytes));
    if (count > 0) {
        m_read.append(bytes, static_cast<std::size_t>(count));
    } else {
        m_ended = count == 0 || (errno != EINTR && errno != EAGAIN);
    }
    if (m_read.find('\n') == std::string::npos && m_read.size() > kLongestLine) {
        m_read.resize(kLongestLine + 1);
    }
}

Read PlainLines::next(std::string& line)
{
    m_console.showArrivals();
    while (!takeLine(line)) {
        if (m_ended) {
            return Read::End;
        }
        switch (m_console.nextEvent(kNoDeadline, m_input)) {
        case Event::Interrupt:
            return Read::Interrupted;
        case Event::Input:
            readMore();
            break;
        case Event::Woken:
        case Event::TimeUp:
            m_console.showArrivals();
        }
    }
    return line.size() > kLongestLine ? Read::TooLong : Read::Line;
}
} // namespace

std::unique_ptr<Lines> plainLines(int input, Console& console)
{
    return std::make_unique<PlainLines>(input, console);
}
} // namespace shell
