#pragma once

#include "port/win32_port.h"

#include <map>
#include <memory>
#include <mutex>

/// What a handle of the port refers to. A call that is under way keeps its object alive, so
/// closing a handle from another thread is safe.
class PortObject
{
public:
    PortObject() = default;
    PortObject(const PortObject&) = delete;
    PortObject& operator=(const PortObject&) = delete;
    virtual ~PortObject() = default;
};

/// The open handles of this process. Handle numbers are never used twice, so a stale handle is
/// always recognised. Safe to call from any thread.
class HandleTable
{
public:
    static HandleTable& instance();

    HANDLE add(std::shared_ptr<PortObject> object);

    /// The object behind the handle if it is a `Kind`, else null.
    template <class Kind> std::shared_ptr<Kind> find(HANDLE handle) const
    {
        return std::dynamic_pointer_cast<Kind>(findObject(handle));
    }

    /// Forgets the handle and returns its object, null when the handle is not open.
    std::shared_ptr<PortObject> remove(HANDLE handle);

private:
    HandleTable() = default;
    std::shared_ptr<PortObject> findObject(HANDLE handle) const;

    mutable std::mutex mutex;
    std::map<HANDLE, std::shared_ptr<PortObject>> objects;
    std::uintptr_t next = 4;
};
