#include "lab/simulator/Frame.h"

#include <algorithm>

namespace Simulator {

namespace {

constexpr std::size_t ethernetHeader = 14;
constexpr std::size_t ipHeader = 20;
constexpr std::size_t udpHeader = 8;
constexpr std::size_t fragmentSize = 1480; // a multiple of 8 that fills a frame of 1514
constexpr std::uint16_t moreFragments = 0x2000;
constexpr unsigned char protocolIcmp = 1;
constexpr unsigned char protocolUdp = 17;

void put16(Octets& octets, std::uint32_t value)
{
    octets += static_cast<char>(value >> 8 & 0xff);
    octets += static_cast<char>(value & 0xff);
}

void put32(Octets& octets, std::uint32_t value)
{
    put16(octets, value >> 16);
    put16(octets, value & 0xffff);
}

std::uint16_t get16(std::string_view octets, std::size_t at)
{
    return static_cast<std::uint16_t>(static_cast<unsigned char>(octets[at]) << 8 |
                                      static_cast<unsigned char>(octets[at + 1]));
}

std::uint32_t get32(std::string_view octets, std::size_t at)
{
    return std::uint32_t{get16(octets, at)} << 16 | get16(octets, at + 2);
}

} // namespace

std::uint16_t checksum(std::string_view octets)
{
    std::uint32_t sum = 0;
    for (std::size_t at = 0; at < octets.size(); ++at) {
        const std::uint32_t octet = static_cast<unsigned char>(octets[at]);
        sum += at % 2 == 0 ? octet << 8 : octet;
    }
    while (sum > 0xffff) {
        sum = (sum & 0xffff) + (sum >> 16);
    }
    return static_cast<std::uint16_t>(~sum & 0xffff);
}

std::optional<Arrival> readFrame(std::string_view frame)
{
    if (frame.size() < ethernetHeader + ipHeader + udpHeader || get16(frame, 12) != 0x0800) {
        return std::nullopt;
    }
    const std::string_view packet = frame.substr(ethernetHeader);
    const std::size_t header = static_cast<std::size_t>(packet[0] & 0x0f) * 4;
    const std::size_t length = get16(packet, 2);
    const bool fragment = (get16(packet, 6) & 0x3fff) != 0;
    if ((packet[0] & 0xf0) != 0x40 || header < ipHeader || fragment || packet[9] != protocolUdp ||
        length < header + udpHeader || length > packet.size()) {
        return std::nullopt;
    }
    Arrival found;
    std::copy_n(frame.begin() + 6, found.sender.size(), found.sender.begin());
    found.source = get32(packet, 12);
    found.destination = get32(packet, 16);
    found.sourcePort = get16(packet, header);
    found.destinationPort = get16(packet, header + 2);
    found.packet = packet.substr(0, length);
    found.payload = found.packet.substr(header + udpHeader);
    return found;
}

Octets arpReply(std::string_view frame, const Mac& own, std::uint32_t first, std::uint32_t count)
{
    constexpr std::size_t arpSize = 28;
    // Ethernet and IPv4, with addresses of 6 and 4 octets; a request.
    const Octets asks("\x08\x06\0\x01\x08\0\x06\x04\0\x01", 10);
    if (frame.size() < ethernetHeader + arpSize || frame.substr(12, asks.size()) != asks) {
        return {};
    }
    const std::uint32_t wanted = get32(frame, 38);
    if (wanted - first >= count) {
        return {};
    }
    Octets reply(frame.substr(6, 6));
    reply.append(own.begin(), own.end());
    reply += asks;
    reply.back() = '\x02';
    reply.append(own.begin(), own.end());
    reply += frame.substr(38, 4);  // what was asked for speaks
    reply += frame.substr(22, 10); // to whoever asked
    return reply;
}

void FrameMaker::datagram(const Arrival& asker, std::uint32_t source, std::string_view payload,
                          std::vector<Octets>& frames)
{
    Octets udp;
    put16(udp, asker.destinationPort);
    put16(udp, asker.sourcePort);
    put16(udp, static_cast<std::uint32_t>(udpHeader + payload.size()));
    put16(udp, 0);
    udp += payload;
    packet(asker, source, protocolUdp, udp, frames);
}

void FrameMaker::unreachable(const Arrival& asker, std::uint32_t source,
                             std::vector<Octets>& frames)
{
    Octets icmp("\x03\x03\0\0\0\0\0\0", 8);
    icmp += asker.packet;
    const std::uint16_t sum = checksum(icmp);
    icmp[2] = static_cast<char>(sum >> 8);
    icmp[3] = static_cast<char>(sum & 0xff);
    packet(asker, source, protocolIcmp, icmp, frames);
}

void FrameMaker::packet(const Arrival& asker, std::uint32_t source, unsigned char protocol,
                        std::string_view content, std::vector<Octets>& frames)
{
    ++m_identification;
    for (std::size_t at = 0; at < content.size(); at += fragmentSize) {
        const std::string_view part = content.substr(at, fragmentSize);
        const bool last = at + part.size() == content.size();

        Octets header("\x45\0", 2);
        put16(header, static_cast<std::uint32_t>(ipHeader + part.size()));
        put16(header, m_identification);
        put16(header, static_cast<std::uint32_t>(at / 8) | (last ? 0 : moreFragments));
        header += '\x40'; // hops
        header += static_cast<char>(protocol);
        put16(header, 0);
        put32(header, source);
        put32(header, asker.source);
        const std::uint16_t sum = checksum(header);
        header[10] = static_cast<char>(sum >> 8);
        header[11] = static_cast<char>(sum & 0xff);

        Octets frame(asker.sender.begin(), asker.sender.end());
        frame.append(m_own.begin(), m_own.end());
        put16(frame, 0x0800);
        frame += header;
        frame += part;
        frame.resize(std::max(frame.size(), m_minimum), '\0');
        frames.push_back(std::move(frame));
    }
}

} // namespace Simulator
