#include "simulator/client/product_ids.h"

#include <charconv>

std::optional<std::uint32_t> parseNumber(std::string_view text)
{
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        base = 16;
        text.remove_prefix(2);
    }
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, base);
    if (error != std::errc() || stop != end)
        return std::nullopt;
    return number;
}

std::optional<std::uint32_t> parseProductId(std::string_view text)
{
    if (text == "ka1")
        return 1;
    if (text == "ka2")
        return 2;
    if (text == "ks")
        return 15;
    return parseNumber(text);
}
