#include "simulator/host_native/device_server.h"

#include "port/local_socket.h"
#include "port/runtime_folder.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sys/file.h>

namespace {

std::string deviceFolder()
{
    return runtimeFolder() + "/dev/";
}

/// What a simulator that crashed has left behind.
void removeOldSockets()
{
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(deviceFolder(), ignored))
        std::filesystem::remove(entry.path(), ignored);
}

std::vector<std::uint8_t> message(std::uint32_t number, const SimAnswer& answer,
                                  const std::uint8_t* data)
{
    const DeviceAnswer head = {number, answer.error, answer.returned};
    std::vector<std::uint8_t> bytes(sizeof head + answer.returned);
    std::memcpy(bytes.data(), &head, sizeof head);
    std::copy_n(data, answer.returned, bytes.begin() + sizeof head);
    return bytes;
}

} // namespace

DeviceServer::DeviceServer(SimulatedDevice& simulated)
    : device(simulated)
    , input(largestTransfer)
    , output(largestTransfer)
{
}

DeviceServer::~DeviceServer()
{
    if (door.isValid())
        ::unlink((deviceFolder() + SIM_DOOR_NAME).c_str());
    if (!devicePath.empty())
        ::unlink(devicePath.c_str());
}

bool DeviceServer::start(std::string& problem)
{
    if (!createRuntimeFolder("dev")) {
        problem = "the folder " + runtimeFolder() +
                  " cannot be created or is not private to this user (mode 0700)";
        return false;
    }
    const std::string lockPath = runtimeFolder() + "/simulator.lock";
    lock = FileDescriptor(::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!lock.isValid() || ::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        problem = errno == EWOULDBLOCK ? "another simulator already serves " + runtimeFolder()
                                       : lockPath + ": " + std::strerror(errno);
        return false;
    }
    removeOldSockets();
    const std::string doorPath = deviceFolder() + SIM_DOOR_NAME;
    door = listenOnSocket(doorPath);
    if (!door.isValid())
        problem = doorPath + ": " + std::strerror(errno);
    return door.isValid();
}

bool DeviceServer::publish()
{
    SimState& state = device.model().state;
    const std::string wanted =
        state.plugged != 0 ? deviceFolder() + SIM_DEVICE_NAME + std::to_string(state.bus) : "";
    if (wanted == devicePath)
        return true;
    if (!devicePath.empty())
        ::unlink(devicePath.c_str());
    devicePath = wanted;
    deviceListener.reset();
    if (wanted.empty())
        return true;
    deviceListener = listenOnSocket(wanted);
    if (deviceListener.isValid())
        return true;
    devicePath.clear();
    state.plugged = 0;
    return false;
}

void DeviceServer::run(const std::vector<int>& stopDescriptors)
{
    while (true) {
        std::vector<pollfd> polled = watched(stopDescriptors);
        if (::poll(polled.data(), polled.size(), waitTime()) < 0 && errno != EINTR)
            return;
        auto next = polled.begin();
        for (const int stop : stopDescriptors) {
            if (next->fd == stop && next->revents != 0)
                return;
            ++next;
        }
        sendDueAnswers();
        // Polled like the others before any request is served: what a program opened and closed
        // ahead of a request at the door counts in its answer.
        const std::size_t before = connections.size();
        acceptFrom(door, true);
        acceptFrom(deviceListener, false);
        if (connections.size() != before)
            continue;
        next += 2;
        for (auto connection = connections.begin(); connection != connections.end();) {
            const bool ready = (next++)->revents != 0;
            connection = ready && !serve(*connection) ? connections.erase(connection)
                                                      : std::next(connection);
        }
    }
}

std::vector<pollfd> DeviceServer::watched(const std::vector<int>& stopDescriptors) const
{
    std::vector<pollfd> result;
    result.reserve(stopDescriptors.size() + 2 + connections.size());
    for (const int stop : stopDescriptors)
        result.push_back({stop, POLLIN, 0});
    result.push_back({door.get(), POLLIN, 0});
    result.push_back({deviceListener.get(), POLLIN, 0});
    for (const Connection& connection : connections)
        result.push_back({connection.socket.get(), POLLIN, 0});
    return result;
}

/// Milliseconds until the next held-back answer is due, -1 without one.
int DeviceServer::waitTime() const
{
    int shortest = -1;
    for (const Connection& connection : connections) {
        if (!connection.waiting)
            continue;
        const auto left = static_cast<std::int32_t>(connection.dueMs - device.now());
        const int wait = std::max(left, 0);
        shortest = shortest < 0 ? wait : std::min(shortest, wait);
    }
    return shortest;
}

/// The device's handles come first in the list, so that a closing counts in the same way.
void DeviceServer::acceptFrom(const FileDescriptor& listener, bool toDoor)
{
    for (FileDescriptor socket = acceptSocket(listener.get()); socket.isValid();
         socket = acceptSocket(listener.get())) {
        Connection& connection = toDoor ? connections.emplace_back() : connections.emplace_front();
        connection.socket = std::move(socket);
        connection.toDoor = toDoor;
        if (!toDoor)
            connection.handle = simOpen(&device.model());
    }
}

/// Handles one message. False when the connection has ended.
bool DeviceServer::serve(Connection& connection)
{
    DeviceRequest request = {};
    const ssize_t length = receiveMessage(connection.socket.get(), &request, sizeof request,
                                          input.data(), input.size());
    if (length < 0 && errno == EAGAIN)
        return true;
    if (length == static_cast<ssize_t>(sizeof request + request.inputLength)) {
        const SimAnswer answer = answerTo(connection, request);
        connection.answer = message(request.number, answer, output.data());
        connection.waiting = answer.delayMs > 0;
        connection.dueMs = device.now() + answer.delayMs;
        if (connection.waiting || sendAnswer(connection))
            return true;
    }
    if (!connection.toDoor)
        simClose(&device.model(), connection.handle);
    return false;
}

SimAnswer DeviceServer::answerTo(const Connection& connection, const DeviceRequest& request)
{
    const auto room = std::min<std::uint32_t>(request.outputLength, largestTransfer);
    const SimCall call = {device.now(),        request.code,  input.data(),
                          request.inputLength, output.data(), room};
    if (!connection.toDoor)
        return simRequest(&device.model(), connection.handle, &call);
    SimAnswer answer = simControl(&device.model(), &call);
    if (!publish())
        answer = {SIM_ERROR_NO_SYSTEM_RESOURCES, 0, 0};
    return answer;
}

void DeviceServer::sendDueAnswers()
{
    for (Connection& connection : connections) {
        if (connection.waiting && isDue(connection)) {
            connection.waiting = false;
            sendAnswer(connection); // A client that has gone shows when it is polled next.
        }
    }
}

bool DeviceServer::sendAnswer(const Connection& connection)
{
    return sendMessage(connection.socket.get(), connection.answer.data(), connection.answer.size());
}

bool DeviceServer::isDue(const Connection& connection) const
{
    return static_cast<std::int32_t>(connection.dueMs - device.now()) <= 0;
}
