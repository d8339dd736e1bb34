#include "oracle/surroundings.h"

#include "oracle/ini_values.h"

#include <algorithm>

namespace Oracle::Surroundings {

namespace {

int count(const Action& action, std::size_t index)
{
    return action.at(index) == "always" ? Fault::always : static_cast<int>(action.number(index));
}

std::uint32_t number(const Action& action, std::size_t index)
{
    return static_cast<std::uint32_t>(action.number(index));
}

/// fail|delay|short|throw CODE COUNT SKIP VALUE
void addFault(Interface& interface, const Action& action)
{
    const auto kind = action.verb == "fail"    ? Fault::Kind::fail
                      : action.verb == "delay" ? Fault::Kind::delay
                      : action.verb == "short" ? Fault::Kind::shorten
                                               : Fault::Kind::raise;
    interface.addFault({kind, number(action, 0), count(action, 1),
                        static_cast<int>(action.number(2)), number(action, 3)});
}

void setLevels(Interface& interface, const Action& action)
{
    for (std::size_t i = 0; i < interface.levels.size(); ++i)
        interface.levels[i] = static_cast<std::int32_t>(action.number(i));
}

void setFirmware(Interface& interface, const std::string& version)
{
    interface.firmware.fill(0);
    std::copy_n(version.begin(), std::min(version.size(), interface.firmware.size()),
                interface.firmware.begin());
}

void setEngine(Interface& interface, const Action& action)
{
    interface.sampleRate = number(action, 0);
    interface.bufferSize = number(action, 1);
    interface.latency = number(action, 2);
}

/// at MS ACTION
void plan(Interface& interface, const Action& action)
{
    const Action later{action.at(1), {action.arguments.begin() + 2, action.arguments.end()}};
    interface.plan(action.number(0), [later](Interface& then) { apply(then, later); });
}

} // namespace

bool apply(Interface& interface, const Action& action)
{
    if (action.verb == "at")
        plan(interface, action);
    else if (action.verb == "plug")
        interface.plug(number(action, 0), static_cast<int>(action.number(1)));
    else if (action.verb == "unplug")
        interface.unplug();
    else if (action.verb == "fail" || action.verb == "delay" || action.verb == "short" ||
             action.verb == "throw")
        addFault(interface, action);
    else if (action.verb == "failopen")
        interface.failOpens(count(action, 0), number(action, 1),
                            static_cast<int>(action.number(2)));
    else if (action.verb == "heal")
        interface.heal();
    else if (action.verb == "levels")
        setLevels(interface, action);
    else if (action.verb == "usberrors")
        interface.usbErrors = number(action, 0);
    else if (action.verb == "firmware")
        setFirmware(interface, action.at(0));
    else if (action.verb == "engine")
        setEngine(interface, action);
    else
        return false;
    return true;
}

bool apply(World& world, const Action& action)
{
    world.interface.reach(world.time.now());
    if (apply(world.interface, action))
        return true;
    if (action.verb == "file")
        world.files[action.at(0)] = parseIni(action.at(1));
    else if (action.verb == "nofile")
        world.files.erase(action.at(0));
    else if (!world.troubles.apply(action, world.interface.requests()))
        return false;
    return true;
}

} // namespace Oracle::Surroundings
