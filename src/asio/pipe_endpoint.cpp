#include "asio/pipe_endpoint.h"

#include <QDebug>

#include <algorithm>
#include <array>

namespace {

constexpr DWORD bufferSize = 65536;   // bytes, each way
constexpr DWORD defaultTimeout = 300; // ms

} // namespace

PipeEndpoint::PipeEndpoint(const QString& path)
    : name(path)
{
}

PipeEndpoint::~PipeEndpoint()
{
    closePipe();
}

bool PipeEndpoint::createPipe()
{
    closePipe();
    handle =
        CreateNamedPipeW(name.toStdWString().c_str(), PIPE_ACCESS_DUPLEX,
                         PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT,
                         PIPE_UNLIMITED_INSTANCES, bufferSize, bufferSize, defaultTimeout, nullptr);
    if (handle != INVALID_HANDLE_VALUE) {
        qDebug() << "Pipe created successfully.";
        return true;
    }
    const DWORD error = GetLastError();
    qDebug() << "Error: Could not create pipe. Error code:" << error;
    return false;
}

bool PipeEndpoint::connectClient()
{
    if (ConnectNamedPipe(handle, nullptr) != 0)
        return true;
    const DWORD error = GetLastError();
    if (error == ERROR_PIPE_CONNECTED)
        return true;
    qDebug() << "Error connecting to pipe. Error code:" << error;
    return false;
}

bool PipeEndpoint::readMessage(char* buffer)
{
    if (!connectClient())
        return false;
    std::array<char, messageSize> message{};
    DWORD read = 0;
    const bool succeeded = ReadFile(handle, message.data(), messageSize, &read, nullptr) != 0;
    const DWORD error = GetLastError();
    if (succeeded)
        std::copy_n(message.begin(), read, buffer);
    else
        qDebug() << "Error reading from pipe. Error code:" << error;
    DisconnectNamedPipe(handle);
    return succeeded;
}

bool PipeEndpoint::writeMessage(const QByteArray& message)
{
    if (!connectClient())
        return false;
    DWORD written = 0;
    const bool succeeded = WriteFile(handle, message.constData(),
                                     static_cast<DWORD>(message.size()), &written, nullptr) != 0;
    const DWORD error = GetLastError();
    if (succeeded)
        qDebug() << "Data written to pipe:" << message;
    else
        qDebug() << "Error writing to pipe. Error code:" << error;
    DisconnectNamedPipe(handle);
    return succeeded;
}

void PipeEndpoint::dropClient()
{
    DisconnectNamedPipe(handle);
}

void PipeEndpoint::closePipe()
{
    if (handle == INVALID_HANDLE_VALUE)
        return;
    DisconnectNamedPipe(handle);
    CloseHandle(handle);
    handle = INVALID_HANDLE_VALUE;
    qDebug() << "Pipe closed.";
}
