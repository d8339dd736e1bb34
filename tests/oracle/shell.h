#pragma once

#include "oracle/action.h"
#include "oracle/world.h"

/// The program as a whole: its start and end, the tray icon, the windows, the pipes.
namespace Oracle::Shell {

/// False when the action is none of these.
bool apply(World& world, const Action& action);

} // namespace Oracle::Shell
