#include "support/recorded_platform.h"

#include "platform/win32.h"

#include <QMutex>

#include <algorithm>
#include <stdexcept>
#include <sys/eventfd.h>
#include <unistd.h>

using RecordedPlatform::Cancelling;

namespace {

QMutex mutex; ///< Of everything here but the waiting itself.
RecordedPlatform::Script script;
RecordedPlatform::Answer answer;
QByteArray input;
QStringList calls;
std::uintptr_t lastHandle = 0;
bool pipeExists = false;
thread_local DWORD lastError = ERROR_SUCCESS;

/// Where a thread waits for a client or a message.
class Wait
{
public:
    /// Waits until end() is called and returns its reason.
    DWORD enter()
    {
        setWaiting();
        std::uint64_t reason = 0;
        static_cast<void>(::read(event, &reason, sizeof reason) == sizeof reason);
        return static_cast<DWORD>(reason);
    }

    /// False when nobody waits. The mutex is held.
    bool end(std::uint64_t reason)
    {
        return std::exchange(waiting, false) &&
               ::write(event, &reason, sizeof reason) == sizeof reason;
    }

private:
    void setWaiting()
    {
        const QMutexLocker lock(&mutex);
        waiting = true;
    }

    int event = ::eventfd(0, EFD_CLOEXEC);
    bool waiting = false;
};

Wait pipeWait;

QString text(LPCVOID pointer)
{
    return pointer == nullptr ? QStringLiteral("null") : QStringLiteral("set");
}

QString hex(DWORD flags)
{
    return QString::number(flags, 16).toUpper();
}

QString number(HANDLE handle)
{
    return QString::number(std::bit_cast<std::uintptr_t>(handle));
}

BOOL result(DWORD error)
{
    lastError = error;
    return error == ERROR_SUCCESS ? TRUE : FALSE;
}

HANDLE handleOr(HANDLE failed, DWORD error)
{
    lastError = error;
    return error == ERROR_SUCCESS ? std::bit_cast<HANDLE>(lastHandle += 4) : failed;
}

BOOL cancel(Cancelling way)
{
    if (way == Cancelling::refuses)
        return result(ERROR_ACCESS_DENIED);
    if (way == Cancelling::pretends || pipeWait.end(ERROR_OPERATION_ABORTED))
        return result(ERROR_SUCCESS);
    return result(ERROR_NOT_FOUND);
}

} // namespace

void RecordedPlatform::reset(const Script& wanted)
{
    const QMutexLocker lock(&mutex);
    script = wanted;
    answer = {};
    input.clear();
    calls.clear();
    lastHandle = 0;
    pipeExists = false;
}

void RecordedPlatform::answerRequests(const Answer& wanted)
{
    const QMutexLocker lock(&mutex);
    answer = wanted;
}

QByteArray RecordedPlatform::lastInput()
{
    const QMutexLocker lock(&mutex);
    return input;
}

void RecordedPlatform::note(const QString& line)
{
    const QMutexLocker lock(&mutex);
    calls.append(QString(line.constData(), line.size()));
}

QStringList RecordedPlatform::takeCalls()
{
    const QMutexLocker lock(&mutex);
    return std::exchange(calls, {});
}

HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                   DWORD disposition, DWORD flags, HANDLE templateFile)
{
    const QMutexLocker lock(&mutex);
    calls.append(QStringList{"CreateFileW", QString::fromWCharArray(path), hex(access), hex(share),
                             text(security), hex(disposition), hex(flags), text(templateFile)}
                     .join(u' '));
    DWORD error =
        script.openErrors.isEmpty() ? DWORD{ERROR_SUCCESS} : script.openErrors.takeFirst();
    if (pipeExists && (script.silentClient || !pipeWait.end(ERROR_PIPE_CONNECTED)))
        error = ERROR_PIPE_BUSY;
    return handleOr(INVALID_HANDLE_VALUE, error);
}

