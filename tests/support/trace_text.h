#pragma once

#include <QString>

#include <cstdint>

/// The lines that the simulated interface's request trace is expected to hold. Handles count
/// from 1 in the order in which they were opened.
namespace TraceText {

/// A request without input: an action, or a read of `outputSize` bytes.
QString request(int handle, std::uint32_t code, int outputSize = 0);

/// A request with the input bytes given as blank-separated hex.
QString input(int handle, std::uint32_t code, const QString& bytes, int outputSize = 0);

/// A 37-byte command: the bytes given, the rest zero.
QString command(int handle, const QString& leadingBytes);

/// A mixer table, told by the cells that differ from the last one: "2048=1 2081=1".
QString table(int handle, const QString& changedCells);

} // namespace TraceText
