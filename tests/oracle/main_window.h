#pragma once

#include "oracle/world.h"

/// The window that finds the interface and watches it.
namespace Oracle::MainWindow {

void create(World& world);
void detectDevice(World& world);
void checkProductId(World& world);

} // namespace Oracle::MainWindow
