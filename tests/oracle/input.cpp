#include "oracle/input.h"

#include "oracle/ini_values.h"
#include "oracle/panel.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace Oracle::Input {

namespace {

Editor editorOn(const std::string& key, const Knob& knob, bool byKeyboard)
{
    return {key, std::to_string(knob.value + knob.offset), byKeyboard};
}

/// The knob is what the user sees; an editor in which nothing was typed shows each new value.
void announce(World& world, const std::string& key)
{
    Panel& panel = *world.panel;
    auto& editor = panel.editor;
    if (editor && editor->key == key && !editor->modified)
        editor = editorOn(key, panel.knobs.at(key), editor->byKeyboard);
    knobAnnounces(world, key);
}

void closeEditor(Panel& panel)
{
    panel.focus = panel.editor->byKeyboard ? panel.editor->key : "";
    panel.editor.reset();
}

/// With what is typed in full width, as EF BC 81 (!) to EF BD 9E (~), in plain ASCII.
std::string plain(const std::string& text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = [&](std::size_t k) {
            return i + k < text.size() ? static_cast<unsigned char>(text[i + k]) : 0U;
        };
        const bool wide = byte(0) == 0xEF && (byte(1) == 0xBC || byte(1) == 0xBD);
        result += wide ? static_cast<char>(byte(2) - (byte(1) == 0xBC ? 0x60 : 0x20)) : text[i];
        i += wide ? 2 : 0;
    }
    return result;
}

/// Takes the number that was typed. Enter takes other text for the value as it is, so that it is
/// lowered by the offset; whatever else ends the editing drops such text.
void finishEdit(World& world, bool byEnter = false)
{
    Panel& panel = *world.panel;
    if (!panel.editor)
        return;
    const Editor editor = *panel.editor;
    closeEditor(panel);
    std::string text = plain(editor.text);
    if (text.ends_with("dB"))
        text.resize(text.size() - 2);
    const Knob& knob = panel.knobs.at(editor.key);
    int typed = byEnter ? knob.value : knob.value + knob.offset;
    parseInt(text, typed);
    setKnob(world, editor.key, static_cast<long long>(typed) - knob.offset);
}

void openEditor(Panel& panel, const std::string& key, bool byKeyboard)
{
    panel.editor = editorOn(key, panel.knobs.at(key), byKeyboard);
    panel.focus.clear();
}

void turnTo(World& world, const std::string& key, int value)
{
    Knob& knob = world.panel->knobs.at(key);
    knob.value = std::clamp(value, knob.minimum, knob.maximum);
    announce(world, key);
}

void toMinimum(World& world, const std::string& key)
{
    turnTo(world, key, world.panel->knobs.at(key).minimum);
}

void wheel(World& world, const std::string& key, const std::string& direction)
{
    // A wheel that turns sideways goes down as well.
    turnTo(world, key, world.panel->knobs.at(key).value + (direction == "up" ? 1 : -1));
}

void dragTo(World& world, const std::string& key, int x, int y)
{
    Knob& knob = world.panel->knobs.at(key);
    if (knob.lastY > y)
        knob.value = std::min(knob.value + 1, knob.maximum);
    else if (knob.lastY < y)
        knob.value = std::max(knob.value - 1, knob.minimum);
    if (knob.lastX < x)
        knob.value = std::min(knob.value + 1, knob.maximum);
    else if (knob.lastX > x)
        knob.value = std::max(knob.value - 1, knob.minimum);
    knob.lastX = x;
    knob.lastY = y;
    announce(world, key);
}

/// drag KEY plain|ctrl X,Y X,Y ...: pressed at the first position, moved to the others.
void drag(World& world, const Action& action)
{
    finishEdit(world);
    const std::string& key = action.at(0);
    if (action.at(1) == "ctrl")
        toMinimum(world, key);
    for (std::size_t i = 3; i < action.arguments.size(); ++i) {
        int x = 0;
        int y = 0;
        if (std::sscanf(action.at(i).c_str(), "%d,%d", &x, &y) == 2)
            dragTo(world, key, x, y);
    }
}

void doubleClick(World& world, const std::string& key, bool onText)
{
    Panel& panel = *world.panel;
    if (onText && panel.editor && panel.editor->key == key)
        return; // Into the editor, where it selects.
    finishEdit(world);
    if (!onText) {
        toMinimum(world, key);
        return;
    }
    openEditor(panel, key, false);
}

