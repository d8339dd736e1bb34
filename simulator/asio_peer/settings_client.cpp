#include "simulator/asio_peer/settings_client.h"

#include "platform/call_timeout.h"

#include <chrono>

namespace {

constexpr std::chrono::seconds patience{5};
constexpr DWORD retryInterval = 5; // ms

} // namespace

DWORD SettingsClient::connect()
{
    const auto end = std::chrono::steady_clock::now() + patience;
    for (;;) {
        pipe.reset(CreateFileW(LR"(\\.\pipe\QuorvelASIOToPannel)", GENERIC_READ | GENERIC_WRITE, 0,
                               nullptr, OPEN_EXISTING, 0, nullptr));
        if (pipe.isValid())
            return ERROR_SUCCESS;
        const DWORD error = GetLastError();
        if (error != ERROR_PIPE_BUSY || std::chrono::steady_clock::now() >= end)
            return error;
        Sleep(retryInterval);
    }
}

DWORD SettingsClient::send(const std::vector<char>& message)
{
    const CallTimeout timeout(patience);
    DWORD count = 0;
    if (WriteFile(pipe.get(), message.data(), static_cast<DWORD>(message.size()), &count,
                  nullptr) == FALSE)
        return GetLastError();
    // The panel parts with its client after the message; one that was not read is lost when the
    // client leaves first.
    char answer = 0;
    while (ReadFile(pipe.get(), &answer, sizeof answer, &count, nullptr) != FALSE) {
    }
    const DWORD error = GetLastError();
    return error == ERROR_OPERATION_ABORTED ? error : ERROR_SUCCESS;
}
