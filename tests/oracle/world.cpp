#include "oracle/world.h"

#include <algorithm>
#include <cctype>

namespace Oracle {

bool WithoutCase::operator()(const std::string& a, const std::string& b) const
{
    return std::ranges::lexicographical_compare(
        a, b, {}, [](unsigned char letter) { return std::tolower(letter); },
        [](unsigned char letter) { return std::tolower(letter); });
}

std::string Knob::shown() const
{
    return std::to_string(value == 0 ? 0 : value + offset) + "dB";
}

void World::sleep(int milliseconds)
{
    events.push_back("sleep " + std::to_string(milliseconds));
    time.pass(milliseconds);
}

} // namespace Oracle
