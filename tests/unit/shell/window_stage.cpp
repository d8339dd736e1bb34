#include "window_stage.h"

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
