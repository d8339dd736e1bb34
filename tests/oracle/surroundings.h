#pragma once

#include "oracle/action.h"
#include "oracle/world.h"

#include <string>

/// What happens around the program: the cable, the driver's faults, the files.
namespace Oracle::Surroundings {

/// False when the action is none of these.
bool apply(World& world, const Action& action);

/// The same for the interface alone.
bool apply(Interface& interface, const Action& action);

} // namespace Oracle::Surroundings
