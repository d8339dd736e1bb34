#include "port/device_object.h"

#include "port/device_wire.h"
#include "port/local_socket.h"
#include "port/runtime_folder.h"

#include <cerrno>

namespace {

constexpr std::chrono::milliseconds longestClosing(500);

/// Sends one request and receives its answer. False when the serving process is gone.
bool ask(int socket, const DeviceRequest& request, const void* input, void* output,
         DeviceAnswer& answer)
{
    if (!sendMessage(socket, &request, sizeof request, input, request.inputLength))
        return false;
    const ssize_t received =
        receiveMessage(socket, &answer, sizeof answer, output, request.outputLength);
    return received >= static_cast<ssize_t>(sizeof answer) &&
           static_cast<std::size_t>(received) == sizeof answer + answer.returned;
}

DWORD openError(int systemError)
{
    switch (systemError) {
    case ENOENT:
    case ENOTDIR:
    case ECONNREFUSED:
        return ERROR_FILE_NOT_FOUND;
    case ENAMETOOLONG:
        return ERROR_FILENAME_EXCED_RANGE;
    case EACCES:
    case EPERM:
        return ERROR_ACCESS_DENIED;
    default:
        return ERROR_GEN_FAILURE;
    }
}

} // namespace

DeviceObject::DeviceObject(FileDescriptor connection)
    : socket(std::move(connection))
{
}

std::shared_ptr<DeviceObject> DeviceObject::open(const std::string& name, DWORD& error)
{
    FileDescriptor connection = connectSocket(runtimeFolder() + "/dev/" + name, true);
    if (!connection.isValid()) {
        error = openError(errno);
        return nullptr;
    }
    DeviceAnswer answer = {};
    if (!ask(connection.get(), {DeviceCall::open, 0, 0, 0}, nullptr, nullptr, answer)) {
        error = ERROR_FILE_NOT_FOUND; // The device went away while it was being opened.
        return nullptr;
    }
    error = answer.error;
    if (error != ERROR_SUCCESS)
        return nullptr;
    return std::shared_ptr<DeviceObject>(new DeviceObject(std::move(connection)));
}

DeviceObject::~DeviceObject()
{
    limitWaiting(socket.get(), longestClosing);
    DeviceAnswer answer = {};
    ask(socket.get(), {DeviceCall::close, 0, 0, 0}, nullptr, nullptr, answer);
}

DWORD DeviceObject::control(DWORD code, const void* input, DWORD inputLength, void* output,
                            DWORD outputLength, DWORD& returned)
{
    if (inputLength > largestTransfer || outputLength > largestTransfer)
        return ERROR_NO_SYSTEM_RESOURCES;
    const std::lock_guard lock(mutex);
    DeviceAnswer answer = {};
    if (!ask(socket.get(), {DeviceCall::control, code, inputLength, outputLength}, input, output,
             answer))
        return ERROR_DEVICE_NOT_CONNECTED;
    returned = answer.returned;
    return answer.error;
}
