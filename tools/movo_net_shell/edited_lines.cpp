/** Lines with editing, history and completion, by libedit. */
#include "characters.h"
#include "completion.h"
#include "history.h"
#include "lines.h"
#include "text.h"

#include <clocale>
#include <cwchar>
#include <histedit.h>
#include <unistd.h>

namespace shell {
namespace {
class EditedLines : public Lines {
public:
    EditedLines(int input, std::FILE* output, Console& console);
    ~EditedLines() override;
    EditedLines(const EditedLines&) = delete;
    EditedLines& operator=(const EditedLines&) = delete;

    Read next(std::string& line) override;

private:
    static EditedLines& of(EditLine* editor);
    static int readCharacter(EditLine* editor, wchar_t* character);
    static unsigned char complete(EditLine* editor, int key);

    void showArrivals();
    int readByte(char& byte);
    unsigned char insert(const Completion& completion);
    void list(const Completion& completion);

    int m_input;
    std::FILE* m_inputStream; // of a descriptor of its own: the editor wants a stream
    std::FILE* m_output;
    Console& m_console;
    EditLine* m_editor;
    HistoryW* m_history;
    bool m_interrupted = false;
};

/** Of the keys that the editor takes for commands where the system has no locale, these are letters. */
constexpr wchar_t kFirstLetter = 0xA0;
constexpr wchar_t kLastLetter = 0xFF;

const char* prompt(EditLine* /*editor*/)
{
    return kPrompt;
}

EditedLines::EditedLines(int input, std::FILE* output, Console& console)
    : m_input(input), m_inputStream(fdopen(dup(input), "r")), m_output(output), m_console(console),
      m_editor(el_init("movo_net_shell", m_inputStream, output, output)), m_history(history_winit())
{
    HistEventW event;
    (void)history_w(m_history, &event, H_SETSIZE, kHistorySize);
    (void)history_w(m_history, &event, H_SETUNIQUE, 1);
    for (const std::string& line : keptLines()) {
        (void)history_w(m_history, &event, H_ENTER, wide(line).c_str());
    }
    (void)el_set(m_editor, EL_CLIENTDATA, this);
    (void)el_set(m_editor, EL_EDITOR, "emacs");
    (void)el_set(m_editor, EL_PROMPT, prompt);
    (void)el_wset(m_editor, EL_HIST, history_w, m_history);
    (void)el_set(m_editor, EL_GETCFN, readCharacter);
    (void)el_wset(m_editor, EL_ADDFN, L"complete", L"completes the word", complete); // el_set would leak the names
    (void)el_set(m_editor, EL_BIND, "^I", "complete", nullptr);
    for (wchar_t letter = kFirstLetter; letter <= kLastLetter; letter++) {
        const wchar_t key[] = {letter, L'\0'};
        (void)el_wset(m_editor, EL_BIND, key, L"ed-insert", nullptr);
    }
}

EditedLines::~EditedLines()
{
    el_end(m_editor);
    history_wend(m_history);
    (void)std::fclose(m_inputStream);
}

Read EditedLines::next(std::string& line)
{
    int length = 0;
    m_interrupted = false;
    m_console.showArrivals();
    el_resize(m_editor);                     // the editor's own signal handlers would run on any thread, the glue's too
    (void)el_set(m_editor, EL_PREP_TERM, 1); // before the prompt, so that keys struck at once are not taken as a line
    const wchar_t* const text = el_wgets(m_editor, &length);
    if (text == nullptr) {
        (void)std::fputs("\n", m_output);
        return m_interrupted ? Read::Interrupted : Read::End;
    }
    line = narrow({text, static_cast<std::size_t>(length)});
    if (line.ends_with('\n')) {
        line.pop_back();
    }
    if (line.find_first_not_of(" \t") != std::string::npos) {
        HistEventW event;
        (void)history_w(m_history, &event, H_ENTER, wide(line).c_str());
        keepLine(line);
    }
    return line.size() > kLongestLine ? Read::TooLong : Read::Line;
}

EditedLines& EditedLines::of(EditLine* editor)
{
    void* data = nullptr;
    (void)el_get(editor, EL_CLIENTDATA, &data);
    return *static_cast<EditedLines*>(data);
}

/** Callbacks take the place of the line being edited, which comes again below them. */
void EditedLines::showArrivals()
{
    (void)std::fputs("\r\033[K", m_output);
    m_console.showArrivals();
    (void)el_set(m_editor, EL_REFRESH);
}

/** As read: 1, 0 at the end, -1. */
int EditedLines::readByte(char& byte)
{
    for (;;) {
        switch (m_console.nextEvent(kNoDeadline, m_input)) {
        case Event::Input:
            return static_cast<int>(read(m_input, &byte, 1));
        case Event::Interrupt:
            m_interrupted = true;
            return -1;
        case Event::Woken:
        case Event::TimeUp:
            showArrivals();
        }
    }
}

int EditedLines::readCharacter(EditLine* editor, wchar_t* character)
{
    std::string bytes;
    for (;;) {
        char byte = 0;
        const int count = of(editor).readByte(byte);
        if (count != 1) {
            return count;
        }
        bytes += byte;
        if (firstCharacter(bytes).code == Character::kBroken) {
            bytes = byte; // which may begin the next one
        }
        const Character first = firstCharacter(bytes);
        if (first.isWhole()) {
            *character = static_cast<wchar_t>(first.code);
            return 1;
        }
    }
}

unsigned char EditedLines::complete(EditLine* editor, int /*key*/)
{
    const LineInfoW* const info = el_wline(editor);
    const auto length = static_cast<std::size_t>(info->cursor - info->buffer);
    return of(editor).insert(completionOf(narrow({info->buffer, length})));
}

/** Inserts what all candidates share; when that is nothing new, shows them. */
unsigned char EditedLines::insert(const Completion& completion)
{
    if (completion.candidates.empty()) {
        return CC_ERROR;
    }
    const std::string keys = keysFor(completion);
    if (keys.empty()) {
        list(completion);
        return CC_REDISPLAY;
    }
    return el_winsertstr(m_editor, wide(keys).c_str()) == 0 ? CC_REFRESH : CC_ERROR;
}

void EditedLines::list(const Completion& completion)
{
    (void)std::fputs("\n", m_output);
    for (const std::string& candidate : completion.candidates) {
        (void)std::fprintf(m_output, "%s  ", printable(candidate).c_str());
    }
    (void)std::fputs("\n", m_output);
}
} // namespace

std::unique_ptr<Lines> editedLines(int input, std::FILE* output, Console& console)
{
    (void)std::setlocale(LC_CTYPE, "C.UTF-8"); // the editor asks as it is made
    return std::make_unique<EditedLines>(input, output, console);
}
} // namespace shell
