#pragma once

#include "oracle/action.h"
#include "oracle/world.h"

namespace Oracle {

/// Takes the world one action further and leaves in it what the program is expected to do, to show
/// and to have stored.
void step(World& world, const Action& action);

/// Everything on the screen, one thing a line.
std::vector<std::string> screen(const World& world);

/// The handles on the interface that the program holds, in the order of opening, one a line.
std::vector<std::string> handles(const World& world);

/// True when nothing waits to be saved and the files hold what the panel and the dialog show.
bool filesEqualControls(const World& world);

/// All files, one key a line, sorted.
std::vector<std::string> storage(const World& world);

/// The situation that the world is in, coarsely: what is attached, shown, open, under way. For
/// counting what was tried.
std::string situation(const World& world);

} // namespace Oracle
