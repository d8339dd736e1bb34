#include "port/handle_table.h"

HandleTable& HandleTable::instance()
{
    // Never destroyed: objects with static lifetime may close their handles at exit.
    static HandleTable& table = *new HandleTable;
    return table;
}

HANDLE HandleTable::add(std::shared_ptr<PortObject> object)
{
    const std::lock_guard lock(mutex);
    const HANDLE handle = std::bit_cast<HANDLE>(next);
    next += 4;
    objects.emplace(handle, std::move(object));
    return handle;
}

std::shared_ptr<PortObject> HandleTable::remove(HANDLE handle)
{
    const std::lock_guard lock(mutex);
    const auto found = objects.find(handle);
    if (found == objects.end())
        return nullptr;
    std::shared_ptr<PortObject> object = std::move(found->second);
    objects.erase(found);
    return object;
}

std::shared_ptr<PortObject> HandleTable::findObject(HANDLE handle) const
{
    const std::lock_guard lock(mutex);
    const auto found = objects.find(handle);
    return found == objects.end() ? nullptr : found->second;
}
