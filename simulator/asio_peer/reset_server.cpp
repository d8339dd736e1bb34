#include "simulator/asio_peer/reset_server.h"

#include "platform/call_timeout.h"

namespace {

constexpr const wchar_t* path = LR"(\\.\pipe\QuorvelPannelToASIO)";
constexpr DWORD largestMessage = 4096; // bytes

} // namespace

DWORD ResetServer::open(DWORD bufferSize)
{
    pipe.reset(CreateNamedPipeW(path, PIPE_ACCESS_DUPLEX,
                                PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT, 1,
                                bufferSize, bufferSize, 0, nullptr));
    return pipe.isValid() ? DWORD{ERROR_SUCCESS} : GetLastError();
}

DWORD ResetServer::receive(std::chrono::milliseconds time, std::vector<unsigned char>& message)
{
    const auto end = std::chrono::steady_clock::now() + time;
    const CallTimeout timeout(time);
    while (std::chrono::steady_clock::now() < end) {
        const DWORD error = receiveOnce(message);
        DisconnectNamedPipe(pipe.get());
        if (error != ERROR_NO_DATA && error != ERROR_BROKEN_PIPE)
            return error;
    }
    return ERROR_OPERATION_ABORTED;
}

DWORD ResetServer::receiveOnce(std::vector<unsigned char>& message)
{
    if (ConnectNamedPipe(pipe.get(), nullptr) == FALSE && GetLastError() != ERROR_PIPE_CONNECTED)
        return GetLastError();
    message.resize(largestMessage);
    DWORD count = 0;
    if (ReadFile(pipe.get(), message.data(), largestMessage, &count, nullptr) == FALSE)
        return GetLastError();
    message.resize(count);
    return ERROR_SUCCESS;
}

DWORD ResetServer::makeBusy()
{
    client.reset(
        CreateFileW(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    return client.isValid() ? DWORD{ERROR_SUCCESS} : GetLastError();
}
