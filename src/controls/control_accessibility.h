#pragma once

class Button;
class Knob;

/// What screen readers and other assistive programs learn of the controls: a knob is a slider with
/// its range and its value as printed on it, a button a check box, a read-out a
/// text that tells its name and what it reads. Names are the widgets' accessible names.
namespace ControlAccessibility {

/// Has the toolkit ask for the above. Call it once the application object exists; calling it
/// again does no harm.
void install();

/// Tell that the value or the state has changed, if the control is visible. Cost next to nothing
/// while nobody listens.
void announce(Knob& knob);
void announce(Button& button);

} // namespace ControlAccessibility
