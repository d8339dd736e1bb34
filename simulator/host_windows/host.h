#ifndef QUORVEL_SIMULATOR_HOST_WINDOWS_HOST_H
#define QUORVEL_SIMULATOR_HOST_WINDOWS_HOST_H

/* What the parts of the driver share. */

#include "simulator/host_windows/delayed_answers.h"
#include "simulator/model/device_model.h"

#include <wdm.h>

#define HOST_POOL_TAG 0x6D537651u /* "QvSm" in the pool's listings */

struct BusDevice;

/* Every device extension begins with this. */
typedef struct DeviceHeader
{
    struct Host* host;
} DeviceHeader;

/* The extension of the door's device object. */
typedef struct Host
{
    DeviceHeader header;
    PDRIVER_OBJECT driver;
    PDEVICE_OBJECT door;

    /* Guards the model; held for the time of one request. May be taken inside `doorLock`. */
    FAST_MUTEX modelLock;
    SimModel* model; /* paged */

    /* One request on the door at a time, together with the plugging that follows from it.
     * Creating devices and links needs PASSIVE_LEVEL, hence not a fast mutex. */
    KMUTEX doorLock;
    struct BusDevice* plugged;
    LIST_ENTRY unplugged; /* those whose handles are not all closed yet, or not yet noticed */
    uint32_t devicesMade; /* makes device names unique */

    DelayedAnswers delayed;
} Host;

#endif
