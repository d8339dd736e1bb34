#include "simulator/tool/reports.h"

#include <cstdio>

namespace {

std::string line(const char* name, const std::string& value)
{
    return std::string(name) + ": " + value + '\n';
}

std::string line(const char* name, std::uint32_t value)
{
    return line(name, std::to_string(value));
}

std::string onOff(bool on)
{
    return on ? "on" : "off";
}

std::string engineText(std::uint32_t engineState)
{
    switch (engineState) {
    case SIM_ENGINE_STOPPED:
        return "stopped";
    case SIM_ENGINE_RUNNING:
        return "running";
    default:
        return "initialised";
    }
}

/// The printable bytes as they are, the others as \xNN; zeros at the end are left out.
std::string firmwareText(const std::uint8_t* bytes)
{
    std::size_t length = SIM_FIRMWARE_BYTES;
    while (length > 0 && bytes[length - 1] == 0)
        --length;
    std::string text;
    for (std::size_t i = 0; i < length; ++i) {
        char code[8];
        if (bytes[i] >= ' ' && bytes[i] < 127)
            std::snprintf(code, sizeof code, "%c", bytes[i]);
        else
            std::snprintf(code, sizeof code, "\\x%02X", bytes[i]);
        text += code;
    }
    return text;
}

} // namespace

std::string stateReport(const SimulatedState& state)
{
    std::string text;
    if (state.plugged != 0)
        text += line("plugged", "product id " + std::to_string(state.productId) + " at bus " +
                                    std::to_string(state.bus));
    else
        text += line("plugged", "no");
    text += line("open handles", state.openHandles);
    text += line("handles opened", state.openedHandles);
    text += line("firmware", firmwareText(state.firmware));
    text += line("engine", engineText(state.engineState));
    text += line("sample rate", std::to_string(state.engine.sampleRate) + " Hz");
    text += line("buffer size", std::to_string(state.engine.bufferSize) + " samples");
    text += line("USB latency", std::to_string(state.engine.usbLatency) + " frames");
    text += line("WDM channels", state.wdmChannels);
    text += line("slow mode", onOff(state.slowMode != 0));
    text += line("phone chip", onOff(state.phoneChip != 0));
    text += line("moving levels", onOff(state.levelsMove != 0));
    text += line("USB errors", state.usbStatus.errorCount);
    text += line("requests", state.requests);
    text += line("refused", state.refusals);
    text += line("mixer tables", state.mixerWrites);
    text += line("commands", state.commands);
    return text;
}

std::string mixerReport(const std::vector<double>& table)
{
    std::string text;
    for (std::size_t i = 0; i < table.size(); ++i) {
        if (table[i] != 0)
            text += std::to_string(i) + '=' + formatGain(table[i]) + '\n';
    }
    return text;
}

std::string commandReport(const std::vector<SimulatedCommand>& commands)
{
    std::string text;
    for (const SimulatedCommand& command : commands) {
        char head[32];
        std::snprintf(head, sizeof head, "%ux", static_cast<unsigned>(command.count));
        text += head;
        // Behind the value there is nothing but reserved bytes.
        for (std::size_t i = 0; i < 7; ++i) {
            std::snprintf(head, sizeof head, " %02X", command.packet[i]);
            text += head;
        }
        text += '\n';
    }
    return text;
}

std::string traceReport(const std::vector<SimulatedRequest>& requests, bool withTime)
{
    std::string text;
    for (const SimulatedRequest& request : requests) {
        if (withTime)
            text += std::to_string(request.timeMs) + " ms ";
        text += formatRequest(request) + '\n';
    }
    return text;
}
