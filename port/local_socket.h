#pragma once

#include "port/file_descriptor.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <sys/types.h>
#include <sys/uio.h>

/// Message sockets (SOCK_SEQPACKET) below the runtime folder. All of them are closed on exec and
/// never raise SIGPIPE; failures leave errno.

/// Connects to the socket file. With `wait` false a full queue fails at once with EAGAIN.
FileDescriptor connectSocket(const std::string& path, bool wait);

/// False when no process has the socket of this file open any more. Nobody is connected to.
bool socketIsServed(const std::string& path);

/// Lets no call on the socket wait longer than this.
void limitWaiting(int socket, std::chrono::milliseconds longest);

/// Listens on a new non-blocking socket file; `queue` + 1 clients can be connected ahead of
/// accept().
FileDescriptor listenOnSocket(const std::string& path, int queue);

/// The next queued client, or an invalid descriptor.
FileDescriptor acceptSocket(int listener);

/// Sends `first` and `second` as one message.
bool sendMessage(int socket, const void* first, std::size_t firstLength,
                 const void* second = nullptr, std::size_t secondLength = 0);

/// Receives one message into `first` and then `second`. Returns its length, 0 when the other side
/// has closed, -1 on failure; a message that does not fit fails with EMSGSIZE.
ssize_t receiveMessage(int socket, void* first, std::size_t firstLength, void* second = nullptr,
                       std::size_t secondLength = 0);
