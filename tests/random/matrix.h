#pragma once

#include "oracle/action.h"

#include <string>
#include <vector>

/// One case of a list that is made, not written.
struct MatrixCase
{
    std::string name;
    std::vector<Oracle::Action> sequence;
};

/// The main routine of a test of such a list: runs all cases against the oracle, or with
/// "--every N" each Nth of them. Each must end, or be about to, with a whole panel at work
/// whose controls are in the files.
int runMatrix(int argc, char** argv, const std::vector<MatrixCase>& cases);
