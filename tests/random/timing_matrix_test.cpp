#include "random/timing_cases.h"

// timing_matrix_test [--every N]
// Everything that can come between at every moment against the oracle, or each Nth case of the
// list.

int main(int argc, char** argv)
{
    return runMatrix(argc, argv, timingCases());
}
