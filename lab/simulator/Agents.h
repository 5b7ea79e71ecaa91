#pragma once

#include "lab/simulator/Frame.h"
#include "lab/simulator/Options.h"

#include <map>
#include <random>
#include <tuple>
#include <vector>

namespace Simulator {

/// Frames that are to be sent `due` milliseconds after the request came: the answer of one agent,
/// once or several times.
struct Planned
{
    double due = 0;
    std::vector<Octets> frames;
};

/// All agents: decides what becomes of each request. Knows no sockets and no clock.
class Agents
{
public:
    /// `own` is the hardware address of the interface.
    Agents(const Options& options, Mac own);

    /// What the agents send back for what came in `frame`, in the order of time: the one that it
    /// was sent to, or else all in a new random order for each request, so that what overflows at
    /// its end is not always the same agents. Empty for whatever is no request of the right
    /// community.
    std::vector<Planned> answer(std::string_view frame);

    /// The ARP reply to `frame`, if that asks for the hardware address of one of the agents; else
    /// empty.
    Octets resolve(std::string_view frame) const;

    /// One datagram of the flood, to whoever asked last; nothing before anybody did.
    std::vector<Octets> flood();

private:
    std::vector<unsigned> addressed(std::uint32_t destination);
    void say(unsigned agent, const Message& plain, const Arrival& asker,
             std::vector<Octets>& frames);

    Options m_options;
    Mac m_own;
    FrameMaker m_maker;
    std::mt19937 m_random;
    /// How often a request came: asker's address and port, request identifier.
    std::map<std::tuple<std::uint32_t, std::uint16_t, std::int64_t>, unsigned> m_seen;
    Octets m_lastFrame; ///< of the last request, for the flood
};

} // namespace Simulator
