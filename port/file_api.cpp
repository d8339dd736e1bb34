#include "port/device_object.h"
#include "port/device_path.h"
#include "port/pipe_object.h"
#include "port/runtime_folder.h"
#include "port/thread_wait.h"
#include "port/win32_port.h"

namespace {

thread_local DWORD lastError = ERROR_SUCCESS;

BOOL result(DWORD error)
{
    if (error == ERROR_SUCCESS)
        return TRUE;
    SetLastError(error);
    return FALSE;
}

/// A new handle on the object; without one the error is set.
HANDLE newHandle(std::shared_ptr<PortObject> object, DWORD error)
{
    if (object == nullptr) {
        SetLastError(error);
        return INVALID_HANDLE_VALUE;
    }
    return HandleTable::instance().add(std::move(object));
}

/// Calls `action` with the object behind the handle. A handle on something else does not know the
/// function.
template <class Kind, class Action> BOOL callOn(HANDLE handle, Action action)
{
    const HandleTable& table = HandleTable::instance();
    if (const auto object = table.find<Kind>(handle)) {
        const HandleUse use(handle);
        return result(action(*object));
    }
    return result(table.find<PortObject>(handle) == nullptr ? ERROR_INVALID_HANDLE
                                                            : ERROR_INVALID_FUNCTION);
}

void store(LPDWORD target, DWORD value)
{
    if (target != nullptr)
        *target = value;
}

} // namespace

DWORD GetLastError()
{
    return lastError;
}

void SetLastError(DWORD error)
{
    lastError = error;
}

HANDLE CreateFileW(LPCWSTR path, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE)
{
    const DevicePath parsed = parseDevicePath(path);
    DWORD error = ERROR_FILE_NOT_FOUND;
    if (parsed.name.empty() || !runtimeFolderIsPrivate())
        return newHandle(nullptr, error);
    if (parsed.isPipe) {
        auto client = PipeClient::open(parsed.name, error);
        return newHandle(std::move(client), error);
    }
    auto device = DeviceObject::open(parsed.name, error);
    return newHandle(std::move(device), error);
}

BOOL CloseHandle(HANDLE handle)
{
    return result(HandleTable::instance().remove(handle) == nullptr ? ERROR_INVALID_HANDLE
                                                                    : ERROR_SUCCESS);
}

BOOL DeviceIoControl(HANDLE device, DWORD code, LPVOID input, DWORD inputLength, LPVOID output,
                     DWORD outputLength, LPDWORD returned, LPOVERLAPPED)
{
    DWORD count = 0;
    const BOOL succeeded = callOn<DeviceObject>(device, [&](DeviceObject& object) {
        return object.control(code, input, inputLength, output, outputLength, count);
    });
    store(returned, count);
    return succeeded;
}

HANDLE CreateNamedPipeW(LPCWSTR name, DWORD, DWORD pipeMode, DWORD mostInstances, DWORD,
                        DWORD inputSize, DWORD, LPSECURITY_ATTRIBUTES)
{
    const DevicePath parsed = parseDevicePath(name);
    DWORD error = ERROR_INVALID_NAME;
    if (parsed.name.empty() || !parsed.isPipe)
        return newHandle(nullptr, error);
    auto instance =
        PipeInstance::create(parsed.name, pipeMode, mostInstances, inputSize > 0, error);
    return newHandle(std::move(instance), error);
}

BOOL ConnectNamedPipe(HANDLE pipe, LPOVERLAPPED)
{
    return callOn<PipeInstance>(pipe, [](PipeInstance& instance) { return instance.connect(); });
}

BOOL DisconnectNamedPipe(HANDLE pipe)
{
    return callOn<PipeInstance>(pipe, [](PipeInstance& instance) { return instance.disconnect(); });
}

BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD length, LPDWORD read, LPOVERLAPPED)
{
    DWORD count = 0;
    const BOOL succeeded = callOn<PipeObject>(
        file, [&](PipeObject& pipe) { return pipe.read(buffer, length, count); });
    store(read, count);
    return succeeded;
}

BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD length, LPDWORD written, LPOVERLAPPED)
{
    const BOOL succeeded =
        callOn<PipeObject>(file, [&](PipeObject& pipe) { return pipe.write(buffer, length); });
    store(written, succeeded == FALSE ? 0 : length);
    return succeeded;
}
