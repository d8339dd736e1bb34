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
    static constexpr DWORD largestMessage = 128 * 1024; ///< bytes; of a longer one nothing is sent

    /// A message of more than `buffer` bytes waits until the other side reads.
    PipeStream(FileDescriptor connection, DWORD buffer);

    DWORD read(void* buffer, DWORD length, DWORD& read);
    DWORD write(const void* buffer, DWORD length);

    /// Tells the other side that it was disconnected, which loses all that is unread there.
    void sayFarewell();

    bool isClosedByPeer() const;

private:
    using Message = std::vector<std::uint8_t>;

    bool takeFrame();
    void takeArrived();
    DWORD deliver(void* buffer, DWORD length, DWORD& read);
    DWORD awaitReader();
    DWORD goneError(bool waited);

    FileDescriptor socket;
    DWORD bufferSize;
    Message arriving; ///< As long as the longest one.
    std::deque<Message> inbox;
    bool readerWaits = false;
    bool ended = false;
    bool farewell = false;
};
