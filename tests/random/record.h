#pragma once

#include <streambuf>
#include <string>
#include <vector>

/// What the program under test did since the last take, in order: the GUI thread's requests, lines
/// and waits, and apart from them the debug lines of its other thread. Safe from any thread.
namespace Record {

/// Notes an event of the calling thread.
void add(const std::string& event);

std::vector<std::string> takeEvents();
std::vector<std::string> takeThreadLines();

/// Notes every debug line and every line of std::wcout and std::cerr from now on, instead of
/// printing it. The thread that calls this is the GUI thread.
void begin();

/// Lets both through again, for reports of the test itself and for the end of the program.
void end();

} // namespace Record
