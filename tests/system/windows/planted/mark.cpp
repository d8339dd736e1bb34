#include "mark.h"

#include <windows.h>

#include <cwchar>
#include <string>

bool leaveMark(const void* address)
{
    HMODULE module = nullptr;
    wchar_t path[MAX_PATH] = {};
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                           GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       static_cast<const wchar_t*>(address), &module);
    GetModuleFileNameW(module, path, MAX_PATH);
    const HANDLE file = CreateFileW((std::wstring(path) + L".ran").c_str(), GENERIC_WRITE, 0,
                                    nullptr, CREATE_ALWAYS, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    const wchar_t* line = GetCommandLineW();
    DWORD written = 0;
    const auto size = static_cast<DWORD>(std::wcslen(line) * sizeof *line);
    const BOOL done = WriteFile(file, line, size, &written, nullptr);
    CloseHandle(file);
    return done != FALSE;
}
