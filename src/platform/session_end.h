#pragma once

#include <functional>
#include <memory>

/// Ends the event loop with 0, however deep it is nested, when the system asks the program to end:
/// at the end of the user's session, for an installer that replaces the program's files, or
/// natively by SIGTERM, SIGHUP or SIGINT, unless the program was started to ignore them. A request
/// that comes before the loop runs ends it as soon as it does.
///
/// Made and destroyed in the GUI thread while the application object lives. Works when that thread
/// gets to its messages, and not while it is inside a call that waits.
class SessionEnd
{
public:
    /// `beforeTheEnd` is called in the GUI thread once for each request, before the system gets
    /// its answer: Windows may end the process right after that.
    explicit SessionEnd(std::function<void()> beforeTheEnd = [] {});
    ~SessionEnd();
    SessionEnd(const SessionEnd&) = delete;
    SessionEnd& operator=(const SessionEnd&) = delete;

private:
    class Listener;
    std::unique_ptr<Listener> listener;
};
