#include "support/recorded_platform.h"

#include "platform/win32.h"

#include <QMutex>

#include <algorithm>
#include <stdexcept>
#include <unistd.h>

namespace {

QMutex mutex; ///< Of everything here.
RecordedPlatform::Script script;
RecordedPlatform::Answer answer;
QByteArray input;
QStringList calls;
std::uintptr_t lastHandle = 0;
thread_local DWORD lastError = ERROR_SUCCESS;

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

HANDLE newHandle(DWORD error)
{
    lastError = error;
    return error == ERROR_SUCCESS ? std::bit_cast<HANDLE>(lastHandle += 4) : INVALID_HANDLE_VALUE;
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
    return newHandle(script.openErrors.isEmpty() ? DWORD{ERROR_SUCCESS}
                                                 : script.openErrors.takeFirst());
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
    return newHandle(script.createError);
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
    return result(pipe == INVALID_HANDLE_VALUE ? ERROR_INVALID_HANDLE : ERROR_PIPE_CONNECTED);
}

BOOL DisconnectNamedPipe(HANDLE pipe)
{
    RecordedPlatform::note("DisconnectNamedPipe " + number(pipe));
    return result(ERROR_SUCCESS);
}

BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD length, LPDWORD read, LPOVERLAPPED overlapped)
{
    const QMutexLocker lock(&mutex);
    calls.append("ReadFile " + number(file) + ' ' + QString::number(length) + ' ' +
                 text(overlapped));
    *read = std::min(static_cast<DWORD>(script.message.size()), length);
    std::copy_n(script.message.cbegin(), *read, static_cast<char*>(buffer));
    return result(script.readError);
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
    return newHandle(ERROR_SUCCESS);
}

BOOL CancelSynchronousIo(HANDLE thread)
{
    RecordedPlatform::note("CancelSynchronousIo " + number(thread));
    return result(ERROR_NOT_FOUND);
}

BOOL CancelIoEx(HANDLE file, LPOVERLAPPED overlapped)
{
    RecordedPlatform::note("CancelIoEx " + number(file) + ' ' + text(overlapped));
    return result(ERROR_NOT_FOUND);
}
