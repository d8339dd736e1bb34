#pragma once

#include "port/device_wire.h"
#include "port/file_descriptor.h"
#include "simulator/host_native/simulated_device.h"

#include <cstdint>
#include <list>
#include <string>
#include <vector>

struct pollfd;

/// Serves the simulated interface and its control door on sockets in the runtime folder. One
/// thread answers everybody; an answer that is held back holds nobody else up.
class DeviceServer
{
public:
    explicit DeviceServer(SimulatedDevice& simulated);
    DeviceServer(const DeviceServer&) = delete;
    DeviceServer& operator=(const DeviceServer&) = delete;
    ~DeviceServer();

    /// Takes the runtime folder over and opens the door. False with the reason in `problem`, for
    /// example when another simulator already serves the folder.
    bool start(std::string& problem);

    /// Brings the device path in line with the model; false when it cannot be created, and then
    /// the model is unplugged.
    bool publish();

    /// Serves until one of these descriptors becomes readable or is closed.
    void run(const std::vector<int>& stopDescriptors);

private:
    struct Connection
    {
        FileDescriptor socket;
        bool toDoor = false;
        SimHandle handle = 0; ///< Of the device.
        bool waiting = false; ///< `answer` is held back until `dueMs`.
        std::uint32_t dueMs = 0;
        std::vector<std::uint8_t> answer;
    };

    std::vector<pollfd> watched(const std::vector<int>& stopDescriptors) const;
    int waitTime() const;
    void acceptFrom(const FileDescriptor& listener, bool toDoor);
    bool serve(Connection& connection);
    SimAnswer answerTo(const Connection& connection, const DeviceRequest& request);
    void sendDueAnswers();
    static bool sendAnswer(const Connection& connection);
    bool isDue(const Connection& connection) const;

    SimulatedDevice& device;
    FileDescriptor lock;
    FileDescriptor door;
    FileDescriptor deviceListener;
    std::string devicePath; ///< Empty while unplugged.
    std::list<Connection> connections;
    std::vector<std::uint8_t> input;
    std::vector<std::uint8_t> output;
};
