#include "play.h"

#include "fake_net.h"
#include "tools/movo_net_shell/shell.h"

#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

namespace {
/** A stream into memory. */
class Captured {
public:
    Captured() : m_stream(open_memstream(&m_text, &m_size)) {}
    ~Captured()
    {
        (void)std::fclose(m_stream);
        std::free(m_text);
    }
    Captured(const Captured&) = delete;
    Captured& operator=(const Captured&) = delete;

    std::FILE* stream() { return m_stream; }
    std::string text()
    {
        (void)std::fflush(m_stream);
        return {m_text, m_size};
    }

private:
    char* m_text = nullptr;
    std::size_t m_size = 0;
    std::FILE* m_stream;
};

Played playTo(int input, bool startGlue, const char* saved = nullptr)
{
    Captured output;
    Captured errors;
    const int status = shell::run({input, output.stream(), errors.stream(), startGlue, nullptr, saved});
    return {status, output.text(), errors.text()};
}

Played playScript(const std::string& script, bool startGlue, const char* saved = nullptr)
{
    const int file = memfd_create("script", MFD_CLOEXEC);
    (void)!write(file, script.data(), script.size());
    (void)lseek(file, 0, SEEK_SET);
    const Played played = playTo(file, startGlue, saved);
    (void)close(file);
    return played;
}
} // namespace

Played play(const std::string& script)
{
    fake::setRunning(true);
    return playScript(script, false);
}

Played playWithStart(const std::string& script)
{
    return playScript(script, true);
}

Played playSaving(const std::string& script, const std::string& folder)
{
    fake::setRunning(true);
    return playScript(script, false, folder.c_str());
}

Played playFrom(int input)
{
    fake::setRunning(true);
    return playTo(input, false);
}
