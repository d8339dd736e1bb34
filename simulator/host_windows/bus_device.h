#ifndef QUORVEL_SIMULATOR_HOST_WINDOWS_BUS_DEVICE_H
#define QUORVEL_SIMULATOR_HOST_WINDOWS_BUS_DEVICE_H

/* The device objects that a program finds as \\.\QuorvelAudioBus0 to 15. At most one is plugged;
 * an unplugged one has lost its name and lives on, refusing everything, until its last handle is
 * closed. All functions need PASSIVE_LEVEL. */

#include "simulator/host_windows/host.h"

/* The extension of such a device object. */
typedef struct BusDevice
{
    DeviceHeader header;
    LIST_ENTRY link;
    PDEVICE_OBJECT object;
    uint32_t generation; /* of the model, when it was plugged */
    uint32_t bus;
    volatile LONG files; /* open file objects */
} BusDevice;

/* Brings the device objects in line with the model. Called with `doorLock` held. When a device
 * cannot be made, nothing is plugged and the reason is returned. */
NTSTATUS busDevicesFollowModel(Host* host);

/* Removes them all; nobody has a handle any more. */
void busDevicesRemoveAll(Host* host);

/* Whether a program that opens this device now meets the plugged interface. Called with
 * `modelLock` held. */
BOOLEAN busDeviceIsAlive(const Host* host, const BusDevice* device);

#endif
