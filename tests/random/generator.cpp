#include "random/generator.h"

#include "oracle/codes.h"
#include "oracle/oracle.h"
#include "oracle/text.h"
#include "support/panel_table.h"

#include <iterator>
#include <limits>

using Oracle::Action;

int Generator::below(int bound)
{
    // Not a distribution of the library: those differ from one to the next.
    return static_cast<int>(random() % static_cast<std::uint64_t>(bound));
}

std::string Generator::oneOf(std::initializer_list<const char*> choices)
{
    return choices.begin()[below(static_cast<int>(choices.size()))];
}

template <typename Map> std::string Generator::anyKey(const Map& map)
{
    return std::next(map.begin(), below(static_cast<int>(map.size())))->first;
}

std::string Generator::position()
{
    return std::to_string(5 + below(60)) + ',' + std::to_string(5 + below(60));
}

Action Generator::next(const Oracle::World& world)
{
    if (!world.running)
        return {"start", {oneOf({"zh_CN", "zh_TW", "en_US", "en_GB", "en_001", "de_DE", "C"})}};
    const int way = below(100);
    if (world.panel && world.panel->hasControls && world.window.visible && way < 55)
        return onPanel(*world.panel);
    if (world.dialog.visible && way < 65)
        return onDialog();
    if (way < 72)
        return wait();
    if (way < 79)
        return onCable();
    if (way < 84)
        return fault();
    if (way < 87)
        return reading();
    if (way < 91)
        return onShell();
    if (way < 94)
        return onPipe();
    return chance(50) ? onFile() : trouble();
}

Action Generator::onPanel(const Oracle::Panel& panel)
{
    if (panel.editor && chance(70))
        return inEditor();
    if (chance(25)) {
        return {"key",
                {oneOf({"tab", "tab", "tab", "tab", "backtab", "space", "up", "down", "pageup",
                        "pagedown", "end", "enter", "enter", "escape", "backspace"})}};
    }
    if (chance(35)) {
        const std::string key = anyKey(panel.buttons);
        return {chance(85) ? "click" : "doubleclick", {key}};
    }
    return onKnob(anyKey(panel.knobs));
}

Action Generator::onKnob(const std::string& key)
{
    const int way = below(100);
    if (way < 40)
        return {"wheel", {key, oneOf({"up", "up", "down", "flat"}), oneOf({"rim", "text"})}};
    if (way < 75)
        return {"doubleclick", {key, oneOf({"text", "text", "rim"})}};
    // Above the text, which is the editor's place.
    const std::string start = std::to_string(5 + below(60)) + ',' + std::to_string(5 + below(15));
    Action drag{"drag", {key, chance(20) ? "ctrl" : "plain", start}};
    for (int moves = below(6); moves > 0; --moves) {
        const std::string next = position();
        if (next != drag.arguments.back())
            drag.arguments.push_back(next);
    }
    return drag;
}

Action Generator::inEditor()
{
    if (chance(45))
        return {"key",
                {oneOf({"enter", "enter", "enter", "tab", "backtab", "escape", "backspace", "space",
                        "up", "end"})}};
    return {"type", {anyValue()}};
}

/// What a person may type or a file may hold where a number belongs.
std::string Generator::anyValue()
{
    if (chance(50))
        return std::to_string(below(120) - 90);
    if (chance(30))
        return std::to_string(below(80)) + oneOf({"dB", " dB", "db", "dBdB", "x", ".5", " "});
    return oneOf({"",
                  "-",
                  "dB",
                  "999",
                  "-999",
                  "+7",
                  "0x10",
                  "1e1",
                  "2147483647",
                  "2147483648",
                  "-2147483648",
                  "-2147483649",
                  "4294967296",
                  "99999999999",
                  "9223372036854775807",
                  "9223372036854775808",
                  "00012",
                  "--5",
                  "1 2",
                  "１２",
                  "－３ｄＢ",
                  "true",
                  "false",
                  "TRUE",
                  "yes",
                  "-0",
                  "0",
                  "0.0",
                  "nan",
                  "1.5"});
}

Action Generator::onDialog()
{
    if (chance(80))
        return {"combo",
                {std::to_string(below(4)), oneOf({"up", "down", "down", "first", "last"})}};
    return {"dialog", {oneOf({"ok", "ok", "close", "minimise"})}};
}

Action Generator::onShell()
{
    const int way = below(100);
    if (way < 40)
        return {"tray", {oneOf({"main", "trigger", "doubleclick", "middle", "context"})}};
    if (way < 60)
        return {"tray", {"setup"}};
    if (way < 68)
        return {"tray", {"upgrade"}};
    if (way < 74)
        return {"tray", {"sound", oneOf({"works", "fails"})}};
    if (way < 76)
        return {"tray", {"explorer", oneOf({"0", "1"})}};
    if (way < 84)
        return {"closewindow", {}};
    if (way < 88)
        return {"secondcopy", {}};
    return {"quit", {}};
}

Action Generator::onCable()
{
    if (chance(15)) {
        const Action then = cable();
        Action later{"at", {std::to_string(below(1500)), then.verb}};
        later.arguments.insert(later.arguments.end(), then.arguments.begin(), then.arguments.end());
        return later;
    }
    return chance(4) ? Action{"jump", {oneOf({"300", "1001", "7200000"})}} : cable();
}

Action Generator::cable()
{
    if (chance(30))
        return {"unplug", {}};
    const std::string id =
        chance(92) ? std::to_string(
                         PanelTable::models[below(static_cast<int>(std::size(PanelTable::models)))]
                             .productId)
                   : oneOf({"0", "3", "7", "4294967295"});
    return {"plug", {id, std::to_string(chance(70) ? 0 : below(16))}};
}

