#include "port/pipe_object.h"

#include "port/local_socket.h"
#include "port/thread_wait.h"

#include <poll.h>

PipeClient::PipeClient(PipeConnection connection)
    // Windows opens the client's end for reading by bytes.
    : stream(std::move(connection.socket), false)
    , buffered(connection.buffered)
{
}

std::shared_ptr<PipeClient> PipeClient::open(const std::string& name, DWORD& error)
{
    PipeConnection connection = connectToPipe(name, error);
    return connection.socket.isValid() ? std::make_shared<PipeClient>(std::move(connection))
                                       : nullptr;
}

DWORD PipeClient::read(void* buffer, DWORD length, DWORD& read)
{
    const std::lock_guard lock(mutex);
    return stream.read(buffer, length, read);
}

DWORD PipeClient::write(const void* buffer, DWORD length)
{
    const std::lock_guard lock(mutex);
    const DWORD error = buffered ? DWORD{ERROR_SUCCESS} : stream.awaitReader();
    return error == ERROR_SUCCESS ? stream.write(buffer, length) : error;
}

std::shared_ptr<PipeInstance> PipeInstance::create(const std::string& name, DWORD pipeMode,
                                                   DWORD mostInstances, bool buffered, DWORD& error)
{
    const PipeFolder folder(name);
    error = ERROR_ACCESS_DENIED;
    if (!folder.create())
        return nullptr;
    const FileDescriptor lock = folder.lock();
    // Those that exist set the limit.
    const std::vector<std::string> existing = folder.sockets();
    const DWORD limit =
        existing.empty() ? mostInstances : PipeFolder::instanceLimit(existing.front());
    if (limit < PIPE_UNLIMITED_INSTANCES && existing.size() >= limit) {
        error = ERROR_PIPE_BUSY;
        return nullptr;
    }
    const std::string path = folder.newSocket(limit, buffered);
    FileDescriptor listener = listenOnSocket(path, 0);
    if (!listener.isValid())
        return nullptr;
    error = ERROR_SUCCESS;
    const bool byMessage = (pipeMode & PIPE_READMODE_MESSAGE) != 0;
    return std::make_shared<PipeInstance>(folder, path, std::move(listener), byMessage);
}

PipeInstance::PipeInstance(const PipeFolder& pipe, std::string path, FileDescriptor socket,
                           bool byMessage)
    : folder(pipe)
    , socketPath(std::move(path))
    , listener(std::move(socket))
    , messageMode(byMessage)
{
}

PipeInstance::~PipeInstance()
{
    const FileDescriptor lock = folder.lock();
    ::unlink(socketPath.c_str());
    listener.reset();
}

DWORD PipeInstance::connect()
{
    const std::lock_guard guard(mutex);
    const bool early = state == State::connected || hasQueuedClient();
    if (state == State::disconnected)
        listenAgain();
    if (state == State::listening) {
        if (!early && !ThreadWait::current().wait(listener.get(), POLLIN))
            return ERROR_OPERATION_ABORTED;
        takeQueuedClient();
    }
    if (!early)
        return ERROR_SUCCESS;
    return stream->isClosedByPeer() ? ERROR_NO_DATA : ERROR_PIPE_CONNECTED;
}

DWORD PipeInstance::disconnect()
{
    const std::lock_guard guard(mutex);
    const DWORD error = readiness();
    if (error != ERROR_SUCCESS)
        return error;
    stream->sayFarewell();
    stream.reset();
    state = State::disconnected;
    return ERROR_SUCCESS;
}

DWORD PipeInstance::read(void* buffer, DWORD length, DWORD& read)
{
    const std::lock_guard guard(mutex);
    const DWORD error = readiness();
    if (error != ERROR_SUCCESS)
        return error;
    if (!PipeFolder::isBuffered(socketPath))
        stream->announceReader();
    return stream->read(buffer, length, read);
}

DWORD PipeInstance::write(const void* buffer, DWORD length)
{
    const std::lock_guard guard(mutex);
    const DWORD error = readiness();
    return error == ERROR_SUCCESS ? stream->write(buffer, length) : error;
}

bool PipeInstance::hasQueuedClient() const
{
    pollfd watched = {listener.get(), POLLIN, 0};
    return state == State::listening && ::poll(&watched, 1, 0) > 0;
}

void PipeInstance::takeQueuedClient()
{
    const FileDescriptor lock = folder.lock();
    stream.emplace(acceptSocket(listener.get()), messageMode);
    plug = connectSocket(socketPath, false);
    state = State::connected;
}

void PipeInstance::listenAgain()
{
    const FileDescriptor lock = folder.lock();
    plug.reset();
    acceptSocket(listener.get());
    state = State::listening;
}

/// ERROR_SUCCESS with a client, who may have connected without being waited for.
DWORD PipeInstance::readiness()
{
    if (hasQueuedClient())
        takeQueuedClient();
    switch (state) {
    case State::listening:
        return ERROR_PIPE_LISTENING;
    case State::disconnected:
        return ERROR_PIPE_NOT_CONNECTED;
    default:
        return ERROR_SUCCESS;
    }
}
