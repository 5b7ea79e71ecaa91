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

/// All agents: decides how each request is answered. Uses no socket and no clock.
class Agents
{
public:
    /// `own` is the hardware address of the interface.
    Agents(const Options& options, Mac own);

    /// The agents' answers to `frame`, in order of time: of the agent that it was sent to, or, for
    /// a broadcast, of all agents. Their order is random for each request, so that a receive buffer
    /// that overflows does not always lose the same agents. Empty unless `frame` is a request with
    /// the right community.
    std::vector<Planned> answer(std::string_view frame);

    /// The ARP reply to `frame`, if that asks for the hardware address of one of the agents; else
    /// empty.
    Octets resolve(std::string_view frame) const;

    /// Appends one datagram of the flood, to whoever asked last; nothing before anybody did.
    void flood(std::vector<Octets>& frames);

private:
    std::vector<unsigned> addressed(std::uint32_t destination);
    void say(unsigned agent, const Message& plain, const Arrival& asker,
             std::vector<Octets>& frames);

    Options m_options;
    Mac m_own;
    FrameMaker m_maker;
    std::mt19937 m_random;
    /// How often each request came, by the asker's address and port and the request identifier.
    std::map<std::tuple<std::uint32_t, std::uint16_t, std::int64_t>, unsigned> m_seen;
    Octets m_lastFrame; ///< of the last request, for the flood
};

} // namespace Simulator
