#include "random/fault_cases.h"

// fault_matrix_test [--every N]
// Every fault at every occurrence against the oracle, or each Nth case of the list.

int main(int argc, char** argv)
{
    return runMatrix(argc, argv, faultCases());
}