std::string Generator::anyCode()
{
    return "0x" + Oracle::Text::hex(
                      Oracle::Code::all[below(static_cast<int>(std::size(Oracle::Code::all)))]);
}

Action Generator::fault()
{
    const int way = below(100);
    if (way < 35)
        return {"heal", {}};
    if (way < 45)
        return {"failopen",
                {oneOf({"1", "2", "3", "always"}), oneOf({"5", "31"}), oneOf({"0", "1", "2"})}};
    const std::string kind = way < 75 ? "fail" : way < 90 ? "delay" : "short";
    const std::string value = kind == "fail"    ? oneOf({"1", "31", "1167"})
                              : kind == "delay" ? std::to_string(10 * below(150))
                                                : std::to_string(below(40));
    return {kind,
            {anyCode(), oneOf({"1", "1", "2", "3", "5", "always"}), oneOf({"0", "0", "1", "3"}),
             value}};
}

Action Generator::reading()
{
    const int way = below(4);
    if (way == 0)
        return {"usberrors", {oneOf({"0", "1", "3", "4294967295"})}};
    if (way == 1) {
        std::string version = oneOf({"1.0.7", "V1.23beta!", "", "0123456789"});
        if (chance(30))
            version = bytes(10);
        return {"firmware", {version}};
    }
    if (way == 2) {
        return {"engine",
                {oneOf({"44100", "48000", "0"}), oneOf({"48", "192", "256", "1024", "7"}),
                 oneOf({"8", "16", "24", "32", "100"})}};
    }
    Action levels{"levels", {}};
    for (int i = 0; i < 4; ++i) {
        levels.arguments.push_back(
            chance(40) ? oneOf({"0", "1", "-1", "2147483647", "-2147483648", "-2147483647"})
                       : std::to_string(static_cast<std::int32_t>(random())));
    }
    return levels;
}

std::string Generator::bytes(int count)
{
    std::string text;
    for (int i = 0; i < count; ++i) {
        const int byte = below(256);
        // A percent sign would be a place for a later byte of the version.
        text += static_cast<char>(byte == '%' ? 'p' : byte);
    }
    return text;
}

std::string Generator::anyIni(const std::string& name)
{
    if (chance(10))
        return oneOf({"", "\n\n", "[Dial", "garbage without any key\n", "[]\n=\n", ";only this\n"});
    std::string text = chance(30) ? "[Other]\nColour=blue\nCount=3\n" : "";
    if (name == "setting.ini") {
        text += "[Audio]\nBufferSize=" + oneOf({"48", "64", "256", "1024", "100", "", "x"}) +
                "\nSampleRate=" + oneOf({"44100", "48000", "96000", "1e9"}) + '\n';
        text += "[USB]\nLatencySize=" + oneOf({"8", "16", "24", "32", "9", "0x8"}) +
                "\nSlowMode=" + oneOf({"Enabled", "Disabled", "enabled", "1"}) + '\n';
        return text;
    }
    for (const PanelTable::Model& model : PanelTable::models) {
        if (name != model.name + std::string(".ini"))
            continue;
        for (const PanelTable::Control& control : model.controls) {
            const std::string key = control.key;
            if (control.isReadOut() || chance(50))
                continue;
            const bool isPlain = control.isButton() && chance(60);
            text += (control.isKnob() ? "[Dial]\n" : "[Button]\n") + key.substr(key.find('/') + 1) +
                    '=' + (isPlain ? oneOf({"true", "false", "1", "0"}) : anyValue()) + '\n';
        }
    }
    return text;
}

Action Generator::onFile()
{
    const std::string name = anyFile();
    if (chance(25))
        return {"nofile", {name}};
    return {"file", {name, anyIni(name)}};
}

std::string Generator::anyFile()
{
    const auto which =
        static_cast<std::size_t>(below(1 + static_cast<int>(std::size(PanelTable::models))));
    return which == std::size(PanelTable::models)
               ? "setting.ini"
               : PanelTable::models[which].name + std::string(".ini");
}

/// What keeps the files from being read or saved, from now or a request that is to come on.
Action Generator::trouble()
{
    if (chance(35))
        return {"mend", {}};
    Action action{"trouble", {}};
    if (chance(30))
        action.arguments = {"folder", oneOf({"unwritable", "full"})};
    else
        action.arguments = {anyFile(),
                            oneOf({"readonly", "keptopen", "folder", "unreadable", "unreadable"})};
    action.arguments.push_back(oneOf({"0", "0", "1", "3", "10"}));
    action.arguments.push_back(oneOf({"0", "0", "1", "4", "30"}));
    return action;
}

Action Generator::onPipe()
{
    const int way = below(100);
    if (way < 15)
        return {"nomessage", {}};
    if (way < 35)
        return {"resetpipe", {oneOf({"absent", "busy", "serves", "refuses"})}};
    if (way < 60)
        return {"message", {std::string(16, '\0') + std::string("\1\0\0\0", 4)}};
    if (way < 70)
        return {"message", {std::string(20, '\0')}};
    if (way < 80)
        return {"message", {bytes(1020 + below(8))}};
    return {"message", {bytes(below(30))}};
}

Action Generator::wait()
{
    return {"wait",
            {oneOf({"1", "50", "100", "200", "250", "399", "400", "500", "999", "1000", "1000",
                    "1200", "1500", "2500", "4000"})}};
}

std::vector<Action> makeSequence(std::uint64_t seed, int length)
{
    Generator generator(seed);
    Oracle::World world;
    std::vector<Action> sequence;
    for (int i = 0; i < length; ++i) {
        sequence.push_back(generator.next(world));
        Oracle::step(world, sequence.back());
    }
    if (world.running)
        sequence.push_back({"quit", {}});
    return sequence;
}
