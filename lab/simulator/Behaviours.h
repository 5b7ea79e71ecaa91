#pragma once

#include "lab/simulator/Message.h"

#include <random>
#include <string>
#include <vector>

namespace Simulator {

/// What an agent sends back: the payload of one datagram. `plain` is what a plain agent would say,
/// `agent` the agent's number, by which the agents of one behaviour go through its variants.
using Payload = Octets (*)(const Message& plain, unsigned agent, std::mt19937& random);

/// A way to answer, well or badly.
struct Behaviour
{
    const char* name;
    Payload payload; ///< null for "unreachable": an ICMP message in place of a datagram
    const char* meaning;
};

/// All of them, "plain" first.
const std::vector<Behaviour>& behaviours();

/// The one of this name, or null.
const Behaviour* findBehaviour(const std::string& name);

} // namespace Simulator
