#pragma once

class QKeyEvent;
class QWidget;

/// The keyboard never surprises:
///  1. A window that comes up has the focus itself: until Tab no control answers a key.
///  2. The focus comes to knobs and buttons by Tab and Shift+Tab alone; a click never moves it.
///  3. Arrows, Page, Home and End turn the knob that has the focus. Buttons ignore them, and a
///     repeat does nothing where its first press did not arrive.
///  4. Where the focus is, the ring is.
///  5. Editing that the mouse began ends on no control, editing that Enter began on its knob. Held
///     Enter opens an editor or closes it.
///  6. A key counts alone: Space presses, with Ctrl, Alt, Shift or Meta it does nothing.
///  7. What was typed stays until it is committed; an untouched editor shows the knob's value.
///  8. A click elsewhere ends editing, as does every loss of the focus: a number is taken, other
///     text is dropped. Enter commits what is there.
///  9. The editor does without an input method, and takes full-width digits for digits.
/// 10. The wheel over a closed list changes nothing.
///
/// Here is what windows and controls have in common of this; 5, 7, 8 and 9 are the knob's, 4 is
/// FocusRing's, 10 the dialog's. GUI thread only.
namespace KeyboardPolicy {

/// Has the window take the focus itself: when it is shown, and when it becomes active while none of
/// its controls has the focus. Enter presses nothing there, Escape closes a dialog as ever.
void holdWindow(QWidget& window);

/// Lets the control have the focus by Tab alone, and only such keys as are its own.
void holdControl(QWidget& control);

/// Either of the two Enter keys.
bool isEnter(const QKeyEvent& event);

} // namespace KeyboardPolicy
