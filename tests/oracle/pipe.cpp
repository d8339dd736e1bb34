#include "oracle/pipe.h"

#include "oracle/input.h"

namespace Oracle::Pipe {

namespace {

constexpr std::size_t largestMessage = 1024;

std::uint32_t field(std::string_view message, std::size_t index)
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4 && 4 * index + i < message.size(); ++i)
        value |= std::uint32_t{static_cast<std::uint8_t>(message[4 * index + i])} << (8 * i);
    return value;
}

void waitAgain(World& world)
{
    world.threadLines.emplace_back("ThreadSettingsPip is running waiting Asio Info...");
}

void readFails(World& world, const char* error)
{
    world.threadLines.push_back(std::string("Error reading from pipe. Error code: ") + error);
    world.threadLines.emplace_back("No data received from pipe.");
    waitAgain(world);
}

void showDialog(World& world)
{
    world.dialog.visible = true;
    world.dialog.onTop = true;
    world.dialog.minimised = false;
    world.debug("Received signal from pipe thread to show settings window.");
    Input::leaveEditor(world);
}

} // namespace

void receive(World& world, std::string_view message)
{
    if (message.size() > largestMessage) {
        readFails(world, "234");
        return;
    }
    std::string line = "Received data from pipe:";
    for (std::size_t i = 0; i < 5; ++i)
        line += ' ' + std::to_string(field(message, i));
    world.threadLines.push_back(line);
    const bool opens = field(message, 4) != 0;
    if (opens)
        world.threadLines.emplace_back("Open Window Signal from ASIO.");
    waitAgain(world);
    if (opens)
        showDialog(world);
}

void receiveNothing(World& world)
{
    readFails(world, "109");
}

void sendReset(World& world)
{
    world.dialog.visible = false;
    if (world.resetPipe == ResetPipe::absent || world.resetPipe == ResetPipe::busy) {
        const char* const error = world.resetPipe == ResetPipe::absent ? "2" : "231";
        world.debug(std::string("Error: Could not open pipe. Error code: ") + error);
        return;
    }
    world.debug("Pipe opened successfully.");
    world.events.emplace_back("reset pipe: 49");
    if (world.resetPipe == ResetPipe::serves)
        world.debug("ASIO reset signal sent successfully.");
    else
        world.debug("Error: Failed to send ASIO reset signal. Error code: 232");
    world.debug("设置通知ASIO逻辑");
}

} // namespace Oracle::Pipe
