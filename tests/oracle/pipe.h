#pragma once

#include "oracle/world.h"

#include <string_view>

/// The two pipes to the ASIO driver.
namespace Oracle::Pipe {

/// A client of the inbound pipe that writes this message and closes.
void receive(World& world, std::string_view message);
/// A client that closes without a message.
void receiveNothing(World& world);
/// "OK": hides the dialog and tells the ASIO driver.
void sendReset(World& world);

} // namespace Oracle::Pipe
