#pragma once

// The operating-system calls of the product, and nothing else: Windows' own declarations on
// Windows, the same names for a native build elsewhere.

#ifdef _WIN32
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// These two need windows.h before them.
#include <shellapi.h>
#include <winioctl.h>
#else
#include "port/win32_port.h"
#endif
