#include "window_stage.h"

#include <QTest>
#include <QTimer>

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
    stopClocks(*window);
    window->show();
    return QTest::qWaitForWindowExposed(window.get());
}

void WindowStage::settle()
{
    constexpr int longerThanItTakes = 250; // Milliseconds; a window settles 100 after a change.
    QTest::qWait(longerThanItTakes);
}

void WindowStage::stopClocks(QWidget& widget)
{
    for (QTimer* timer : widget.findChildren<QTimer*>())
        timer->stop();
}
