#pragma once

#include "oracle/world.h"

#include <functional>

/// How the program keeps its INI files: each value is saved at once, and what cannot be saved waits
/// and is tried again. A file that cannot be read is not written.
namespace Oracle::Files {

/// Takes up a file as it is on the disk, and saves what waits for it.
void open(World& world, const std::string& name);
/// Restores what the program keeps in the file. What it stores of a file that could not be read is
/// no change of the user's.
void restore(World& world, const std::string& name, const std::function<void()>& controls);
/// What the program reads in an open file.
IniFile content(const World& world, const std::string& name);
void store(World& world, const std::string& name, const std::string& key, const std::string& value);
/// The retry timer's turn. True when a file that could not be read has been read: the controls are
/// to be restored from it.
bool retry(World& world, const std::string& name);
/// The end of the program: one more try.
void saveAll(World& world);

} // namespace Oracle::Files
