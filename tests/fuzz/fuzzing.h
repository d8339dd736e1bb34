#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// What the fuzz targets have in common: the surroundings of the random sequences, with the
/// interface, the pipes, the files' folder and the clock of the test's own.
namespace Fuzzing {

/// To be called once: the application object on the screenless platform, in a home of its own.
void begin(int& argc, char** argv);

/// Ends the program with this text unless it holds; the fuzzer then keeps the input.
void require(bool holds, const std::string& what);

std::string_view text(const std::uint8_t* data, std::size_t size);

/// As at the start of the program: no INI file is open. The next one is read anew.
void forgetFiles();

} // namespace Fuzzing
