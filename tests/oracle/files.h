#pragma once

#include "oracle/world.h"

/// How the program keeps its INI files: each value is saved at once, and what cannot be saved waits
/// and is tried again.
namespace Oracle::Files {

/// Takes up a file as it is on the disk; one that is open already is saved first.
void open(World& world, const std::string& name);
/// What the program reads in an open file.
IniFile content(const World& world, const std::string& name);
void store(World& world, const std::string& name, const std::string& key, const std::string& value);
/// Tries to save what waits.
void save(World& world, const std::string& name);
/// The end of the program: one last try.
void close(World& world);

} // namespace Oracle::Files
