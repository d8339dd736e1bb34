#include "support/test_main.h"

int main(int argc, char** argv)
{
    return runTest(argc, argv);
}
