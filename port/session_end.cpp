#include "platform/session_end.h"

#include "port/file_descriptor.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <sys/eventfd.h>
#include <utility>

namespace {

constexpr std::array endSignals = {SIGTERM, SIGHUP, SIGINT};

/// Counts the signals; a handler reaches nothing but what is static.
std::atomic<int> counter = -1;

void onSignal(int)
{
    const int error = errno;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(counter, &one, sizeof one);
    errno = error;
}

/// Handles the signals for as long as it lives, but for those that the program was started to
/// ignore.
class SignalHandlers
{
public:
    explicit SignalHandlers(int eventCounter)
    {
        counter = eventCounter;
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
    explicit Listener(std::function<void()> beforeTheEnd)
        : prepare(std::move(beforeTheEnd))
    {
        QObject::connect(&notifier, &QSocketNotifier::activated, [this] { takeSignals(); });
    }

private:
    void takeSignals()
    {
        std::uint64_t count = 0;
        // A read that was interrupted is repeated: the notifier goes on as long as there is
        // something to read.
        if (::read(signalled.get(), &count, sizeof count) != sizeof count)
            return;
        prepare();
        QCoreApplication::exit(0);
    }

    std::function<void()> prepare;
    FileDescriptor signalled{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    QSocketNotifier notifier{signalled.get(), QSocketNotifier::Read};
    SignalHandlers handlers{signalled.get()};
};

SessionEnd::SessionEnd(std::function<void()> beforeTheEnd)
    : listener(std::make_unique<Listener>(std::move(beforeTheEnd)))
{
}

SessionEnd::~SessionEnd() = default;
