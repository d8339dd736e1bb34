#include "port/thread_wait.h"

#include <cerrno>
#include <map>
#include <poll.h>
#include <sys/eventfd.h>

namespace {

/// The threads that have a place to wait.
struct Threads
{
    std::mutex mutex;
    std::map<DWORD, std::shared_ptr<ThreadWait>> places;
};

Threads& threads()
{
    // Never destroyed: threads may end after the objects with static lifetime.
    static Threads& instance = *new Threads;
    return instance;
}

/// Signs the thread in for as long as it runs.
class Registration
{
public:
    Registration()
    {
        const std::lock_guard lock(threads().mutex);
        threads().places[id] = place;
    }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;
    ~Registration()
    {
        const std::lock_guard lock(threads().mutex);
        threads().places.erase(id);
    }

    const DWORD id = static_cast<DWORD>(::gettid());
    const std::shared_ptr<ThreadWait> place = std::make_shared<ThreadWait>();
};

const Registration& registration()
{
    static thread_local const Registration instance;
    return instance;
}

BOOL result(bool succeeded, DWORD error)
{
    if (!succeeded)
        SetLastError(error);
    return succeeded ? TRUE : FALSE;
}

} // namespace

ThreadWait& ThreadWait::current()
{
    return *registration().place;
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

DWORD GetCurrentThreadId()
{
    return registration().id;
}

HANDLE OpenThread(DWORD, BOOL, DWORD threadId)
{
    const std::lock_guard lock(threads().mutex);
    const auto found = threads().places.find(threadId);
    if (found != threads().places.end())
        return HandleTable::instance().add(found->second);
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
}

BOOL CancelSynchronousIo(HANDLE thread)
{
    const auto place = HandleTable::instance().find<ThreadWait>(thread);
    if (place == nullptr)
        return result(false, ERROR_INVALID_HANDLE);
    return result(place->cancel(), ERROR_NOT_FOUND);
}

BOOL CancelIoEx(HANDLE file, LPOVERLAPPED)
{
    if (HandleTable::instance().find<PortObject>(file) == nullptr)
        return result(false, ERROR_INVALID_HANDLE);
    bool any = false;
    const std::lock_guard lock(threads().mutex);
    for (const auto& [id, place] : threads().places)
        any = place->cancel(file) || any;
    return result(any, ERROR_NOT_FOUND);
}
