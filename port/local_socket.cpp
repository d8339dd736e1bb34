#include "port/local_socket.h"

#include <cerrno>
#include <cstring>
#include <sys/un.h>

namespace {

using Call = int (*)(int, const sockaddr*, socklen_t);

/// A new socket on which bind() or connect() was called with the path.
FileDescriptor newSocket(int type, Call call, const std::string& path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        return {};
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    FileDescriptor socket(::socket(AF_UNIX, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (call(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return {};
    return socket;
}

/// iovec carries no const; sendmsg does not write through it.
iovec part(const void* data, std::size_t length)
{
    return {const_cast<void*>(data), length};
}

/// One byte, and with it two descriptors.
struct DescriptorMessage
{
    DescriptorMessage()
    {
        header.msg_iov = &data;
        header.msg_iovlen = 1;
        header.msg_control = control;
        header.msg_controllen = sizeof control;
    }
    DescriptorMessage(const DescriptorMessage&) = delete;
    DescriptorMessage& operator=(const DescriptorMessage&) = delete;

    char byte = 0;
    iovec data = {&byte, sizeof byte};
    alignas(cmsghdr) char control[CMSG_SPACE(2 * sizeof(int))] = {};
    msghdr header = {};
};

} // namespace

FileDescriptor connectSocket(int type, const std::string& path)
{
    return newSocket(type, ::connect, path);
}

FileDescriptor bindSocket(int type, const std::string& path)
{
    return newSocket(type, ::bind, path);
}

FileDescriptor listenOnSocket(const std::string& path)
{
    FileDescriptor socket = bindSocket(SOCK_SEQPACKET, path);
    return ::listen(socket.get(), SOMAXCONN) == 0 ? std::move(socket) : FileDescriptor();
}

FileDescriptor acceptSocket(int listener)
{
    return FileDescriptor(::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
}

std::array<FileDescriptor, 2> socketPair()
{
    std::array<int, 2> ends = {-1, -1};
    ::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data());
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

bool sendMessage(int socket, const void* first, std::size_t firstLength, const void* second,
                 std::size_t secondLength)
{
    iovec parts[] = {part(first, firstLength), part(second, secondLength)};
    msghdr message = {};
    message.msg_iov = parts;
    message.msg_iovlen = secondLength == 0 ? 1 : 2;
    return ::sendmsg(socket, &message, MSG_NOSIGNAL) >= 0;
}

ssize_t receiveMessage(int socket, void* first, std::size_t firstLength, void* second,
                       std::size_t secondLength)
{
    iovec parts[] = {part(first, firstLength), part(second, secondLength)};
    msghdr message = {};
    message.msg_iov = parts;
    message.msg_iovlen = secondLength == 0 ? 1 : 2;
    const ssize_t received = ::recvmsg(socket, &message, 0);
    if (received < 0 || (message.msg_flags & MSG_TRUNC) == 0)
        return received;
    errno = EMSGSIZE;
    return -1;
}

bool sendDescriptors(int socket, const std::array<int, 2>& descriptors)
{
    DescriptorMessage message;
    cmsghdr* const head = CMSG_FIRSTHDR(&message.header);
    head->cmsg_level = SOL_SOCKET;
    head->cmsg_type = SCM_RIGHTS;
    head->cmsg_len = CMSG_LEN(sizeof descriptors);
    std::memcpy(CMSG_DATA(head), descriptors.data(), sizeof descriptors);
    return ::sendmsg(socket, &message.header, MSG_NOSIGNAL) >= 0;
}

std::array<FileDescriptor, 2> receiveDescriptors(int socket)
{
    DescriptorMessage message;
    std::array<int, 2> descriptors = {-1, -1};
    if (::recvmsg(socket, &message.header, MSG_CMSG_CLOEXEC) > 0) {
        const cmsghdr* const head = CMSG_FIRSTHDR(&message.header);
        if (head != nullptr && head->cmsg_len == CMSG_LEN(sizeof descriptors))
            std::memcpy(descriptors.data(), CMSG_DATA(head), sizeof descriptors);
    }
    return {FileDescriptor(descriptors[0]), FileDescriptor(descriptors[1])};
}
