#include "oracle/trace.h"

#include "oracle/text.h"

#include <bit>

namespace Oracle {

std::string describe(const Request& request)
{
    std::string text = "request " + std::to_string(request.handle) + ' ' + Text::hex(request.code);
    if (!request.input.empty())
        text += " in " + Text::bytes(request.input);
    if (request.outputSize != 0)
        text += " out " + std::to_string(request.outputSize);
    return text;
}

std::string describeTable(int handle, std::span<const double> last, std::span<const double> table)
{
    std::string text = "mixer " + std::to_string(handle);
    for (std::size_t i = 0; i < table.size(); ++i) {
        const bool same =
            std::bit_cast<std::uint64_t>(table[i]) == std::bit_cast<std::uint64_t>(last[i]);
        if (!same)
            text += ' ' + std::to_string(i) + '=' + Text::exact(table[i]);
    }
    return text;
}

} // namespace Oracle
