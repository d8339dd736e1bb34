#include "port/pipe_stream.h"

#include "port/local_socket.h"
#include "port/thread_wait.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>

namespace {

/// A message travels behind one of these bytes, so that an empty one can be told from the end of
/// the connection.
constexpr std::uint8_t messageFrame = 0;
constexpr std::uint8_t readerFrame = 1;   ///< The other side waits in a read.
constexpr std::uint8_t farewellFrame = 2; ///< The other side has disconnected.

/// More are not taken from the socket ahead of their reader; then the writer has to wait.
constexpr std::size_t mostMessagesAhead = 64;

} // namespace

PipeStream::PipeStream(FileDescriptor connection, DWORD buffer)
    : socket(std::move(connection))
    , bufferSize(buffer)
    , arriving(largestMessage)
{
}

DWORD PipeStream::read(void* buffer, DWORD length, DWORD& read)
{
    takeArrived();
    if (inbox.empty() && !ended)
        sendMessage(socket.get(), &readerFrame, 1);
    while (inbox.empty() && !ended) {
        if (!ThreadWait::current().wait(socket.get(), POLLIN))
            return ERROR_OPERATION_ABORTED;
        // One at a time: who waits gets the message even if the other side parts right after it.
        takeFrame();
    }
    if (farewell)
        return ERROR_PIPE_NOT_CONNECTED;
    return inbox.empty() ? ERROR_BROKEN_PIPE : deliver(buffer, length, read);
}

DWORD PipeStream::write(const void* buffer, DWORD length)
{
    if (length > largestMessage)
        return ERROR_NO_SYSTEM_RESOURCES;
    takeArrived();
    bool waited = length > bufferSize;
    const DWORD error = waited ? awaitReader() : DWORD{ERROR_SUCCESS};
    if (error != ERROR_SUCCESS)
        return error;
    readerWaits = false;
    while (!sendMessage(socket.get(), &messageFrame, 1, buffer, length)) {
        if (errno == EPIPE)
            return goneError(waited);
        if (errno == EAGAIN) {
            waited = true;
            if (!ThreadWait::current().wait(socket.get(), POLLOUT))
                return ERROR_OPERATION_ABORTED;
        } else if (errno != ECONNRESET) { // Reported once; the next try tells the cause.
            return ERROR_GEN_FAILURE;
        }
    }
    return ERROR_SUCCESS;
}

void PipeStream::sayFarewell()
{
    // Without room for it the other side sees a plain end instead.
    sendMessage(socket.get(), &farewellFrame, 1);
}

bool PipeStream::isClosedByPeer() const
{
    pollfd watched = {socket.get(), 0, 0};
    return ::poll(&watched, 1, 0) > 0 && (watched.revents & POLLHUP) != 0;
}

void PipeStream::takeArrived()
{
    while (!ended && inbox.size() < mostMessagesAhead && takeFrame()) {
    }
}

/// False when nothing has arrived.
bool PipeStream::takeFrame()
{
    std::uint8_t kind = 0;
    ssize_t length = receiveMessage(socket.get(), &kind, 1, arriving.data(), arriving.size());
    // Reported once, ahead of what the other side had sent before it closed.
    if (length < 0 && errno == ECONNRESET)
        length = receiveMessage(socket.get(), &kind, 1, arriving.data(), arriving.size());
    if (length < 0 && errno == EAGAIN)
        return false;
    farewell = length > 0 && kind == farewellFrame;
    ended = length <= 0 || farewell;
    if (length > 0 && kind == readerFrame)
        readerWaits = true;
    else if (!ended)
        inbox.emplace_back(arriving.begin(), arriving.begin() + (length - 1));
    return true;
}

DWORD PipeStream::deliver(void* buffer, DWORD length, DWORD& read)
{
    Message& message = inbox.front();
    read = std::min(static_cast<DWORD>(message.size()), length);
    const auto rest = message.begin() + read;
    std::copy(message.begin(), rest, static_cast<std::uint8_t*>(buffer));
    message.erase(message.begin(), rest);
    if (!message.empty())
        return ERROR_MORE_DATA;
    inbox.pop_front();
    return ERROR_SUCCESS;
}

DWORD PipeStream::awaitReader()
{
    while (!readerWaits && !ended) {
        if (!ThreadWait::current().wait(socket.get(), POLLIN))
            return ERROR_OPERATION_ABORTED;
        takeFrame();
    }
    return ended ? goneError(true) : DWORD{ERROR_SUCCESS};
}

DWORD PipeStream::goneError(bool waited)
{
    takeArrived();
    if (farewell)
        return ERROR_PIPE_NOT_CONNECTED;
    return waited ? ERROR_BROKEN_PIPE : ERROR_NO_DATA;
}
