#pragma once

#include <functional>
#include <string>
#include <thread>
#include <vector>

/// A UDP socket on the host's loopback interface, never anywhere else. Owns its descriptor.
class LoopbackSocket
{
public:
    /// Bound to a free port of `address`, 127.0.0.1 or another of 127/8. Throws std::system_error.
    explicit LoopbackSocket(const char* address = "127.0.0.1");
    ~LoopbackSocket();
    LoopbackSocket(const LoopbackSocket&) = delete;
    LoopbackSocket& operator=(const LoopbackSocket&) = delete;

    int Descriptor() const { return m_descriptor; }
    unsigned short Port() const { return m_port; }
    /// Sends to a port of 127.0.0.1.
    void Send(const std::string& datagram, unsigned short port) const;
    /// What has arrived, and from which port; false when nothing has.
    bool Receive(std::string& datagram, unsigned short& port) const;

private:
    int m_descriptor;
    unsigned short m_port;
};

/// An agent on the loopback interface. It keeps the datagrams that arrive and calls the test's
/// Behaviour for each, on a thread of its own that ends with Stop or the destructor.
class LoopbackAgent
{
public:
    /// Called for each datagram, numbered from 0, on the agent's thread. The test must not use what
    /// the function uses until after Stop.
    using Behaviour =
        std::function<void(const LoopbackAgent& agent, const std::string& request, size_t number)>;

    explicit LoopbackAgent(Behaviour behaviour = {});
    ~LoopbackAgent();
    LoopbackAgent(const LoopbackAgent&) = delete;
    LoopbackAgent& operator=(const LoopbackAgent&) = delete;

    /// The peer name for Net-SNMP.
    std::string Host() const;
    /// Sends from the agent's port to the sender of the latest datagram. For Behaviour.
    void Reply(const std::string& datagram) const { ReplyFrom(m_socket, datagram); }
    /// The same from another socket, as another agent would. For Behaviour.
    void ReplyFrom(const LoopbackSocket& socket, const std::string& datagram) const;
    unsigned short Port() const { return m_socket.Port(); }

    /// Ends the thread after it has served all datagrams that have arrived, and returns them.
    const std::vector<std::string>& Stop();

private:
    void Run();
    void Serve();

    LoopbackSocket m_socket;
    Behaviour m_behaviour;
    int m_stop[2] = {-1, -1}; ///< pipe: the thread ends when the writing end is closed
    std::vector<std::string> m_datagrams;
    unsigned short m_latestPort = 0;
    std::thread m_thread;
};
