#include "screen.h"

#include "text.h"

#include <cstdlib>
#include <limits>
#include <string_view>
#include <sys/ioctl.h>

namespace shell {
namespace {
constexpr std::size_t kUsualColumns = 80;

bool wantsColours()
{
    const char* const refused = std::getenv("NO_COLOR");
    const char* const type = std::getenv("TERM");
    const std::string_view terminal = type != nullptr ? type : "dumb";
    return (refused == nullptr || refused[0] == '\0') && terminal != "dumb";
}

const char* codeOf(Style style)
{
    switch (style) {
    case Style::Good:
        return "\033[1;32m";
    case Style::Bad:
        return "\033[1;31m";
    case Style::Faint:
        return "\033[2m";
    case Style::Head:
        return "\033[1m";
    }
    return "";
}
} // namespace

Screen::Screen(int descriptor) : m_descriptor(descriptor), m_hasColours(wantsColours()) {}

std::size_t Screen::columns() const
{
    if (!isTerminal()) {
        return std::numeric_limits<std::size_t>::max();
    }
    winsize size = {};
    const bool known = ioctl(m_descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : kUsualColumns;
}

std::string Screen::styled(Style style, const std::string& text) const
{
    return m_hasColours ? codeOf(style) + text + "\033[0m" : text;
}

std::string Screen::wrapped(const std::string& text, std::size_t indent) const
{
    std::string lines;
    std::size_t at = indent;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find(' ', begin), text.size());
        const std::string word = text.substr(begin, end - begin);
        const std::size_t wide = shownColumns(word);
        if (begin > 0 && at + 1 + wide > columns()) {
            lines += "\n" + std::string(indent, ' ');
            at = indent;
        } else if (begin > 0) {
            lines += ' ';
            at++;
        }
        lines += word;
        at += wide;
        begin = end + 1;
    }
    return lines;
}

std::string Screen::bars(int level) const
{
    static constexpr struct {
        int least;
        const char* shown;
    } kBars[] = {{-55, "▂▄▆█ "}, {-67, "▂▄▆  "}, {-75, "▂▄   "}, {-85, "▂    "}};
    if (!m_hasColours) {
        return "";
    }
    for (const auto& each : kBars) {
        if (level >= each.least) {
            return each.shown;
        }
    }
    return "     ";
}
} // namespace shell
