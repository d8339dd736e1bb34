#pragma once

#include "random/matrix.h"

/// Everything that takes its time, met at every moment by everything that can come between: the
/// cable, another interface, the system's sleep, the end, the ASIO driver, another choice.
std::vector<MatrixCase> timingCases();
