#include "lab/simulator/PacketSocket.h"

#include <arpa/inet.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace Simulator {

namespace {

constexpr std::size_t largestFrame = 2048;
constexpr std::size_t batch = 128; // frames handed to the system at once

void require(bool good, const char* what)
{
    if (!good) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

} // namespace

PacketSocket::PacketSocket(const std::string& interface)
    : m_descriptor(socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, 0))
{
    require(m_descriptor >= 0, "packet socket");
    ifreq request = {};
    std::strncpy(request.ifr_name, interface.c_str(), sizeof request.ifr_name - 1);
    require(ioctl(m_descriptor, SIOCGIFINDEX, &request) == 0, "index of the interface");
    const int on = 1;
    require(setsockopt(m_descriptor, SOL_PACKET, PACKET_IGNORE_OUTGOING, &on, sizeof on) == 0,
            "what others send only");
    sockaddr_ll address = {};
    address.sll_family = AF_PACKET;
    address.sll_protocol = htons(ETH_P_ALL);
    address.sll_ifindex = request.ifr_ifindex;
    require(bind(m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0,
            "bind to the interface");
    require(ioctl(m_descriptor, SIOCGIFHWADDR, &request) == 0, "address of the interface");
    std::memcpy(m_mac.data(), request.ifr_hwaddr.sa_data, m_mac.size());
}

PacketSocket::~PacketSocket()
{
    close(m_descriptor);
}

Octets PacketSocket::receive(int milliseconds)
{
    pollfd waiting = {m_descriptor, POLLIN, 0};
    if (poll(&waiting, 1, milliseconds) <= 0) {
        return {};
    }
    std::array<char, largestFrame> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init)
    const ssize_t got = recv(m_descriptor, buffer.data(), buffer.size(), MSG_DONTWAIT);
    return got > 0 ? Octets(buffer.data(), static_cast<std::size_t>(got)) : Octets();
}

void PacketSocket::send(const std::vector<Octets>& frames)
{
    std::array<mmsghdr, batch> messages;
    std::array<iovec, batch> parts;
    for (std::size_t at = 0; at < frames.size();) {
        const std::size_t count = std::min(batch, frames.size() - at);
        for (std::size_t each = 0; each < count; ++each) {
            const Octets& frame = frames[at + each];
            parts[each] = {const_cast<char*>(frame.data()), frame.size()}; // only read
            messages[each] = {};
            messages[each].msg_hdr.msg_iov = &parts[each];
            messages[each].msg_hdr.msg_iovlen = 1;
        }
        const int sent = sendmmsg(m_descriptor, messages.data(), static_cast<unsigned>(count), 0);
        at += sent > 0 ? static_cast<std::size_t>(sent) : 1;
    }
}

} // namespace Simulator
