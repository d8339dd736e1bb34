#pragma once

#include "simulator/client/simulator_control.h"

#include <string>
#include <vector>

/// How a command ended. `unwritten`: there is an answer, but nobody got it.
enum class ToolResult { done, refused, misused, unwritten };

/// One line of the tool's command list.
struct ToolCommand
{
    const char* name;
    std::size_t leastWords;
    std::size_t mostWords;
    const char* words; ///< As in the help text.
    const char* summary;
    /// Throws SimulatorReadError when an answer is missing.
    ToolResult (*run)(SimulatorControl& control, const std::vector<std::string>& words);
};

const std::vector<ToolCommand>& toolCommands();

/// Null when there is no such command.
const ToolCommand* findCommand(const std::string& name);
