#pragma once

#include "oracle/action.h"
#include "oracle/world.h"

/// The user's hands on the panel and on the dialog.
namespace Oracle::Input {

/// True when the action is one of these; what is not on the screen cannot be touched and does
/// nothing.
bool apply(World& world, const Action& action);

/// The user turns away from an open editor: what was typed counts.
void leaveEditor(World& world);

} // namespace Oracle::Input
