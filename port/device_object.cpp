#include "port/device_object.h"

#include "port/device_wire.h"
#include "port/local_socket.h"
#include "port/runtime_folder.h"
#include "port/thread_wait.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <vector>

DeviceObject::DeviceObject(FileDescriptor connection)
    : socket(std::move(connection))
{
}

std::shared_ptr<DeviceObject> DeviceObject::open(const std::string& name)
{
    FileDescriptor connection = connectSocket(SOCK_SEQPACKET, runtimeFolder() + "/dev/" + name);
    return connection.isValid() ? std::make_shared<DeviceObject>(std::move(connection)) : nullptr;
}

DWORD DeviceObject::control(DWORD code, const void* input, DWORD inputLength, void* output,
                            DWORD outputLength, DWORD& returned)
{
    if (inputLength > largestTransfer || outputLength > largestTransfer)
        return ERROR_NO_SYSTEM_RESOURCES;
    const std::lock_guard lock(mutex);
    const DWORD error = send(code, input, inputLength, outputLength);
    return error == ERROR_SUCCESS ? receive(output, outputLength, returned) : error;
}

DWORD DeviceObject::send(DWORD code, const void* input, DWORD inputLength, DWORD outputLength)
{
    const DeviceRequest request = {++number, code, inputLength, outputLength};
    while (!sendMessage(socket.get(), &request, sizeof request, input, inputLength)) {
        if (errno != EAGAIN)
            return ERROR_DEVICE_NOT_CONNECTED;
        if (!ThreadWait::current().wait(socket.get(), POLLOUT))
            return ERROR_OPERATION_ABORTED;
    }
    return ERROR_SUCCESS;
}

DWORD DeviceObject::receive(void* output, DWORD outputLength, DWORD& returned)
{
    // Not at once into the caller's: it may be the late answer to a cancelled request.
    std::vector<std::uint8_t> bytes(outputLength);
    DeviceAnswer answer = {};
    ssize_t length = 0;
    while (answer.number != number) {
        if (!ThreadWait::current().wait(socket.get(), POLLIN))
            return ERROR_OPERATION_ABORTED;
        length = receiveMessage(socket.get(), &answer, sizeof answer, bytes.data(), bytes.size());
        if (length == 0 || (length < 0 && errno != EAGAIN && errno != EMSGSIZE))
            return ERROR_DEVICE_NOT_CONNECTED;
    }
    if (length != static_cast<ssize_t>(sizeof answer + answer.returned))
        return ERROR_DEVICE_NOT_CONNECTED;
    std::copy_n(bytes.begin(), answer.returned, static_cast<std::uint8_t*>(output));
    returned = answer.returned;
    return answer.error;
}
