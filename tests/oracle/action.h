#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Oracle {

/// One thing that a user, the interface, a file, the ASIO driver or the clock does; in text a verb
/// and its arguments, separated by blanks. Blanks and line ends within an argument are written
/// as %20, %0A and the like. docs/testing.md lists the verbs.
struct Action
{
    std::string verb;
    std::vector<std::string> arguments;

    bool operator==(const Action&) const = default;

    /// The argument, or nothing when there are fewer.
    const std::string& at(std::size_t index) const;
    long long number(std::size_t index) const; ///< decimal or 0x..., 0 when it is none
};

Action parseAction(std::string_view line);
std::string toText(const Action& action);

/// One action a line; empty lines and those that begin with # are skipped.
std::vector<Action> parseSequence(std::string_view text);
std::string toText(const std::vector<Action>& sequence);

} // namespace Oracle
