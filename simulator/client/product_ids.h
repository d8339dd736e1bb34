#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// An unsigned number in decimal or, after "0x", hexadecimal digits; nothing else is accepted.
std::optional<std::uint32_t> parseNumber(std::string_view text);

/// The product id behind "ka1", "ka2", "ks" or a number.
std::optional<std::uint32_t> parseProductId(std::string_view text);
