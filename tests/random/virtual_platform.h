#pragma once

#include "oracle/interface.h"

#include <set>
#include <string>

/// The operating system's side of the program, inside the test: the interface's driver, the two
/// pipes, waits and the shell. A program that links virtual_platform.cpp gets these calls in place
/// of the system's; all of them are noted in the record.
namespace VirtualPlatform {

enum class ResetPipe { absent, busy, serves, refuses };

Oracle::Interface& interface();
void setResetPipe(ResetPipe state);
void setShellWorks(bool works);

/// A client of the program's pipe writes this message and closes; returns when the program has
/// dealt with it and waits for the next. False when it does not within seconds.
bool sendMessage(const std::string& message);
/// The same without a message.
bool connectAndVanish();
/// Returns when the program waits for a client. False when it does not within seconds.
bool pipeIsServed();

/// The device handles that are open, counted from 1 in the order of opening.
const std::set<int>& openHandles();

/// A new system: nothing plugged, nothing open, nobody at the pipes.
void reset();

} // namespace VirtualPlatform
