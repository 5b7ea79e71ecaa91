#include "lab/simulator/Agents.h"

#include <numeric>
#include <utility>

namespace Simulator {

namespace {

constexpr std::uint16_t snmpPort = 161;

} // namespace

Agents::Agents(const Options& options, Mac own)
    : m_options(options), m_own(own), m_maker(own, options.frame), m_random(options.seed)
{}

Octets Agents::resolve(std::string_view frame) const
{
    return arpReply(frame, m_own, m_options.first, m_options.agents);
}

std::vector<Planned> Agents::answer(std::string_view frame)
{
    const std::optional<Arrival> asker = readFrame(frame);
    if (!asker || asker->destinationPort != snmpPort) {
        return {};
    }
    const std::optional<Message> request = readRequest(asker->payload);
    if (!request || request->community != m_options.community) {
        return {};
    }
    m_lastFrame = frame;
    if (m_seen[{asker->source, asker->sourcePort, request->requestId}]++ < m_options.ignore) {
        return {};
    }

    const std::vector<unsigned> order = addressed(asker->destination);
    const Message plain = plainAnswer(*request);
    const double step =
        order.size() > 1 ? m_options.spread / static_cast<double>(order.size() - 1) : 0;
    std::vector<Planned> planned(order.size());
    for (unsigned turn = 0; turn < order.size(); ++turn) {
        planned[turn].due = m_options.delay + step * turn;
        say(order[turn], plain, *asker, planned[turn].frames);
    }
    return planned;
}

std::vector<unsigned> Agents::addressed(std::uint32_t destination)
{
    if (destination - m_options.first < m_options.agents) {
        return {destination - m_options.first};
    }
    std::vector<unsigned> order(m_options.agents);
    std::iota(order.begin(), order.end(), 0U);
    // Not std::shuffle, whose result differs between standard libraries.
    for (unsigned left = m_options.agents; left > 1; --left) {
        std::swap(order[left - 1], order[m_random() % left]);
    }
    return order;
}

void Agents::flood(std::vector<Octets>& frames)
{
    const std::optional<Arrival> asker = readFrame(m_lastFrame);
    if (asker) {
        const std::optional<Message> request = readRequest(asker->payload);
        const auto agent = static_cast<unsigned>(m_random() % m_options.agents);
        if (request) {
            say(agent, plainAnswer(*request), *asker, frames);
        }
    }
}

void Agents::say(unsigned agent, const Message& plain, const Arrival& asker,
                 std::vector<Octets>& frames)
{
    const std::uint32_t source = m_options.first + agent;
    const std::size_t before = frames.size();
    if (m_options.behaviour->payload == nullptr) {
        m_maker.unreachable(asker, source, frames);
    } else {
        m_maker.datagram(asker, source, m_options.behaviour->payload(plain, agent, m_random),
                         frames);
    }
    const std::vector<Octets> once(frames.begin() + static_cast<std::ptrdiff_t>(before),
                                   frames.end());
    for (unsigned copy = 1; copy < m_options.copies; ++copy) {
        frames.insert(frames.end(), once.begin(), once.end());
    }
}

} // namespace Simulator
