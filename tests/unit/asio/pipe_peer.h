#pragma once

#include "platform/scoped_handle.h"

#include <QByteArray>
#include <QString>

/// The program at the other side of the panel's pipes. Calls return 0 or the Windows error number.
namespace PipePeer {

inline const QString settingsPipe = QStringLiteral(R"(\\.\pipe\QuorvelASIOToPannel)");
inline const QString resetPipe = QStringLiteral(R"(\\.\pipe\QuorvelPannelToASIO)");

struct Reading
{
    DWORD error = 0;
    QByteArray data;
};

/// The end of a client that is not connected at first.
class Client
{
public:
    explicit Client(const QString& path)
        : pipe(path)
    {
    }

    /// One attempt.
    DWORD tryConnect();
    /// Tries for up to 45 seconds while the pipe is busy or absent.
    DWORD connect();
    DWORD write(const QByteArray& message);
    Reading read();
    /// Waits for the server to part, and returns the error that tells it.
    DWORD waitForParting();
    void close();

private:
    QString pipe;
    ScopedHandle handle;
};

/// The end of a server with the only instance of its pipe.
class Server
{
public:
    /// Without a buffer (size 0) a client waits until its message is read.
    explicit Server(const QString& path, DWORD bufferSize = 4096);

    Reading read();
    DWORD disconnect();

private:
    ScopedHandle handle;
};

} // namespace PipePeer
