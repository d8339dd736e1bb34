#include "simulator/tool/commands.h"

#include "simulator/client/product_ids.h"
#include "simulator/tool/reports.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <optional>

namespace {

using Words = std::vector<std::string>;

ToolResult done(bool succeeded)
{
    return succeeded ? ToolResult::done : ToolResult::refused;
}

ToolResult print(const std::string& text)
{
    const bool written = std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
    return written ? ToolResult::done : ToolResult::unwritten;
}

/// Reads all words from `first` on as numbers; "forever" is the endless count.
std::optional<std::vector<std::uint32_t>> numbers(const Words& words, std::size_t first = 0)
{
    std::vector<std::uint32_t> result;
    for (std::size_t i = first; i < words.size(); ++i) {
        const std::optional<std::uint32_t> number =
            words[i] == "forever" ? SimulatorControl::always : parseNumber(words[i]);
        if (!number)
            return std::nullopt;
        result.push_back(*number);
    }
    return result;
}

/// A control code: "any", or hexadecimal with or without "0x".
std::optional<std::uint32_t> controlCode(const std::string& word)
{
    if (word == "any")
        return SimulatorControl::anyCode;
    return parseNumber(word.starts_with("0x") ? word : "0x" + word);
}

/// The common part of the three faults.
template <class Add> ToolResult addFault(const Words& words, Add add)
{
    const auto code = controlCode(words[0]);
    const auto values = numbers(words, 1);
    if (!code || !values)
        return ToolResult::misused;
    return done(add(*code, *values));
}

ToolResult plug(SimulatorControl& control, const Words& words)
{
    const auto product = parseProductId(words[0]);
    const auto bus = numbers(words, 1);
    if (!product || !bus)
        return ToolResult::misused;
    return done(control.plug(*product, bus->empty() ? 0 : bus->front()));
}

ToolResult fail(SimulatorControl& control, const Words& words)
{
    return addFault(words, [&](std::uint32_t code, const auto& values) {
        return control.fail(code, values[0], values[1], values.size() > 2 ? values[2] : 0);
    });
}

ToolResult delay(SimulatorControl& control, const Words& words)
{
    return addFault(words, [&](std::uint32_t code, const auto& values) {
        return control.delay(code, values[0], values[1]);
    });
}

ToolResult answerShort(SimulatorControl& control, const Words& words)
{
    return addFault(words, [&](std::uint32_t code, const auto& values) {
        return control.answerShort(code, values[0], values[1]);
    });
}

ToolResult level(SimulatorControl& control, const Words& words)
{
    const auto slot = parseNumber(words[0]);
    std::int32_t value = 0;
    const char* const end = words[1].data() + words[1].size();
    const auto [stop, error] = std::from_chars(words[1].data(), end, value);
    if (!slot || error != std::errc() || stop != end)
        return ToolResult::misused;
    return done(control.setLevel(*slot, value));
}

ToolResult levelsMoving(SimulatorControl& control, const Words& words)
{
    if (words[0] != "on" && words[0] != "off")
        return ToolResult::misused;
    return done(control.moveLevels(words[0] == "on"));
}

ToolResult errors(SimulatorControl& control, const Words& words)
{
    const auto values = numbers(words);
    return values ? done(control.setErrorCount(values->front())) : ToolResult::misused;
}

ToolResult firmware(SimulatorControl& control, const Words& words)
{
    std::array<std::uint8_t, SIM_FIRMWARE_BYTES> version = {};
    if (words[0].size() > version.size())
        return ToolResult::misused;
    std::copy(words[0].begin(), words[0].end(), version.begin());
    return done(control.setFirmware(version));
}

ToolResult engine(SimulatorControl& control, const Words& words)
{
    const auto values = numbers(words);
    if (!values)
        return ToolResult::misused;
    return done(control.setEngine((*values)[0], (*values)[1], (*values)[2]));
}

ToolResult trace(SimulatorControl& control, const Words& words)
{
    const auto given = [&](const char* option) {
        return std::find(words.begin(), words.end(), option) != words.end();
    };
    const bool clear = given("--clear");
    const bool withTime = given("--with-time");
    if (words.size() != std::size_t{clear} + std::size_t{withTime})
        return ToolResult::misused;
    return print(traceReport(clear ? control.takeTrace() : control.trace(), withTime));
}

} // namespace

const std::vector<ToolCommand>& toolCommands()
{
    using Control = SimulatorControl;
    static const std::vector<ToolCommand> commands = {
        {"reset", 0, 0, "", "unplug, restore the defaults, forget trace and faults",
         [](Control& control, const Words&) { return done(control.reset()); }},
        {"plug", 1, 2, "MODEL [BUS]", "plug in ka1, ka2, ks or a product id at bus 0 to 15", plug},
        {"unplug", 0, 0, "", "pull the plug",
         [](Control& control, const Words&) { return done(control.unplug()); }},
        {"fail", 3, 4, "CODE COUNT ERROR [SKIP]", "refuse requests with an error number", fail},
        {"delay", 3, 3, "CODE COUNT MS", "hold answers back", delay},
        {"short", 3, 3, "CODE COUNT BYTES", "answer at most so many bytes", answerShort},
        {"clear-faults", 0, 0, "", "end all refusals, delays and short answers",
         [](Control& control, const Words&) { return done(control.clearFaults()); }},
        {"level", 2, 2, "SLOT VALUE", "set a level, slots 0 to 191, 32-bit sample scale", level},
        {"levels-moving", 1, 1, "on|off", "let the levels rise and fall by themselves",
         levelsMoving},
        {"errors", 1, 1, "COUNT", "set the USB error count", errors},
        {"firmware", 1, 1, "TEXT", "set the firmware version, at most ten bytes", firmware},
        {"engine", 3, 3, "HZ SAMPLES FRAMES", "set sample rate, buffer size and USB latency",
         engine},
        {"trace", 0, 2, "[--clear] [--with-time]", "show the requests received", trace},
        {"state", 0, 0, "", "show what is plugged in and how it is set",
         [](Control& control, const Words&) { return print(stateReport(control.state())); }},
        {"mixer", 0, 0, "", "show the mixer cells that are not zero",
         [](Control& control, const Words&) { return print(mixerReport(control.mixerTable())); }},
        {"commands", 0, 0, "", "show the last command per opcode and channel",
         [](Control& control, const Words&) { return print(commandReport(control.commands())); }},
        {"handles", 0, 0, "", "show how many handles are open",
         [](Control& control, const Words&) {
             return print(std::to_string(control.state().openHandles) + '\n');
         }},
    };
    return commands;
}

const ToolCommand* findCommand(const std::string& name)
{
    const std::vector<ToolCommand>& commands = toolCommands();
    const auto found = std::find_if(commands.begin(), commands.end(),
                                    [&](const ToolCommand& row) { return name == row.name; });
    return found == commands.end() ? nullptr : &*found;
}
