#include "support/scripted_platform.h"

#include "platform/win32.h"

#include <QCoreApplication>
#include <QDebug>
#include <QThread>

#include <algorithm>
#include <optional>
#include <stdexcept>

namespace {

constexpr DWORD commandCode = 0xFFDC209C;

std::optional<std::uint8_t> throwing;
QStringList requests;
bool narrating = false;

bool onMainThread()
{
    return QThread::currentThread() == QCoreApplication::instance()->thread();
}

void note(const QString& request)
{
    requests.append(request);
    if (narrating)
        qDebug().noquote() << "request" << request;
}

} // namespace

void ScriptedPlatform::throwOn(std::uint8_t opcode)
{
    throwing = opcode;
}

void ScriptedPlatform::reset()
{
    throwing.reset();
    requests.clear();
    narrating = false;
}

void ScriptedPlatform::narrate()
{
    narrating = true;
}

QStringList ScriptedPlatform::takeRequests()
{
    return std::exchange(requests, {});
}

HANDLE CreateFileW(LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE)
{
    return reinterpret_cast<HANDLE>(std::intptr_t{4});
}

BOOL CloseHandle(HANDLE)
{
    if (narrating && onMainThread())
        qDebug() << "close";
    return 1;
}

DWORD GetLastError()
{
    return ERROR_INVALID_HANDLE;
}

void Sleep(DWORD milliseconds)
{
    if (narrating && onMainThread())
        qDebug() << "wait" << milliseconds;
}

// There are no pipes.
HANDLE CreateNamedPipeW(LPCWSTR, DWORD, DWORD, DWORD, DWORD, DWORD, DWORD, LPSECURITY_ATTRIBUTES)
{
    return INVALID_HANDLE_VALUE;
}

BOOL ConnectNamedPipe(HANDLE, LPOVERLAPPED)
{
    return 0;
}

BOOL DisconnectNamedPipe(HANDLE)
{
    return 0;
}

BOOL ReadFile(HANDLE, LPVOID, DWORD, LPDWORD, LPOVERLAPPED)
{
    return 0;
}

BOOL WriteFile(HANDLE, LPCVOID, DWORD, LPDWORD, LPOVERLAPPED)
{
    return 0;
}

DWORD GetCurrentThreadId()
{
    return 0;
}

HANDLE OpenThread(DWORD, BOOL, DWORD)
{
    return nullptr;
}

BOOL CancelSynchronousIo(HANDLE)
{
    return 0;
}

BOOL CancelIoEx(HANDLE, LPOVERLAPPED)
{
    return 0;
}

BOOL DeviceIoControl(HANDLE, DWORD code, LPVOID input, DWORD inputSize, LPVOID output,
                     DWORD outputSize, LPDWORD returned, LPOVERLAPPED)
{
    if (code == commandCode && inputSize > 1) {
        const std::uint8_t opcode = static_cast<const std::uint8_t*>(input)[1];
        note(QString::number(opcode, 16));
        if (opcode == throwing)
            throw std::runtime_error("no paper");
    } else {
        note(QString::number(code, 16));
    }
    std::fill_n(static_cast<char*>(output), outputSize, '\0');
    *returned = outputSize;
    return 1;
}
