#include "platform/session_end.h"

#include "platform/win32.h"

#include <QAbstractEventDispatcher>
#include <QAbstractNativeEventFilter>
#include <QCoreApplication>

#include <utility>

namespace {

// The installer looks for it.
constexpr const wchar_t* windowClass = L"QuorvelDriverSessionEnd";

/// Takes messages about the session the way that those to Qt's windows go: through the filters of
/// the application. The window itself holds nothing that another program could change.
LRESULT CALLBACK onMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_QUERYENDSESSION:
    case WM_ENDSESSION: {
        MSG event = {window, message, wParam, lParam, 0, {}};
        qintptr result = TRUE;
        QAbstractEventDispatcher::instance()->filterNativeEvent(
            QByteArrayLiteral("windows_generic_MSG"), &event, &result);
        return result;
    }
    case WM_CLOSE:
        return 0; // As with the other windows: merely closed, nothing ends.
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

/// Not a message-only window: nobody is told of the end of the session but top-level ones.
class HiddenWindow
{
public:
    HiddenWindow()
    {
        WNDCLASSW description = {};
        description.lpfnWndProc = onMessage;
        description.hInstance = GetModuleHandleW(nullptr);
        description.lpszClassName = windowClass;
        RegisterClassW(&description);
        window = CreateWindowExW(WS_EX_TOOLWINDOW, windowClass, L"", WS_POPUP, 0, 0, 0, 0, nullptr,
                                 nullptr, description.hInstance, nullptr);
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

/// Hears the windows of Qt too, which would ask all windows to close: one that stays in the
/// notification area then refuses the end.
class SessionEnd::Listener : public QAbstractNativeEventFilter
{
public:
    explicit Listener(std::function<void()> beforeTheEnd)
        : prepare(std::move(beforeTheEnd))
    {
        QCoreApplication::instance()->installNativeEventFilter(this);
    }

    bool nativeEventFilter(const QByteArray&, void* event, qintptr* result) override
    {
        const auto& message = *static_cast<const MSG*>(event);
        if (message.message != WM_QUERYENDSESSION && message.message != WM_ENDSESSION)
            return false;
        if (message.message == WM_ENDSESSION && message.wParam != FALSE)
            end();
        // Nobody waits for the answer to a posted message.
        if (result != nullptr)
            *result = message.message == WM_QUERYENDSESSION ? TRUE : 0;
        return true;
    }

private:
    void end()
    {
        prepare();
        // Queued, because the loop may not run yet.
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [] { QCoreApplication::exit(0); }, Qt::QueuedConnection);
    }

    std::function<void()> prepare;
    HiddenWindow window;
};

SessionEnd::SessionEnd(std::function<void()> beforeTheEnd)
    : listener(std::make_unique<Listener>(std::move(beforeTheEnd)))
{
}

SessionEnd::~SessionEnd() = default;
