#include "port/shared_key.h"

#include <sys/ipc.h>
#include <sys/stat.h>

#include <cstdint>

key_t sharedKey(dev_t device, ino_t file)
{
    // scripts/contain knows the keys as well. The odd factor takes devices far apart.
    const std::uint64_t sum = file + device * 2654435761U;
    const auto key = static_cast<key_t>(static_cast<std::uint32_t>(sum));
    // Which stands for a segment without a name.
    return key == IPC_PRIVATE ? 1 : key;
}

// What belongs to one file is told apart by its kind already.
key_t ftok(const char* path, int) noexcept
{
    struct stat status = {};
    return stat(path, &status) == 0 ? sharedKey(status.st_dev, status.st_ino) : -1;
}
