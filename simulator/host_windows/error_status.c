#include "simulator/host_windows/error_status.h"

#include <ntstatus.h>

/* What a driver would really return. */
static const struct
{
    uint32_t error;
    NTSTATUS status;
} table[] = {
    {0, STATUS_SUCCESS},
    {1, STATUS_INVALID_DEVICE_REQUEST},
    {2, STATUS_NO_SUCH_FILE},
    {5, STATUS_ACCESS_DENIED},
    {6, STATUS_INVALID_HANDLE},
    {21, STATUS_DEVICE_NOT_READY},
    {22, STATUS_INVALID_DEVICE_STATE},
    {31, STATUS_UNSUCCESSFUL},
    {50, STATUS_NOT_SUPPORTED},
    {87, STATUS_INVALID_PARAMETER},
    {121, STATUS_IO_TIMEOUT},
    {122, STATUS_BUFFER_TOO_SMALL},
    {170, STATUS_DEVICE_BUSY},
    {995, STATUS_CANCELLED},
    {998, STATUS_ACCESS_VIOLATION},
    {1117, STATUS_IO_DEVICE_ERROR},
    {1167, STATUS_DEVICE_NOT_CONNECTED},
    {1450, STATUS_INSUFFICIENT_RESOURCES},
};

/* Windows hands the low word of such a status to the caller as it is. */
#define STATUS_OF_ANY_ERROR 0xC0010000u

NTSTATUS statusOfError(uint32_t error)
{
    for (ULONG i = 0; i < sizeof table / sizeof *table; ++i) {
        if (table[i].error == error)
            return table[i].status;
    }
    return (NTSTATUS)(STATUS_OF_ANY_ERROR | (error & 0xFFFFu));
}
