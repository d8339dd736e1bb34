#include "driver/driver_device.h"

#include "driver/control_codes.h"

#include <array>
#include <iostream>

namespace {

using DevicePaths = std::array<std::wstring, 16>;

DevicePaths makeDevicePaths()
{
    DevicePaths paths;
    for (std::size_t bus = 0; bus < paths.size(); ++bus)
        paths[bus] = LR"(\\.\QuorvelAudioBus)" + std::to_wstring(bus);
    return paths;
}

const DevicePaths devicePathTable = makeDevicePaths();

} // namespace

DriverDevice::~DriverDevice()
{
    if (isOpen())
        CloseHandle(handle);
}

std::span<const std::wstring> DriverDevice::devicePaths()
{
    return devicePathTable;
}

bool DriverDevice::open()
{
    for (const std::wstring& path : devicePathTable) {
        const HANDLE opened =
            CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE,
                        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
        if (opened != INVALID_HANDLE_VALUE) {
            handle = opened;
            std::wcout << L"Open device " << path << L" success!" << std::endl;
            return true;
        }
        const DWORD error = GetLastError();
        std::wcout << L"Open device " << path << L" failed, error: " << error << std::endl;
    }
    return false;
}

void DriverDevice::close()
{
    if (!isOpen())
        return;
    CloseHandle(handle);
    handle = INVALID_HANDLE_VALUE;
}

bool DriverDevice::control(std::uint32_t code, const void* input, std::uint32_t inputSize,
                           void* output, std::uint32_t outputSize)
{
    if (!isOpen())
        return false;
    DWORD returned = 0;
    // The Windows declaration takes the input without const; buffered transfer never writes it.
    return DeviceIoControl(handle, code, const_cast<void*>(input), inputSize, output, outputSize,
                           &returned, nullptr) != 0;
}

void DriverDevice::send(const ControlPacket& packet)
{
    control(ControlCode::controlPacket, &packet, sizeof packet, nullptr, 0);
}
