#include "driver/driver_device.h"
#include "shell/kept_connections.h"
#include "support/test_main.h"
#include "window_stage.h"

#include <QLabel>
#include <QLayout>
#include <QTest>

#include <vector>

namespace {

constexpr int mostKept = 256;
constexpr std::uint32_t unknownModel = 7;

} // namespace

/// What a day beside a device that cannot be shown leaves behind.
class KeptConnectionsTest : public QObject, private WindowStage
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void oldestIsReleasedFirst();
    void releasedWithTheirHolder();
    void dayBesideAnUnknownDevice();
    void dayBesideAnUnpluggedDevice();

private:
    void detect(int times);
    void arrive();
};

void KeptConnectionsTest::detect(int times)
{
    for (int attempt = 0; attempt < times; ++attempt) {
        window->detectDevice();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        log->clear();
        output.takeLines();
    }
}

/// A known device is plugged in, is found at once, and leaves again.
void KeptConnectionsTest::arrive()
{
    simulated.control().plug(SimulatorControl::ka1);
    window->detectDevice();
    QCOMPARE(log->take().constLast(), QString("Device found with PID: 1"));
    const QLayout* layout = window->centralWidget()->layout();
    QCOMPARE(layout->count(), 1);
    QCOMPARE(layout->itemAt(0)->widget()->metaObject()->className(), "ka1");
    QVERIFY(window->windowTitle().startsWith("Quorvel KA1"));
}

void KeptConnectionsTest::oldestIsReleasedFirst()
{
    simulated.control().plug(SimulatorControl::ka1);
    KeptConnections kept;
    std::vector<DriverDevice*> devices;
    for (int i = 0; i < mostKept + 1; ++i) {
        auto device = std::make_unique<DriverDevice>();
        QVERIFY(device->open());
        devices.push_back(device.get());
        if (i == mostKept)
            QCOMPARE(simulated.settledHandles(mostKept + 1), mostKept + 1);
        kept.keep(std::move(device));
    }
    QCOMPARE(simulated.settledHandles(mostKept), mostKept);
    for (std::size_t i = 1; i < devices.size(); ++i) {
        std::uint32_t pid = 0;
        QVERIFY(devices[i]->getDevicePid(pid));
    }
}

void KeptConnectionsTest::releasedWithTheirHolder()
{
    simulated.control().plug(unknownModel);
    detect(3);
    QCOMPARE(simulated.settledHandles(3), 3);
    window.reset();
    QCOMPARE(simulated.settledHandles(0), 0);
}

void KeptConnectionsTest::dayBesideAnUnknownDevice()
{
    simulated.control().plug(unknownModel);
    detect(mostKept + 20);
    QCOMPARE(simulated.settledHandles(mostKept), mostKept);
    QCOMPARE(window->findChildren<QLabel*>().size(), 1);
    simulated.control().unplug();
    arrive();
    // The dialog's, the panel's and the watching one come on top.
    QCOMPARE(simulated.settledHandles(mostKept + 3), mostKept + 3);
}

/// The product id of the last device stays, and each look finds none to open.
void KeptConnectionsTest::dayBesideAnUnpluggedDevice()
{
    simulated.control().plug(unknownModel);
    detect(3);
    simulated.control().unplug();
    detect(mostKept);
    QCOMPARE(simulated.settledHandles(3), 3);
}

QUORVEL_TEST_MAIN(KeptConnectionsTest)
#include "kept_connections_test.moc"
