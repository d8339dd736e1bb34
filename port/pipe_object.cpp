#include "port/pipe_object.h"

#include "port/thread_wait.h"

#include <poll.h>
#include <sys/file.h>

std::shared_ptr<PipeObject> PipeObject::open(const std::string& name, DWORD& error)
{
    DWORD bufferSize = 0;
    FileDescriptor socket = PipeListener::connect(name, bufferSize, error);
    return socket.isValid()
               ? std::make_shared<PipeObject>(PipeStream(std::move(socket), bufferSize))
               : nullptr;
}

PipeObject::PipeObject(PipeStream connected)
    : stream(std::move(connected))
{
}

DWORD PipeObject::read(void* buffer, DWORD length, DWORD& read)
{
    const std::lock_guard guard(mutex);
    const DWORD error = readiness();
    return error == ERROR_SUCCESS ? stream->read(buffer, length, read) : error;
}

DWORD PipeObject::write(const void* buffer, DWORD length)
{
    const std::lock_guard guard(mutex);
    const DWORD error = readiness();
    return error == ERROR_SUCCESS ? stream->write(buffer, length) : error;
}

std::shared_ptr<PipeInstance> PipeInstance::create(const std::string& name, DWORD outputSize,
                                                   DWORD inputSize, DWORD& error)
{
    std::unique_ptr<PipeListener> listener = PipeListener::create(name, inputSize, error);
    return listener == nullptr ? nullptr
                               : std::make_shared<PipeInstance>(std::move(listener), outputSize);
}

PipeInstance::PipeInstance(std::unique_ptr<PipeListener> clients, DWORD outputSize)
    : listener(std::move(clients))
    , bufferSize(outputSize)
{
}

DWORD PipeInstance::connect()
{
    const std::lock_guard guard(mutex);
    takeClient();
    if (stream)
        return stream->isClosedByPeer() ? ERROR_NO_DATA : ERROR_PIPE_CONNECTED;
    listen();
    while (!takeClient()) {
        if (!ThreadWait::current().wait(listener->socket(), POLLIN))
            return ERROR_OPERATION_ABORTED;
    }
    return ERROR_SUCCESS;
}

DWORD PipeInstance::disconnect()
{
    const std::lock_guard guard(mutex);
    const DWORD error = readiness();
    if (error != ERROR_SUCCESS)
        return error;
    stream->sayFarewell();
    stream.reset();
    return ERROR_SUCCESS;
}

/// A client may have connected without being waited for.
DWORD PipeInstance::readiness()
{
    takeClient();
    if (stream)
        return ERROR_SUCCESS;
    return isListening() ? ERROR_PIPE_LISTENING : ERROR_PIPE_NOT_CONNECTED;
}

/// False when none is there.
bool PipeInstance::takeClient()
{
    FileDescriptor socket;
    if (!isListening() || !listener->take(socket, clientLock))
        return false;
    stream.emplace(std::move(socket), bufferSize);
    return true;
}

void PipeInstance::listen()
{
    // Said, since a process that is just being started has a copy of the descriptor for a moment.
    ::flock(clientLock.get(), LOCK_UN);
    clientLock.reset();
}
