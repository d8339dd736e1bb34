#pragma once

#include "port/file_descriptor.h"
#include "port/win32_port.h"

#include <cstdint>
#include <deque>
#include <vector>

/// One end of a connected pipe: messages in both directions over a message socket. Calls return
/// Windows error numbers, ERROR_SUCCESS when they succeeded, and can be cancelled while they wait.
class PipeStream
{
public:
    /// With `byMessage` false a message that is longer than the reader's buffer is no error.
    PipeStream(FileDescriptor connection, bool byMessage);

    DWORD read(void* buffer, DWORD length, DWORD& read);
    DWORD write(const void* buffer, DWORD length);

    /// For a pipe without a buffer: tells the other side that the next read waits for it.
    void announceReader();
    /// For a pipe without a buffer: waits until the other side reads.
    DWORD awaitReader();

    /// Tells the other side that it was disconnected, which loses all that is unread there.
    void sayFarewell();

    bool isClosedByPeer() const;

private:
    using Message = std::vector<std::uint8_t>;

    void takeArrived();
    bool takeFrame();
    DWORD deliver(void* buffer, DWORD length, DWORD& read);
    DWORD writeFrame(std::uint8_t kind, const std::uint8_t* data, std::size_t length, bool pending);
    DWORD goneError(bool pending);

    FileDescriptor socket;
    bool messageMode;
    std::deque<Message> inbox;
    std::size_t inboxBytes = 0;
    std::size_t delivered = 0; ///< Bytes of the first message that were already read.
    Message unfinished;
    bool readerWaits = false;
    bool ended = false;
    bool farewell = false;
};
