#ifndef QUORVEL_SIMULATOR_HOST_WINDOWS_ERROR_STATUS_H
#define QUORVEL_SIMULATOR_HOST_WINDOWS_ERROR_STATUS_H

#include <stdint.h>
#include <wdm.h>

/* The status that the caller of DeviceIoControl sees as this Windows error number. */
NTSTATUS statusOfError(uint32_t error);

#endif
