#pragma once

#include "oracle/world.h"

/// The settings dialog and the sequences that its choices run.
namespace Oracle::Settings {

/// The dialog as a start of the program makes it.
void create(World& world);
bool connectDevice(World& world);
void refreshFromDevice(World& world);
/// The file could not be read when the device came, and now it can.
void takeUpFile(World& world);
/// Shows this item of the combo, if it has it, and applies it if it is another.
void choose(World& world, Choice choice, const std::string& item);
void updateUsbErrors(World& world);
/// True when the file means what the dialog shows.
bool isSaved(const World& world);

/// The timed steps.
void otgOffThenInit(World& world);
void initAfterOtg(World& world);
void otgOffThenOn(World& world);
void otgOnAfterRateChange(World& world);

constexpr const char* fileName = "setting.ini";

} // namespace Oracle::Settings
