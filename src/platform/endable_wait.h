#pragma once

#include "platform/win32.h"

/// Marks a wait that nobody misses when the program is to end: while it lives, the calling thread
/// is inside one blocking call, and that call may be cancelled (it then fails with
/// ERROR_OPERATION_ABORTED). One at a time, so the GUI thread only.
class EndableWait
{
public:
    EndableWait();
    ~EndableWait();
    EndableWait(const EndableWait&) = delete;
    EndableWait& operator=(const EndableWait&) = delete;

    /// Cancels the marked call, if there is one that waits already. From any other thread.
    static void cancel();

private:
    HANDLE thread;
};
