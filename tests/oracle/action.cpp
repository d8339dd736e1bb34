#include "oracle/action.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace Oracle {

namespace {

std::string escaped(const std::string& argument)
{
    if (argument.empty())
        return "%";
    std::string text;
    for (const char character : argument) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte > ' ' && byte != '%' && byte != 0x7F) {
            text += character;
            continue;
        }
        char code[8];
        std::snprintf(code, sizeof code, "%%%02X", static_cast<unsigned>(byte));
        text += code;
    }
    return text;
}

std::string unescaped(std::string_view text)
{
    std::string argument;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            argument += text[i];
        } else if (i + 2 < text.size()) {
            const std::string code(text.substr(i + 1, 2));
            argument += static_cast<char>(std::strtol(code.c_str(), nullptr, 16));
            i += 2;
        }
    }
    return argument;
}

} // namespace

const std::string& Action::at(std::size_t index) const
{
    static const std::string none;
    return index < arguments.size() ? arguments[index] : none;
}

long long Action::number(std::size_t index) const
{
    return std::strtoll(at(index).c_str(), nullptr, 0);
}

Action parseAction(std::string_view line)
{
    Action action;
    bool first = true;
    while (!line.empty()) {
        const std::size_t end = std::min(line.find(' '), line.size());
        const std::string_view word = line.substr(0, end);
        line.remove_prefix(std::min(end + 1, line.size()));
        if (word.empty())
            continue;
        if (first)
            action.verb = word;
        else
            action.arguments.push_back(unescaped(word));
        first = false;
    }
    return action;
}

std::string toText(const Action& action)
{
    std::string text = action.verb;
    for (const std::string& argument : action.arguments)
        text += ' ' + escaped(argument);
    return text;
}

std::vector<Action> parseSequence(std::string_view text)
{
    std::vector<Action> sequence;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (!line.empty() && !line.starts_with('#'))
            sequence.push_back(parseAction(line));
    }
    return sequence;
}

std::string toText(const std::vector<Action>& sequence)
{
    std::string text;
    for (const Action& action : sequence)
        text += toText(action) + '\n';
    return text;
}

} // namespace Oracle
