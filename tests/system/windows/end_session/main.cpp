#include <windows.h>

#include <cstdio>
#include <future>
#include <string>
#include <vector>

// Does to one program what Windows does to all at the end of a session, and stands in for others
// who use its file.

namespace {

std::wstring programOf(HWND window)
{
    DWORD processId = 0;
    GetWindowThreadProcessId(window, &processId);
    const HANDLE process = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId);
    wchar_t path[MAX_PATH] = {};
    DWORD length = MAX_PATH;
    if (process != nullptr) {
        QueryFullProcessImageNameW(process, 0, path, &length);
        CloseHandle(process);
    }
    const std::wstring whole(path);
    return whole.substr(whole.rfind(L'\\') + 1);
}

struct Search
{
    std::wstring program;
    bool visibleOnly;
    std::vector<HWND> found;
};

BOOL CALLBACK look(HWND window, LPARAM parameter)
{
    auto& search = *reinterpret_cast<Search*>(parameter);
    if ((!search.visibleOnly || IsWindowVisible(window) != FALSE) &&
        programOf(window) == search.program)
        search.found.push_back(window);
    return TRUE;
}

/// Sends the message to all windows at once, and returns what they answer.
std::vector<LRESULT> tellAll(const std::vector<HWND>& windows, UINT message, WPARAM wParam)
{
    std::vector<std::future<LRESULT>> calls;
    for (const HWND window : windows) {
        calls.push_back(std::async(std::launch::async, [=] {
            constexpr UINT patience = 15000; // ms
            DWORD_PTR answer = FALSE;
            const LRESULT sent =
                SendMessageTimeoutW(window, message, wParam, 0, SMTO_NORMAL, patience, &answer);
            // A list or a menu that has gone since it was found refuses nothing.
            const bool gone = sent == 0 && IsWindow(window) == FALSE;
            return gone ? LRESULT{TRUE} : static_cast<LRESULT>(answer);
        }));
    }
    std::vector<LRESULT> answers;
    for (std::future<LRESULT>& call : calls)
        answers.push_back(call.get());
    return answers;
}

/// Asks all windows, and tells them what came of it. False when one refused or there is none.
bool endSession(const Search& search, bool really)
{
    bool agreed = !search.found.empty();
    for (const LRESULT answer : tellAll(search.found, WM_QUERYENDSESSION, 0))
        agreed = agreed && answer != FALSE;
    tellAll(search.found, WM_ENDSESSION, agreed && really ? TRUE : FALSE);
    std::printf("%s %u windows\n", agreed ? "agreed" : "refused",
                static_cast<unsigned>(search.found.size()));
    return agreed;
}

/// Keeps the file to itself, as Windows does with that of a running program.
int hold(const std::wstring& file, DWORD seconds)
{
    const HANDLE handle = CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                      OPEN_EXISTING, 0, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return 1;
    std::puts("holding");
    std::fflush(stdout);
    Sleep(seconds * 1000);
    CloseHandle(handle);
    return 0;
}

} // namespace

// end-session end|end-visible|cancel NAME.exe     of all windows, of the visible ones, not really
// end-session hold FILE SECONDS
int main(int argc, char** argv)
{
    if (argc < 3)
        return 2;
    const std::string command = argv[1];
    const std::string name = argv[2];
    const std::wstring target(name.begin(), name.end());
    if (command == "hold" && argc == 4)
        return hold(target, static_cast<DWORD>(std::stoul(argv[3])));
    Search search = {target, command == "end-visible", {}};
    EnumWindows(look, reinterpret_cast<LPARAM>(&search));
    return endSession(search, command != "cancel") ? 0 : 1;
}
