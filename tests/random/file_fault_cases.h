#pragma once

#include "random/matrix.h"

/// Every trouble of the INI files, from various moments on and for various times, during arrival,
/// use of the panel and of the dialog, removal, quit and while another model takes the place. Each
/// ends with the trouble gone, nothing touched since, and a new start of the program.
std::vector<MatrixCase> fileFaultCases();
