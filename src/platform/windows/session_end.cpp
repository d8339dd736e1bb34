#include "platform/session_end.h"

#include "platform/endable_wait.h"
#include "platform/event_loop_end.h"
#include "platform/win32.h"

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>

#include <atomic>
#include <future>
#include <memory>
#include <thread>
#include <utility>

namespace {

using namespace std::chrono_literals;

// Windows itself gives up after some five seconds of silence, with the user's consent only.
constexpr auto patience = 10s;

// Until then the entry routine has returned, and the process is gone.
constexpr DWORD exitTime = 2000; // ms

// The installer looks for it.
constexpr const wchar_t* windowClass = L"QuorvelDriverSessionEnd";

/// A hidden window of the calling thread. Not a message-only one: nobody is told of the end of
/// the session but top-level windows.
class HiddenWindow
{
public:
    HiddenWindow(WNDPROC procedure, void* owner)
    {
        WNDCLASSW description = {};
        description.lpfnWndProc = procedure;
        description.hInstance = GetModuleHandleW(nullptr);
        description.lpszClassName = windowClass;
        RegisterClassW(&description);
        window = CreateWindowExW(WS_EX_TOOLWINDOW, windowClass, L"", WS_POPUP, 0, 0, 0, 0, nullptr,
                                 nullptr, description.hInstance, nullptr);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(owner));
    }
    HiddenWindow(const HiddenWindow&) = delete;
    HiddenWindow& operator=(const HiddenWindow&) = delete;
    ~HiddenWindow()
    {
        DestroyWindow(window);
        UnregisterClassW(windowClass, GetModuleHandleW(nullptr));
    }

private:
    HWND window = nullptr;
};

/// What the listening thread works with; it may outlive the rest by the time of an exit.
struct Listening
{
    EventLoopEnd loop;
    std::atomic<bool> ending = false;
};

void end(Listening& listening)
{
    listening.ending = true;
    // Windows may end the process, with an exit code of its own, as soon as it is answered.
    if (listening.loop.endAndWait(patience))
        Sleep(exitTime);
}

LRESULT CALLBACK onMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto* listening = reinterpret_cast<Listening*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    switch (message) {
    case WM_QUERYENDSESSION:
        // The windows of the GUI thread are asked as well, and it must be free to answer.
        EndableWait::cancel();
        return TRUE;
    case WM_ENDSESSION:
        if (wParam != FALSE && listening != nullptr)
            end(*listening);
        return 0;
    case WM_CLOSE:
        return 0; // As with the other windows: merely closed, nothing ends.
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

void listen(const std::shared_ptr<Listening>& listening, std::promise<DWORD> ready)
{
    const HiddenWindow window(onMessage, listening.get());
    ready.set_value(GetCurrentThreadId());
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
        DispatchMessageW(&message);
}

} // namespace

/// The filter serves those who turn to a window of Qt, which would ask all windows to close: one
/// that stays in the notification area then refuses the end.
class SessionEnd::Listener : public QAbstractNativeEventFilter
{
public:
    Listener()
    {
        std::promise<DWORD> ready;
        auto id = ready.get_future();
        thread = std::thread(listen, listening, std::move(ready));
        threadId = id.get();
        QCoreApplication::instance()->installNativeEventFilter(this);
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    ~Listener() override
    {
        listening->loop.finish();
        PostThreadMessageW(threadId, WM_QUIT, 0, 0);
        // One that holds Windows back is to do so until the process has exited.
        if (listening->ending)
            thread.detach();
        else
            thread.join();
    }

    bool nativeEventFilter(const QByteArray&, void* event, qintptr* result) override
    {
        const auto& message = *static_cast<const MSG*>(event);
        if (message.message != WM_QUERYENDSESSION && message.message != WM_ENDSESSION)
            return false;
        if (message.message == WM_ENDSESSION && message.wParam != FALSE)
            QCoreApplication::exit(0);
        *result = message.message == WM_QUERYENDSESSION ? TRUE : 0;
        return true;
    }

private:
    std::shared_ptr<Listening> listening = std::make_shared<Listening>();
    DWORD threadId = 0;
    std::thread thread;
};

SessionEnd::SessionEnd()
    : listener(std::make_unique<Listener>())
{
}

SessionEnd::~SessionEnd() = default;
