#include "oracle/main_window.h"

#include "oracle/codes.h"
#include "oracle/driver.h"
#include "oracle/panel.h"
#include "oracle/settings.h"
#include "oracle/text.h"

#include <algorithm>
#include <iterator>

namespace Oracle::MainWindow {

namespace {

void clearLayout(World& world)
{
    world.window.labels.clear();
    world.panel.reset();
    world.time.stop(Timer::readOuts);
}

/// Attempts go on all day, so the oldest goes when there are too many. Without a handle there is
/// nothing to keep.
void keep(Window& window, const Device& device)
{
    constexpr std::size_t most = 256;
    if (!device.isOpen())
        return;
    if (window.kept.size() == most)
        window.kept.pop_front();
    window.kept.push_back(device);
}

void watch(World& world)
{
    if (world.window.meterDevice)
        keep(world.window, *world.window.meterDevice);
    world.window.meterDevice = Device();
    Driver::open(world, *world.window.meterDevice);
    world.time.start(Timer::productId, 400);
}

const Model* modelOf(std::uint32_t productId)
{
    const auto* const found = std::ranges::find(models, productId, &Model::productId);
    return found == std::end(models) ? nullptr : *found;
}

std::string titleOf(const Model& model, const std::array<std::uint8_t, 10>& version)
{
    std::string name = model.name;
    for (char& letter : name) {
        if (letter >= 'a' && letter <= 'z')
            letter = static_cast<char>(letter - 'a' + 'A');
    }
    std::string title = "Quorvel " + name + " - FW: ";
    for (const std::uint8_t byte : version)
        title += Text::latin1(byte);
    return title;
}

void showModel(World& world, const Model& model, const Device& local)
{
    Settings::refreshFromDevice(world);
    buildPanel(world, model);
    world.debug(std::string("Adding ") + model.name + " widget to layout.");
    std::array<std::uint8_t, 10> version{};
    if (!Driver::readFirmware(world, local, version)) {
        world.debug("Failed to get firmware version.");
        world.window.labels = {"获取固件版本失败，请检查连接！"};
        keep(world.window, local);
        return;
    }
    world.window.title = titleOf(model, version);
    world.debug(
        Text::line("Device found with PID:", static_cast<long long>(world.window.productId)));
    world.time.stop(Timer::detection);
    watch(world);
}

} // namespace

void create(World& world)
{
    world.window = Window();
    world.window.labels = {"声卡未连接！"};
    world.panel.reset();
    world.time.start(Timer::detection, 1000);
}

void detectDevice(World& world)
{
    Window& window = world.window;
    Device local;
    Driver::open(world, local);
    Driver::read(world, local, Code::readProductId, window.productId);
    const auto number = static_cast<long long>(window.productId);
    world.debug(Text::line("Device PID:", number));
    if (window.productId == 0)
        return;
    clearLayout(world);
    const Model* const model = modelOf(window.productId);
    if (model == nullptr) {
        world.debug(Text::line("Unknown device PID:", number));
        window.labels = {"未知设备，请检查连接！"};
        keep(window, local);
        return;
    }
    if (!Settings::connectDevice(world)) {
        world.debug("Failed to connect to driver in settings window.");
        watch(world);
        keep(window, local);
        return;
    }
    showModel(world, *model, local);
}

void checkProductId(World& world)
{
    Window& window = world.window;
    if (window.meterDevice &&
        Driver::read(world, *window.meterDevice, Code::readProductId, window.productId)) {
        window.errorCount = 0;
        return;
    }
    ++window.errorCount;
    world.debug(Text::line("Error reading device PID from driver, error count:",
                           static_cast<long long>(window.errorCount)));
    if (window.errorCount <= 2)
        return;
    world.time.stop(Timer::productId);
    window.meterDevice.reset();
    world.debug("Meter driver handle deleted.");
    window.productId = 0;
    world.dialog.served = false;
    clearLayout(world);
    world.debug("Cleared all widgets from base layout.");
    world.time.start(Timer::detection, 1000);
    window.labels = {"声卡未连接！"};
}

} // namespace Oracle::MainWindow
