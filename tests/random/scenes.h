#pragma once

#include "oracle/action.h"
#include "support/panel_table.h"

#include <vector>

/// Stretches of a user's day of which sequences are put together.
namespace Scene {

using Actions = std::vector<Oracle::Action>;

using PanelTable::Control;
using PanelTable::Model;
using PanelTable::models;

void append(Actions& sequence, const Actions& more);

/// The program starts and shows its window.
Actions begin();
/// The interface comes, and the panel is built.
Actions plug(const Model& model);
/// The interface goes, and the panel with it.
Actions lose();
/// A hand on that control: a step up, or a click.
Oracle::Action use(const Control& control);
/// A hand on every control of the panel.
Actions usePanel(const Model& model);
/// A hand on every choice of the dialog.
Actions useDialog();
/// Both.
Actions use(const Model& model);
/// What was wrong is over: the interface goes and comes, everything works, the program ends.
Actions recover(const Model& model);

} // namespace Scene
