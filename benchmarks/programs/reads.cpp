#include "driver/device_protocol.h"
#include "driver/driver_device.h"

#include <QCoreApplication>
#include <QTimer>

namespace {

constexpr int productIdInterval = 400; // ms
constexpr int meterInterval = 500;
constexpr int usbStatusInterval = 1000;

} // namespace

/// benchmark-reads: nothing but the three reads that the panel owes its interface, each by a
/// connection and a timer of its own.
int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    DriverDevice watch;
    DriverDevice panel;
    DriverDevice dialog;
    if (!watch.open() || !panel.open() || !dialog.open())
        return 1;

    std::uint32_t productId = 0;
    QTimer watchTimer;
    QObject::connect(&watchTimer, &QTimer::timeout, &application,
                     [&] { watch.getDevicePid(productId); });
    MeterBlock levels{};
    QTimer meterTimer;
    QObject::connect(&meterTimer, &QTimer::timeout, &application,
                     [&] { panel.readMeterData(levels); });
    UsbStatus status;
    QTimer statusTimer;
    QObject::connect(&statusTimer, &QTimer::timeout, &application,
                     [&] { dialog.readUsbStatus(status); });
    watchTimer.start(productIdInterval);
    meterTimer.start(meterInterval);
    statusTimer.start(usbStatusInterval);
    return QCoreApplication::exec();
}