void type(World& world, const std::string& text)
{
    auto& editor = world.panel->editor;
    if (!editor || text.empty())
        return;
    editor->text = editor->allSelected ? text : editor->text + text;
    editor->allSelected = false;
    editor->modified = true;
}

std::size_t startOfLastLetter(const std::string& text)
{
    std::size_t start = text.size() - 1;
    while ((text[start] & 0xC0) == 0x80)
        --start;
    return start;
}

void erase(Editor& editor)
{
    if (editor.text.empty())
        return;
    if (editor.allSelected)
        editor.text.clear();
    else
        editor.text.resize(startOfLastLetter(editor.text));
    editor.allSelected = false;
    editor.modified = true;
}

void press(World& world, const std::string& key)
{
    Button& button = world.panel->buttons.at(key);
    button.on = !button.on;
    // A button says everything twice.
    buttonAnnounces(world, key);
    buttonAnnounces(world, key);
}

void click(World& world, const std::string& key)
{
    finishEdit(world);
    press(world, key);
}

/// The control that Tab, or Shift+Tab, goes to.
std::string neighbour(const Panel& panel, const std::string& key, bool next)
{
    const auto& order = panel.order;
    if (order.empty())
        return {};
    const auto found = std::ranges::find(order, key);
    if (next)
        return found == order.end() || found + 1 == order.end() ? order.front() : *(found + 1);
    return found == order.end() || found == order.begin() ? order.back() : *(found - 1);
}

void keyInEditor(World& world, const std::string& name)
{
    Panel& panel = *world.panel;
    const std::string edited = panel.editor->key;
    if (name == "enter") {
        finishEdit(world, true);
    } else if (name == "tab" || name == "backtab") {
        finishEdit(world);
        panel.focus = name == "tab" ? neighbour(panel, edited, true) : edited;
    } else if (name == "escape") {
        closeEditor(panel);
    } else if (name == "backspace") {
        erase(*panel.editor);
    } else if (name == "space") {
        type(world, " ");
    } else if (name == "end") {
        panel.editor->allSelected = false;
    }
}

void keyOnKnob(World& world, const std::string& key, const std::string& name)
{
    const Knob& knob = world.panel->knobs.at(key);
    const std::map<std::string, int> values{{"up", knob.value + 1},
                                            {"down", knob.value - 1},
                                            {"pageup", knob.value + 5},
                                            {"pagedown", knob.value - 5},
                                            {"end", knob.maximum}};
    if (const auto found = values.find(name); found != values.end())
        turnTo(world, key, found->second);
    else if (name == "enter")
        openEditor(*world.panel, key, true);
}

void key(World& world, const std::string& name)
{
    Panel& panel = *world.panel;
    if (panel.editor)
        keyInEditor(world, name);
    else if (name == "tab" || name == "backtab")
        panel.focus = neighbour(panel, panel.focus, name == "tab");
    else if (panel.knobs.contains(panel.focus))
        keyOnKnob(world, std::string(panel.focus), name);
    else if (panel.buttons.contains(panel.focus) && name == "space")
        press(world, std::string(panel.focus));
}

void onKnob(World& world, const Action& action)
{
    const std::string& key = action.at(0);
    if (action.verb == "wheel")
        wheel(world, key, action.at(1));
    else if (action.verb == "drag")
        drag(world, action);
    else if (action.verb == "doubleclick")
        doubleClick(world, key, action.at(1) == "text");
}

void onButton(World& world, const Action& action)
{
    click(world, action.at(0));
    if (action.verb == "doubleclick")
        click(world, action.at(0));
}

} // namespace

void leaveEditor(World& world)
{
    if (world.panel)
        finishEdit(world);
}

bool apply(World& world, const Action& action)
{
    static const std::string verbs[] = {"wheel", "drag", "doubleclick", "type", "key", "click"};
    if (std::ranges::find(verbs, action.verb) == std::end(verbs))
        return false;
    if (!world.running || !world.window.visible || !world.panel)
        return true;
    if (action.verb == "type")
        type(world, action.at(0));
    else if (action.verb == "key")
        key(world, action.at(0));
    else if (world.panel->knobs.contains(action.at(0)))
        onKnob(world, action);
    else if (world.panel->buttons.contains(action.at(0)))
        onButton(world, action);
    return true;
}

} // namespace Oracle::Input
