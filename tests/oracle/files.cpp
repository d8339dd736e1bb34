#include "oracle/files.h"

#include "oracle/panel.h"

#include <utility>

namespace Oracle::Files {

namespace {

using Kind = Trouble::Kind;

bool has(const World& world, const std::string& name, Kind kind)
{
    return world.troubles.has(name, kind, world.interface.requests());
}

IniFile onDisk(const World& world, const std::string& name)
{
    const auto found = world.files.find(name);
    return found == world.files.end() ? IniFile() : found->second;
}

Timer retryOf(const std::string& name)
{
    int timer = static_cast<int>(Timer::savePanel);
    for (const Model* model : models) {
        if (name == model->file())
            return static_cast<Timer>(timer);
        ++timer;
    }
    return Timer::saveSettings;
}

bool isReadable(const World& world, const std::string& name)
{
    return !has(world, name, Kind::folder) &&
           !(world.files.contains(name) && has(world, name, Kind::unreadable));
}

bool isWritable(const World& world, const std::string& name)
{
    return !has(world, name, Kind::unwritable) && !has(world, name, Kind::full) &&
           !(world.files.contains(name) &&
             (has(world, name, Kind::readOnly) || has(world, name, Kind::keptOpen)));
}

/// Saves what waits, unless the file says just that.
void write(World& world, const std::string& name)
{
    KeptFile& file = world.kept.at(name);
    IniFile changed = file.known;
    for (const auto& [key, text] : file.waiting)
        changed[key] = text;
    if (changed != file.known) {
        if (!isWritable(world, name))
            return;
        world.files[name] = file.known = changed;
    }
    file.waiting.clear();
}

void readAndWrite(World& world, const std::string& name)
{
    KeptFile& file = world.kept.at(name);
    if (isReadable(world, name)) {
        file.known = onDisk(world, name);
        file.unread = false;
        write(world, name);
    }
    if (!file.unread && file.waiting.empty()) {
        file.reported.clear();
        world.time.stop(retryOf(name));
        return;
    }
    if (!world.time.isActive(retryOf(name)))
        world.time.start(retryOf(name), 1000);
    const std::string line =
        std::string(file.unread ? "Cannot read" : "Cannot save") + " the settings yet:";
    if (std::exchange(file.reported, line) != line)
        world.debug(line + " \"FOLDER/" + name + '"');
}

} // namespace

void open(World& world, const std::string& name)
{
    KeptFile& file = world.kept[name];
    file.unread = true;
    file.assumed.clear();
    readAndWrite(world, name);
}

void restore(World& world, const std::string& name, const std::function<void()>& controls)
{
    KeptFile& file = world.kept.at(name);
    if (!file.unread)
        return controls();
    // Whatever is stored meanwhile is put aside: it is what the program had to assume.
    const IniFile waiting = file.waiting;
    controls();
    for (const auto& [key, text] : file.waiting) {
        if (!waiting.contains(key))
            file.assumed[key] = text;
    }
    file.waiting = waiting;
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
    KeptFile& file = world.kept.at(name);
    const auto assumed = file.assumed.find(key);
    if (file.unread && !file.waiting.contains(key) && assumed != file.assumed.end() &&
        assumed->second == value)
        return;
    file.waiting[key] = value;
    if (!file.unread)
        readAndWrite(world, name);
}

bool retry(World& world, const std::string& name)
{
    const bool wasUnread = world.kept.at(name).unread;
    readAndWrite(world, name);
    return wasUnread && !world.kept.at(name).unread;
}

void saveAll(World& world)
{
    for (const auto& [name, file] : world.kept)
        readAndWrite(world, name);
}

} // namespace Oracle::Files
