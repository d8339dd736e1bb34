#pragma once

#include "oracle/action.h"

#include <string>

/// The troubles of the INI files, brought about where they come from: a program that links
/// virtual_files.cpp has the toolkit's system calls for files refused as a disk, a folder or
/// another program would, which holds for root as well. A folder in a file's place is real. GUI
/// thread only.
namespace VirtualFiles {

/// No trouble any more, and from now on this folder.
void reset(const std::string& folder);

/// The actions "trouble" and "mend" as the oracle knows them; false for another.
bool apply(const Oracle::Action& action);

/// To be called after each request to the driver: what has begun or ended by now.
void update();

/// Where somebody else's hand finds an INI file: its name, or where it was put aside.
std::string place(const std::string& name);
/// That hand reads, writes or removes one; nothing is refused to it.
std::string read(const std::string& name);
void write(const std::string& name, const std::string& content);
void remove(const std::string& name);

} // namespace VirtualFiles
