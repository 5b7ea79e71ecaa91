#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// The transfer syntax of SNMP (the part of X.690 that RFC 3417, section 8 leaves), as far as the
// simulated agents need it. It shares no code with the library under test.

namespace Simulator {

using Octets = std::string;

constexpr unsigned char tagInteger = 0x02;
constexpr unsigned char tagOctetString = 0x04;
constexpr unsigned char tagNull = 0x05;
constexpr unsigned char tagObjectIdentifier = 0x06;
constexpr unsigned char tagSequence = 0x30;
constexpr unsigned char tagTimeTicks = 0x43;

/// Tag, length in as few octets as will do, content.
Octets element(unsigned char tag, std::string_view content);

/// Two's complement in as few octets as will do.
Octets integer(std::int64_t value, unsigned char tag = tagInteger);

/// Reads elements from front to back. After the first malformed octet every read gives an empty
/// result or 0. Does not own the octets.
class Reader
{
public:
    explicit Reader(std::string_view data) : m_rest(data) {}

    /// Content of the next element, whose tag must be `tag`; of any tag if that is 0.
    std::string_view content(unsigned char tag, unsigned char* found = nullptr);
    /// The next element as a signed number of at most 8 octets.
    std::int64_t number();

    bool failed() const { return m_failed; }

private:
    std::string_view m_rest;
    bool m_failed = false;
};

} // namespace Simulator
