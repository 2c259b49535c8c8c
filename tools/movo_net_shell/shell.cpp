#include "shell.h"

#include "causes.h"
#include "command.h"
#include "glue.h"
#include "hints.h"
#include "history.h"
#include "join.h"
#include "lines.h"
#include "programs.h"
#include "saved.h"
#include "text.h"

#include <unistd.h>

namespace shell {
namespace {
/** How a script ends at a line that did not go well. */
int statusOf(Outcome outcome)
{
    switch (outcome) {
    case Outcome::BadArgument:
        return kStatusNotUnderstood;
    case Outcome::Interrupted:
        return kStatusInterrupted;
    case Outcome::Unmet:
    case Outcome::Done:
    case Outcome::Quit:
        break;
    }
    return kStatusUnmet;
}

class Shell {
public:
    explicit Shell(const Options& options);

    int run();

private:
    bool start();
    Read next(std::string& line);
    Outcome perform(Read read, const std::string& line);
    bool goesOnAfter(Outcome outcome);
    Outcome runLine(const std::string& line);
    Outcome runCommand(const Command& command, Arguments arguments);
    void explain(const Command& command, Arguments arguments, std::chrono::milliseconds took);
    void complain(const std::string& what);
    void tellWhereItStops(Outcome outcome, const std::string& line);

    bool m_onTerminal; // where complaints belong to the dialogue, and standard error to the log
    Console m_console;
    bool m_startGlue;
    std::unique_ptr<Lines> m_lines;
    std::unique_ptr<Lines> m_played; // until it has ended
    int m_lineNumber = 0;
};

Shell::Shell(const Options& options)
    : m_onTerminal(isatty(options.input) != 0 && isatty(fileno(options.output)) != 0),
      m_console(options.output, m_onTerminal || options.play >= 0 ? options.output : options.errors,
                m_onTerminal ? Screen(fileno(options.output)) : Screen(), m_onTerminal ? options.input : -1),
      m_startGlue(options.startGlue), m_lines(m_onTerminal ? editedLines(options.input, options.output, m_console)
                                                           : plainLines(options.input, m_console)),
      m_played(options.play < 0 ? nullptr : plainLines(options.play, m_console))
{
}

/** In a script, tells which line it is about. */
void Shell::complain(const std::string& what)
{
    if (m_onTerminal && !m_played) {
        m_console.complain("%s\n", m_console.screen().wrapped(what, 2).c_str());
    } else {
        m_console.complain("line %d: %s\n", m_lineNumber, what.c_str());
    }
}

Outcome Shell::runCommand(const Command& command, Arguments arguments)
{
    const Parameters parameters = parametersOf(command);
    const auto begin = std::chrono::steady_clock::now();
    Outcome outcome = Outcome::BadArgument;
    if (arguments.size() >= parameters.least && arguments.size() <= parameters.most) {
        outcome = command.run(m_console, arguments);
    }
    if (outcome == Outcome::BadArgument) {
        complain(wrongArguments(command, arguments));
    }
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
    explain(command, arguments, took);
    return outcome;
}

/** One line below a result that was no success. */
void Shell::explain(const Command& command, Arguments arguments, std::chrono::milliseconds took)
{
    const auto shortfall = m_console.takeShortfall();
    const std::string cause = shortfall ? causeOf({command, arguments, *shortfall, took}) : "";
    if (!cause.empty()) {
        m_console.print("  %s\n", m_console.screen().wrapped(cause, 2).c_str());
    }
}

Outcome Shell::runLine(const std::string& line)
{
    const auto words = splitWords(line);
    if (!words) {
        complain("a quote or a backslash has nothing after it");
        return Outcome::BadArgument;
    }
    if (words->empty()) {
        return Outcome::Done;
    }
    std::size_t length = 0;
    const Command* const command = findCommand(*words, length);
    if (command == nullptr && isProgram(words->front())) {
        return runProgram(m_console, *words);
    }
    if (command == nullptr) {
        complain(unknownCommand(*words));
        return Outcome::BadArgument;
    }
    return runCommand(*command, std::span(*words).subspan(length));
}

/** A line that is played is shown as if it had been typed. */
Read Shell::next(std::string& line)
{
    if (m_played) {
        const Read read = m_played->next(line);
        if (read != Read::End) {
            m_console.print("%s%s\n", kPrompt, printable(line).c_str());
            return read;
        }
        m_played.reset();
        m_lineNumber = 0;
    }
    return m_lines->next(line);
}

Outcome Shell::perform(Read read, const std::string& line)
{
    m_lineNumber++;
    m_console.beginCommand();
    switch (read) {
    case Read::Line:
        return runLine(line);
    case Read::TooLong:
        complain("longer than " + std::to_string(kLongestLine) + " characters");
        return Outcome::BadArgument;
    case Read::Interrupted:
        return Outcome::Interrupted;
    case Read::End:
        break;
    }
    return Outcome::Quit;
}

bool Shell::start()
{
    if (m_onTerminal) {
        (void)m_console.remarkWith(remarkOn);
        m_console.print("The network glue of the set; help lists the commands.\n");
    }
    if (m_startGlue) {
        const RETURN_TYPE result = startGlue();
        if (result != 0) {
            m_console.complain("the glue did not start\n");
            return false;
        }
    }
    return true;
}

/** A script that nobody watches, or that is played, stops at what does not come. */
void Shell::tellWhereItStops(Outcome outcome, const std::string& line)
{
    if (outcome == Outcome::Unmet && (!m_onTerminal || m_played)) {
        const std::string text = withoutKey(line.substr(std::min(line.find_first_not_of(" \t"), line.size())));
        m_console.complain("stopped at line %d: %s\n", m_lineNumber, printable(text).c_str());
    }
}

/** At a terminal the person decides what comes next. */
bool Shell::goesOnAfter(Outcome outcome)
{
    if (m_onTerminal && outcome != Outcome::Done) {
        m_played.reset();
    }
    return m_onTerminal || outcome == Outcome::Done;
}

int Shell::run()
{
    if (!start() && !m_onTerminal) {
        return kStatusUnmet;
    }
    std::string line;
    for (;;) {
        const Read read = next(line);
        const Outcome outcome = perform(read, line);
        if (outcome == Outcome::Quit) {
            return kStatusGood;
        }
        tellWhereItStops(outcome, line);
        if (!goesOnAfter(outcome)) {
            return statusOf(outcome);
        }
    }
}
} // namespace

int run(const Options& options)
{
    catchInterrupts();
    setHostCheck(options.becomeHost);
    setProgramFolder(options.programs);
    setSavedFolder(options.saved);
    const int status = Shell(options).run();
    leaveGlue();
    return status;
}
} // namespace shell
