#pragma once

#include "oracle/action.h"

#include <string>
#include <vector>

/// One fault at one point of the program's life, and the way back from it.
struct FaultCase
{
    std::string name; ///< model, moment, fault
    std::vector<Oracle::Action> sequence;
};

/// Every fault of every control code and of opening, at every occurrence, during arrival, use and
/// removal of each model. Each ends with the fault gone and a new arrival, after which every
/// control is used once.
std::vector<FaultCase> faultCases();
