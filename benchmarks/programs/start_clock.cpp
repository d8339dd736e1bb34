#include <X11/Xlib.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds patience(20);

[[noreturn]] void fail(const char* reason)
{
    std::fprintf(stderr, "benchmark-start-clock: %s\n", reason);
    std::exit(1);
}

/// The notification area of a display that has none, for as long as it lives.
class NotificationArea
{
public:
    NotificationArea()
        : display(XOpenDisplay(nullptr))
    {
        if (display == nullptr)
            fail("there is no display");
        opcode = XInternAtom(display, "_NET_SYSTEM_TRAY_OPCODE", False);
        const Atom selection = XInternAtom(display, "_NET_SYSTEM_TRAY_S0", False);
        if (XGetSelectionOwner(display, selection) != None)
            fail("there is a notification area already");
        const Window root = DefaultRootWindow(display);
        const Window window = XCreateSimpleWindow(display, root, 0, 0, 1, 1, 0, 0, 0);
        XSetSelectionOwner(display, selection, window, CurrentTime);
        XSync(display, False);
    }
    NotificationArea(const NotificationArea&) = delete;
    NotificationArea& operator=(const NotificationArea&) = delete;
    ~NotificationArea() { XCloseDisplay(display); }

    /// Returns when a program asks for a place for its icon.
    void waitForIcon()
    {
        const Clock::time_point end = Clock::now() + patience;
        while (Clock::now() < end) {
            while (XPending(display) > 0) {
                XEvent event;
                XNextEvent(display, &event);
                constexpr long requestDock = 0;
                if (event.type == ClientMessage && event.xclient.message_type == opcode &&
                    event.xclient.data.l[1] == requestDock)
                    return;
            }
            pollfd watched = {ConnectionNumber(display), POLLIN, 0};
            ::poll(&watched, 1, 100);
        }
        fail("the program shows no icon");
    }

private:
    Display* display;
    Atom opcode = None;
};

} // namespace

/// benchmark-start-clock COMMAND [ARGUMENT...]: starts the program on a display without a
/// notification area and prints the milliseconds until it asks for a place for its icon.
int main(int argc, char** argv)
{
    if (argc < 2)
        fail("usage: benchmark-start-clock COMMAND [ARGUMENT...]");
    NotificationArea area;
    pid_t child = 0;
    const Clock::time_point start = Clock::now();
    if (::posix_spawnp(&child, argv[1], nullptr, nullptr, argv + 1, environ) != 0)
        fail("the program cannot be started");
    area.waitForIcon();
    const std::chrono::duration<double, std::milli> elapsed = Clock::now() - start;
    std::printf("%.2f\n", elapsed.count());
    ::kill(child, SIGTERM);
    ::waitpid(child, nullptr, 0);
    return 0;
}
