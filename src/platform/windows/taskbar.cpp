#include "platform/taskbar.h"

#include "platform/win32.h"

namespace {

BOOL CALLBACK announceTo(HWND window, LPARAM message)
{
    PostMessageW(window, static_cast<UINT>(message), 0, 0);
    return TRUE;
}

} // namespace

void announceTaskbar()
{
    // What the shell itself sends to all windows when it has made a taskbar.
    const UINT message = RegisterWindowMessageW(L"TaskbarCreated");
    EnumThreadWindows(GetCurrentThreadId(), announceTo, static_cast<LPARAM>(message));
}
