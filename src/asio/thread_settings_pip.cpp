#include "asio/thread_settings_pip.h"

#include "asio/pipe_endpoint.h"

#include <QDeadlineTimer>
#include <QDebug>
#include <QtEndian>

#include <array>
#include <cstdlib>

namespace {

constexpr unsigned long clientPause = 100; // ms, between two clients
constexpr unsigned long nudge = 10;        // ms, between two attempts to end a wait
constexpr int gentleTime = 200;            // ms, in which only cancelling is tried
constexpr int longestTry = 350;            // ms, then the thread is terminated
constexpr unsigned long lastWait = 100;    // ms, for a terminated thread
constexpr std::size_t fieldCount = 5;

} // namespace

ThreadSettingsPip::ThreadSettingsPip(QObject* parent)
    : QThread(parent)
    , pipe(std::make_unique<PipeEndpoint>(QStringLiteral(R"(\\.\pipe\QuorvelASIOToPannel)"),
                                          [](bool waits) { setTerminationEnabled(waits); }))
{
    if (pipe->createPipe())
        qDebug() << "ThreadSettingsPip initialized.";
    else
        qDebug() << "Failed to create named pipe in ThreadSettingsPip.";
}

ThreadSettingsPip::~ThreadSettingsPip()
{
    // Without its object the thread would take the process down, and whoever waits for it waits
    // for ever. The process is on its way out and all settings are saved, so it ends here.
    if (!stop())
        std::_Exit(EXIT_SUCCESS);
    // The flag passes on what the thread has written, also to tools that do not see into its end.
    if (workerIsKnown)
        worker.reset(nullptr);
}

void ThreadSettingsPip::run()
{
    setTerminationEnabled(false);
    worker.reset(OpenThread(THREAD_TERMINATE, FALSE, GetCurrentThreadId()));
    workerIsKnown = true;
    while (isRunning() && !stopping) {
        qDebug() << "ThreadSettingsPip is running waiting Asio Info...";
        serveClient();
        if (!stopping)
            msleep(clientPause);
    }
}

void ThreadSettingsPip::serveClient()
{
    std::array<char, PipeEndpoint::messageSize> buffer{};
    if (!pipe->readMessage(buffer.data())) {
        if (stopping)
            return;
        qDebug() << "No data received from pipe.";
        pipe->dropClient();
        return;
    }
    std::array<quint32, fieldCount> fields{};
    qFromLittleEndian<quint32>(buffer.data(), fieldCount, fields.data());
    qDebug() << "Received data from pipe:" << fields[0] << fields[1] << fields[2] << fields[3]
             << fields[4];
    if (fields[4] != 0) {
        qDebug() << "Open Window Signal from ASIO.";
        emit progressUpdated(1);
    }
}

/// False when the thread could not be ended.
bool ThreadSettingsPip::stop()
{
    stopping = true;
    const QDeadlineTimer gentle(gentleTime);
    const QDeadlineTimer deadline(longestTry);
    // Repeated, because a cancellation finds nothing when the thread is just about to wait.
    while (!wait(nudge)) {
        if (deadline.hasExpired()) {
            terminate();
            return wait(lastWait);
        }
        if (workerIsKnown)
            CancelSynchronousIo(worker.get());
        pipe->cancelWait();
        if (gentle.hasExpired())
            pipe->knock();
    }
    return true;
}
