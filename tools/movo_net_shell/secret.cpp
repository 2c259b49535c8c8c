#include "secret.h"

#include <termios.h>
#include <unistd.h>

namespace shell {
namespace {
constexpr std::size_t kLongest = 255;

/** What is typed at a terminal is not shown meanwhile. */
class EchoOff {
public:
    explicit EchoOff(int terminal) : m_terminal(terminal)
    {
        (void)tcgetattr(terminal, &m_before);
        termios silent = m_before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        (void)tcsetattr(terminal, TCSADRAIN, &silent);
    }
    ~EchoOff() { (void)tcsetattr(m_terminal, TCSADRAIN, &m_before); }
    EchoOff(const EchoOff&) = delete;
    EchoOff& operator=(const EchoOff&) = delete;

private:
    int m_terminal;
    termios m_before{};
};

/** Callbacks wait until the line is typed. */
std::optional<std::string> readLine(Console& console)
{
    std::string line;
    for (;;) {
        char byte = 0;
        switch (console.nextEvent(kNoDeadline, console.input())) {
        case Event::Interrupt:
            return std::nullopt;
        case Event::Input:
            if (read(console.input(), &byte, 1) != 1) {
                return std::nullopt;
            }
            if (byte == '\n') {
                return line;
            }
            line.append(line.size() < kLongest ? 1 : 0, byte);
            break;
        case Event::Woken:
        case Event::TimeUp:
            sleepAgain();
        }
    }
}
} // namespace

std::optional<std::string> askSecret(Console& console, const std::string& question)
{
    const EchoOff silent(console.input());
    console.print("%s", question.c_str());
    auto line = readLine(console);
    console.print("\n");
    return line;
}
} // namespace shell
