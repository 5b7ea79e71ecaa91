#include "tests/snmp/helpers/LoopbackAgent.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace {

void Check(bool succeeded, const char* what)
{
    if (!succeeded) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

sockaddr_in Address(const char* address, unsigned short port)
{
    sockaddr_in result = {};
    result.sin_family = AF_INET;
    result.sin_port = htons(port);
    Check(inet_pton(AF_INET, address, &result.sin_addr) == 1, "inet_pton");
    Check((ntohl(result.sin_addr.s_addr) >> 24) == 127, "not a loopback address");
    return result;
}

sockaddr* Generic(sockaddr_in& address)
{
    return reinterpret_cast<sockaddr*>(&address);
}

} // namespace

LoopbackSocket::LoopbackSocket(const char* address) : m_descriptor(socket(AF_INET, SOCK_DGRAM, 0))
{
    Check(m_descriptor >= 0, "socket");
    try {
        sockaddr_in own = Address(address, 0);
        Check(bind(m_descriptor, Generic(own), sizeof own) == 0, "bind");
        socklen_t size = sizeof own;
        Check(getsockname(m_descriptor, Generic(own), &size) == 0, "getsockname");
        m_port = ntohs(own.sin_port);
    } catch (...) {
        close(m_descriptor);
        throw;
    }
}

LoopbackSocket::~LoopbackSocket()
{
    close(m_descriptor);
}

void LoopbackSocket::Send(const std::string& datagram, unsigned short port) const
{
    sockaddr_in to = Address("127.0.0.1", port);
    const ssize_t sent =
        sendto(m_descriptor, datagram.data(), datagram.size(), 0, Generic(to), sizeof to);
    Check(sent == static_cast<ssize_t>(datagram.size()), "sendto");
}

bool LoopbackSocket::Receive(std::string& datagram, unsigned short& port) const
{
    char buffer[2048];
    sockaddr_in from = {};
    socklen_t size = sizeof from;
    const ssize_t length =
        recvfrom(m_descriptor, buffer, sizeof buffer, MSG_DONTWAIT, Generic(from), &size);
    if (length < 0) {
        return false;
    }
    datagram.assign(buffer, static_cast<size_t>(length));
    port = ntohs(from.sin_port);
    return true;
}

LoopbackAgent::LoopbackAgent(Behaviour behaviour) : m_behaviour(std::move(behaviour))
{
    Check(pipe(m_stop) == 0, "pipe");
    m_thread = std::thread(&LoopbackAgent::Run, this);
}

LoopbackAgent::~LoopbackAgent()
{
    Stop();
    close(m_stop[0]);
}

std::string LoopbackAgent::Host() const
{
    return "udp:127.0.0.1:" + std::to_string(m_socket.Port());
}

void LoopbackAgent::ReplyFrom(const LoopbackSocket& socket, const std::string& datagram) const
{
    socket.Send(datagram, m_latestPort);
}

const std::vector<std::string>& LoopbackAgent::Stop()
{
    if (m_thread.joinable()) {
        close(m_stop[1]);
        m_thread.join();
    }
    return m_datagrams;
}

void LoopbackAgent::Run()
{
    pollfd descriptors[] = {{m_socket.Descriptor(), POLLIN, 0}, {m_stop[0], POLLIN, 0}};
    bool stopping = false;
    while (!stopping) {
        poll(descriptors, 2, -1);
        stopping = descriptors[1].revents != 0;
        Serve();
    }
}

void LoopbackAgent::Serve()
{
    std::string datagram;
    while (m_socket.Receive(datagram, m_latestPort)) {
        m_datagrams.push_back(datagram);
        if (m_behaviour) {
            m_behaviour(*this, datagram, m_datagrams.size() - 1);
        }
    }
}
