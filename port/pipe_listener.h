#pragma once

#include "port/file_descriptor.h"
#include "port/win32_port.h"

#include <memory>
#include <string>

/// The place where the clients of a pipe come to its server. A client makes a pair of sockets and
/// sends one of them to the server, together with the lock of a file that it took for that: who
/// does not get the lock finds the pipe busy, and who finds no socket to send to finds no pipe.
/// Both are the system's to give up when a process dies, so that nothing of it is left.
class PipeListener
{
public:
    /// Null with the Windows error number in `error`: ERROR_PIPE_BUSY when there is such a pipe.
    static std::unique_ptr<PipeListener> create(const std::string& name, DWORD bufferSize,
                                                DWORD& error);

    /// The client's side: its socket and the size of the pipe's buffer, or an invalid descriptor
    /// with the error number in `error`.
    static FileDescriptor connect(const std::string& name, DWORD& bufferSize, DWORD& error);

    PipeListener(const PipeListener&) = delete;
    PipeListener& operator=(const PipeListener&) = delete;
    ~PipeListener();

    /// Readable when a client is there.
    int socket() const { return mailbox.get(); }

    /// The socket and the lock of the client that is there; false when none is. The pipe is busy
    /// until the lock is given back.
    bool take(FileDescriptor& client, FileDescriptor& lock);

private:
    explicit PipeListener(const std::string& name);

    std::string socketPath;
    std::string lockPath;
    FileDescriptor mailbox;
};
