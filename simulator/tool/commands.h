#pragma once

#include "simulator/client/simulator_control.h"

#include <string>
#include <vector>

/// The exit codes of the control tool.
enum class ToolResult { done = 0, refused = 1, misused = 2 };

/// One line of the tool's command list.
struct ToolCommand
{
    const char* name;
    std::size_t leastWords;
    std::size_t mostWords;
    const char* words; ///< As in the help text.
    const char* summary;
    ToolResult (*run)(SimulatorControl& control, const std::vector<std::string>& words);
};

const std::vector<ToolCommand>& toolCommands();

/// Null when there is no such command.
const ToolCommand* findCommand(const std::string& name);
