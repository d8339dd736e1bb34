#include "asio/pipe_endpoint.h"

#include <QDebug>

#include <algorithm>
#include <array>

namespace {

constexpr DWORD bufferSize = 65536;   // bytes, each way
constexpr DWORD defaultTimeout = 300; // ms

/// ERROR_SUCCESS or why the call has failed.
DWORD errorOf(BOOL succeeded)
{
    return succeeded != FALSE ? DWORD{ERROR_SUCCESS} : GetLastError();
}

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
    pipe.reset(CreateNamedPipeW(name.toStdWString().c_str(), PIPE_ACCESS_DUPLEX,
                                PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT,
                                PIPE_UNLIMITED_INSTANCES, bufferSize, bufferSize, defaultTimeout,
                                nullptr));
    if (pipe.isValid()) {
        qDebug() << "Pipe created successfully.";
        return true;
    }
    const DWORD error = GetLastError();
    qDebug() << "Error: Could not create pipe. Error code:" << error;
    return false;
}

bool PipeEndpoint::connectClient()
{
    const DWORD error = errorOf(ConnectNamedPipe(pipe.get(), nullptr));
    if (error == ERROR_SUCCESS || error == ERROR_PIPE_CONNECTED)
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
    const DWORD error = errorOf(ReadFile(pipe.get(), message.data(), messageSize, &read, nullptr));
    if (error == ERROR_SUCCESS)
        std::copy_n(message.begin(), read, buffer);
    else
        qDebug() << "Error reading from pipe. Error code:" << error;
    DisconnectNamedPipe(pipe.get());
    return error == ERROR_SUCCESS;
}

bool PipeEndpoint::writeMessage(const QByteArray& message)
{
    if (!connectClient())
        return false;
    DWORD written = 0;
    const auto size = static_cast<DWORD>(message.size());
    const DWORD error =
        errorOf(WriteFile(pipe.get(), message.constData(), size, &written, nullptr));
    if (error == ERROR_SUCCESS)
        qDebug() << "Data written to pipe:" << message;
    else
        qDebug() << "Error writing to pipe. Error code:" << error;
    DisconnectNamedPipe(pipe.get());
    return error == ERROR_SUCCESS;
}

void PipeEndpoint::dropClient()
{
    DisconnectNamedPipe(pipe.get());
}

void PipeEndpoint::cancelWait()
{
    CancelIoEx(pipe.get(), nullptr);
}

void PipeEndpoint::closePipe()
{
    if (!pipe.isValid())
        return;
    DisconnectNamedPipe(pipe.get());
    pipe.reset(INVALID_HANDLE_VALUE);
    qDebug() << "Pipe closed.";
}
