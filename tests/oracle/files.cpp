#include "oracle/files.h"

#include <utility>

namespace Oracle::Files {

namespace {

using Kind = Trouble::Kind;

bool has(const World& world, const std::string& name, Kind kind)
{
    return world.troubles.has(name, kind, world.interface.requests());
}

/// A folder reads as an empty file.
IniFile onDisk(const World& world, const std::string& name)
{
    const auto found = world.files.find(name);
    return found == world.files.end() || has(world, name, Kind::folder) ? IniFile() : found->second;
}

Timer retryOf(const std::string& name)
{
    return name == "ka1.ini"   ? Timer::saveKa1
           : name == "ka2.ini" ? Timer::saveKa2
           : name == "ks.ini"  ? Timer::saveKs
                               : Timer::saveSettings;
}

/// False when the file cannot be written. What others have changed in it is read only where just
/// the last step fails.
bool write(World& world, const std::string& name)
{
    KeptFile& file = world.kept.at(name);
    const bool exists = world.files.contains(name);
    if (has(world, name, Kind::folder) || has(world, name, Kind::unwritable) ||
        has(world, name, Kind::full) || has(world, name, Kind::nearlyFull) ||
        (exists && has(world, name, Kind::readOnly)))
        return false;
    file.known = onDisk(world, name);
    if (exists && has(world, name, Kind::keptOpen))
        return false;
    for (const auto& [key, text] : file.waiting)
        file.known[key] = text;
    world.files[name] = file.known;
    file.waiting.clear();
    return true;
}

} // namespace

void open(World& world, const std::string& name)
{
    world.kept[name];
    save(world, name);
}

IniFile content(const World& world, const std::string& name)
{
    const KeptFile& file = world.kept.at(name);
    IniFile all = file.waiting;
    all.insert(file.known.begin(), file.known.end());
    return all;
}

void store(World& world, const std::string& name, const std::string& key, const std::string& value)
{
    world.kept.at(name).waiting[key] = value;
    save(world, name);
}

void save(World& world, const std::string& name)
{
    KeptFile& file = world.kept.at(name);
    if (file.waiting.empty()) {
        file.known = onDisk(world, name);
        return;
    }
    const bool lockIsFree = !has(world, name, Kind::lock);
    if (lockIsFree && write(world, name)) {
        file.reported = false;
        world.time.stop(retryOf(name));
        return;
    }
    world.time.start(retryOf(name), lockIsFree ? 1000 : 250);
    if (!std::exchange(file.reported, true))
        world.debug("Cannot save the settings yet: \"FOLDER/" + name + '"');
}

void close(World& world)
{
    for (const auto& [name, file] : world.kept) {
        if (!file.waiting.empty() && !has(world, name, Kind::lock))
            write(world, name);
    }
    world.kept.clear();
}

} // namespace Oracle::Files
