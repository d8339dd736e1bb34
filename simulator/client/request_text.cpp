#include "simulator/client/simulated_request.h"

#include <charconv>
#include <string_view>

namespace {

std::string hex(std::uint32_t value, int digits)
{
    std::string text;
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        text += "0123456789ABCDEF"[value >> shift & 0xF];
    return text;
}

std::string inputText(const SimulatedRequest& request)
{
    std::string text = "in=";
    for (std::size_t i = 0; i < request.input.size(); ++i) {
        if (i > 0)
            text += ' ';
        text += hex(request.input[i], 2);
    }
    if (request.inputLength > request.input.size())
        text += " .. (" + std::to_string(request.inputLength) + " bytes)";
    return text;
}

std::string tableText(const SimulatedRequest& request)
{
    std::string text = "table";
    if (request.cellsLost)
        text += " (cells lost)";
    for (const SimulatedCell& cell : request.cells)
        text += ' ' + std::to_string(cell.index) + '=' + formatGain(cell.value);
    return text;
}

} // namespace

std::string formatGain(double value)
{
    char digits[32];
    const auto end =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 6).ptr;
    return std::string(digits, end);
}

std::string formatRequest(const SimulatedRequest& request)
{
    std::string text = 'h' + std::to_string(request.handle) + ' ' + hex(request.code, 8) + ' ';
    if (request.mixerTable)
        text += tableText(request);
    else
        text += inputText(request) + " out=" + std::to_string(request.outputLength);
    if (request.error != 0)
        text += " error=" + std::to_string(request.error);
    return text;
}
