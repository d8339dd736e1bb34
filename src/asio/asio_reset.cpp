#include "asio/asio_reset.h"

#include "asio/scoped_handle.h"
#include "platform/win32.h"

#include <QDebug>

namespace {

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
    const char reset = '1';
    DWORD written = 0;
    if (WriteFile(pipe.get(), &reset, sizeof reset, &written, nullptr) != 0) {
        qDebug() << "ASIO reset signal sent successfully.";
    } else {
        const DWORD error = GetLastError();
        qDebug() << "Error: Failed to send ASIO reset signal. Error code:" << error;
    }
    return true;
}

} // namespace

void sendAsioReset()
{
    if (writeReset())
        qDebug() << "设置通知ASIO逻辑";
}
