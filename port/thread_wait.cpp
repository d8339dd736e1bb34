#include "port/thread_wait.h"

#include <cerrno>
#include <map>
#include <poll.h>
#include <sys/eventfd.h>
#include <vector>

namespace {

/// The threads that have a place to wait.
class Registry
{
public:
    static Registry& instance()
    {
        // Never destroyed: threads may end after the objects with static lifetime.
        static Registry& registry = *new Registry;
        return registry;
    }

    void add(DWORD threadId, const std::shared_ptr<ThreadWait>& place)
    {
        const std::lock_guard lock(mutex);
        places[threadId] = place;
    }

    void remove(DWORD threadId)
    {
        const std::lock_guard lock(mutex);
        places.erase(threadId);
    }

    std::shared_ptr<ThreadWait> find(DWORD threadId)
    {
        const std::lock_guard lock(mutex);
        const auto found = places.find(threadId);
        return found == places.end() ? nullptr : found->second;
    }

    std::vector<std::shared_ptr<ThreadWait>> all()
    {
        const std::lock_guard lock(mutex);
        std::vector<std::shared_ptr<ThreadWait>> result;
        for (const auto& [threadId, place] : places)
            result.push_back(place);
        return result;
    }

private:
    std::mutex mutex;
    std::map<DWORD, std::shared_ptr<ThreadWait>> places;
};

/// Signs the thread in for as long as it runs.
struct Registration
{
    Registration() { Registry::instance().add(id, place); }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;
    ~Registration() { Registry::instance().remove(id); }

    const DWORD id = static_cast<DWORD>(::gettid());
    const std::shared_ptr<ThreadWait> place = std::make_shared<ThreadWait>();
};

BOOL failWith(DWORD error)
{
    SetLastError(error);
    return FALSE;
}

} // namespace

ThreadWait& ThreadWait::current()
{
    static thread_local Registration registration;
    return *registration.place;
}

std::shared_ptr<ThreadWait> ThreadWait::ofThread(DWORD threadId)
{
    return Registry::instance().find(threadId);
}

ThreadWait::ThreadWait()
    : wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
}

bool ThreadWait::wait(int socket, short events)
{
    {
        const std::lock_guard lock(mutex);
        waiting = true;
    }
    pollfd watched[] = {{socket, events, 0}, {wakeUp.get(), POLLIN, 0}};
    while (::poll(watched, 2, -1) < 0 && errno == EINTR) {
    }
    const std::lock_guard lock(mutex);
    waiting = false;
    std::uint64_t count = 0;
    return ::read(wakeUp.get(), &count, sizeof count) < 0;
}

void ThreadWait::use(HANDLE handle)
{
    const std::lock_guard lock(mutex);
    used = handle;
}

bool ThreadWait::cancel(HANDLE handle)
{
    const std::lock_guard lock(mutex);
    if (!waiting || (handle != nullptr && handle != used))
        return false;
    const std::uint64_t one = 1;
    return ::write(wakeUp.get(), &one, sizeof one) == sizeof one;
}

bool ThreadWait::cancelAllOn(HANDLE handle)
{
    bool any = false;
    for (const std::shared_ptr<ThreadWait>& place : Registry::instance().all())
        any = place->cancel(handle) || any;
    return any;
}

DWORD GetCurrentThreadId()
{
    ThreadWait::current();
    return static_cast<DWORD>(::gettid());
}

HANDLE OpenThread(DWORD, BOOL, DWORD threadId)
{
    std::shared_ptr<ThreadWait> place = ThreadWait::ofThread(threadId);
    if (place == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return HandleTable::instance().add(std::make_shared<ThreadObject>(std::move(place)));
}

BOOL CancelSynchronousIo(HANDLE thread)
{
    const auto object = HandleTable::instance().find<ThreadObject>(thread);
    if (object == nullptr)
        return failWith(ERROR_INVALID_HANDLE);
    return object->cancel() ? TRUE : failWith(ERROR_NOT_FOUND);
}

BOOL CancelIoEx(HANDLE file, LPOVERLAPPED)
{
    if (HandleTable::instance().find<PortObject>(file) == nullptr)
        return failWith(ERROR_INVALID_HANDLE);
    return ThreadWait::cancelAllOn(file) ? TRUE : failWith(ERROR_NOT_FOUND);
}
