#include "port/device_object.h"
#include "port/pipe_object.h"
#include "port/runtime_folder.h"
#include "port/thread_wait.h"
#include "port/win32_port.h"

#include <string_view>

namespace {

constexpr std::wstring_view devicePrefix = LR"(\\.\)";
constexpr std::wstring_view pipePrefix = LR"(\\.\pipe\)";

thread_local DWORD lastError = ERROR_SUCCESS;

/// The name behind the prefix as that of a file; empty when the path cannot name one. All that the
/// system names itself is letters, digits and dashes.
std::string nameBehind(std::wstring_view prefix, std::wstring_view path)
{
    const auto isPart = [](wchar_t c) {
        return (c >= L'0' && c <= L'9') || (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z') ||
               c == L'-';
    };
    if (!path.starts_with(prefix))
        return {};
    path.remove_prefix(prefix.size());
    std::string name;
    for (const wchar_t character : path) {
        if (!isPart(character))
            return {};
        name += static_cast<char>(character);
    }
    return name;
}

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
        ThreadWait::current().use(handle);
        const DWORD error = action(*object);
        ThreadWait::current().use(nullptr);
        return result(error);
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
    const std::string pipe = nameBehind(pipePrefix, path);
    const std::string device = nameBehind(devicePrefix, path);
    DWORD error = ERROR_FILE_NOT_FOUND;
    std::shared_ptr<PortObject> object;
    if (!pipe.empty() && runtimeFolderIsPrivate())
        object = PipeObject::open(pipe, error);
    else if (!device.empty() && runtimeFolderIsPrivate())
        object = DeviceObject::open(device);
    return newHandle(std::move(object), error);
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

HANDLE CreateNamedPipeW(LPCWSTR name, DWORD, DWORD, DWORD, DWORD outputSize, DWORD inputSize, DWORD,
                        LPSECURITY_ATTRIBUTES)
{
    const std::string pipe = nameBehind(pipePrefix, name);
    DWORD error = ERROR_INVALID_NAME;
    std::shared_ptr<PortObject> object;
    if (!pipe.empty())
        object = PipeInstance::create(pipe, outputSize, inputSize, error);
    return newHandle(std::move(object), error);
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
