#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// One mixer cell that a table changed, with its new linear gain.
struct SimulatedCell
{
    std::uint32_t index = 0;
    double value = 0;
};

/// One request as the simulated driver received it.
struct SimulatedRequest
{
    std::uint64_t sequence = 0; ///< From 1 since the last reset.
    std::uint32_t timeMs = 0;   ///< The simulator's clock, in milliseconds.
    std::uint32_t handle = 0;   ///< In opening order from 1; 0: opened before the last reset.
    std::uint32_t code = 0;
    std::uint32_t inputLength = 0;   ///< Bytes.
    std::uint32_t outputLength = 0;  ///< Bytes the caller had room for.
    std::uint32_t returned = 0;      ///< Bytes answered.
    std::uint32_t error = 0;         ///< Windows error number, 0 = success.
    std::vector<std::uint8_t> input; ///< At most the first 40 bytes.
    bool mixerTable = false;         ///< A whole mixer table: `cells` tells what it changed.
    std::vector<SimulatedCell> cells;
    bool cellsLost = false; ///< Some changed cells were overwritten before they were read.
};

/// One stable line: "h1 FFDC2038 in=44 AC 00 00 out=0", for a mixer table
/// "h1 FFDC2040 table 128=1 8192=0.501187" (the cells that differ from the last accepted table),
/// with " error=31" at the end when the request was refused. Of an input above 40 bytes the first
/// 40 are shown, then " .. (100 bytes)".
std::string formatRequest(const SimulatedRequest& request);

/// A gain as in formatRequest: six significant digits, the same in every locale.
std::string formatGain(double value);
