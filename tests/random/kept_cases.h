#pragma once

#include "random/matrix.h"

/// What the random sequences would meet by chance only, for each control of each model: each
/// refuses and is refused by an exception, each code is refused, each key of a file says something
/// else.
std::vector<MatrixCase> keptCases();
