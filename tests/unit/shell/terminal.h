#ifndef TESTS_UNIT_SHELL_TERMINAL_H
#define TESTS_UNIT_SHELL_TERMINAL_H

#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <sys/types.h>
#include <unistd.h>

/** A shell in a child process, at the far end of a terminal; each byte sent to `callBack` becomes a callback. */
class Terminal {
public:
    /** The shell plays the lines first. There are colours on a terminal where they are asked for. */
    explicit Terminal(const std::string& played = "", unsigned short columns = 80, bool colours = false);
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    void type(const std::string& keys) { (void)!write(m_terminal, keys.data(), keys.size()); }
    void callBack() { (void)!write(m_callbacks, "x", 1); }

    /** Waits until the text has been shown, after what was seen before. */
    testing::AssertionResult sees(const std::string& text);
    /** The same; returns what came before it. */
    std::string shownUntil(const std::string& text);
    /** Types a line; returns what is shown until the next prompt. */
    std::string answerTo(const std::string& line);
    testing::AssertionResult prompts() { return sees("movo> "); }
    /** Waits until the shell has ended by itself. */
    testing::AssertionResult endsWith(int status);

private:
    bool readMore(std::chrono::steady_clock::time_point deadline);

    int m_terminal = -1;
    int m_callbacks = -1;
    pid_t m_shell = -1;
    std::string m_shown;
    std::string m_before; // what was seen last
};

#endif
