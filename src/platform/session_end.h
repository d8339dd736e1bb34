#pragma once

#include <memory>

/// Lets the system end the program cleanly in whatever state it is: at the end of the user's
/// session, for an installer that replaces the program's files, or natively by SIGTERM, SIGHUP or
/// SIGINT. The event loop then returns 0, and the system waits until this object is destroyed.
///
/// Made in the GUI thread right after the application object, so that it goes when all else is
/// torn down. Listens on a thread of its own: the GUI thread may be blocked.
class SessionEnd
{
public:
    SessionEnd();
    ~SessionEnd();
    SessionEnd(const SessionEnd&) = delete;
    SessionEnd& operator=(const SessionEnd&) = delete;

private:
    class Listener;
    std::unique_ptr<Listener> listener;
};
