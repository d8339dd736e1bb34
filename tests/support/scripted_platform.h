#pragma once

#include <QStringList>

#include <cstdint>

/// A platform whose device opens always, answers zeros and can be told to throw, for what no real
/// driver does: exceptions that escape from a request. A test program that links
/// scripted_platform.cpp gets these calls in place of the system's.
namespace ScriptedPlatform {

/// From now on requests whose second input byte is this opcode throw a std::exception.
void throwOn(std::uint8_t opcode);
void reset();

/// The opcodes (command codes) and control codes of the requests since the last call, in hex.
QStringList takeRequests();

/// From now to reset() each request, and each wait and each closed handle on the main thread, is
/// written to the debug stream ("request 5a", "wait 100", "close"), so that they stand among the
/// product's own lines.
void narrate();

} // namespace ScriptedPlatform
