#include "platform/disk.h"

#include <unistd.h>

bool flushToDisk(int file)
{
    return fdatasync(file) == 0;
}
