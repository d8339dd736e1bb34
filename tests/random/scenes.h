#pragma once

#include "oracle/action.h"

#include <span>
#include <vector>

/// Stretches of a user's day of which sequences are put together.
namespace Scene {

using Actions = std::vector<Oracle::Action>;

struct Model
{
    const char* name;
    const char* use; ///< a hand on every control
    const char* productId;
};

std::span<const Model> models();

void append(Actions& sequence, const Actions& more);

/// The program starts and shows its window.
Actions begin();
/// The interface comes, and the panel is built.
Actions plug(const Model& model);
/// The interface goes, and the panel with it.
Actions lose();
/// A hand on every control of the panel.
Actions usePanel(const Model& model);
/// A hand on every choice of the dialog.
Actions useDialog();
/// Both.
Actions use(const Model& model);
/// What was wrong is over: the interface goes and comes, everything works, the program ends.
Actions recover(const Model& model);

} // namespace Scene
