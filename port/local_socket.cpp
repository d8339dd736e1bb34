#include "port/local_socket.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace {

/// Room for the largest request in one message, whatever the system's default is.
constexpr int socketBuffer = 256 * 1024;

bool fillAddress(sockaddr_un& address, const std::string& path)
{
    address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        return false;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return true;
}

FileDescriptor newSocket()
{
    FileDescriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (socket.isValid())
        ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDBUF, &socketBuffer, sizeof socketBuffer);
    return socket;
}

void setBlocking(int socket)
{
    ::fcntl(socket, F_SETFL, ::fcntl(socket, F_GETFL) & ~O_NONBLOCK);
}

/// iovec carries no const; sendmsg does not write through it.
iovec part(const void* data, std::size_t length)
{
    return {const_cast<void*>(data), length};
}

} // namespace

FileDescriptor connectSocket(const std::string& path, bool wait)
{
    sockaddr_un address;
    if (!fillAddress(address, path))
        return {};
    FileDescriptor socket = newSocket();
    if (!socket.isValid())
        return {};
    if (wait)
        setBlocking(socket.get());
    int result = 0;
    do {
        result =
            ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    } while (result != 0 && errno == EINTR);
    if (result != 0)
        return {};
    setBlocking(socket.get());
    return socket;
}

bool socketIsServed(const std::string& path)
{
    sockaddr_un address;
    // A socket of another kind is refused with EPROTOTYPE by one that is open.
    const FileDescriptor probe(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!probe.isValid() || !fillAddress(address, path))
        return true;
    return ::connect(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
               0 ||
           (errno != ECONNREFUSED && errno != ENOENT);
}

void limitWaiting(int socket, std::chrono::milliseconds longest)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(longest);
    const timeval limit = {seconds.count(), std::chrono::microseconds(longest - seconds).count()};
    for (const int option : {SO_SNDTIMEO, SO_RCVTIMEO})
        ::setsockopt(socket, SOL_SOCKET, option, &limit, sizeof limit);
}

FileDescriptor listenOnSocket(const std::string& path, int queue)
{
    sockaddr_un address;
    if (!fillAddress(address, path))
        return {};
    FileDescriptor socket = newSocket();
    if (!socket.isValid() ||
        ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(socket.get(), queue) != 0)
        return {};
    return socket;
}

FileDescriptor acceptSocket(int listener)
{
    int result = -1;
    do {
        result = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    } while (result < 0 && errno == EINTR);
    FileDescriptor socket(result);
    if (socket.isValid())
        ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDBUF, &socketBuffer, sizeof socketBuffer);
    return socket;
}

bool sendMessage(int socket, const void* first, std::size_t firstLength, const void* second,
                 std::size_t secondLength)
{
    iovec parts[] = {part(first, firstLength), part(second, secondLength)};
    msghdr message = {};
    message.msg_iov = parts;
    message.msg_iovlen = secondLength == 0 ? 1 : 2;
    ssize_t sent = 0;
    do {
        sent = ::sendmsg(socket, &message, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent >= 0;
}

ssize_t receiveMessage(int socket, void* first, std::size_t firstLength, void* second,
                       std::size_t secondLength)
{
    iovec parts[] = {part(first, firstLength), part(second, secondLength)};
    msghdr message = {};
    message.msg_iov = parts;
    message.msg_iovlen = secondLength == 0 ? 1 : 2;
    ssize_t received = 0;
    do {
        received = ::recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
    } while (received < 0 && errno == EINTR);
    if (received >= 0 && (message.msg_flags & MSG_TRUNC) != 0) {
        errno = EMSGSIZE;
        return -1;
    }
    return received;
}
