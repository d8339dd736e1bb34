#pragma once

#include "port/file_descriptor.h"
#include "port/handle_table.h"

#include <memory>
#include <mutex>
#include <string>

/// One open handle on a device: a connection to the process that serves it. Calls from several
/// threads are answered one after the other, as for a handle opened for synchronous use.
class DeviceObject : public PortObject
{
public:
    /// Opens the device; null when there is none.
    static std::shared_ptr<DeviceObject> open(const std::string& name);

    explicit DeviceObject(FileDescriptor connection);

    /// As DeviceIoControl. Returns the Windows error number, ERROR_SUCCESS when it succeeded.
    DWORD control(DWORD code, const void* input, DWORD inputLength, void* output,
                  DWORD outputLength, DWORD& returned);

private:
    DWORD send(DWORD code, const void* input, DWORD inputLength, DWORD outputLength);
    DWORD receive(void* output, DWORD outputLength, DWORD& returned);

    FileDescriptor socket;
    std::mutex mutex;
    std::uint32_t number = 0; ///< Of the last request.
};
