#pragma once

#include <string>
#include <vector>

/// The exit codes of the tool.
enum class PeerResult { done = 0, failed = 1, misused = 2 };

/// One line of the tool's command list. What went wrong is told on the standard error stream.
struct PeerCommand
{
    const char* name;
    std::size_t leastWords;
    std::size_t mostWords;
    const char* words; ///< As in the help text.
    const char* summary;
    PeerResult (*run)(const std::vector<std::string>& words);
};

const std::vector<PeerCommand>& peerCommands();

/// Null when there is no such command.
const PeerCommand* findPeerCommand(const std::string& name);
