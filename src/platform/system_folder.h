#pragma once

#include <string>

/// Windows' own folder of programs ("C:\Windows\System32"); empty where programs are found by the
/// search path alone.
std::wstring systemFolder();
