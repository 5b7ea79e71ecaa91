#pragma once

#include "lab/simulator/Ber.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

// Ethernet frames with IPv4 in them (RFC 894, RFC 791, RFC 768, RFC 792). Addresses and ports are
// numbers in the host's order.

namespace Simulator {

using Mac = std::array<unsigned char, 6>;

/// A UDP datagram received in one frame.
struct Arrival
{
    Mac sender = {};
    std::uint32_t source = 0;
    std::uint16_t sourcePort = 0;
    std::uint32_t destination = 0;
    std::uint16_t destinationPort = 0;
    std::string_view payload; ///< within the frame
    std::string_view packet;  ///< the IP packet, within the frame
};

/// The UDP datagram that `frame` carries whole, or nothing. The result points into `frame`.
std::optional<Arrival> readFrame(std::string_view frame);

/// Makes the frames that go back to one asker.
class FrameMaker
{
public:
    /// `own` is the interface's address. Frames are padded after the packet to at least `minimum`
    /// octets. The kernel then charges each for a buffer of that size, as with a network card
    /// whose driver receives into buffers of one size.
    FrameMaker(Mac own, std::size_t minimum) : m_own(own), m_minimum(minimum) {}

    /// A datagram from `source`, port 161, to the asker: several frames where one does not hold it.
    /// Without a checksum, which UDP over IPv4 allows.
    void datagram(const Arrival& asker, std::uint32_t source, std::string_view payload,
                  std::vector<Octets>& frames);

    /// ICMP "port unreachable" from `source` about the packet in which the asker asked.
    void unreachable(const Arrival& asker, std::uint32_t source, std::vector<Octets>& frames);

private:
    void packet(const Arrival& asker, std::uint32_t source, unsigned char protocol,
                std::string_view content, std::vector<Octets>& frames);

    Mac m_own;
    std::size_t m_minimum;
    std::uint16_t m_identification = 0;
};

/// The ARP reply (RFC 826) with `own` as the hardware address, if `frame` asks for one of the
/// `count` addresses from `first` on; else empty.
Octets arpReply(std::string_view frame, const Mac& own, std::uint32_t first, std::uint32_t count);

/// The Internet checksum (RFC 1071) of `octets`.
std::uint16_t checksum(std::string_view octets);

} // namespace Simulator
