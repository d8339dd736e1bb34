#pragma once

#include "platform/win32.h"

#include <utility>

/// Closes a Windows handle at the end of its scope; null and INVALID_HANDLE_VALUE mean none.
class ScopedHandle
{
public:
    explicit ScopedHandle(HANDLE owned = nullptr)
        : handle(owned)
    {
    }
    ~ScopedHandle() { reset(nullptr); }
    ScopedHandle(const ScopedHandle&) = delete;
    ScopedHandle& operator=(const ScopedHandle&) = delete;

    bool isValid() const { return handle != nullptr && handle != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return handle; }

    /// Owns this handle from now on and closes the one before.
    void reset(HANDLE owned)
    {
        if (isValid())
            CloseHandle(handle);
        handle = owned;
    }

    /// Owns nothing any more, and leaves the handle open.
    HANDLE release() { return std::exchange(handle, nullptr); }

private:
    HANDLE handle;
};
