#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <windows.h>

#include <tlhelp32.h>

namespace {

[[noreturn]] void fail(const char* reason)
{
    std::fprintf(stderr, "benchmark-windows-regions: %s\n", reason);
    std::exit(1);
}

/// The one process with that program.
DWORD processOf(const wchar_t* program)
{
    HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (snapshot == INVALID_HANDLE_VALUE)
        fail("the processes cannot be listed");
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    DWORD found = 0;
    for (BOOL more = Process32FirstW(snapshot, &entry); more != 0;
         more = Process32NextW(snapshot, &entry)) {
        if (_wcsicmp(entry.szExeFile, program) != 0)
            continue;
        if (found != 0)
            fail("the program runs more than once");
        found = entry.th32ProcessID;
    }
    CloseHandle(snapshot);
    if (found == 0)
        fail("the program does not run");
    return found;
}

} // namespace

/// benchmark-windows-regions PROGRAM.exe: prints the parts of the running program's memory that are
/// its own and no file's, a line each: first address and size, hexadecimal.
int wmain(int argc, wchar_t** argv)
{
    if (argc != 2)
        fail("usage: benchmark-windows-regions PROGRAM.exe");
    HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, processOf(argv[1]));
    if (process == nullptr)
        fail("the process cannot be opened");
    MEMORY_BASIC_INFORMATION region{};
    for (const char* address = nullptr;
         VirtualQueryEx(process, address, &region, sizeof region) != 0;
         address = static_cast<const char*>(region.BaseAddress) + region.RegionSize) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE)
            std::printf("%llx %llx\n", reinterpret_cast<unsigned long long>(region.BaseAddress),
                        static_cast<unsigned long long>(region.RegionSize));
    }
    CloseHandle(process);
    return 0;
}
