#include "platform/system_folder.h"

#include "platform/win32.h"

#include <array>

std::wstring systemFolder()
{
    std::array<wchar_t, MAX_PATH> folder{};
    const UINT length = GetSystemDirectoryW(folder.data(), static_cast<UINT>(folder.size()));
    return {folder.data(), length < folder.size() ? length : 0};
}
