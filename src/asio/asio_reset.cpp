#include "asio/asio_reset.h"

#include "platform/call_timeout.h"
#include "platform/scoped_handle.h"
#include "platform/win32.h"

#include <QDebug>

#include <chrono>

namespace {

constexpr std::chrono::seconds writeTimeout(2);

/// ERROR_SUCCESS or the reason why the byte was not taken.
DWORD writeByte(HANDLE pipe, char byte)
{
    const CallTimeout timeout(writeTimeout);
    DWORD written = 0;
    return WriteFile(pipe, &byte, sizeof byte, &written, nullptr) != 0 ? DWORD{ERROR_SUCCESS}
                                                                       : GetLastError();
}

/// Whether the pipe could be opened; the write's own fate is only logged.
bool writeReset()
{
    const ScopedHandle pipe(CreateFileW(LR"(\\.\pipe\QuorvelPannelToASIO)",
                                        GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                                        nullptr));
    if (!pipe.isValid()) {
        const DWORD error = GetLastError();
        qDebug() << "Error: Could not open pipe. Error code:" << error;
        return false;
    }
    qDebug() << "Pipe opened successfully.";
    const DWORD error = writeByte(pipe.get(), '1');
    if (error == ERROR_SUCCESS)
        qDebug() << "ASIO reset signal sent successfully.";
    else
        qDebug() << "Error: Failed to send ASIO reset signal. Error code:" << error;
    return true;
}

} // namespace

void sendAsioReset()
{
    if (writeReset())
        qDebug() << "设置通知ASIO逻辑";
}