HANDLE CreateNamedPipeW(LPCWSTR name, DWORD openMode, DWORD pipeMode, DWORD mostInstances,
                        DWORD outputSize, DWORD inputSize, DWORD timeout,
                        LPSECURITY_ATTRIBUTES security)
{
    const QMutexLocker lock(&mutex);
    QStringList words{"CreateNamedPipeW", QString::fromWCharArray(name)};
    for (const DWORD value : {openMode, pipeMode, mostInstances, outputSize, inputSize, timeout})
        words.append(QString::number(value));
    words.append(text(security));
    calls.append(words.join(u' '));
    pipeExists = script.createError == ERROR_SUCCESS;
    return handleOr(INVALID_HANDLE_VALUE, script.createError);
}

BOOL CloseHandle(HANDLE handle)
{
    RecordedPlatform::note("CloseHandle " + number(handle));
    return result(ERROR_SUCCESS);
}

DWORD GetLastError()
{
    return lastError;
}

BOOL DeviceIoControl(HANDLE device, DWORD code, LPVOID request, DWORD requestSize, LPVOID output,
                     DWORD outputSize, LPDWORD returned, LPOVERLAPPED overlapped)
{
    using Exception = RecordedPlatform::Answer::Exception;
    const QMutexLocker lock(&mutex);
    calls.append(QStringList{"DeviceIoControl", number(device), hex(code), text(request),
                             QString::number(requestSize), text(output),
                             QString::number(outputSize), text(returned), text(overlapped)}
                     .join(u' '));
    input = QByteArray(static_cast<const char*>(request), static_cast<qsizetype>(requestSize));
    if (answer.exception == Exception::standard)
        throw std::runtime_error("no paper");
    if (answer.exception == Exception::unknown)
        throw 42;
    if (answer.error == ERROR_SUCCESS)
        std::copy_n(answer.reply.cbegin(), std::min<qsizetype>(answer.reply.size(), outputSize),
                    static_cast<char*>(output));
    return result(answer.error);
}

BOOL ConnectNamedPipe(HANDLE pipe, LPOVERLAPPED overlapped)
{
    RecordedPlatform::note("ConnectNamedPipe " + number(pipe) + ' ' + text(overlapped));
    if (pipe == INVALID_HANDLE_VALUE)
        return result(ERROR_INVALID_HANDLE);
    return result(script.silentClient ? DWORD{ERROR_PIPE_CONNECTED} : pipeWait.enter());
}

BOOL DisconnectNamedPipe(HANDLE pipe)
{
    RecordedPlatform::note("DisconnectNamedPipe " + number(pipe));
    return result(ERROR_SUCCESS);
}

BOOL ReadFile(HANDLE file, LPVOID, DWORD length, LPDWORD, LPOVERLAPPED overlapped)
{
    RecordedPlatform::note("ReadFile " + number(file) + ' ' + QString::number(length) + ' ' +
                           text(overlapped));
    // Who connects without being the silent client parts at once.
    return result(script.silentClient ? pipeWait.enter() : DWORD{ERROR_BROKEN_PIPE});
}

BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD length, LPDWORD, LPOVERLAPPED overlapped)
{
    const QByteArray bytes(static_cast<const char*>(buffer), static_cast<qsizetype>(length));
    RecordedPlatform::note("WriteFile " + number(file) + ' ' + bytes.toHex() + ' ' +
                           text(overlapped));
    return result(script.writeError);
}

DWORD GetCurrentThreadId()
{
    return static_cast<DWORD>(::gettid());
}

HANDLE OpenThread(DWORD access, BOOL inherit, DWORD threadId)
{
    const QMutexLocker lock(&mutex);
    calls.append("OpenThread " + hex(access) + ' ' + QString::number(inherit) + ' ' +
                 (threadId == GetCurrentThreadId() ? "self" : "other"));
    return handleOr(nullptr,
                    script.threadsOpen ? DWORD{ERROR_SUCCESS} : DWORD{ERROR_ACCESS_DENIED});
}

BOOL CancelSynchronousIo(HANDLE thread)
{
    const QMutexLocker lock(&mutex);
    calls.append("CancelSynchronousIo " + number(thread));
    return thread == nullptr ? result(ERROR_INVALID_HANDLE) : cancel(script.byThread);
}

BOOL CancelIoEx(HANDLE file, LPOVERLAPPED overlapped)
{
    const QMutexLocker lock(&mutex);
    calls.append("CancelIoEx " + number(file) + ' ' + text(overlapped));
    return cancel(script.byPipe);
}
