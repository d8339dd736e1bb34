#pragma once

/// Writes the command line of the process into a file beside the module of this address, named like
/// it with ".ran" added: who finds that file knows that the module was loaded.
bool leaveMark(const void* address);
