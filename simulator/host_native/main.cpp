#include "simulator/host_native/device_server.h"
#include "simulator/host_native/host_options.h"

#include <csignal>
#include <cstdio>
#include <sys/signalfd.h>

namespace {

/// A descriptor that becomes readable when the process is asked to stop.
FileDescriptor stopSignals()
{
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        ::sigaddset(&signals, number);
    ::sigprocmask(SIG_BLOCK, &signals, nullptr);
    return FileDescriptor(::signalfd(-1, &signals, SFD_CLOEXEC));
}

bool plugAtStart(SimulatedDevice& device, DeviceServer& server, const HostOptions& options)
{
    const std::uint32_t moving = options.movingLevels ? 1 : 0;
    device.control(SIM_MOVE_LEVELS, &moving, sizeof moving);
    if (!options.productId)
        return true;
    const SimPlug request = {*options.productId, options.bus};
    return device.control(SIM_PLUG, &request, sizeof request) == 0 && server.publish();
}

} // namespace

int main(int argc, char** argv)
{
    std::string problem;
    const std::optional<HostOptions> options = parseHostOptions(argc, argv, problem);
    if (!options) {
        std::fprintf(stderr, "quorvel-simulator: %s; try --help\n", problem.c_str());
        return 2;
    }
    if (options->help) {
        std::fputs(hostHelp, stdout);
        return 0;
    }
    const FileDescriptor signals = stopSignals();
    SimulatedDevice device;
    DeviceServer server(device);
    if (!server.start(problem)) {
        std::fprintf(stderr, "quorvel-simulator: %s\n", problem.c_str());
        return 1;
    }
    if (!plugAtStart(device, server, *options)) {
        std::fprintf(stderr, "quorvel-simulator: the interface cannot be plugged in\n");
        return 1;
    }
    std::puts("ready");
    std::fflush(stdout);
    std::vector<int> stop = {signals.get()};
    if (options->untilInputCloses)
        stop.push_back(STDIN_FILENO);
    server.run(stop);
    return 0;
}
