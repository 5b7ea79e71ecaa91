#pragma once

#include <cstdint>
#include <string>

namespace Simulator {

/// Why the caller must not send here, or nothing if it may: it runs in a network namespace of a
/// lab. Asked for are the same signs as by lab/inside: the environment names this very namespace,
/// the first process lives in another one (the lab's hub; on a machine the two are the same, or
/// hidden from an ordinary user), every address is a documentation or loopback one, and no IPv4
/// route leads out. No single one is trusted: a variable can be inherited.
std::string refusal();

/// Whether the address, a number in the host's order, is set aside for documentation or tests:
/// 192.0.2.0/24, 198.51.100.0/24, 203.0.113.0/24 (RFC 5737) or 198.18.0.0/15 (RFC 2544).
bool isDocumentationAddress(std::uint32_t address);

} // namespace Simulator
