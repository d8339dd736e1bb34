#include "random/virtual_platform.h"

#include "oracle/codes.h"
#include "oracle/trace.h"
#include "platform/win32.h"
#include "random/record.h"
#include "random/virtual_files.h"
#include "random/virtual_pipe.h"
#include "random/virtual_time.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <set>
#include <stdexcept>
#include <string_view>
#include <vector>

using VirtualPlatform::ResetPipe;

namespace {

constexpr std::uintptr_t inboundPipe = 0x10002;
constexpr std::uintptr_t resetPipe = 0x20002;
constexpr std::uintptr_t timedThread = 0x30002;

thread_local DWORD lastError = ERROR_SUCCESS;

Oracle::Interface theInterface;
std::set<int> openDevices;
std::vector<double> sentMixer(8288);
ResetPipe resetState = ResetPipe::absent;
bool shellWorks = true;
VirtualPipe inbound;

HANDLE handleOf(std::uintptr_t number)
{
    return std::bit_cast<HANDLE>(number);
}

BOOL result(DWORD error)
{
    lastError = error;
    return error == ERROR_SUCCESS ? TRUE : FALSE;
}

HANDLE refuse(DWORD error)
{
    lastError = error;
    return INVALID_HANDLE_VALUE;
}

HANDLE openDevice(int bus)
{
    const std::uint32_t error = VirtualPlatform::interface().open(bus);
    if (error != ERROR_SUCCESS)
        return refuse(error);
    openDevices.insert(theInterface.lastHandle());
    return handleOf(4 * static_cast<std::uintptr_t>(theInterface.lastHandle()));
}

HANDLE openResetPipe()
{
    if (resetState == ResetPipe::absent)
        return refuse(ERROR_FILE_NOT_FOUND);
    return resetState == ResetPipe::busy ? refuse(ERROR_PIPE_BUSY) : handleOf(resetPipe);
}

std::string describe(const Oracle::Request& request, const void* input)
{
    if (request.code != Oracle::Code::writeMixer ||
        request.input.size() != Oracle::Interface::mixerBytes)
        return Oracle::describe(request);
    std::vector<double> table(sentMixer.size());
    std::memcpy(table.data(), input, request.input.size());
    const std::string text = Oracle::describeTable(request.handle, sentMixer, table);
    sentMixer = table;
    return text;
}

} // namespace

Oracle::Interface& VirtualPlatform::interface()
{
    theInterface.reach(VirtualTime::instance().now());
    return theInterface;
}

void VirtualPlatform::setResetPipe(ResetPipe state)
{
    resetState = state;
}

void VirtualPlatform::setShellWorks(bool works)
{
    shellWorks = works;
}

bool VirtualPlatform::sendMessage(const std::string& message)
{
    return inbound.serve(message, true);
}

bool VirtualPlatform::connectAndVanish()
{
    return inbound.serve({}, false);
}

bool VirtualPlatform::pipeIsServed()
{
    return inbound.waitUntilListening();
}

const std::set<int>& VirtualPlatform::openHandles()
{
    return openDevices;
}

void VirtualPlatform::reset()
{
    theInterface = Oracle::Interface();
    openDevices.clear();
    std::ranges::fill(sentMixer, 0.0);
    resetState = ResetPipe::absent;
    shellWorks = true;
}

// The calls that the program makes, in place of the system's.

DWORD GetLastError()
{
    return lastError;
}

void SetLastError(DWORD error)
{
    lastError = error;
}

HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES, DWORD how,
                   DWORD flags, HANDLE)
{
    constexpr std::wstring_view bus = LR"(\\.\QuorvelAudioBus)";
    const std::wstring_view name = path;
    const bool isDevice = name.starts_with(bus);
    if (access != (GENERIC_READ | GENERIC_WRITE) || how != OPEN_EXISTING || flags != 0 ||
        share != (isDevice ? FILE_SHARE_READ | FILE_SHARE_WRITE : 0))
        Record::add("opened in another way than agreed");
    if (isDevice)
        return openDevice(std::stoi(std::wstring(name.substr(bus.size()))));
    if (name == LR"(\\.\pipe\QuorvelPannelToASIO)")
        return openResetPipe();
    Record::add("opened something unknown");
    return refuse(ERROR_FILE_NOT_FOUND);
}

