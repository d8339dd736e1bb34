#include "oracle/input.h"

#include "oracle/ini_values.h"
#include "oracle/panel.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace Oracle::Input {

namespace {

Editor editorOn(const std::string& key, const Knob& knob)
{
    return {key, std::to_string(knob.value + knob.offset), true, knob.value};
}

/// The knob is what the user sees; an open editor shows each new value at once.
void announce(World& world, const std::string& key)
{
    Panel& panel = *world.panel;
    const Knob& knob = panel.knobs.at(key);
    if (panel.editor && panel.editor->key == key && panel.editor->value != knob.value)
        panel.editor = editorOn(key, knob);
    knobAnnounces(world, key);
}

/// Takes what was typed. Text that is no number keeps the value, lowered by the offset.
void finishEdit(World& world)
{
    Panel& panel = *world.panel;
    if (!panel.editor)
        return;
    const Editor editor = *panel.editor;
    panel.editor.reset();
    std::string text = editor.text;
    if (text.ends_with("dB"))
        text.resize(text.size() - 2);
    const Knob& knob = panel.knobs.at(editor.key);
    int typed = knob.value;
    parseInt(text, typed);
    setKnob(world, editor.key, static_cast<long long>(typed) - knob.offset);
}

void toMinimum(World& world, const std::string& key)
{
    Knob& knob = world.panel->knobs.at(key);
    knob.value = knob.minimum;
    announce(world, key);
}

void wheel(World& world, const std::string& key, const std::string& direction)
{
    Knob& knob = world.panel->knobs.at(key);
    if (direction == "up")
        knob.value = std::min(knob.value + 1, knob.maximum);
    else // A wheel that turns sideways goes down as well.
        knob.value = std::max(knob.value - 1, knob.minimum);
    announce(world, key);
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
    panel.editor = editorOn(key, panel.knobs.at(key));
}

void type(World& world, const std::string& text)
{
    auto& editor = world.panel->editor;
    if (!editor || text.empty())
        return;
    editor->text = editor->allSelected ? text : editor->text + text;
    editor->allSelected = false;
}

void erase(Editor& editor)
{
    if (editor.allSelected)
        editor.text.clear();
    else if (!editor.text.empty())
        editor.text.pop_back();
    editor.allSelected = false;
}

void key(World& world, const std::string& name)
{
    auto& editor = world.panel->editor;
    if (!editor)
        return;
    if (name == "enter" || name == "tab")
        finishEdit(world);
    else if (name == "escape")
        editor.reset();
    else if (name == "backspace")
        erase(*editor);
}

void click(World& world, const std::string& key)
{
    finishEdit(world);
    Button& button = world.panel->buttons.at(key);
    button.on = !button.on;
    // A button says everything twice.
    buttonAnnounces(world, key);
    buttonAnnounces(world, key);
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
