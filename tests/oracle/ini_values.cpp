#include "oracle/ini_values.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <optional>

namespace Oracle {

namespace {

std::string_view trimmed(std::string_view text)
{
    const auto blank = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
    while (!text.empty() && blank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && blank(text.back()))
        text.remove_suffix(1);
    return text;
}

/// The text behind a key; none for a key that is not there, empty for what is no plain text.
std::optional<std::string> storedText(const IniFile& file, const std::string& key)
{
    const auto found = file.find(key);
    if (found == file.end())
        return std::nullopt;
    std::string_view raw = found->second;
    if (raw.size() >= 2 && raw.front() == '"' && raw.back() == '"') {
        raw = raw.substr(1, raw.size() - 2);
    } else {
        raw = trimmed(raw.substr(0, raw.find(';')));
        if (raw.find(',') != std::string_view::npos)
            return std::string(); // A list is no text.
    }
    if (raw.starts_with('@') || raw.find_first_of("\\\"") != std::string_view::npos)
        return std::string(); // Nor is what would have to be decoded.
    return std::string(raw);
}

bool isTrue(std::string_view text)
{
    constexpr std::string_view word = "true";
    return std::ranges::equal(text, word, [](char letter, char expected) {
        return std::tolower(static_cast<unsigned char>(letter)) == expected;
    });
}

} // namespace

IniFile parseIni(std::string_view text)
{
    IniFile file;
    std::string section;
    // Editors of Windows put it before what they save as UTF-8.
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(byteOrderMark))
        text.remove_prefix(byteOrderMark.size());
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        const std::size_t equals = line.find('=');
        const std::size_t bracket = line.find(']');
        if (line.starts_with('[') && bracket != std::string_view::npos) {
            section = trimmed(line.substr(1, bracket - 1));
        } else if (equals != std::string_view::npos && equals > 0 && !line.starts_with(';')) {
            const std::string key = section + '/' + std::string(trimmed(line.substr(0, equals)));
            file[key] = trimmed(line.substr(equals + 1));
        }
    }
    return file;
}

bool parseInt(std::string_view text, int& number)
{
    text = trimmed(text);
    if (text.starts_with('+') && text.size() > 1 && std::isdigit(text[1]) != 0)
        text.remove_prefix(1);
    int parsed = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), parsed);
    if (error != std::errc() || end != text.data() + text.size())
        return false;
    number = parsed;
    return true;
}

int knobValue(const IniFile& file, const std::string& key, int missing)
{
    int number = missing;
    if (const auto text = storedText(file, key))
        parseInt(*text, number);
    return number;
}

bool buttonValue(const IniFile& file, const std::string& key)
{
    const std::string text = storedText(file, key).value_or("");
    int number = 0;
    return isTrue(text) || (parseInt(text, number) && number != 0);
}

std::string textValue(const IniFile& file, const std::string& key, const std::string& missing)
{
    return storedText(file, key).value_or(missing);
}

} // namespace Oracle
