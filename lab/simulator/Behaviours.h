#pragma once

#include "lab/simulator/Message.h"

#include <random>
#include <string>
#include <vector>

namespace Simulator {

/// What an agent sends back: the payload of one datagram. `plain` is a plain agent's answer.
/// `agent` is the agent's number, which selects among the variants of a behaviour.
using Payload = Octets (*)(const Message& plain, unsigned agent, std::mt19937& random);

/// A way to answer, well or badly.
struct Behaviour
{
    const char* name;
    Payload payload; ///< null for "unreachable": an ICMP message in place of a datagram
    const char* meaning;
};

/// All behaviours, "plain" first.
const std::vector<Behaviour>& behaviours();

/// The behaviour of this name, or null.
const Behaviour* findBehaviour(const std::string& name);

} // namespace Simulator
