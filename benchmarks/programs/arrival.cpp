#include "panels/panel.h"
#include "settings/settings.h"
#include "shell/main_window.h"
#include "simulator/client/simulator_control.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QThread>

#include <cstdio>
#include <string>

namespace {

constexpr int stepsAfterArrival = 500; // ms, for the phone input chip
constexpr int lostAfter = 3;           // failed reads

/// Notices the first painting of a panel.
class PanelWatch : public QObject
{
public:
    bool painted = false;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && dynamic_cast<Panel*>(watched) != nullptr)
            painted = true;
        return QObject::eventFilter(watched, event);
    }
};

void goOnFor(int milliseconds)
{
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < milliseconds) {
        QCoreApplication::processEvents();
        QThread::msleep(1);
    }
}

} // namespace

/// benchmark-arrival COUNT: has a KA2 arrive COUNT times at the shown window and prints, a line
/// each on the standard error stream, the milliseconds from the detection to the painted panel.
int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    SimulatorControl simulator;
    if (argc != 2 || !simulator.open())
        qFatal("usage: benchmark-arrival COUNT, with a simulator running");
    simulator.unplug();
    Settings settings;
    MainWindow window;
    window.settings = &settings;
    window.show();
    PanelWatch watch;
    application.installEventFilter(&watch);
    goOnFor(stepsAfterArrival);
    for (int count = std::stoi(argv[1]); count > 0; --count) {
        watch.painted = false;
        simulator.plug(SimulatorControl::ka2);
        QElapsedTimer clock;
        clock.start();
        window.detectDevice();
        while (!watch.painted)
            QCoreApplication::processEvents();
        std::fprintf(stderr, "arrival %.2f\n", double(clock.nsecsElapsed()) / 1e6);
        goOnFor(stepsAfterArrival);
        simulator.unplug();
        for (int read = 0; read < lostAfter; ++read)
            window.checkDevicePid();
        goOnFor(20);
    }
    return 0;
}
