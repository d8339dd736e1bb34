#pragma once

#include <deque>
#include <memory>

class DriverDevice;

/// Connections that are kept on purpose after an attempt that led to nothing: a device that is
/// being looked at must not see its last handle closed between two attempts. At most 256, the
/// oldest is released for the next one: attempts repeat each second, all day long if need be. One
/// that never opened is not kept.
/// GUI thread only.
class KeptConnections
{
public:
    KeptConnections();
    ~KeptConnections();

    void keep(std::unique_ptr<DriverDevice> device);

private:
    std::deque<std::unique_ptr<DriverDevice>> devices;
};
