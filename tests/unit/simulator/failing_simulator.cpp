#include "failing_simulator.h"

#include "port/device_wire.h"
#include "port/local_socket.h"
#include "port/runtime_folder.h"
#include "simulator/model/simulator_protocol.h"

#include <QtGlobal>

#include <poll.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int attention = 20; // milliseconds

std::string doorPath()
{
    return runtimeFolder() + "/dev/" SIM_DOOR_NAME;
}

/// Also when the other side has closed.
bool isReadable(int descriptor)
{
    pollfd polled = {descriptor, POLLIN, 0};
    return ::poll(&polled, 1, attention) > 0;
}

} // namespace

FailingSimulator::FailingSimulator(const Answer& answer)
    : given(answer)
{
    if (createRuntimeFolder("dev"))
        listener = listenOnSocket(doorPath());
    if (!listener.isValid())
        qFatal("cannot listen on %s", doorPath().c_str());
    server = std::thread([this] { serve(); });
}

FailingSimulator::~FailingSimulator()
{
    leave = true;
    server.join();
    ::unlink(doorPath().c_str());
}

void FailingSimulator::serve()
{
    while (!leave) {
        if (isReadable(listener.get()))
            serveClient(acceptSocket(listener.get()));
    }
}

void FailingSimulator::serveClient(const FileDescriptor& client) const
{
    std::vector<std::uint8_t> input(largestTransfer);
    while (!leave) {
        if (!isReadable(client.get()))
            continue;
        DeviceRequest request = {};
        if (receiveMessage(client.get(), &request, sizeof request, input.data(), input.size()) <= 0)
            return;
        const DeviceAnswer head = {request.number, given.error, given.length};
        const std::vector<std::uint8_t> bytes(head.returned, given.value);
        sendMessage(client.get(), &head, sizeof head, bytes.data(), bytes.size());
    }
}
