#include "sim/calls.h"
#include "sim/sim.h"
#include "sim/world.h"

#include <cstdlib>
#include <sys/wait.h>

namespace sim {
namespace {
constexpr int kNotFound = 127 << 8; // what the shell ends with

/** The newest script for the command that is not used up; its count goes down and its action is run. */
std::optional<CommandScript> playScript(const std::string& command)
{
    std::optional<CommandScript> played;
    {
        const Hold hold;
        auto& scripts = world().commands.scripts;
        for (auto script = scripts.rbegin(); script != scripts.rend() && !played; ++script) {
            const bool answers = script->status || script->output || script->action || script->takesMs > 0;
            if (answers && script->left != 0 && command.starts_with(script->beginning)) {
                script->left -= script->left > 0 ? 1 : 0;
                played = *script;
            }
        }
    }
    if (played && played->action) {
        played->action();
    }
    if (played && played->takesMs > 0) {
        spend(std::int64_t{played->takesMs} * 1000);
    }
    return played;
}

void journal(const std::string& command, int status, bool opened)
{
    World& w = world();
    w.records.commands.push_back({command, status, opened, self().kind, w.time.microseconds / 1000});
}

/** To fork and execute takes longer than a new thread needs to its first wait; the order of the two is fixed here. */
void letLoopReachItsWait()
{
    Hold hold;
    const Threads& threads = world().threads;
    if (threads.loopCreated && self().kind != ThreadKind::Loop) {
        hold.waitUntil("the event loop to begin", [&threads] { return threads.loopReached || threads.holdLoop; });
    }
}

int executeScripted(const std::string& command)
{
    std::optional<int> status;
    if (const auto script = playScript(command)) {
        status = script->status ? script->status : (script->output ? std::optional<int>(0) : std::nullopt);
    }
    const Hold hold;
    const int result = status ? *status : runCommand(command);
    journal(command, result, false);
    return result;
}
} // namespace

CommandRule Set::onCommand(const std::string& beginning)
{
    const Hold hold;
    auto& scripts = world().commands.scripts;
    scripts.push_back({beginning});
    return CommandRule(static_cast<int>(scripts.size()) - 1);
}

static CommandScript& scriptOf(int number)
{
    return world().commands.scripts.at(static_cast<std::size_t>(number));
}

CommandRule& CommandRule::fails(int status)
{
    const Hold hold;
    scriptOf(m_number).status = status;
    return *this;
}

CommandRule& CommandRule::prints(std::string output)
{
    const Hold hold;
    scriptOf(m_number).output = std::move(output);
    return *this;
}

CommandRule& CommandRule::does(std::function<void()> action)
{
    const Hold hold;
    scriptOf(m_number).action = std::move(action);
    return *this;
}

CommandRule& CommandRule::takes(int milliseconds)
{
    const Hold hold;
    scriptOf(m_number).takesMs = milliseconds;
    return *this;
}

CommandRule& CommandRule::times(int count)
{
    const Hold hold;
    scriptOf(m_number).left = count;
    return *this;
}
} // namespace sim

using namespace sim;

FILE* sim_fopen(const char* path, const char* mode)
{
    if (!active()) {
        return fopen(path, mode);
    }
    if (const auto strike = enter(Call::Fopen, {.name = path})) {
        errno = strike->error;
        return nullptr;
    }
    installAtFirstLook(path);
    FILE* stream = fopen(preparedPath(path).c_str(), mode);
    if (stream != nullptr) {
        const Hold hold;
        noteDescriptor(fileno(stream), {DescriptorKind::File, path, describe(Call::Fopen, path)});
    }
    return stream;
}

int sim_fclose(FILE* stream)
{
    if (!active()) {
        return fclose(stream);
    }
    const auto strike = enter(Call::Fclose, {});
    {
        const Hold hold;
        if (world().files.descriptors.erase(fileno(stream)) == 0) {
            world().problems.push_back("fclose: not a stream of the product");
        }
        world().files.streams.erase(stream);
    }
    const int result = fclose(stream);
    return strike ? failWith(strike->error) : result;
}

FILE* sim_popen(const char* command, const char* mode)
{
    if (!active()) {
        return popen(command, mode);
    }
    if (const auto strike = enter(Call::Popen, {.name = command})) {
        errno = strike->error;
        return nullptr;
    }
    letLoopReachItsWait();
    const auto script = playScript(command);
    const Hold hold;
    const int status = script ? script->status.value_or(0) : kNotFound;
    const std::string output = script ? script->output.value_or("") : "";
    journal(command, status, true);

    const std::string name = "/.output" + std::to_string(world().files.opened);
    writeFile(name, output);
    const bool closeOnExec = std::string(mode).find('e') != std::string::npos;
    FILE* stream = fopen(realPath(name).c_str(), closeOnExec ? "re" : "r");
    if (stream != nullptr) {
        noteDescriptor(fileno(stream), {DescriptorKind::File, command, describe(Call::Popen, command)});
        world().files.streams[stream] = status;
    }
    return stream;
}

int sim_pclose(FILE* stream)
{
    if (!active()) {
        return pclose(stream);
    }
    int status = -1;
    {
        const Hold hold;
        const auto& streams = world().files.streams;
        if (const auto found = streams.find(stream); found != streams.end()) {
            status = found->second;
        }
    }
    (void)sim_fclose(stream);
    return status;
}

int sim_system(const char* command)
{
    if (!active()) {
        return std::system(command); // NOLINT(cert-env33-c)
    }
    if (const auto strike = enter(Call::System, {.name = command})) {
        const Hold hold;
        journal(command, -1, false);
        return failWith(strike->error);
    }
    letLoopReachItsWait();
    return executeScripted(command);
}
