#pragma once

#include <cstdint>
#include <string>

namespace Simulator {

/// Why the caller must not send here; nothing if it runs in a network namespace of a lab. It makes
/// the same checks as lab/inside: the environment names this namespace, the first process is in
/// another one (the lab's hub; outside a lab both are in the same one, or an ordinary user cannot
/// look), every address is a documentation or loopback address, and no IPv4 route leads out. All
/// must hold, because any single one can mislead: an environment variable is inherited.
std::string refusal();

/// Whether the address, a number in the host's order, is set aside for documentation or tests:
/// 192.0.2.0/24, 198.51.100.0/24, 203.0.113.0/24 (RFC 5737) or 198.18.0.0/15 (RFC 2544).
bool isDocumentationAddress(std::uint32_t address);

} // namespace Simulator
