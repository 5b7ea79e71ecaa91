#pragma once

#include "lab/simulator/Ber.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace Simulator {

constexpr unsigned char pduGet = 0xa0;
constexpr unsigned char pduGetNext = 0xa1;
constexpr unsigned char pduResponse = 0xa2;

/// An SNMP message with a community (RFC 1157, section 4), as the numbers on the wire.
struct Message
{
    std::int64_t version = 0;
    Octets community;
    unsigned char pduType = pduResponse;
    std::int64_t requestId = 0;
    std::int64_t errorStatus = 0;
    std::int64_t errorIndex = 0;
    Octets bindings; ///< content of the list, encoded

    /// The octets of a datagram.
    Octets encode() const;
};

/// The GET or GETNEXT that `datagram` holds; nothing if it holds anything else.
std::optional<Message> readRequest(std::string_view datagram);

/// The plain answer to `request`: the first object asked for, with a value.
Message plainAnswer(const Message& request);

/// One variable binding, encoded: `name` is an encoded object identifier's content.
Octets binding(std::string_view name, std::string_view value);

/// Content of the encoded object identifier sysUpTime.0 (1.3.6.1.2.1.1.3.0).
extern const Octets sysUpTime;

} // namespace Simulator
