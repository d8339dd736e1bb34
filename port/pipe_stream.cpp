#include "port/pipe_stream.h"

#include "port/local_socket.h"
#include "port/thread_wait.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>

namespace {

/// A message travels in frames of one kind byte and data: zero-byte messages can then be told from
/// the end of the connection, and long ones fit the socket.
constexpr std::uint8_t lastFrame = 0;
constexpr std::uint8_t moreFrames = 1;
constexpr std::uint8_t farewellFrame = 2;
constexpr std::uint8_t readerFrame = 3;
constexpr std::size_t frameData = 32768;

/// As much is taken from the socket ahead of the reader; then the writer has to wait.
constexpr std::size_t readAhead = 65536;

} // namespace

PipeStream::PipeStream(FileDescriptor connection, bool byMessage)
    : socket(std::move(connection))
    , messageMode(byMessage)
{
    ::fcntl(socket.get(), F_SETFL, ::fcntl(socket.get(), F_GETFL) | O_NONBLOCK);
}

DWORD PipeStream::read(void* buffer, DWORD length, DWORD& read)
{
    takeArrived();
    while (inbox.empty() && !ended) {
        if (!ThreadWait::current().wait(socket.get(), POLLIN))
            return ERROR_OPERATION_ABORTED;
        // One at a time: who waits gets the message even if the other side parts right after it.
        while (inbox.empty() && !ended && takeFrame()) {
        }
    }
    if (farewell)
        return ERROR_PIPE_NOT_CONNECTED;
    return inbox.empty() ? ERROR_BROKEN_PIPE : deliver(buffer, length, read);
}

DWORD PipeStream::write(const void* buffer, DWORD length)
{
    const auto* data = static_cast<const std::uint8_t*>(buffer);
    std::size_t left = length;
    bool pending = false;
    while (left > frameData) {
        const DWORD error = writeFrame(moreFrames, data, frameData, pending);
        if (error != ERROR_SUCCESS)
            return error;
        pending = true;
        data += frameData;
        left -= frameData;
    }
    return writeFrame(lastFrame, data, left, pending);
}

void PipeStream::announceReader()
{
    takeArrived();
    if (inbox.empty() && !ended)
        sendMessage(socket.get(), &readerFrame, 1);
}

DWORD PipeStream::awaitReader()
{
    takeArrived();
    while (!readerWaits && !ended) {
        if (!ThreadWait::current().wait(socket.get(), POLLIN))
            return ERROR_OPERATION_ABORTED;
        takeArrived();
    }
    if (ended)
        return goneError(true);
    readerWaits = false;
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
    while (!ended && inboxBytes < readAhead && takeFrame()) {
    }
}

/// False when nothing has arrived.
bool PipeStream::takeFrame()
{
    std::uint8_t kind = 0;
    Message data(frameData);
    ssize_t length = receiveMessage(socket.get(), &kind, 1, data.data(), data.size());
    // Reported once, ahead of what the other side had sent before it closed.
    if (length < 0 && errno == ECONNRESET)
        length = receiveMessage(socket.get(), &kind, 1, data.data(), data.size());
    if (length < 0 && errno == EAGAIN)
        return false;
    if (length <= 0 || kind == farewellFrame) {
        ended = true;
        farewell = length > 0;
        return true;
    }
    if (kind == readerFrame) {
        readerWaits = true;
        return true;
    }
    const auto end = data.begin() + (length - 1);
    unfinished.insert(unfinished.end(), data.begin(), end);
    if (kind == lastFrame) {
        inboxBytes += unfinished.size();
        inbox.push_back(std::move(unfinished));
        unfinished = {};
    }
    return true;
}

DWORD PipeStream::deliver(void* buffer, DWORD length, DWORD& read)
{
    const Message& message = inbox.front();
    const std::size_t left = message.size() - delivered;
    const std::size_t count = std::min<std::size_t>(left, length);
    std::copy_n(message.begin() + static_cast<std::ptrdiff_t>(delivered), count,
                static_cast<std::uint8_t*>(buffer));
    read = static_cast<DWORD>(count);
    delivered += count;
    if (count < left)
        return messageMode ? ERROR_MORE_DATA : ERROR_SUCCESS;
    inboxBytes -= message.size();
    inbox.pop_front();
    delivered = 0;
    return ERROR_SUCCESS;
}

DWORD PipeStream::writeFrame(std::uint8_t kind, const std::uint8_t* data, std::size_t length,
                             bool pending)
{
    while (!sendMessage(socket.get(), &kind, 1, data, length)) {
        if (errno == EPIPE)
            return goneError(pending);
        if (errno == EAGAIN) {
            pending = true;
            if (!ThreadWait::current().wait(socket.get(), POLLOUT))
                return ERROR_OPERATION_ABORTED;
        } else if (errno != ECONNRESET) { // Reported once; the next try tells the cause.
            return ERROR_GEN_FAILURE;
        }
    }
    return ERROR_SUCCESS;
}

DWORD PipeStream::goneError(bool pending)
{
    takeArrived();
    if (farewell)
        return ERROR_PIPE_NOT_CONNECTED;
    return pending ? ERROR_BROKEN_PIPE : ERROR_NO_DATA;
}
