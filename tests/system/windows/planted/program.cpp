#include "mark.h"

// Stands where the installer might start a program of somebody else.

int main()
{
    static const char place = 0;
    return leaveMark(&place) ? 0 : 1;
}
