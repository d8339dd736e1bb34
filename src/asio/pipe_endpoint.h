#pragma once

#include "platform/scoped_handle.h"

#include <QByteArray>
#include <QString>

/// The server side of one message pipe: one client and one message at a time. Every call blocks
/// and is told in one debug line. Not thread-safe.
class PipeEndpoint
{
public:
    static constexpr DWORD messageSize = 1024; ///< bytes that readMessage() takes at the most

    /// Creates nothing yet. The path is a full one, such as "\\.\pipe\NAME".
    explicit PipeEndpoint(const QString& path);
    ~PipeEndpoint();
    PipeEndpoint(const PipeEndpoint&) = delete;
    PipeEndpoint& operator=(const PipeEndpoint&) = delete;

    /// In place of the one before. False when the system refuses.
    bool createPipe();

    /// Waits for a client, reads its message into the buffer of at least messageSize bytes and
    /// parts with it. Bytes beyond the message stay as they are. A longer message is a failure.
    bool readMessage(char* buffer);

    /// Waits for a client, writes the message and parts with it.
    bool writeMessage(const QByteArray& message);

    /// Parts with a client that was gone before it could be served: as long as it holds the pipe,
    /// no other client gets in. Harmless otherwise.
    void dropClient();

    /// Ends the wait that another thread is in; it fails with error 995. Harmless otherwise. May
    /// be called from any thread while the pipe is neither created nor closed.
    void cancelWait();

    void closePipe();

private:
    bool connectClient();

    QString name;
    ScopedHandle pipe{INVALID_HANDLE_VALUE};
};
