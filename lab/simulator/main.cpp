// Many SNMP agents, or hostile ones, on one subnet of the private test network.

#include "lab/simulator/Agents.h"
#include "lab/simulator/Guard.h"
#include "lab/simulator/Options.h"
#include "lab/simulator/PacketSocket.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

using Simulator::Octets;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

/// Serves requests until the alarm ends the process.
class Server
{
public:
    explicit Server(const Simulator::Options& options)
        : m_options(options), m_socket(options.interface), m_agents(options, m_socket.mac())
    {}

    [[noreturn]] void serve()
    {
        while (true) {
            const Octets frame = m_socket.receive(wait());
            const Clock::time_point now = Clock::now();
            if (!frame.empty()) {
                const Octets resolved = m_agents.resolve(frame);
                if (!resolved.empty()) {
                    m_socket.send({resolved});
                }
                for (Simulator::Planned& each : m_agents.answer(frame)) {
                    const auto due =
                        std::chrono::duration_cast<Clock::duration>(Milliseconds(each.due));
                    m_waiting.emplace_hint(m_waiting.end(), now + due, std::move(each.frames));
                }
            }
            sendDue();
            sendFlood();
        }
    }

private:
    int wait() const
    {
        constexpr int turn = 1000;
        if (m_options.flood > 0) {
            // If sending took longer than a millisecond, the next datagrams are due already.
            return Clock::now() - m_flooded < std::chrono::milliseconds(1) ? 1 : 0;
        }
        if (m_waiting.empty()) {
            return turn;
        }
        const Milliseconds left = m_waiting.begin()->first - Clock::now();
        return static_cast<int>(std::clamp(left.count(), 0.0, 1.0 * turn));
    }

    void sendDue()
    {
        std::vector<Octets> frames;
        const auto end = m_waiting.upper_bound(Clock::now());
        for (auto each = m_waiting.begin(); each != end; ++each) {
            std::move(each->second.begin(), each->second.end(), std::back_inserter(frames));
        }
        m_waiting.erase(m_waiting.begin(), end);
        m_socket.send(frames);
    }

    void sendFlood()
    {
        const Clock::time_point now = Clock::now();
        const std::chrono::duration<double> since = now - m_flooded;
        const auto owed = static_cast<unsigned>(std::min(since.count(), 0.1) *
                                                m_options.flood); // never more than 0.1 s of it
        if (owed == 0) {
            return;
        }
        m_flooded = now;
        constexpr unsigned most = 128; // at once: few system calls, little memory
        for (unsigned left = owed; left > 0;) {
            const unsigned count = std::min(left, most);
            std::vector<Octets> frames;
            for (unsigned each = 0; each < count; ++each) {
                m_agents.flood(frames);
            }
            m_socket.send(frames);
            left -= count;
        }
    }

    Simulator::Options m_options;
    Simulator::PacketSocket m_socket;
    Simulator::Agents m_agents;
    std::multimap<Clock::time_point, std::vector<Octets>> m_waiting;
    Clock::time_point m_flooded = Clock::now();
};

int run(const std::vector<std::string>& arguments)
{
    if (!arguments.empty() && (arguments[0] == "--help" || arguments[0] == "-h")) {
        (void) std::fputs(Simulator::help().c_str(), stdout);
        return 0;
    }
    std::string error;
    const auto options = Simulator::readOptions(arguments, error);
    if (!options) {
        (void) std::fprintf(stderr, "lab_simulator: %s\n", error.c_str());
        return 2;
    }
    const std::string refusal = Simulator::refusal();
    if (!refusal.empty()) {
        (void) std::fprintf(stderr, "lab_simulator: refused: %s\n", refusal.c_str());
        return 1;
    }
    alarm(options->seconds);
    Server server(*options);
    (void) std::puts("ready");
    (void) std::fflush(stdout);
    server.serve();
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::exception& exception) {
        (void) std::fprintf(stderr, "lab_simulator: %s\n", exception.what());
        return 1;
    }
}
