#include "port/pipe_folder.h"

#include "port/local_socket.h"
#include "port/runtime_folder.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>

namespace {

constexpr const char* unbufferedMark = "u";

} // namespace

PipeFolder::PipeFolder(const std::string& name)
    : folder(runtimeFolder() + "/pipe/" + name)
    , lockFile(folder + "/lock")
{
}

bool PipeFolder::create() const
{
    if (!createRuntimeFolder("pipe"))
        return false;
    std::error_code error;
    std::filesystem::create_directory(folder, error);
    const FileDescriptor file(::open(lockFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    return file.isValid();
}

FileDescriptor PipeFolder::lock() const
{
    FileDescriptor file(::open(lockFile.c_str(), O_RDWR | O_CLOEXEC));
    if (!file.isValid())
        return file;
    while (::flock(file.get(), LOCK_EX) != 0 && errno == EINTR) {
    }
    return file;
}

std::vector<std::string> PipeFolder::sockets() const
{
    std::vector<std::string> result;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) {
        const std::string path = entry.path().string();
        if (path == lockFile)
            continue;
        // Asked of the socket, since the number of a dead process is given out again.
        if (socketIsServed(path))
            result.push_back(path);
        else
            std::filesystem::remove(entry.path(), ignored);
    }
    return result;
}

std::string PipeFolder::newSocket(DWORD mostInstances, bool buffered) const
{
    static std::atomic<unsigned> count = 0;
    return folder + '/' + std::to_string(::getpid()) + '-' + std::to_string(++count) + '-' +
           std::to_string(mostInstances) + (buffered ? "" : unbufferedMark);
}

DWORD PipeFolder::instanceLimit(const std::string& socket)
{
    return static_cast<DWORD>(std::atoi(socket.c_str() + socket.rfind('-') + 1));
}

bool PipeFolder::isBuffered(const std::string& socket)
{
    return !socket.ends_with(unbufferedMark);
}

PipeConnection connectToPipe(const std::string& name, DWORD& error)
{
    const PipeFolder folder(name);
    const FileDescriptor lock = folder.lock();
    error = ERROR_FILE_NOT_FOUND;
    for (const std::string& path : folder.sockets()) {
        FileDescriptor socket = connectSocket(path, false);
        if (socket.isValid()) {
            error = ERROR_SUCCESS;
            return {std::move(socket), PipeFolder::isBuffered(path)};
        }
        if (errno == EAGAIN)
            error = ERROR_PIPE_BUSY;
    }
    return {};
}
