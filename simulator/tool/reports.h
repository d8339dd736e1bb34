#pragma once

#include "simulator/client/simulator_control.h"

#include <string>

/// The control tool's texts, one fact per line.
std::string stateReport(const SimulatedState& state);
std::string mixerReport(const std::vector<double>& table);
std::string commandReport(const std::vector<SimulatedCommand>& commands);
std::string traceReport(const std::vector<SimulatedRequest>& requests, bool withTime);
