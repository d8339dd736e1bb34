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

constexpr int socketQueue = 64;

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

std::vector<std::uint8_t> message(std::uint32_t error, const std::uint8_t* data,
                                  std::uint32_t length)
{
    const DeviceAnswer head = {error, length};
    std::vector<std::uint8_t> bytes(sizeof head + length);
    std::memcpy(bytes.data(), &head, sizeof head);
    std::copy_n(data, length, bytes.begin() + sizeof head);
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
    door = listenOnSocket(doorPath, socketQueue);
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
    deviceListener = listenOnSocket(wanted, socketQueue);
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
        const bool doorKnock = (next++)->revents != 0;
        const bool deviceKnock = (next++)->revents != 0;
        for (auto connection = connections.begin(); connection != connections.end();) {
            const bool ready = (next++)->revents != 0;
            connection = ready && !serve(*connection) ? connections.erase(connection)
                                                      : std::next(connection);
        }
        if (doorKnock)
            acceptFrom(door, true);
        if (deviceKnock)
            acceptFrom(deviceListener, false);
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
    for (const Connection& connection : connections) {
        const short events = connection.waiting ? 0 : POLLIN;
        result.push_back({connection.socket.get(), events, 0});
    }
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

void DeviceServer::acceptFrom(const FileDescriptor& listener, bool toDoor)
{
    if (!listener.isValid()) // Unplugged since it was polled.
        return;
    FileDescriptor socket = acceptSocket(listener.get());
    if (!socket.isValid())
        return;
    ::fcntl(socket.get(), F_SETFL, ::fcntl(socket.get(), F_GETFL) | O_NONBLOCK);
    Connection& connection = connections.emplace_back();
    connection.socket = std::move(socket);
    connection.toDoor = toDoor;
}

/// Handles one message. False when the connection has ended.
bool DeviceServer::serve(Connection& connection)
{
    DeviceRequest request = {};
    const ssize_t length = receiveMessage(connection.socket.get(), &request, sizeof request,
                                          input.data(), input.size());
    if (length < 0 && errno == EAGAIN)
        return true;
    if (length < static_cast<ssize_t>(sizeof request) ||
        static_cast<std::size_t>(length) != sizeof request + request.inputLength) {
        closeOn(connection);
        return false;
    }
    answerRequest(connection, request);
    return connection.waiting || sendAnswer(connection);
}

void DeviceServer::answerRequest(Connection& connection, const DeviceRequest& request)
{
    if (request.call == DeviceCall::control && connection.opened) {
        const SimAnswer answer = controlOn(connection, request);
        connection.answer = message(answer.error, output.data(), answer.returned);
        connection.waiting = answer.delayMs > 0;
        connection.dueMs = device.now() + answer.delayMs;
        return;
    }
    std::uint32_t error = 0;
    if (request.call == DeviceCall::open && !connection.opened)
        openOn(connection);
    else if (request.call == DeviceCall::close)
        closeOn(connection);
    else
        error = SIM_ERROR_INVALID_FUNCTION;
    connection.answer = message(error, nullptr, 0);
}

void DeviceServer::openOn(Connection& connection)
{
    connection.opened = true;
    if (!connection.toDoor)
        connection.handle = simOpen(&device.model());
}

void DeviceServer::closeOn(Connection& connection)
{
    if (connection.opened && !connection.toDoor)
        simClose(&device.model(), connection.handle);
    connection.opened = false;
}

SimAnswer DeviceServer::controlOn(Connection& connection, const DeviceRequest& request)
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

bool DeviceServer::sendAnswer(Connection& connection)
{
    if (sendMessage(connection.socket.get(), connection.answer.data(), connection.answer.size()))
        return true;
    closeOn(connection);
    return false;
}

bool DeviceServer::isDue(const Connection& connection) const
{
    return static_cast<std::int32_t>(connection.dueMs - device.now()) <= 0;
}
