#include <windows.h>

#include <string>

// quorvel-elevated COMMAND...: asks for an administrator's rights by its manifest, and runs the
// command with them. Returns the command's exit code.

namespace {

/// The command line after the program's own name, which is quoted when it has blanks.
std::wstring givenCommand()
{
    const std::wstring line = GetCommandLineW();
    const auto end = line.front() == L'"' ? line.find(L'"', 1) + 1 : line.find(L' ');
    const auto start = line.find_first_not_of(L' ', end);
    return start == std::wstring::npos ? std::wstring() : line.substr(start);
}

} // namespace

int main()
{
    std::wstring command = givenCommand();
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                       &startup, &process) == FALSE)
        return -1;
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return static_cast<int>(code);
}
