/** The terminal that is written to: how wide it is, and whether it has colours. A file or a pipe is none. */
#ifndef MOVO_NET_SHELL_SCREEN_H
#define MOVO_NET_SHELL_SCREEN_H

#include <cstddef>
#include <string>

namespace shell {
enum class Style { Good, Bad, Faint, Head };

class Screen {
public:
    Screen() = default;
    /** With colours unless NO_COLOR is set, or TERM names a terminal without any. */
    explicit Screen(int descriptor);

    bool isTerminal() const { return m_descriptor >= 0; }
    bool hasColours() const { return m_hasColours; }
    /** As it is now; no limit where there is no terminal. */
    std::size_t columns() const;

    /** The text as it is shown in that style; as it is without colours. */
    std::string styled(Style style, const std::string& text) const;
    /** The text in lines that fit, broken at blanks; all but the first are indented. */
    std::string wrapped(const std::string& text, std::size_t indent) const;
    /** Four bars of a level in dBm, and a blank; nothing without colours. */
    std::string bars(int level) const;

private:
    int m_descriptor = -1;
    bool m_hasColours = false;
};
} // namespace shell

#endif
