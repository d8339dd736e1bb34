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

const IniFile& World::file(const std::string& name) const
{
    static const IniFile none;
    const auto found = files.find(name);
    return found == files.end() ? none : found->second;
}

void World::store(const std::string& file, const std::string& key, const std::string& value)
{
    files[file][key] = value;
}

} // namespace Oracle
