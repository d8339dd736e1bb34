#include "asio/pipe_endpoint.h"

#include "platform/scoped_handle.h"

#include <QDebug>

#include <algorithm>
#include <array>

namespace {

constexpr DWORD bufferSize = 65536;   // bytes, each way
constexpr DWORD defaultTimeout = 300; // ms

/// The time in which a call waits in the system.
class Waiting
{
public:
    explicit Waiting(const PipeEndpoint::WaitWatch& told)
        : watch(told)
    {
        watch(true);
    }
    ~Waiting() { watch(false); }
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;

private:
    const PipeEndpoint::WaitWatch& watch;
};

} // namespace

PipeEndpoint::PipeEndpoint(const QString& path, WaitWatch watch)
    : name(path)
    , waitWatch(std::move(watch))
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

template <typename Call> DWORD PipeEndpoint::errorOf(Call call) const
{
    const Waiting waiting(waitWatch);
    // Asked here, because the watch may change it.
    return call() != 0 ? DWORD{ERROR_SUCCESS} : GetLastError();
}

bool PipeEndpoint::connectClient()
{
    const DWORD error = errorOf([this] { return ConnectNamedPipe(handle, nullptr); });
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
    const DWORD error =
        errorOf([&] { return ReadFile(handle, message.data(), messageSize, &read, nullptr); });
    if (error == ERROR_SUCCESS)
        std::copy_n(message.begin(), read, buffer);
    else
        qDebug() << "Error reading from pipe. Error code:" << error;
    DisconnectNamedPipe(handle);
    return error == ERROR_SUCCESS;
}

bool PipeEndpoint::writeMessage(const QByteArray& message)
{
    if (!connectClient())
        return false;
    DWORD written = 0;
    const auto size = static_cast<DWORD>(message.size());
    const DWORD error =
        errorOf([&] { return WriteFile(handle, message.constData(), size, &written, nullptr); });
    if (error == ERROR_SUCCESS)
        qDebug() << "Data written to pipe:" << message;
    else
        qDebug() << "Error writing to pipe. Error code:" << error;
    DisconnectNamedPipe(handle);
    return error == ERROR_SUCCESS;
}

void PipeEndpoint::dropClient()
{
    DisconnectNamedPipe(handle);
}

void PipeEndpoint::cancelWait()
{
    CancelIoEx(handle, nullptr);
}

void PipeEndpoint::knock()
{
    if (handle == INVALID_HANDLE_VALUE)
        return; // The pipe of that name is somebody else's.
    const ScopedHandle visit(CreateFileW(name.toStdWString().c_str(), GENERIC_READ | GENERIC_WRITE,
                                         0, nullptr, OPEN_EXISTING, 0, nullptr));
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
