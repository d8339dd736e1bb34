#pragma once

// The Windows calls that the product uses, for a native build on Unix. Names, values and meaning
// are those of Windows; a call that fails returns as on Windows and leaves the error number for
// GetLastError(). Every function may be called from any thread.

#include <bit>
#include <cstdint>

using BOOL = int;
using INT = int;
using DWORD = std::uint32_t;
using LPDWORD = DWORD*;
using HANDLE = void*;
using HWND = struct PortWindow*;
using HINSTANCE = struct PortInstance*;
using LPVOID = void*;
using LPCVOID = const void*;
using LPCSTR = const char*;
using LPCWSTR = const wchar_t*;
using LPSECURITY_ATTRIBUTES = struct PortSecurity*;
using LPOVERLAPPED = struct PortOverlapped*;

#define TRUE 1
#define FALSE 0
#define INVALID_HANDLE_VALUE (std::bit_cast<HANDLE>(~std::uintptr_t{0}))

constexpr DWORD GENERIC_READ = 0x80000000;
constexpr DWORD GENERIC_WRITE = 0x40000000;
constexpr DWORD FILE_SHARE_READ = 1;
constexpr DWORD FILE_SHARE_WRITE = 2;
constexpr DWORD OPEN_EXISTING = 3;

constexpr DWORD ERROR_SUCCESS = 0;
constexpr DWORD ERROR_INVALID_FUNCTION = 1;
constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
constexpr DWORD ERROR_ACCESS_DENIED = 5;
constexpr DWORD ERROR_INVALID_HANDLE = 6;
constexpr DWORD ERROR_GEN_FAILURE = 31;
constexpr DWORD ERROR_INVALID_PARAMETER = 87;
constexpr DWORD ERROR_BROKEN_PIPE = 109;
constexpr DWORD ERROR_INVALID_NAME = 123;
constexpr DWORD ERROR_PIPE_BUSY = 231;
constexpr DWORD ERROR_NO_DATA = 232;
constexpr DWORD ERROR_PIPE_NOT_CONNECTED = 233;
constexpr DWORD ERROR_MORE_DATA = 234;
constexpr DWORD ERROR_PIPE_CONNECTED = 535;
constexpr DWORD ERROR_PIPE_LISTENING = 536;
constexpr DWORD ERROR_OPERATION_ABORTED = 995;
constexpr DWORD ERROR_DEVICE_NOT_CONNECTED = 1167;
constexpr DWORD ERROR_NOT_FOUND = 1168;
constexpr DWORD ERROR_NO_SYSTEM_RESOURCES = 1450;

#define METHOD_BUFFERED 0
#define FILE_ANY_ACCESS 0
#define CTL_CODE(DeviceType, Function, Method, Access)                                             \
    (((DeviceType) << 16) | ((Access) << 14) | ((Function) << 2) | (Method))

/// The error number of the calling thread's last failed call.
DWORD GetLastError();
void SetLastError(DWORD error);

/// Opens the device `\\.\NAME` or, as a client, the pipe `\\.\pipe\NAME`. Absent:
/// INVALID_HANDLE_VALUE, ERROR_FILE_NOT_FOUND. Devices may be opened any number of times; sharing
/// is not enforced for them, as on Windows. A pipe without an instance that listens:
/// ERROR_PIPE_BUSY.
HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                   DWORD disposition, DWORD flags, HANDLE templateFile);

/// Closes any handle. A handle that is not open: FALSE, ERROR_INVALID_HANDLE.
BOOL CloseHandle(HANDLE handle);

/// Sends one request and waits for its answer. At most `outputLength` bytes are stored, and what
/// the driver did not answer stays untouched; `returned` counts the stored bytes. An interface
/// that is gone: ERROR_DEVICE_NOT_CONNECTED. A cancelled request may have had its effect; its
/// answer is lost. Only synchronous calls: `overlapped` is null.
BOOL DeviceIoControl(HANDLE device, DWORD code, LPVOID input, DWORD inputLength, LPVOID output,
                     DWORD outputLength, LPDWORD returned, LPOVERLAPPED overlapped);

constexpr DWORD PIPE_ACCESS_DUPLEX = 3;
constexpr DWORD PIPE_TYPE_MESSAGE = 4;
constexpr DWORD PIPE_READMODE_MESSAGE = 2;
constexpr DWORD PIPE_WAIT = 0;
constexpr DWORD PIPE_UNLIMITED_INSTANCES = 255;

/// Creates the message pipe `\\.\pipe\NAME`, to which one client at a time can connect at once.
/// Both ends work by messages. There is one instance of a pipe at a time, whatever `mostInstances`
/// allows: as long as it is open, INVALID_HANDLE_VALUE with ERROR_PIPE_BUSY. Whoever writes a
/// message of more bytes than `inputSize` (a client) or `outputSize` (the server) waits until the
/// other side reads; more than 128 KiB are not carried (ERROR_NO_SYSTEM_RESOURCES). Modes and
/// time-out are not looked at.
HANDLE CreateNamedPipeW(LPCWSTR name, DWORD openMode, DWORD pipeMode, DWORD mostInstances,
                        DWORD outputSize, DWORD inputSize, DWORD timeout,
                        LPSECURITY_ATTRIBUTES security);

/// Waits until a client has connected. FALSE with ERROR_PIPE_CONNECTED when one was there before
/// the call, with ERROR_NO_DATA when that one has already closed.
BOOL ConnectNamedPipe(HANDLE pipe, LPOVERLAPPED overlapped);

/// Parts with the client and drops what is unread; the instance can then be connected again.
BOOL DisconnectNamedPipe(HANDLE pipe);

/// Waits for one message. Longer than the buffer: FALSE with ERROR_MORE_DATA, the rest is next.
/// ERROR_BROKEN_PIPE when the other side has closed and all is read.
BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD length, LPDWORD read, LPOVERLAPPED overlapped);

/// Writes one message. ERROR_NO_DATA when the other side has closed, ERROR_BROKEN_PIPE when it
/// closes while the call waits for it to read.
BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD length, LPDWORD written, LPOVERLAPPED overlapped);

constexpr DWORD THREAD_TERMINATE = 1;

DWORD GetCurrentThreadId();

/// A handle on a running thread of this process. Unknown: null, ERROR_INVALID_PARAMETER.
HANDLE OpenThread(DWORD access, BOOL inherit, DWORD threadId);

/// Ends the call on a pipe or a device in which that thread waits: it fails with
/// ERROR_OPERATION_ABORTED. FALSE with ERROR_NOT_FOUND when the thread waits in none.
BOOL CancelSynchronousIo(HANDLE thread);

/// Does the same to all threads of this process that wait in a call on this handle. `overlapped` is
/// null. FALSE with ERROR_NOT_FOUND when none waits, where Windows may say TRUE.
BOOL CancelIoEx(HANDLE file, LPOVERLAPPED overlapped);

/// Blocks the calling thread for that many milliseconds.
void Sleep(DWORD milliseconds);

#define SW_SHOWNORMAL 1

/// Starts the program `file` from the PATH with `parameters` split at blanks, in `folder` unless
/// that is null, and does not wait for its end. Above 32: started; ERROR_FILE_NOT_FOUND or
/// ERROR_ACCESS_DENIED: not.
HINSTANCE ShellExecuteA(HWND owner, LPCSTR operation, LPCSTR file, LPCSTR parameters, LPCSTR folder,
                        INT show);
