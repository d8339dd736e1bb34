#pragma once

#include "port/file_descriptor.h"

#include <array>
#include <cstddef>
#include <string>
#include <sys/socket.h>
#include <sys/types.h>

/// Sockets of messages (SOCK_SEQPACKET, SOCK_DGRAM) below the runtime folder. All of them are
/// closed on exec, do not block and never raise SIGPIPE; failures leave errno. A message of 128 KiB
/// fits the buffer that Linux gives a socket.

/// Connects to the socket file.
FileDescriptor connectSocket(int type, const std::string& path);

/// Makes the socket file.
FileDescriptor bindSocket(int type, const std::string& path);

/// Listens on a new socket file.
FileDescriptor listenOnSocket(const std::string& path);

/// The next queued client, or an invalid descriptor.
FileDescriptor acceptSocket(int listener);

/// Two ends that are connected to each other; invalid ones when there is none to be had.
std::array<FileDescriptor, 2> socketPair();

/// Sends `first` and `second` as one message.
bool sendMessage(int socket, const void* first, std::size_t firstLength,
                 const void* second = nullptr, std::size_t secondLength = 0);

/// Receives one message into `first` and then `second`. Returns its length, 0 when the other side
/// has closed, -1 on failure; a message that does not fit fills both and fails with EMSGSIZE.
ssize_t receiveMessage(int socket, void* first, std::size_t firstLength, void* second = nullptr,
                       std::size_t secondLength = 0);

/// Sends and receives two descriptors; the receiver's are copies of its own. Invalid ones when
/// nothing has arrived.
bool sendDescriptors(int socket, const std::array<int, 2>& descriptors);
std::array<FileDescriptor, 2> receiveDescriptors(int socket);
