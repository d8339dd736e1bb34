#include "port/pipe_listener.h"

#include "port/local_socket.h"
#include "port/runtime_folder.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace {

std::string socketFile(const std::string& name)
{
    return runtimeFolder() + "/pipe/" + name;
}

/// Its length is the size of the pipe's buffer.
std::string lockFile(const std::string& name)
{
    return runtimeFolder() + "/lock/" + name;
}

/// The file with its lock, or an invalid descriptor with EWOULDBLOCK when somebody has it.
FileDescriptor takeLock(const std::string& path, int flags)
{
    FileDescriptor file(::open(path.c_str(), O_RDWR | O_CLOEXEC | flags, 0600));
    if (!file.isValid() || ::flock(file.get(), LOCK_EX | LOCK_NB) != 0)
        return {};
    return file;
}

} // namespace

PipeListener::PipeListener(const std::string& name)
    : socketPath(socketFile(name))
    , lockPath(lockFile(name))
{
}

PipeListener::~PipeListener()
{
    // The names first: once the socket is closed, they may be another process's.
    if (mailbox.isValid()) {
        ::unlink(socketPath.c_str());
        ::unlink(lockPath.c_str());
    }
}

std::unique_ptr<PipeListener> PipeListener::create(const std::string& name, DWORD bufferSize,
                                                   DWORD& error)
{
    error = ERROR_ACCESS_DENIED;
    if (!createRuntimeFolder("pipe") || !createRuntimeFolder("lock"))
        return nullptr;
    std::unique_ptr<PipeListener> listener(new PipeListener(name));
    // Kept until all is there, so that two who create at once do not meet.
    const FileDescriptor lock = takeLock(listener->lockPath, O_CREAT);
    error = ERROR_PIPE_BUSY;
    if (!lock.isValid() || connectSocket(SOCK_DGRAM, listener->socketPath).isValid())
        return nullptr;
    ::unlink(listener->socketPath.c_str()); // Of a process that was killed.
    error = ERROR_ACCESS_DENIED;
    if (::ftruncate(lock.get(), bufferSize) != 0)
        return nullptr;
    listener->mailbox = bindSocket(SOCK_DGRAM, listener->socketPath);
    return listener->mailbox.isValid() ? std::move(listener) : nullptr;
}

FileDescriptor PipeListener::connect(const std::string& name, DWORD& bufferSize, DWORD& error)
{
    error = ERROR_FILE_NOT_FOUND;
    const FileDescriptor server = connectSocket(SOCK_DGRAM, socketFile(name));
    if (!server.isValid())
        return {};
    const FileDescriptor lock = takeLock(lockFile(name), 0);
    struct stat status = {};
    if (!lock.isValid() || ::fstat(lock.get(), &status) != 0) {
        if (errno == EWOULDBLOCK)
            error = ERROR_PIPE_BUSY;
        return {};
    }
    bufferSize = static_cast<DWORD>(status.st_size);
    auto [ours, servers] = socketPair();
    // The lock stays taken, since a copy of it is on its way.
    return sendDescriptors(server.get(), {servers.get(), lock.get()}) ? std::move(ours)
                                                                      : FileDescriptor();
}

bool PipeListener::take(FileDescriptor& client, FileDescriptor& lock)
{
    std::array<FileDescriptor, 2> arrived = receiveDescriptors(mailbox.get());
    client = std::move(arrived[0]);
    lock = std::move(arrived[1]);
    return client.isValid();
}
