#include "platform/disk.h"

#include <io.h>

bool flushToDisk(int file)
{
    return _commit(file) == 0;
}
