#include "random/file_fault_cases.h"

// file_fault_matrix_test [--every N]
// Every trouble of the INI files at every moment against the oracle, or each Nth case of the list.

int main(int argc, char** argv)
{
    return runMatrix(argc, argv, fileFaultCases());
}
