#include "oracle/oracle.h"
#include "oracle/panel.h"
#include "oracle/settings.h"

#include <algorithm>
#include <set>

namespace Oracle {

namespace {

std::string truth(bool value)
{
    return value ? "yes" : "no";
}

void addPanel(const Panel& panel, std::vector<std::string>& lines)
{
    lines.push_back(std::string("panel ") + panel.model->name);
    for (const auto& [key, knob] : panel.knobs)
        lines.push_back("knob " + key + ' ' + knob.shown());
    for (const auto& [key, button] : panel.buttons) {
        lines.push_back("button " + key + ' ' + button.caption + ' ' +
                        (button.on ? button.accent + " lit" : "#8a95aa dark"));
    }
    for (const std::string& readOut : panel.readOuts)
        lines.push_back("level " + readOut);
    if (!panel.focus.empty())
        lines.push_back("focus " + panel.focus);
    if (panel.editor) {
        lines.push_back("editor " + panel.editor->key + ' ' + panel.editor->text +
                        (panel.editor->allSelected ? " selected" : ""));
    }
}

} // namespace

std::vector<std::string> screen(const World& world)
{
    if (!world.running)
        return {};
    const Window& window = world.window;
    std::vector<std::string> lines{"window shown " + truth(window.visible),
                                   "title " + window.title};
    if (world.panel)
        addPanel(*world.panel, lines);
    for (const std::string& label : window.labels)
        lines.push_back("label " + label);
    const Dialog& dialog = world.dialog;
    lines.push_back("dialog shown " + truth(dialog.visible) + " minimised " +
                    truth(dialog.minimised) + " on top " + truth(dialog.onTop));
    for (const Combo& combo : dialog.combos)
        lines.push_back("combo " + combo.text());
    lines.push_back("usb " + dialog.usbLine);
    return lines;
}

std::vector<std::string> handles(const World& world)
{
    std::set<int> open;
    const auto add = [&open](const Device& device) {
        if (device.isOpen())
            open.insert(device.handle);
    };
    if (world.panel)
        add(world.panel->device);
    if (world.dialog.device)
        add(*world.dialog.device);
    if (world.window.meterDevice)
        add(*world.window.meterDevice);
    std::ranges::for_each(world.window.kept, add);
    std::vector<std::string> lines;
    for (const int handle : open)
        lines.push_back(std::to_string(handle));
    return lines;
}

bool filesEqualControls(const World& world)
{
    const auto waits = [](const auto& kept) { return !kept.second.waiting.empty(); };
    if (std::ranges::any_of(world.kept, waits) || !Settings::isSaved(world))
        return false;
    if (!world.panel)
        return true;
    const auto file = world.files.find(world.panel->model->file());
    const auto holds = [&](const std::string& key, const std::string& text) {
        const auto stored = file->second.find(key);
        return stored != file->second.end() && stored->second == text;
    };
    return file != world.files.end() &&
           std::ranges::all_of(world.panel->knobs,
                               [&](const auto& knob) {
                                   return holds(knob.first, std::to_string(knob.second.value));
                               }) &&
           std::ranges::all_of(world.panel->buttons, [&](const auto& button) {
               return holds(button.first, button.second.on ? "true" : "false");
           });
}

std::vector<std::string> storage(const World& world)
{
    std::vector<std::string> lines;
    for (const auto& [name, file] : world.files) {
        for (const auto& [key, value] : file)
            lines.push_back(name + ' ' + key + '=' + value);
    }
    return lines;
}

std::string situation(const World& world)
{
    if (!world.running)
        return "ended";
    const Timeline& time = world.time;
    std::string text = world.panel ? world.panel->model->name : "none";
    if (world.panel && !world.panel->hasControls)
        text += " empty";
    for (const std::string& label : world.window.labels)
        text += ' ' + label;
    text += " window " + truth(world.window.visible) + " dialog " + truth(world.dialog.visible);
    text += " connected " + truth(world.dialog.device && world.dialog.device->isOpen());
    text += " errors " + std::to_string(std::min(world.window.errorCount, 3U));
    text += " editor " + truth(world.panel && world.panel->editor);
    text += " waiting";
    for (const auto& [name, file] : world.kept)
        text += file.waiting.empty() ? '0' : '1';
    text += ' ';
    for (const Timer timer :
         {Timer::detection, Timer::productId, Timer::otgOffThenInit, Timer::initAfterOtg,
          Timer::otgOffThenOn, Timer::otgOnAfterRateChange})
        text += time.isActive(timer) ? '1' : '0';
    return text;
}

} // namespace Oracle
