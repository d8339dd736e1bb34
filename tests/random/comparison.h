#pragma once

#include "oracle/action.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// Where the program and the oracle part.
struct Difference
{
    std::size_t action = 0; ///< its position in the sequence
    std::string report;
};

/// What a run has seen besides.
struct Coverage
{
    long long sequences = 0;
    long long actions = 0;
    std::set<std::string> pairs;          ///< situation and verb
    std::set<std::uint32_t> refusedCodes; ///< of the requests that a fault has refused
    /// The last sequence ended, or was about to, with a whole panel at work.
    bool recovered = false;
    /// The files then held what its controls and the dialog showed.
    bool saved = false;
};

/// Runs the sequence on a program of its own, from its start to its end, and compares it with the
/// oracle after each action.
std::optional<Difference> compare(const std::vector<Oracle::Action>& sequence, Coverage& coverage);

/// The shortest sequence found that still parts the two.
std::vector<Oracle::Action> shortened(std::vector<Oracle::Action> sequence);
