#include "platform/session_end.h"

#include "platform/event_loop_end.h"
#include "platform/win32.h"

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>

#include <future>
#include <thread>

namespace {

using namespace std::chrono_literals;

// Windows itself gives up after some five seconds of silence, with the user's consent only.
constexpr auto patience = 10s;

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

} // namespace

/// The filter serves those who turn to a window of Qt, which would ask all windows to close: one
/// that stays in the notification area then refuses the end.
class SessionEnd::Listener : public QAbstractNativeEventFilter
{
public:
    Listener()
        : thread([this] { listen(); })
    {
        threadId = listening.get_future().get();
        QCoreApplication::instance()->installNativeEventFilter(this);
    }
    ~Listener() override
    {
        loop.finish();
        PostThreadMessageW(threadId, WM_QUIT, 0, 0);
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
    void listen()
    {
        const HiddenWindow window(onMessage, this);
        listening.set_value(GetCurrentThreadId());
        MSG message;
        while (GetMessageW(&message, nullptr, 0, 0) > 0)
            DispatchMessageW(&message);
    }

    static LRESULT CALLBACK onMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
    {
        auto* listener = reinterpret_cast<Listener*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        switch (message) {
        case WM_QUERYENDSESSION:
            return TRUE;
        case WM_ENDSESSION:
            // Windows may end the process as soon as this returns.
            if (wParam != FALSE && listener != nullptr)
                listener->loop.endAndWait(patience);
            return 0;
        case WM_CLOSE:
            return 0; // As with the other windows: merely closed, nothing ends.
        default:
            return DefWindowProcW(window, message, wParam, lParam);
        }
    }

    EventLoopEnd loop;
    std::promise<DWORD> listening;
    DWORD threadId = 0;
    std::thread thread;
};

SessionEnd::SessionEnd()
    : listener(std::make_unique<Listener>())
{
}

SessionEnd::~SessionEnd() = default;
