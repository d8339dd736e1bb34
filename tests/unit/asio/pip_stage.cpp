#include "pip_stage.h"

#include <QCoreApplication>
#include <QTest>

namespace {

constexpr int patience = 10000; // ms

} // namespace

const QString PipStage::running =
    QStringLiteral("ThreadSettingsPip is running waiting Asio Info...");
const QString PipStage::nothing = QStringLiteral("No data received from pipe.");
const QString PipStage::parted = QStringLiteral("Pipe closed.");

PipStage::PipStage()
{
    debugLog.emplace();
}

PipStage::~PipStage()
{
    thread.reset();
}

void PipStage::create()
{
    thread = std::make_unique<ThreadSettingsPip>(nullptr);
    QObject::connect(thread.get(), &ThreadSettingsPip::progressUpdated, &receiver,
                     [this](int value) { values.append(value); });
}

void PipStage::start()
{
    create();
    log().clear();
    thread->start(QThread::InheritPriority);
    waitForLines(1);
}

QStringList PipStage::waitFor(const std::function<bool(const QStringList&)>& enough)
{
    if (!QTest::qWaitFor([&] { return enough(log().lines()); }, patience))
        qWarning() << "gave up waiting";
    return log().take();
}

QStringList PipStage::waitForLines(qsizetype count)
{
    return waitFor([=](const QStringList& lines) { return lines.size() >= count; });
}

QStringList PipStage::waitForPasses(qsizetype count)
{
    return waitFor([=](const QStringList& lines) { return lines.count(running) >= count; });
}

bool PipStage::serve(const QByteArray& message)
{
    PipePeer::Client client(PipePeer::settingsPipe);
    return client.connect() == ERROR_SUCCESS && client.write(message) == ERROR_SUCCESS &&
           client.waitForParting() == ERROR_PIPE_NOT_CONNECTED;
}

QList<int> PipStage::takeSignals()
{
    QCoreApplication::sendPostedEvents();
    return std::exchange(values, {});
}
