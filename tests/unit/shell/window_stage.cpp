#include "window_stage.h"

#include "controls/window_placement.h"
#include "support/patience.h"

#include <QAbstractEventDispatcher>
#include <QTest>
#include <QTimerEvent>

namespace {

/// Keeps the turns of all timers from their objects but for those with which widgets and the
/// platform's windows paint.
class StandingClock : public QObject
{
public:
    StandingClock() { qApp->installEventFilter(this); }

protected:
    bool eventFilter(QObject* receiver, QEvent* event) override
    {
        return event->type() == QEvent::Timer && !receiver->isWidgetType() &&
               !receiver->isWindowType();
    }
};

QObject& placementOf(const QWidget& window)
{
    for (QObject* child : window.children()) {
        if (dynamic_cast<WindowPlacement*>(child) != nullptr)
            return *child;
    }
    qFatal("%s places itself nowhere", window.metaObject()->className());
}

QList<QAbstractEventDispatcher::TimerInfo> timersOf(QObject& object)
{
    return QAbstractEventDispatcher::instance()->registeredTimers(&object);
}

} // namespace

WindowStage::WindowStage()
    : clock(std::make_unique<StandingClock>())
{
}

WindowStage::~WindowStage() = default;

void WindowStage::begin()
{
    window.reset();
    settings.reset();
    log.reset();
    log.emplace();
    simulated.control().reset();
    settings = std::make_unique<Settings>();
    window = std::make_unique<MainWindow>();
    window->settings = settings.get();
}

bool WindowStage::showPanel(std::uint32_t productId)
{
    simulated.control().plug(productId);
    window->detectDevice();
    const bool shown = show(*window);
    settle();
    return shown;
}

bool WindowStage::show(QWidget& shown)
{
    shown.show();
    return QTest::qWaitForWindowExposed(&shown, patience);
}

void WindowStage::settle() const
{
    for (const QWidget* settling :
         {static_cast<QWidget*>(window.get()), static_cast<QWidget*>(settings.get())}) {
        QCoreApplication::processEvents();
        QObject& placement = placementOf(*settling);
        for (const auto& timer : timersOf(placement)) {
            QTimerEvent turn(timer.timerId);
            placement.event(&turn);
        }
    }
    QCoreApplication::processEvents();
}

QList<int> WindowStage::settlingTimes(const QWidget& settling)
{
    QList<int> times;
    for (const auto& timer : timersOf(placementOf(settling)))
        times.append(timer.interval);
    return times;
}
