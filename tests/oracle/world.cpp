#include "oracle/world.h"

namespace Oracle {

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
