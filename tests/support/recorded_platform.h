#pragma once

#include <QByteArray>
#include <QList>
#include <QStringList>

#include <cstdint>

/// A platform that notes each call with its arguments and answers as it is told, for what no real
/// system refuses on request. A test program that links recorded_platform.cpp gets these calls in
/// place of the system's, and nobody waits in them: a client has always come to a pipe that was
/// created. Handles are 4, 8, 12 and so on, in the order in which they are opened.
namespace RecordedPlatform {

struct Script
{
    QList<std::uint32_t> openErrors; ///< of CreateFileW, a call each; 0 and those after succeed
    std::uint32_t createError = 0;   ///< of CreateNamedPipeW
    std::uint32_t writeError = 0;    ///< of WriteFile
    std::uint32_t readError = 0;     ///< of ReadFile
    QByteArray message = {};         ///< what ReadFile puts into the buffer, also when it fails
};

/// What DeviceIoControl does: throws, refuses with an error, or puts the reply into the output,
/// whose other bytes it leaves alone.
struct Answer
{
    enum class Exception { none, standard, unknown } exception = Exception::none;
    std::uint32_t error = 0;
    QByteArray reply = {};
};

/// Forgets all calls, handles and inputs; requests of the device are taken from now on.
void reset(const Script& script = {});

/// From now on requests of the device are answered so.
void answerRequests(const Answer& answer);

/// The input of the last request of the device.
QByteArray lastInput();

/// Puts a line of the test's own between the calls.
void note(const QString& line);

/// The calls since the last one, in order: the name and the arguments separated by blanks, flags
/// and control codes in hex, null pointers as "null".
QStringList takeCalls();

} // namespace RecordedPlatform
