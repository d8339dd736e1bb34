#pragma once

#include <cstddef>
#include <cstdint>

#pragma pack(push, 1)

/// The driver's 7-byte USB status block.
struct UsbStatus
{
    std::uint16_t statusWord = 0;
    std::uint8_t statusByte = 0;
    std::uint32_t usbErrorCount = 0; ///< USB errors since the driver was loaded
};

#pragma pack(pop)

static_assert(sizeof(UsbStatus) == 7);
static_assert(offsetof(UsbStatus, statusWord) == 0);
static_assert(offsetof(UsbStatus, statusByte) == 2);
static_assert(offsetof(UsbStatus, usbErrorCount) == 3);
