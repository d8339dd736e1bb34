#pragma once

#include "random/matrix.h"

/// Every fault of every control code and of opening, at every occurrence, during arrival, use and
/// removal of each model. Each ends with the fault gone and a new arrival, after which every
/// control is used once.
std::vector<MatrixCase> faultCases();
