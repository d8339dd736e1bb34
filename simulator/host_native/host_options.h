#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// The command line of the simulator.
struct HostOptions
{
    std::optional<std::uint32_t> productId; ///< Plug this interface in at the start.
    std::uint32_t bus = 0;
    bool movingLevels = false;
    bool untilInputCloses = false;
    bool help = false;
};

/// Nothing, with the reason in `problem`, when the command line cannot be understood.
std::optional<HostOptions> parseHostOptions(int argc, char** argv, std::string& problem);

extern const char* const hostHelp;
