#pragma once

#include <exception>
#include <string_view>

/// Writes `text` as a line of its own to the standard error stream.
void writeErrorLine(std::string_view text, std::string_view detail = {});

/// What a command says on the standard error stream when an exception escapes from it. Two
/// texts, because the wording of the unknown case differs for one command.
struct CommandFailure
{
    std::string_view known;   ///< followed by what()
    std::string_view unknown; ///< the whole line
};

/// Runs a command and returns its result; an exception is reported and gives false.
template <typename Command> bool guarded(const CommandFailure& failure, Command command) noexcept
{
    try {
        return command();
    } catch (const std::exception& error) {
        writeErrorLine(failure.known, error.what());
    } catch (...) {
        writeErrorLine(failure.unknown);
    }
    return false;
}
