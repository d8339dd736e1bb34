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
    /// Opens the device; null with the Windows error number in `error` on failure.
    static std::shared_ptr<DeviceObject> open(const std::string& name, DWORD& error);

    /// Tells the serving process and waits until it has taken note, half a second at the most: it
    /// may be stopped.
    ~DeviceObject() override;

    /// As DeviceIoControl. Returns the Windows error number, ERROR_SUCCESS when it succeeded.
    DWORD control(DWORD code, const void* input, DWORD inputLength, void* output,
                  DWORD outputLength, DWORD& returned);

private:
    explicit DeviceObject(FileDescriptor connection);

    FileDescriptor socket;
    std::mutex mutex;
};
