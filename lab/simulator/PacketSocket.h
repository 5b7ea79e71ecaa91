#pragma once

#include "lab/simulator/Frame.h"

#include <string>
#include <vector>

namespace Simulator {

/// A packet socket (packet(7)) on one interface: whole Ethernet frames in and out, so that one
/// process can speak for any address. Throws std::system_error where the system refuses.
class PacketSocket
{
public:
    explicit PacketSocket(const std::string& interface);
    ~PacketSocket();
    PacketSocket(const PacketSocket&) = delete;
    PacketSocket& operator=(const PacketSocket&) = delete;

    /// Hardware address of the interface.
    const Mac& mac() const { return m_mac; }

    /// Waits up to `milliseconds` for a frame from others; empty if none came.
    Octets receive(int milliseconds);

    /// Sends all frames as fast as the system takes them. A frame that it refuses (interface down)
    /// is lost, as on any wire.
    void send(const std::vector<Octets>& frames);

private:
    int m_descriptor;
    Mac m_mac = {};
};

} // namespace Simulator
