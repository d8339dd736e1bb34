#include "support/waiting_thread.h"

WaitingThread::WaitingThread(std::function<DWORD()> work)
    : thread([this, work = std::move(work)] {
        number = GetCurrentThreadId();
        result = work();
        returned = true;
    })
{
    while (number == 0)
        Sleep(1);
    handle.reset(OpenThread(THREAD_TERMINATE, FALSE, number));
}

WaitingThread::~WaitingThread()
{
    if (!thread.joinable())
        return;
    cancel(); // The test has failed and did not get this far.
    thread.join();
}

void WaitingThread::cancel()
{
    while (!returned && CancelSynchronousIo(handle.get()) == FALSE)
        Sleep(1);
}

void WaitingThread::cancelOn(HANDLE file)
{
    while (!returned) {
        CancelIoEx(file, nullptr);
        Sleep(1);
    }
}

DWORD WaitingThread::join()
{
    thread.join();
    return result;
}
