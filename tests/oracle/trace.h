#pragma once

#include "oracle/interface.h"

#include <span>
#include <string>
#include <vector>

namespace Oracle {

/// A request in one line: handle, code, input bytes, room for the answer.
std::string describe(const Request& request);

/// A mixer table in one line: the cells in which it differs from the last one.
std::string describeTable(int handle, std::span<const double> last, std::span<const double> table);

} // namespace Oracle
