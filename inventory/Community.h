#pragma once

#include "inventory/SNMPPeer.h"

#include <optional>
#include <string>

namespace inventory {

/// The community for discovery and asking: the first line of `file`; without a file the environment
/// variable SNMP_COMMUNITY, unless it is empty; else "public". One carriage return at the line's
/// end is dropped. Throws Failure when the file cannot be read, the line is empty, or it holds what
/// a properties file of POCO's cannot carry: blanks at an end, or a NUL.
std::string readCommunity(const std::optional<std::string>& file);

/// A properties file of POCO's that sets the key "Community" to exactly `community`.
std::string communityProperties(const std::string& community);

/// The credentials in `file`: lines `key = value` with the keys of SNMPSecurity, and a line
/// `version = 1`, `2c` or `3`. Blanks around keys and values do not count; empty lines and those
/// that begin with "#" neither. Where SNMPv1 or SNMPv2c have no key "community" it is `community`.
/// Throws Failure when the file cannot be read, for an unknown or repeated key, a value that a
/// session would leave out in silence, a pass phrase of fewer than eight octets, a missing
/// version, or, with SNMPv3, a missing security name, a pass phrase without a security level, or a
/// level without the protocols and pass phrases that it needs.
Credentials readCredentials(const std::string& file, const std::string& community);

/// SNMPv1, the version by which agents are found.
Credentials credentialsFor(const std::string& community);

} // namespace inventory
