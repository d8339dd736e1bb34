#include "platform/session_end.h"

#include "platform/event_loop_end.h"
#include "port/file_descriptor.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <thread>

namespace {

using namespace std::chrono_literals;

constexpr auto patience = 10s;
constexpr std::array endSignals = {SIGTERM, SIGHUP, SIGINT};

enum class Note : char { endRequested, listenerGoes };

/// Where the handler writes; a signal handler reaches nothing but what is static.
std::atomic<int> noteEntry = -1;

void leaveNote(int descriptor, Note note)
{
    while (::write(descriptor, &note, sizeof note) < 0 && errno == EINTR) {
    }
}

void onSignal(int)
{
    const int error = errno;
    leaveNote(noteEntry, Note::endRequested);
    errno = error;
}

/// Handles the signals for as long as it lives, but for those that the program was started to
/// ignore.
class SignalHandlers
{
public:
    SignalHandlers()
    {
        struct sigaction action = {};
        action.sa_handler = onSignal;
        action.sa_flags = SA_RESTART;
        for (std::size_t i = 0; i < endSignals.size(); ++i) {
            ::sigaction(endSignals[i], nullptr, &before[i]);
            if (before[i].sa_handler != SIG_IGN)
                ::sigaction(endSignals[i], &action, nullptr);
        }
    }
    SignalHandlers(const SignalHandlers&) = delete;
    SignalHandlers& operator=(const SignalHandlers&) = delete;
    ~SignalHandlers()
    {
        for (std::size_t i = 0; i < endSignals.size(); ++i)
            ::sigaction(endSignals[i], &before[i], nullptr);
    }

private:
    std::array<struct sigaction, endSignals.size()> before = {};
};

} // namespace

class SessionEnd::Listener
{
public:
    Listener()
    {
        std::array<int, 2> ends = {-1, -1};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0)
            return;
        exit = FileDescriptor(ends[0]);
        entry = FileDescriptor(ends[1]);
        noteEntry = entry.get();
        thread = std::thread([this] { listen(); });
        handlers = std::make_unique<SignalHandlers>();
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    ~Listener()
    {
        if (!thread.joinable())
            return;
        handlers.reset();
        loop.finish();
        leaveNote(entry.get(), Note::listenerGoes);
        thread.join();
    }

private:
    void listen()
    {
        Note note = {};
        while (::read(exit.get(), &note, sizeof note) >= 0 || errno == EINTR) {
            if (note == Note::listenerGoes)
                return;
            loop.endAndWait(patience);
        }
    }

    EventLoopEnd loop;
    FileDescriptor exit;
    FileDescriptor entry;
    std::thread thread;
    std::unique_ptr<SignalHandlers> handlers;
};

SessionEnd::SessionEnd()
    : listener(std::make_unique<Listener>())
{
}

SessionEnd::~SessionEnd() = default;
