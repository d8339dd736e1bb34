#include "oracle/oracle.h"

#include "oracle/driver.h"
#include "oracle/files.h"
#include "oracle/ini_values.h"
#include "oracle/input.h"
#include "oracle/main_window.h"
#include "oracle/panel.h"
#include "oracle/pipe.h"
#include "oracle/settings.h"
#include "oracle/shell.h"
#include "oracle/surroundings.h"
#include "oracle/text.h"

namespace Oracle {

namespace {

void retryPanel(World& world, const Model& model)
{
    if (Files::retry(world, model.file()) && world.panel && world.panel->model == &model)
        model.restore(world);
}

void fire(World& world, Timer timer)
{
    switch (timer) {
    case Timer::usbErrors:
        return Settings::updateUsbErrors(world);
    case Timer::detection:
        return MainWindow::detectDevice(world);
    case Timer::productId:
        return MainWindow::checkProductId(world);
    case Timer::readOuts:
        return updateReadOuts(world);
    case Timer::otgOffThenInit:
        return Settings::otgOffThenInit(world);
    case Timer::initAfterOtg:
        return Settings::initAfterOtg(world);
    case Timer::otgOffThenOn:
        return Settings::otgOffThenOn(world);
    case Timer::otgOnAfterRateChange:
        return Settings::otgOnAfterRateChange(world);
    case Timer::saveSettings:
        if (Files::retry(world, Settings::fileName))
            Settings::takeUpFile(world);
        return;
    case Timer::savePanel:
        break;
    }
    const int index = static_cast<int>(timer) - static_cast<int>(Timer::savePanel);
    retryPanel(world, *models[static_cast<std::size_t>(index)]);
}

void wait(World& world, long long milliseconds)
{
    const long long until = world.time.now() + milliseconds;
    Timer timer = Timer::usbErrors;
    while (world.time.takeDue(until, timer))
        fire(world, timer);
    world.time.reach(until);
}

} // namespace

void step(World& world, const Action& action)
{
    world.events.clear();
    world.threadLines.clear();
    if (action.verb == "wait")
        wait(world, action.number(0));
    else if (action.verb == "jump")
        world.time.pass(static_cast<int>(action.number(0)));
    else if (!Input::apply(world, action) && !Shell::apply(world, action))
        Surroundings::apply(world, action);
}

} // namespace Oracle
