#include "pipe_peer.h"
#include "support/patience.h"

#include <QElapsedTimer>

namespace {

DWORD resultOf(BOOL succeeded)
{
    return succeeded == FALSE ? GetLastError() : DWORD{ERROR_SUCCESS};
}

PipePeer::Reading readFrom(HANDLE pipe)
{
    QByteArray buffer(2000000, '\xEE');
    DWORD count = 0;
    const DWORD error =
        resultOf(ReadFile(pipe, buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr));
    return {error, buffer.left(static_cast<qsizetype>(count))};
}

} // namespace

namespace PipePeer {

DWORD Client::tryConnect()
{
    handle.reset(CreateFileW(pipe.toStdWString().c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                             OPEN_EXISTING, 0, nullptr));
    return handle.isValid() ? DWORD{ERROR_SUCCESS} : GetLastError();
}

DWORD Client::connect()
{
    QElapsedTimer timer;
    timer.start();
    DWORD error = tryConnect();
    while ((error == ERROR_PIPE_BUSY || error == ERROR_FILE_NOT_FOUND) &&
           !timer.hasExpired(patience)) {
        Sleep(1);
        error = tryConnect();
    }
    return error;
}

DWORD Client::write(const QByteArray& message)
{
    DWORD written = 0;
    return resultOf(WriteFile(handle.get(), message.constData(), static_cast<DWORD>(message.size()),
                              &written, nullptr));
}

Reading Client::read()
{
    return readFrom(handle.get());
}

DWORD Client::waitForParting()
{
    Reading reading = read();
    while (reading.error == ERROR_SUCCESS)
        reading = read();
    return reading.error;
}

void Client::close()
{
    handle.reset(nullptr);
}

Server::Server(const QString& path, DWORD bufferSize)
    : handle(CreateNamedPipeW(path.toStdWString().c_str(), PIPE_ACCESS_DUPLEX,
                              PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT, 1, bufferSize,
                              bufferSize, 0, nullptr))
{
}

Reading Server::read()
{
    return readFrom(handle.get());
}

DWORD Server::disconnect()
{
    return resultOf(DisconnectNamedPipe(handle.get()));
}

} // namespace PipePeer
