#pragma once

#include <string>
#include <string_view>

/// What a path of the Win32 device namespace names, as the name of a file.
struct DevicePath
{
    std::string name; ///< Empty when the path cannot name anything.
    bool isPipe = false;
};

/// Splits `\\.\NAME` and `\\.\pipe\NAME`. Everything that the system names itself is plain ASCII
/// without folders; other names count as unusable.
DevicePath parseDevicePath(std::wstring_view path);
