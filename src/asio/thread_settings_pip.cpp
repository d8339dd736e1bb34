#include "asio/thread_settings_pip.h"

#include "asio/pipe_endpoint.h"

#include <QDeadlineTimer>
#include <QDebug>
#include <QtEndian>

#include <array>

namespace {

constexpr unsigned long clientPause = 100;  // ms, between two clients
constexpr unsigned long retryInterval = 10; // ms, between two attempts to end a wait
constexpr int endTimeout = 2000;            // ms
constexpr std::size_t fieldCount = 5;

} // namespace

ThreadSettingsPip::ThreadSettingsPip(QObject* parent)
    : QThread(parent)
    , pipe(std::make_unique<PipeEndpoint>(QStringLiteral(R"(\\.\pipe\QuorvelASIOToPannel)")))
{
    if (pipe->createPipe())
        qDebug() << "ThreadSettingsPip initialized.";
    else
        qDebug() << "Failed to create named pipe in ThreadSettingsPip.";
}

ThreadSettingsPip::~ThreadSettingsPip()
{
    end();
}

void ThreadSettingsPip::run()
{
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

bool ThreadSettingsPip::end()
{
    stopping = true;
    const QDeadlineTimer deadline(endTimeout);
    // Repeated, because a cancellation finds nothing when the thread is just about to wait.
    do {
        pipe->cancelWait();
        if (wait(retryInterval))
            return true;
    } while (!deadline.hasExpired());
    return false;
}