BOOL CloseHandle(HANDLE handle)
{
    const auto number = std::bit_cast<std::uintptr_t>(handle);
    if (number == resetPipe || number == timedThread)
        return TRUE;
    if (number == inboundPipe) {
        inbound.close();
        return TRUE;
    }
    if (openDevices.erase(static_cast<int>(number / 4)) == 1)
        return TRUE;
    Record::add("closed what is not open");
    return result(ERROR_INVALID_HANDLE);
}

BOOL DeviceIoControl(HANDLE device, DWORD code, LPVOID input, DWORD inputLength, LPVOID output,
                     DWORD outputLength, LPDWORD returned, LPOVERLAPPED overlapped)
{
    const auto handle = static_cast<int>(std::bit_cast<std::uintptr_t>(device) / 4);
    if (!openDevices.contains(handle) || returned == nullptr || overlapped != nullptr) {
        Record::add("a request that must not be");
        return result(ERROR_INVALID_HANDLE);
    }
    const auto* const bytes = static_cast<const std::uint8_t*>(input);
    const Oracle::Request request{handle, code, {bytes, bytes + inputLength}, outputLength};
    Record::add(describe(request, input));
    const Oracle::Answer answer = VirtualPlatform::interface().ask(request);
    VirtualFiles::update();
    VirtualTime::instance().pass(answer.delayMs);
    if (answer.throws)
        throw std::runtime_error("no paper");
    std::ranges::copy(answer.bytes, static_cast<std::uint8_t*>(output));
    *returned = static_cast<DWORD>(answer.bytes.size());
    return result(answer.error);
}

HANDLE CreateNamedPipeW(LPCWSTR name, DWORD openMode, DWORD pipeMode, DWORD mostInstances,
                        DWORD outputSize, DWORD inputSize, DWORD timeout, LPSECURITY_ATTRIBUTES)
{
    if (std::wstring_view(name) != LR"(\\.\pipe\QuorvelASIOToPannel)" || openMode != 3 ||
        pipeMode != 6 || mostInstances != 255 || outputSize != 65536 || inputSize != 65536 ||
        timeout != 300)
        Record::add("a pipe other than agreed");
    inbound.open();
    return handleOf(inboundPipe);
}

BOOL ConnectNamedPipe(HANDLE, LPOVERLAPPED)
{
    return result(inbound.connect());
}

BOOL DisconnectNamedPipe(HANDLE)
{
    inbound.disconnect();
    return TRUE;
}

BOOL ReadFile(HANDLE, LPVOID buffer, DWORD length, LPDWORD read, LPOVERLAPPED)
{
    std::string message;
    const DWORD error = inbound.read(message, length);
    *read = static_cast<DWORD>(message.size());
    std::ranges::copy(message, static_cast<char*>(buffer));
    return result(error);
}

BOOL WriteFile(HANDLE, LPCVOID buffer, DWORD length, LPDWORD written, LPOVERLAPPED)
{
    const auto* const bytes = static_cast<const std::uint8_t*>(buffer);
    std::string told = "reset pipe:";
    for (DWORD i = 0; i < length; ++i)
        told += ' ' + std::to_string(bytes[i]);
    Record::add(told);
    *written = length;
    return result(resetState == ResetPipe::serves ? ERROR_SUCCESS : ERROR_NO_DATA);
}

DWORD GetCurrentThreadId()
{
    return 1;
}

HANDLE OpenThread(DWORD, BOOL, DWORD)
{
    return handleOf(timedThread);
}

BOOL CancelIoEx(HANDLE, LPOVERLAPPED)
{
    return result(inbound.cancel() ? ERROR_SUCCESS : ERROR_NOT_FOUND);
}

// No call of the GUI thread waits here.
BOOL CancelSynchronousIo(HANDLE)
{
    return result(ERROR_NOT_FOUND);
}

void Sleep(DWORD milliseconds)
{
    Record::add("sleep " + std::to_string(milliseconds));
    VirtualTime::instance().pass(static_cast<int>(milliseconds));
}

HINSTANCE ShellExecuteA(HWND, LPCSTR operation, LPCSTR file, LPCSTR parameters, LPCSTR, INT show)
{
    Record::add(std::string("shell: ") + operation + ' ' + file + ' ' + parameters + ' ' +
                std::to_string(show));
    const std::uintptr_t answer = shellWorks ? 42 : ERROR_FILE_NOT_FOUND;
    return std::bit_cast<HINSTANCE>(answer);
}

// The pause of the pipe thread between two clients would be the only real time that passes.
extern "C" int nanosleep(const timespec*, timespec*)
{
    return 0;
}
